// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorTips.h"

#include "AuthorFiles.h"
#include <Vidlets/VLSettings.h>

#include <QFileInfo>

#include <algorithm>
#include <iterator>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

AuthorTips::AuthorTips(const AuthorPackages& packages, AuthorFindings& findings)
    : m_packages(packages)
    , m_findings(findings)
{
}

void AuthorTips::addControlFile(const AuthorPackage& package, const AuthorControlFile& file)
{
    if (file.isRecognised)
        m_known.insert(&package);
    if (!file.isInUse) {
        for (const AuthorTip& tip : file.tips)
            m_brokenKeys.insert(tip.key);
        return;
    }
    const int number = static_cast<int>(m_sources.size());
    m_sources.append({file.path, &package, file.locale.isEmpty() ? -1 : numberOf(file.locale)});
    for (const AuthorTip& tip : file.tips)
        m_places[tip.key].append({number, tip.position, tip.isFound});
    AuthorControlFile rest = file;
    rest.tips.clear();
    rest.references.clear();
    m_files.append(rest);
}

void AuthorTips::addKeyData(const AuthorControlFile& file)
{
    if (file.isInUse)
        m_keyData.append(file);
}

/// Several names may stand for one locale.
int AuthorTips::numberOf(const QString& locale)
{
    const QLocale wanted(locale);
    const qsizetype known = m_locales.indexOf(wanted);
    if (known >= 0)
        return static_cast<int>(known);
    m_locales.append(wanted);
    return static_cast<int>(m_locales.size() - 1);
}

void AuthorTips::check(const QStringList& locales)
{
    checkEmptyPackages();
    checkSearch();
    checkScenes();
    checkTwice();
    checkGaps(locales);
    checkKeyData();
}

void AuthorTips::checkEmptyPackages()
{
    for (const AuthorPackage& package : m_packages.packages()) {
        if (!m_known.contains(&package))
            m_findings.add(package.path, {}, u"package-empty"_s,
                           u"The package has no control file in \"Control\" that can be used."_s);
    }
}

void AuthorTips::checkSearch()
{
    for (const AuthorControlFile& file : std::as_const(m_files)) {
        for (const QString& name : file.search) {
            if (m_packages.pathsOf(name).isEmpty())
                m_findings.add(file.path, file.searchPosition, u"search-unknown"_s,
                               u"There is no package \"%1\"."_s.arg(name));
        }
    }
}

void AuthorTips::checkScenes()
{
    for (qsizetype i = 0; i < m_files.size(); ++i) {
        const AuthorControlFile& file = m_files.at(i);
        QStringList places = m_packages.pathsOf(m_sources.at(i).package->name);
        for (const QString& name : file.search)
            places += m_packages.pathsOf(name);
        QHash<QString, bool> known;
        for (const AuthorSceneName& scene : file.scenes) {
            if (!known.contains(scene.name))
                known.insert(scene.name, isScene(places, scene.name));
            if (known.value(scene.name))
                continue;
            const QString message = u"There is no scene \"%1\"."_s.arg(scene.name);
            const bool isSimple = scene.name == Settings::simpleUiFileDefault();
            if (!scene.isUsual)
                m_findings.add(file.path, scene.position, u"ui-missing"_s, message);
            else
                m_findings.add(file.path, scene.position, u"scene-missing"_s, message,
                               isSimple ? u"Add it: who wants simple tips sees an empty one."_s
                                        : QString());
        }
    }
}

bool AuthorTips::isScene(const QStringList& places, const QString& name)
{
    return std::any_of(places.cbegin(), places.cend(), [&name](const QString& place) {
        return QFileInfo(AuthorFiles::join(place, name)).isFile();
    });
}

void AuthorTips::checkTwice()
{
    for (auto it = m_places.cbegin(); it != m_places.cend(); ++it) {
        if (it->size() < 2)
            continue;
        QList<Place> places;
        std::copy_if(it->cbegin(), it->cend(), std::back_inserter(places),
                     [](const Place& place) { return place.isFound; });
        // The one that is found first.
        std::stable_sort(places.begin(), places.end(),
                         [this](const Place& left, const Place& right) {
                             return m_sources.at(left.source).package->dataPath
                                 > m_sources.at(right.source).package->dataPath;
                         });
        for (qsizetype i = 1; i < places.size(); ++i) {
            const int locale = m_sources.at(places.at(i).source).locale;
            const auto end = places.cbegin() + i;
            const auto winner = std::find_if(places.cbegin(), end, [&](const Place& place) {
                const int other = m_sources.at(place.source).locale;
                return locale < 0 || other < 0 || locale == other;
            });
            if (winner != end)
                reportTwice(it.key(), places.at(i), *winner);
        }
    }
}

void AuthorTips::reportTwice(const QString& key, const Place& loser, const Place& winner)
{
    const Source& losing = m_sources.at(loser.source);
    const Source& winning = m_sources.at(winner.source);
    const QString other = u"%1:%2"_s.arg(winning.path, QString::number(winner.position.line));
    const bool isSettled = winning.package->dataPath != losing.package->dataPath;
    const QString message = isSettled
        ? u"The key \"%1\" is in %2 too, which wins: its data path is the later one."_s
        : u"The key \"%1\" is in %2 too, and the order of files on the disk tells which one wins."_s;
    m_findings.add(losing.path, loser.position, u"key-twice-across"_s, message.arg(key, other));
}

void AuthorTips::checkGaps(const QStringList& locales)
{
    QList<int> wanted;
    for (const QString& locale : locales)
        wanted.append(numberOf(locale));
    QHash<QString, QList<int>> ofPackage;
    for (const Source& source : std::as_const(m_sources)) {
        QList<int>& list = ofPackage[source.package->name];
        if (list.isEmpty())
            list = wanted;
        // No locale is told of already where it stands.
        const bool isLocale =
            source.locale >= 0 && m_locales.at(source.locale).language() != QLocale::C;
        if (isLocale && !list.contains(source.locale))
            list.append(source.locale);
    }
    for (auto it = m_places.cbegin(); it != m_places.cend(); ++it) {
        QHash<QString, QList<Place>> byPackage;
        for (const Place& place : *it)
            byPackage[m_sources.at(place.source).package->name].append(place);
        for (auto part = byPackage.cbegin(); part != byPackage.cend(); ++part)
            checkGap(it.key(), *part, ofPackage.value(part.key()));
    }
}

void AuthorTips::checkGap(const QString& key, const QList<Place>& places, const QList<int>& wanted)
{
    QSet<int> served;
    for (const Place& place : places)
        served.insert(m_sources.at(place.source).locale);
    if (served.contains(-1))
        return;
    QStringList missing;
    for (const int locale : wanted) {
        if (!served.contains(locale))
            missing.append(m_locales.at(locale).name());
    }
    if (missing.isEmpty())
        return;
    missing.sort();
    m_findings.add(m_sources.at(places.constFirst().source).path, places.constFirst().position,
                   u"locale-gap"_s,
                   u"The key \"%1\" has no tip for %2."_s.arg(key, missing.join(", "_L1)));
}

void AuthorTips::checkKeyData()
{
    // Key data alone says nothing of the packages that it is for.
    if (m_packages.packages().isEmpty())
        return;
    for (const AuthorControlFile& file : std::as_const(m_keyData)) {
        for (const AuthorTip& record : file.tips) {
            const bool isKnown = m_places.contains(record.key) || m_brokenKeys.contains(record.key);
            if (!record.key.isEmpty() && !isKnown)
                m_findings.add(file.path, record.position, u"keydata-unknown-key"_s,
                               u"No tip has the key \"%1\"."_s.arg(record.key));
        }
    }
}

} // namespace Vidlets
