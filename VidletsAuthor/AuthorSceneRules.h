// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSCENERULES_H
#define AUTHORSCENERULES_H

#include "AuthorSceneOutline.h"

namespace Vidlets {

/**
 * The rules for a single scene that qmllint knows nothing of.
 *
 * They go by what a scene looks like: what is put together in unusual ways may be missed.
 */
class AuthorSceneRules
{
public:
    /// @p path is the scene's; @p scene has to stay.
    AuthorSceneRules(const QString& path, const AuthorSceneOutline& scene,
                     AuthorFindings& findings);

    void check();

private:
    void checkNetwork();
    void checkImport(const AuthorSceneOutline::Member& member);
    void checkAddress(qsizetype token);
    void checkAbsolutePath(qsizetype token);
    void checkReference(qsizetype token);
    void add(qsizetype token, const char16_t* rule, const QString& message,
             const QString& help = QString());

    const QString m_path;
    const AuthorSceneOutline& m_scene;
    AuthorFindings& m_findings;
};

} // namespace Vidlets

#endif
