// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORWATCHER_H
#define AUTHORWATCHER_H

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace Vidlets {

/**
 * Tells of each file that changes, comes or goes in packages, however an editor saves it.
 *
 * On the user-interface thread. Links are not followed, and directories that are hidden are left
 * alone, as what version control keeps there is no content.
 */
class AuthorWatcher : public QObject
{
    Q_OBJECT

public:
    explicit AuthorWatcher(QObject* parent = nullptr);
    ~AuthorWatcher() override;

    /**
     * Watches @p packages from now on, then the packages that lie in @p dataPaths or come there,
     * and nothing else: a data path may be the home of its author.
     */
    void watch(const QStringList& packages, const QStringList& dataPaths);

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
    void watchSeen();
    void lookIntoDataPath(const QString& dataPath);
    void lookInto(const QString& directory, int depth);

    QStringList m_packages;
    QStringList m_dataPaths;
    QFileSystemWatcher m_watcher;
    /// Several events come of one save.
    QTimer m_pause;
    QHash<QString, Stamp> m_stamps;
    /// What the look that is being taken has come across.
    QHash<QString, Stamp> m_seen;
    QSet<QString> m_seenPaths;
};

} // namespace Vidlets

#endif
