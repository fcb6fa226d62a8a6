// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLCONTENTROOTS_H
#define VLCONTENTROOTS_H

#include <QString>
#include <QStringList>

namespace Vidlets {

class VLIndex;

/**
 * The directories that content may read from: the roots of the packages that @c VLIndex knows, the
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

    /// Returns the directories that count now, as they were recorded. @p index may be null.
    static QStringList pathsOf(const VLIndex* index);

    /// Returns whether each of the directories was there, so that none can join later.
    bool isComplete() const;

    /// Returns whether @p path lies in a root or is one. A path that does not exist is judged by
    /// the deepest directory above it that does. All resources of the process count as inside: no
    /// package can add one.
    bool contains(const QString& path) const;

    /// Returns whether @p path lies where Qt keeps its modules.
    bool isOfQt(const QString& path) const;

    /// Returns @p path relative to where Qt keeps its modules; null where it does not lie there.
    QString relativeToQt(const QString& path) const;

private:
    static QString resolved(const QString& path);
    static bool isBelow(const QString& root, const QString& path);

    /// Canonical.
    QStringList m_roots;
    QString m_qtModules;
    bool m_isComplete = true;
};

} // namespace Vidlets

#endif
