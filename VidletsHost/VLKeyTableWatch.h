// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEWATCH_H
#define VLKEYTABLEWATCH_H

#include "VLKeyTableKeyRecords.h"
#include "VLKeyTableWalk.h"
#include <Vidlets/VLIndexHooks.h>

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPair>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>

class QFileSystemWatcher;

namespace Vidlets {

/// What an index is told of the disk. Internal to the host kit; a value.
struct VLKeyTableNews
{
    /// How a file was met.
    enum class Reason : quint8 {
        Listed, ///< In its directory.
        Placed, ///< It is being watched from now on.
        Changed ///< The watch has told of it.
    };

    struct File
    {
        KeyTableWalk::File found;
        Reason reason = Reason::Listed;
    };

    /// Those in data paths come in the order of the walk.
    QList<File> files;
    /// Directories that have gone or are others now.
    QStringList directories;
    /// The numbers of files that have another stamp than the one that was asked for.
    QList<int> changed;
    /// The keys of which the key data file says something else.
    QSet<QString> keys;
    /// A path that cannot be watched; null where there is none.
    QString refusedPath;
    /// What went by may not have been seen in full, so that a sweep is due.
    bool mustSweep = false;
    /// The sweep that this is the result of, or 0.
    quint64 sweep = 0;
};

/**
 * Watches data paths, the directories of control files in them, single files and the key data file.
 *
 * It lives on a thread of its own, with an event loop. All members belong to that thread, but for
 * those that say otherwise.
 *
 * Internal to the host kit.
 */
class VLKeyTableWatch final : public QObject
{
    Q_OBJECT

public:
    using Deliver = std::function<void(VLKeyTableNews&&)>;

    struct Question
    {
        int file = 0;
        QString path;
        VLFileStamp stamp;
    };

    /// @p deliver is called on the thread of the object. Once @p isStopped is true it may not be,
    /// and all ends soon. On any thread.
    VLKeyTableWatch(Deliver deliver, const std::atomic<bool>& isStopped);
    ~VLKeyTableWatch() override;

    void setPlaces(const QList<VLDataPath>& dataPaths, const QString& keyData);
    void setWatching(bool on);

    /// Watches @p files anew, and tells how they are then.
    void watch(const QStringList& files);

    /// Lets go of @p files, which have gone. One that is there again is told of.
    void forget(const QStringList& files);

    /// Looks for control files in all places, and asks @p questions.
    void sweep(quint64 number, const QList<Question>& questions);

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableWatch)

    /// What an event in a directory may mean.
    enum Role : quint8 {
        Above = 1,     ///< One of the places below it has come or gone.
        Structure = 2, ///< A package or a control directory has.
        Control = 4,   ///< A control file has.
        Around = 8     ///< A single file has.
    };

    struct Directory
    {
        int roles = 0;
        /// Of the package; only for control directories.
        QString root;
        /// What tells it from another of the same path.
        QPair<quint64, quint64> identity;
    };
    using Directories = QHash<QString, Directory>;

    void noteDirectory(const QString& path);
    void noteFile(const QString& path);
    void gather();
    void process();
    QSet<QString> withTwins(const QSet<QString>& paths) const;
    bool forgetLost(VLKeyTableNews& news);
    void heal();

    QSet<QString> survey(VLKeyTableNews& news);
    bool surveyOnce(QSet<QString>& fresh, VLKeyTableNews& news);
    void noteTwin(QString& first, const QString& path);
    void addPackages(const VLDataPath& dataPath, Directories& wanted);
    void addControl(const KeyTableWalk::Package& package, Directories& wanted);
    void addPlace(const QString& path, int roles, Directories& wanted);
    static void addAbove(const QString& path, Directories& wanted);
    bool havePlacesMoved() const;
    void dropOthers(const Directories& wanted, VLKeyTableNews& news);

    void listFiles(const QSet<QString>& directories, VLKeyTableNews& news) const;
    void place(const QString& path, VLKeyTableNews::Reason reason, VLKeyTableNews& news);
    void placeReturned(const QSet<QString>& directories, VLKeyTableNews& news);
    bool add(const QString& path, VLKeyTableNews& news);
    void checkKeyData(VLKeyTableNews& news);
    void deliver(VLKeyTableNews& news);

    const Deliver m_deliver;
    const std::atomic<bool>& m_isStopped;
    std::unique_ptr<QFileSystemWatcher> m_watcher;

    QList<VLDataPath> m_dataPaths;
    /// What need not be there, and where it leads to.
    QHash<QString, QString> m_places;
    /// Those that are watched.
    Directories m_directories;
    /// The other paths of those that are watched by several.
    QHash<QString, QSet<QString>> m_twins;
    /// The control directories in the order of the walk.
    QStringList m_controls;
    /// Single files outside of control directories, by their directory.
    QHash<QString, QSet<QString>> m_others;

    /// Files to be watched that were not there.
    QSet<QString> m_absent;

    QString m_keyData;
    VLFileStamp m_keyDataStamp;
    VLKeyTableKeyRecords m_keyRecords;
    bool m_isKeyDataKnown = false;

    QSet<QString> m_dirtyDirectories;
    QSet<QString> m_dirtyFiles;
    QTimer m_gatherTimer;
    QElapsedTimer m_sinceFirst;
    QTimer m_healTimer;
    /// Whether so much has happened at once that something may have been missed.
    bool m_isStorm = false;
    bool m_isRefused = false;
    bool m_isRefusalTold = false;
};

} // namespace Vidlets

#endif
