// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorTipList.h"

#include "AuthorControlReader.h"
#include "AuthorFiles.h"
#include "AuthorPackages.h"

#include <QFileInfo>
#include <QLocale>
#include <QMap>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

/// What files without a locale are looked up in.
QString neutralLocale()
{
    return u"en_US"_s;
}

bool isBefore(XmlPosition left, XmlPosition right)
{
    return left.line != right.line ? left.line < right.line : left.column < right.column;
}

AuthorControlFile readFile(const QString& path)
{
    QString reason;
    AuthorFindings unused;
    const auto bytes = AuthorFiles::read(path, reason);
    if (!bytes)
        return {};
    return AuthorControlReader(AuthorControlReader::Kind::ControlFile, path, *bytes, unused).read();
}

void addTranslations(AuthorListedPackage& package)
{
    static const QRegularExpression pattern(u"^Vidlets_(.+)\\.(qm|ts)$"_s);
    const auto entries = AuthorFiles::list(package.canonicalPath + "/l10n"_L1);
    for (const AuthorFiles::Entry& entry : entries.value_or(QList<AuthorFiles::Entry>())) {
        const QRegularExpressionMatch match = pattern.match(entry.name);
        // A locale by another name is not found, and so is none.
        if (!match.hasMatch() || QLocale(match.captured(1)).name() != match.captured(1))
            continue;
        QStringList& locales =
            match.captured(2) == "qm"_L1 ? package.locales : package.draftLocales;
        locales.append(match.captured(1));
    }
}

void addFile(const AuthorControlFile& file, QMap<QString, AuthorListedTip>& tips)
{
    for (qsizetype i = 0; i < file.tips.size(); ++i) {
        const AuthorTip& tip = file.tips.at(i);
        AuthorListedTip& listed = tips[tip.key];
        listed.key = tip.key;
        const bool isLast = i + 1 == file.tips.size();
        listed.spots.append({file.path, file.locale, tip.position,
                             isLast ? XmlPosition() : file.tips.at(i + 1).position});
    }
}

AuthorListedPackage listed(const AuthorPackage& package)
{
    AuthorListedPackage result;
    result.name = package.name;
    result.path = package.path;
    result.canonicalPath = package.canonicalPath;
    QMap<QString, AuthorListedTip> tips;
    for (const QString& path : package.candidates) {
        const AuthorControlFile file = readFile(path);
        addFile(file, tips);
        if (!file.tips.isEmpty())
            result.locales.append(file.locale.isEmpty() ? neutralLocale()
                                                        : QLocale(file.locale).name());
    }
    result.tips = tips.values();
    addTranslations(result);
    result.locales.sort();
    result.locales.removeDuplicates();
    return result;
}

} // namespace

std::optional<AuthorTipList> AuthorTipList::read(const QString& path, QString& reason)
{
    AuthorFindings unused;
    AuthorPackages packages(unused);
    if (!packages.add(path, reason))
        return std::nullopt;
    if (!packages.keyDataFiles().isEmpty()) {
        reason = u"\"%1\" is neither a package nor a data path."_s.arg(path);
        return std::nullopt;
    }
    AuthorTipList result;
    for (const AuthorPackage& package : packages.packages()) {
        result.packages.append(listed(package));
        result.places.roots.append(package.canonicalPath);
        const QString dataPath = QFileInfo(package.canonicalPath).path();
        if (!result.places.dataPaths.contains(dataPath))
            result.places.dataPaths.append(dataPath);
    }
    return result;
}

QStringList AuthorTipList::locales() const
{
    QStringList result;
    for (const AuthorListedPackage& package : packages)
        result += package.locales;
    result.sort();
    result.removeDuplicates();
    return result;
}

QStringList AuthorTipList::localesWithDrafts() const
{
    QStringList result = locales();
    for (const AuthorListedPackage& package : packages)
        result += package.draftLocales;
    result.sort();
    result.removeDuplicates();
    return result;
}

bool hasLocale(const AuthorListedTip& tip, const QString& locale)
{
    const QLocale wanted(locale);
    return std::any_of(tip.spots.cbegin(), tip.spots.cend(), [&wanted](const AuthorTipSpot& spot) {
        return spot.locale.isEmpty() || QLocale(spot.locale) == wanted;
    });
}

bool isIn(const AuthorListedTip& tip, const AuthorFinding& finding)
{
    if (finding.position.line == 0)
        return false;
    return std::any_of(tip.spots.cbegin(), tip.spots.cend(), [&finding](const AuthorTipSpot& spot) {
        const bool isOpen = spot.end.line == 0;
        return spot.file == finding.file && !isBefore(finding.position, spot.begin)
            && (isOpen || isBefore(finding.position, spot.end));
    });
}

} // namespace Vidlets
