// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEINDEXPRIVATE_H
#define VLKEYTABLEINDEXPRIVATE_H

#include "VLKeyTable.h"
#include "VLKeyTableBuilder.h"
#include "VLKeyTableCache.h"
#include "VLKeyTableFile.h"
#include "VLKeyTableKeyData.h"
#include "VLKeyTableLive.h"
#include "VLKeyTableRange.h"
#include "VLKeyTableSearch.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QLocale>
#include <QMap>
#include <QPair>
#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace Vidlets {

class VLKeyTableIndex;
class VLXmlElement;

/**
 * The files that VLKeyTableIndex knows, and what becomes of them.
 *
 * A file that is recorded waits, then is in the table. It waits again when it is found to have
 * changed. Who waits is read by the builder, or by the first lookup that comes to it. Internal to
 * the host kit.
 */
class VLKeyTableIndexPrivate final
{
public:
    explicit VLKeyTableIndexPrivate(VLKeyTableIndex* owner);

    bool isGuarded() const;
    bool isBuilt() const
    {
        return m_waiting.isEmpty();
    }
    /// Whether a walk of the base class from @p file up to @p root comes to an end.
    static bool leadsUpTo(const QString& file, const QString& root);

    /// Returns what the table on disk says of the file @p path as it is now, or null.
    const VLKeyTableFile* knownFile(const QString& path);
    /// Takes over what the base class has recorded at one end if that was the file after @p count
    /// others; @p known may be null.
    void recordNew(qsizetype count, bool isFirst, const VLKeyTableFile* known);
    void dropTable();

    /// Keeps the files in step with the disk.
    VLKeyTableLive& live()
    {
        return m_live;
    }

    const QString& cacheFile() const
    {
        return m_cache.path();
    }
    void setCacheFile(const QString& path);

    /// Hands what waits to the builder.
    void startBuilding();
    /// Takes over what the builder has read, as much as a turn of the event loop may take. Returns
    /// whether there was anything.
    bool takeResults();
    bool waitUntilBuilt(const QDeadlineTimer& deadline);
    /// Ends the thread.
    void stop();
    /// Ends the thread and does without the table on disk, for lookups after the application's end.
    void goOnAlone();

    /// Finds the tip, and the file that it is in.
    std::unique_ptr<VLXmlElement> lookUp(const QString& key, const QLocale& locale, int& file);
    /// Whether lookups go on to other locales of the language.
    bool hasLocaleChain = false;
    void addKeyData(const QString& key, VLXmlElement* element);
    QStringList keys();

    /// Finds tips by their words.
    VLKeyTableSearch& words()
    {
        return m_search;
    }
    bool isSearchBuilt() const
    {
        return isBuilt() && m_search.isBuilt();
    }

    /// The tip of @p key in @p file goes to somebody, who may want to know when it changes.
    void noteGiven(int file, const QString& key)
    {
        // What is in memory is compared with what was there.
        if (!m_files[file].isStored || m_given.contains({file, key}))
            return;
        if (m_given.size() >= kMaxGiven)
            m_given.removeFirst();
        m_given.append({file, key});
    }

    const IndexedLocation& locationOf(int file) const
    {
        return m_files[file].location;
    }

    /// Has a problem told of, of the file @p path that is not in the table.
    void noteProblem(const QString& path, const VLKeyTableProblem& problem, bool isForGuard);
    /// Emits what there is to tell. The owner may be gone afterwards.
    void tell();

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableIndexPrivate)

    friend class VLKeyTableLive;
    friend class VLKeyTableSearch;

    // More tips than are up or pinned at a time.
    static constexpr int kMaxGiven = 100;

    /// What the table says of a file besides its rows: there may be many, so it stays small.
    struct File
    {
        IndexedLocation location;
        VLFileStamp stamp;
        qint64 headLength = 0;
        /// The smaller one is searched first.
        int order = 0;
        quint32 generation = 0;
        /// Into m_locales.
        int locale = 0;
        VLKeyTableState state = VLKeyTableState::Absent;
        VLKeyTableUnit unit = VLKeyTableUnit::None;
        /// Whether the root is a tip.
        bool isForeign = false;
        bool isSettled = false;
        bool isWaiting = false;
        /// Whether it is to be read again without being out of the table until then.
        bool isDoubted = false;
        /// Whether it has been read since the table was dropped last.
        bool isKnown = false;
        /// Whether its rows are in the table on disk, and not in memory.
        bool isStored = false;
        /// Whether its head marks it as a control file.
        bool isIndexed = false;
        /// Whether nothing on disk stands for reading it.
        bool mustRead = false;
        /// Whether no host has recorded it.
        bool isFound = false;
        /// Whether it is forgotten, and the number free for another.
        bool isFree = false;
    };

    /// Which files a lookup asks.
    enum class Pass : quint8 {
        Exact,    ///< Those of the locale and those without one.
        Language, ///< Those of the language in the script, wherever it is spoken most.
        Territory ///< Those of the language in the script, wherever it is spoken.
    };

    struct Problem
    {
        QString path;
        VLKeyTableProblem problem;
        /// Whether the guard does not come across it by itself.
        bool isForGuard = true;
    };

    /// A fault that was told of.
    struct Fault
    {
        VLFileStamp stamp;
        QString text;
    };

    int addFile(const File& file);
    void forget(int file);
    void await(int file);
    void doubt(int file);
    void readNow(int file);
    void apply(int file, const VLKeyTableFile& content,
               const std::optional<VLKeyTableFile>& before = std::nullopt);
    void applyNow(int file, const VLKeyTableFile& content);
    void applyKnown(int file, const VLKeyTableFile& content);
    void takeOver(int file, const VLKeyTableFile& content, bool areTipsSame);
    void takeResult(const VLKeyTableBuilder::Result& result);
    void keepBefore(const VLKeyTableBuilder::Result& result);
    void takeStored(const VLKeyTableBuilder::Result& result);
    void takeIncident(const VLKeyTableWriter::Incident& incident);
    bool isCacheOf(const QByteArray& token);
    void noteCacheProblem(const QString& reason);
    void dropStored();
    void abandonCache();
    void addStored(const QString& key, QList<VLKeyTable::Hit>& hits);
    const QList<QPair<quint64, int>>& filesByNumber();
    void noteFault(int file, const VLKeyTableFile& content);
    VLKeyTableFile contentBefore(int file);
    bool noteChanges(int file, const VLKeyTableFile& content, const VLKeyTableFile& before);
    void noteChangedKeys(const QSet<QString>& keys);
    void emitChanges();
    bool tellOne();
    int localeNumber(const QString& name);
    std::unique_ptr<VLXmlElement> lookUpOnce(const QString& key, const QLocale& locale, Pass pass,
                                             int& file);
    bool serves(const File& file, const QLocale& locale, Pass pass) const;
    KeyTableRange::Source sourceOf(const File& file) const;
    QList<VLKeyTable::Hit> candidates(const QString& key);
    std::unique_ptr<VLXmlElement> readHit(const VLKeyTable::Hit& hit, const QString& key,
                                          bool& mustLookAgain);
    void letBaseWarn(int file, const QString& key, QChar reason);
    void scheduleBuilding();
    void tellOfChanges();
    void announceCache();

    VLKeyTableIndex* const m_owner;
    std::vector<File> m_files;
    /// The numbers of those that are forgotten.
    QList<int> m_free;
    /// The rows that are not on disk, and those of nested roots.
    VLKeyTable m_table;
    VLKeyTableCache m_cache;
    /// Whether m_builder was told of the path of m_cache.
    bool m_isCacheAnnounced = false;
    bool m_isCacheProblemNoted = false;
    /// The files by the number of their path; made anew where files have come.
    QList<QPair<quint64, int>> m_filesByNumber;
    /// The files that wait, by their order.
    QMap<int, int> m_waiting;
    /// Those among them that the builder has not been given.
    QList<int> m_unsubmitted;
    int m_firstOrder = 0;
    int m_lastOrder = -1;
    /// The locales that files name; the first stands for none.
    QList<QLocale> m_locales{QLocale::c()};
    QHash<QString, int> m_localeNumbers{{QString(), 0}};
    QHash<int, Fault> m_faults;
    /// The last keys that were looked up with success, and where.
    QList<QPair<int, QString>> m_given;
    VLKeyTableKeyData m_keyData;
    /// Files and keys of which the base class has said what it had to, in the state of the file.
    QHash<int, QSet<QString>> m_warned;
    /// How often each file was read anew in the lookup that is going on.
    QHash<int, int> m_readInLookup;

    QList<Problem> m_problems;
    QSet<QString> m_changedKeys;
    bool m_isBuildingScheduled = false;
    bool m_isTakingScheduled = false;
    bool m_areNewOnesKnown = false;
    bool m_areChangesScheduled = false;
    bool m_mustTellProgress = false;
    bool m_mustTellBuilt = false;
    bool m_isTelling = false;

    VLKeyTableSearch m_search;
    VLKeyTableLive m_live;
    /// Last, so that its thread ends first.
    VLKeyTableBuilder m_builder;
};

} // namespace Vidlets

#endif
