// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORWATCHER_H
#define AUTHORWATCHER_H

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace Vidlets {

/**
 * Tells of each file that changes, comes or goes below some directories, however an editor saves
 * it.
 *
 * On the user-interface thread. Links are not followed.
 */
class AuthorWatcher : public QObject
{
    Q_OBJECT

public:
    explicit AuthorWatcher(QObject* parent = nullptr);
    ~AuthorWatcher() override;

    /// Watches all below @p directories from now on, and nothing else.
    void watch(const QStringList& directories);

Q_SIGNALS:
    /// The files @p paths are not what they were.
    void changed(const QStringList& paths);

private:
    Q_DISABLE_COPY_MOVE(AuthorWatcher)

    /// What a file is known by.
    struct Stamp
    {
        qint64 size = 0;
        qint64 modifiedMs = 0;
        quint64 number = 0;

        friend bool operator==(const Stamp& left, const Stamp& right)
        {
            return left.size == right.size && left.modifiedMs == right.modifiedMs
                && left.number == right.number;
        }
    };

    void compare();
    QHash<QString, Stamp> look();
    void lookInto(const QString& directory, int depth, QHash<QString, Stamp>& stamps,
                  QStringList& paths) const;

    QStringList m_directories;
    QFileSystemWatcher m_watcher;
    /// Several events come of one save.
    QTimer m_pause;
    QHash<QString, Stamp> m_stamps;
};

} // namespace Vidlets

#endif
