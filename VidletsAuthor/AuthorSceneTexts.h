// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSCENETEXTS_H
#define AUTHORSCENETEXTS_H

#include "AuthorSceneOutline.h"

#include <QSet>

namespace Vidlets {

/**
 * The rule for texts of a scene that are shown without having been translated.
 *
 * What may well be a translation, or stand in for one, is let pass.
 */
class AuthorSceneTexts
{
public:
    /// @p path is the scene's; @p scene has to stay.
    AuthorSceneTexts(const QString& path, const AuthorSceneOutline& scene,
                     AuthorFindings& findings);

    void check();

private:
    using Member = AuthorSceneOutline::Member;

    void findTranslating();
    void findTranslated(const Member& member);
    bool isCall(qsizetype token) const;
    bool isShown(qsizetype token) const;
    bool isVisible(const Member& member) const;
    bool isIndexOrKey(qsizetype token) const;
    bool isFallback(qsizetype token) const;
    bool isFallbackOfChoice(qsizetype begin) const;
    bool isCompared(qsizetype token) const;
    bool isTranslationWithin(qsizetype begin, qsizetype end) const;
    qsizetype beginOfSum(qsizetype token) const;
    qsizetype beginOfOperand(qsizetype token) const;
    qsizetype findBefore(qsizetype token, QStringView signs) const;
    bool isPairedQuestion(qsizetype token) const;
    qsizetype findBehind(qsizetype token, QStringView signs) const;

    const QString m_path;
    const AuthorSceneOutline& m_scene;
    AuthorFindings& m_findings;
    /// The functions that give a translation, those of the scene included.
    QSet<QString> m_functions;
    /// What holds one, such as a variable.
    QSet<QString> m_names;
};

} // namespace Vidlets

#endif
