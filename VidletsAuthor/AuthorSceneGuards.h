// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSCENEGUARDS_H
#define AUTHORSCENEGUARDS_H

#include "AuthorSceneOutline.h"

#include <QSet>

namespace Vidlets {

/**
 * The rule for scenes that ask the tip's element for a member without a test for null.
 *
 * What may well be a test, in one and the same binding or function, is let pass.
 */
class AuthorSceneGuards
{
public:
    /// @p path is the scene's; @p scene has to stay.
    AuthorSceneGuards(const QString& path, const AuthorSceneOutline& scene,
                      AuthorFindings& findings);

    void check();

private:
    using Member = AuthorSceneOutline::Member;

    void findNames();
    void checkName(qsizetype token);
    void checkTemplate(qsizetype token);
    void checkCode(qsizetype token, QStringView code);
    bool isName(qsizetype token) const;
    bool isTested(qsizetype token) const;
    bool isInTry(qsizetype token) const;
    bool isNoTest(qsizetype token);
    void beginChoice(qsizetype question);
    void add(qsizetype token, QStringView name);

    const QString m_path;
    const AuthorSceneOutline& m_scene;
    AuthorFindings& m_findings;
    QSet<QString> m_ids;
    /// "vidlet", and the properties that are bound to it alone.
    QSet<QString> m_names;
    /// The constants of the present member that are it too.
    QSet<QString> m_constants;
    /// The present member, and whether the element has been tested in it so far.
    const Member* m_member = nullptr;
    bool m_isTested = false;
    /// The tokens that are evaluated only where the element is null, from the first to before the
    /// end.
    qsizetype m_nullBegin = 0;
    qsizetype m_nullEnd = 0;
};

} // namespace Vidlets

#endif
