// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorScenes.h"

#include "AuthorFiles.h"
#include "AuthorRules.h"
#include "AuthorSceneRules.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

// Far above what anybody writes.
constexpr qint64 kMaxSceneBytes = qint64(4) * 1024 * 1024;

} // namespace

AuthorScenes::AuthorScenes(AuthorFindings& findings)
    : m_findings(findings)
    , m_qmllint(findings)
{
}

QStringList AuthorScenes::filesOf(const QString& path)
{
    QStringList files;
    const QStringList folders = AuthorFiles::foldersBelow(path);
    for (const QString& folder : folders) {
        const auto entries = AuthorFiles::list(folder);
        for (const AuthorFiles::Entry& entry : entries.value_or(QList<AuthorFiles::Entry>())) {
            const bool isScene = entry.name.endsWith(".qml"_L1) || entry.name.endsWith(".js"_L1)
                || entry.name.endsWith(".mjs"_L1);
            if (entry.kind == AuthorFiles::Kind::File && entry.isNamed && isScene)
                files.append(AuthorFiles::join(folder, entry.name));
        }
    }
    return files;
}

void AuthorScenes::addPackage(const AuthorPackage& package)
{
    const QStringList files = filesOf(package.path);
    if (!files.isEmpty())
        m_packages.append(package.path);
    for (const QString& file : files)
        addScene(package, file);
}

void AuthorScenes::addScene(const AuthorPackage& package, const QString& path)
{
    QString reason;
    const auto content = AuthorFiles::read(path, reason, kMaxSceneBytes);
    if (!content) {
        m_findings.add(path, {}, u"scene-unchecked"_s,
                       u"The scene is not looked into: %1."_s.arg(reason));
        return;
    }
    const AuthorSceneOutline scene(QString::fromUtf8(*content));
    if (scene.calls(u"translate"))
        m_translating.insert(package.path);
    reportUnknownRules(path, scene);
    AuthorSceneRules(path, scene, m_findings).check();
    // As packages lie beside each other, since scenes may refer to those of another one.
    const QString place = QString::number(package.dataPath) + u'/'
        + QFileInfo(package.canonicalPath).fileName() + u'/'
        + AuthorFiles::below(package.path, path);
    m_qmllint.add(path, place, scene);
}

/// A slip in the name of a rule would switch nothing off, without a word.
void AuthorScenes::reportUnknownRules(const QString& path, const AuthorSceneOutline& scene)
{
    for (const AuthorSuppression& suppression : scene.suppressions()) {
        for (const QString& rule : suppression.rules) {
            if (!AuthorRules::find(rule))
                m_findings.add(path, {suppression.firstLine, 1}, u"settings-broken"_s,
                               u"There is no rule \"%1\"."_s.arg(rule));
        }
    }
}

void AuthorScenes::check()
{
    if (m_packages.isEmpty())
        return;
    const QString program = AuthorQmllint::find();
    if (!program.isNull()) {
        m_qmllint.check(program);
        return;
    }
    for (const QString& package : std::as_const(m_packages))
        m_findings.add(
            package, {}, u"scene-unchecked"_s,
            u"The scenes are not checked by qmllint: there is no such program."_s,
            u"Install qmllint (in Debian the package qt6-declarative-dev-tools), or name "
            "it in VIDLETS_QMLLINT."_s);
}

} // namespace Vidlets
