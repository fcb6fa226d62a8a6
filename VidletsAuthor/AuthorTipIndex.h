// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORTIPINDEX_H
#define AUTHORTIPINDEX_H

#include <Vidlets/VLIndex.h>

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

namespace Vidlets {

/**
 * An index that always answers with the one tip that the author looks at, whatever key it is asked
 * for, and takes it from one package alone.
 *
 * Packages that are not among those looked at are known by their names, for "search", but their
 * tips are not. So a tip can be seen that another package shadows.
 */
class AuthorTipIndex : public VLIndex
{
    Q_OBJECT

public:
    /// @p roots are the canonical paths of the packages that are looked at.
    AuthorTipIndex(VLContext* context, const QStringList& roots);

    /// Chooses the tip @p key of the package at the canonical path @p root.
    void setTip(const QString& root, const QString& key);

    /// Begins to count anew what the two operations below tell of.
    void startLookup();
    /// Returns how long lookups took, in milliseconds, the passes for both locales together.
    double lookupMs() const;
    /// Returns whether there was a tip.
    bool wasFound() const;

    VLXmlElement* retrieve(const QString& key, const QLocale& locale, QString& path, int& depth,
                           VLXmlElement*& root) override;
    void indexControlFile(const QString& file, const QString& root) override;

private:
    Q_DISABLE_COPY_MOVE(AuthorTipIndex)

    QSet<QString> m_roots;
    /// The control files of each package, in the order of being found.
    QHash<QString, QStringList> m_files;
    QString m_root;
    QString m_key;
    qint64 m_lookupNs = 0;
    bool m_wasFound = false;
};

} // namespace Vidlets

#endif
