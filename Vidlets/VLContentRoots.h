// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLCONTENTROOTS_H
#define VLCONTENTROOTS_H

#include <QSet>
#include <QString>
#include <QStringList>

namespace Vidlets {

/**
 * The directories that content may read from: the roots of the packages that VLIndex knows, the
 * directory of ckExtraComponentPath, and where Qt keeps its modules.
 *
 * Internal to the library. A value: it tells how things stood when it was made, and may be handed
 * to other threads. A data path is no root, and neither is a package without control files. All
 * paths are compared in their canonical form, so that no link leads out.
 */
class VLContentRoots
{
public:
    VLContentRoots() = default;
    /// Of the directories @p paths, which need not exist, beside Qt's own.
    explicit VLContentRoots(const QStringList& paths);

    /// Returns whether each of the directories was there, so that none can join later.
    bool isComplete() const;

    /// Takes in those directories that were not there before and are now.
    void lookAgain();

    /// Returns a number that two of them share only if one is a copy of the other.
    quint64 revision() const;

    /// Returns whether @p path lies in a root or is one. A path that does not exist is judged by
    /// the deepest directory above it that does. All resources of the process count as inside: no
    /// package can add one.
    bool contains(const QString& path) const;

    /// Returns whether @p path lies where Qt keeps its modules.
    bool isOfQt(const QString& path) const;

    /// Returns @p path relative to where Qt keeps its modules; null where it does not lie there.
    QString relativeToQt(const QString& path) const;

private:
    void add(const QStringList& paths);
    static QString resolved(const QString& path);
    static bool isBelow(const QString& root, const QString& path);

    /// Canonical.
    QSet<QString> m_roots;
    QString m_qtModules;
    /// Those that were not there.
    QStringList m_absent;
    quint64 m_revision = 0;
};

} // namespace Vidlets

#endif
