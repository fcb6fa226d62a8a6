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
    struct Uses
    {
        int opened = 0;
        int others = 0;
    };

    void checkNetwork();
    void checkImport(const AuthorSceneOutline::Member& member);
    void checkAddress(qsizetype token);
    bool isWholeProperty(qsizetype token) const;
    bool isWholeVariable(qsizetype token) const;
    bool isOpened(qsizetype token);
    void checkAbsolutePath(qsizetype token);
    void checkReference(qsizetype token);
    void add(qsizetype token, const char16_t* rule, const QString& message,
             const QString& help = QString());

    const QString m_path;
    const AuthorSceneOutline& m_scene;
    AuthorFindings& m_findings;
    /// How often each word stands among the arguments of calls that open an address, and elsewhere.
    QHash<QStringView, Uses> m_uses;
};

} // namespace Vidlets

#endif
