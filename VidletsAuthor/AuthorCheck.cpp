// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorCheck.h"

#include "AuthorClips.h"
#include "AuthorControlReader.h"
#include "AuthorFiles.h"
#include "AuthorResources.h"
#include "AuthorScenes.h"
#include "AuthorTips.h"
#include "AuthorTranslations.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

AuthorControlFile readFile(AuthorControlReader::Kind kind, const QString& path,
                           AuthorFindings& findings)
{
    QString reason;
    const auto bytes = AuthorFiles::read(path, reason);
    if (bytes)
        return AuthorControlReader(kind, path, *bytes, findings).read();
    findings.add(path, {}, u"file-ignored"_s, u"The file is not looked into: %1."_s.arg(reason));
    AuthorControlFile file;
    file.path = path;
    return file;
}

auto orderOf(const AuthorFinding& finding)
{
    return std::tie(finding.file, finding.position.line, finding.position.column, finding.rule,
                    finding.message);
}

} // namespace

AuthorCheck::AuthorCheck()
    : m_packages(m_findings)
{
}

bool AuthorCheck::add(const QString& path, QString& reason)
{
    const qsizetype before = m_findings.all().size();
    if (!m_packages.add(path, reason))
        return false;
    if (!QFileInfo(path).isDir() || m_findings.all().size() > before)
        return true;
    const QString place = QFileInfo(path).canonicalFilePath();
    const QList<AuthorPackage>& packages = m_packages.packages();
    const bool isAny =
        std::any_of(packages.cbegin(), packages.cend(), [&place](const AuthorPackage& package) {
            return package.canonicalPath == place
                || QFileInfo(package.canonicalPath).path() == place;
        });
    // A slip in a path would leave all well for ever.
    if (!isAny)
        reason = AuthorPackages::noneIn(path);
    return isAny;
}

bool AuthorCheck::set(const QString& assignment, QString& reason)
{
    return m_settings.set(assignment, reason);
}

void AuthorCheck::setLocales(const QStringList& locales)
{
    m_locales = locales;
}

QList<AuthorFinding> AuthorCheck::run()
{
    AuthorTips tips(m_packages, m_findings);
    AuthorResources resources(m_packages, m_findings);
    AuthorScenes scenes(m_findings);
    AuthorTranslations translations(m_packages, m_findings);
    m_packages.reportShadowed();
    for (const AuthorPackage& package : m_packages.packages()) {
        m_settings.loadPackage(package.path, m_findings);
        for (const QString& path : package.candidates) {
            const AuthorControlFile file =
                readFile(AuthorControlReader::Kind::ControlFile, path, m_findings);
            resources.addControlFile(package, file);
            tips.addControlFile(package, file);
            translations.addControlFile(package, file);
        }
        resources.addScenes(package);
        scenes.addPackage(package);
        if (scenes.isTranslating(package.path))
            translations.addTranslating(package);
    }
    for (const QString& path : m_packages.keyDataFiles()) {
        const AuthorControlFile file =
            readFile(AuthorControlReader::Kind::KeyData, path, m_findings);
        resources.addKeyData(file);
        tips.addKeyData(file);
    }
    tips.check(m_locales);
    resources.check();
    AuthorClips clips(m_findings);
    for (const QString& path : resources.clips()) {
        const AuthorPackage* package = m_packages.packageOf(path);
        clips.check(path, m_settings.clipMemoryLimitBytes(package ? package->path : QString()));
    }
    scenes.setOnWait(m_onWait);
    scenes.check();
    translations.check(m_locales);
    return settled();
}

QList<AuthorFinding> AuthorCheck::settled() const
{
    QList<AuthorFinding> result;
    const QList<AuthorFinding> findings = m_findings.unsuppressed();
    for (AuthorFinding finding : findings) {
        const AuthorPackage* package = m_packages.packageOf(finding.file);
        finding.severity = m_settings.severity(finding.rule, package ? package->path : QString());
        if (finding.severity != AuthorSeverity::Off)
            result.append(finding);
    }
    std::sort(result.begin(), result.end(),
              [](const AuthorFinding& left, const AuthorFinding& right) {
                  return orderOf(left) < orderOf(right);
              });
    return result;
}

} // namespace Vidlets
