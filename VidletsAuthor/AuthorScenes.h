// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSCENES_H
#define AUTHORSCENES_H

#include "AuthorPackages.h"
#include "AuthorQmllint.h"

#include <utility>

namespace Vidlets {

/// The rules for scenes and scripts: those of its own, and all that qmllint finds.
class AuthorScenes
{
public:
    explicit AuthorScenes(AuthorFindings& findings);

    /// Returns the paths of the scenes and scripts in the package @p path; no link is followed.
    static QStringList filesOf(const QString& path);

    /// Looks at the scenes of @p package but for what qmllint finds.
    void addPackage(const AuthorPackage& package);
    /// Has @p onWait called, once, where qmllint takes its time.
    void setOnWait(AuthorQmllint::OnWait onWait)
    {
        m_qmllint.setOnWait(std::move(onWait));
    }
    /// Has qmllint look at all that was added.
    void check();
    /// Returns whether a scene of the package at @p path asks for translations.
    bool isTranslating(const QString& path) const
    {
        return m_translating.contains(path);
    }

private:
    void addScene(const AuthorPackage& package, const QString& path);
    void reportUnknownRules(const QString& path, const AuthorSceneOutline& scene);

    AuthorFindings& m_findings;
    AuthorQmllint m_qmllint;
    /// The packages with scenes.
    QStringList m_packages;
    QSet<QString> m_translating;
};

} // namespace Vidlets

#endif
