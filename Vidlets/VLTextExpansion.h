// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLTEXTEXPANSION_H
#define VLTEXTEXPANSION_H

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace Vidlets {

/**
 * Fills in the references of a text, and always comes to an end. Internal to the library.
 *
 * A reference that begins inside of what its own variable was replaced by stays as it stands; where
 * there is none, the result is that of VLManager::interpolate() without a guard. A text that grows
 * beyond 1 MiB, as UTF-8, ends there.
 */
class VLTextExpansion
{
public:
    VLTextExpansion(const QString& text, const QMap<QString, QVariant>& variables);

    QString result() const
    {
        return m_result;
    }
    /// The variables that contain themselves, each once.
    QStringList recursiveNames() const
    {
        return m_recursiveNames;
    }
    /// Whether the result is only the beginning of the text.
    bool isCutOff() const
    {
        return m_isCutOff;
    }

private:
    /// A variable whose value is being read.
    struct Expansion
    {
        QString name;
        /// How much of the pending text lies behind the value.
        qsizetype rest;
    };

    void pushPending(const QString& text);
    QString nameAtFront() const;
    bool isBeingExpanded(const QString& name) const;
    void replaceFront(const QString& name, const QString& value);
    void takeFront(qsizetype count);

    const QMap<QString, QVariant>& m_variables;
    QString m_result;
    qsizetype m_resultBytes = 0;
    /// What is still to be read, with its first character last: a value is put in front of it
    /// without a move of the rest.
    QList<QChar> m_pending;
    /// The length of all values so far, which bounds the work where the result stays short.
    qsizetype m_expandedLength = 0;
    QList<Expansion> m_expansions;
    QStringList m_recursiveNames;
    bool m_isCutOff = false;
};

} // namespace Vidlets

#endif
