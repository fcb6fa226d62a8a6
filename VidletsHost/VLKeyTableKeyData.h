// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEKEYDATA_H
#define VLKEYTABLEKEYDATA_H

#include "VLKeyTableFile.h"

#include <QList>
#include <QPair>
#include <QString>

namespace Vidlets {

/**
 * The key data file, read so that nothing in it can end the process.
 *
 * It gives what VLIndex::loadKeyData() copies where that is survived, and nothing else. The file is
 * read at each lookup up to the record; once in each of its states it is read to its end.
 *
 * Internal to the host kit; used on the user-interface thread.
 */
class VLKeyTableKeyData
{
public:
    using Attributes = QList<QPair<QString, QString>>;

    /// Looks at the file @p path, and gives what is wrong with it if that is news, or nothing.
    VLKeyTableProblem check(const QString& path);

    /// Returns what the file that was checked last adds to the tip of @p key in a host without
    /// ckGuardContent.
    Attributes attributesFor(const QString& key) const;

private:
    VLKeyTableProblem readWhole();

    QString m_path;
    VLFileStamp m_stamp;
    /// Whether a lookup may read the file.
    bool m_isSurvived = false;
};

} // namespace Vidlets

#endif
