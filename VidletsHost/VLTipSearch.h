// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLTIPSEARCH_H
#define VLTIPSEARCH_H

#include "VLSearchBuilder.h"
#include "VLSearchHit.h"
#include "VLSearchQuery.h"
#include "VLSearchStore.h"

#include <QDeadlineTimer>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <array>
#include <functional>
#include <memory>
#include <utility>

namespace Vidlets {

class VLXmlElement;

/**
 * Finds tips by their words, for an index that gives tips by their key.
 *
 * Files are known by the index's numbers. Their words come into a store on disk or in memory, which
 * a builder fills; a few files that are not in it yet are read by the search itself. What is found
 * there counts only if the index gives that tip for its key, with these words. A store that fails
 * is done without: nothing is lost with it but time.
 *
 * Internal to the host kit; used on the user-interface thread.
 */
class VLTipSearch
{
public:
    /// What a search needs of the index.
    struct Request
    {
        QString words;
        int limit = 0;
        /// The files that are to be read, in search order: they are not in the store.
        QStringList unread;
        /// Whether the store is to be asked.
        bool isStoreUsed = false;
        /// In which turn lookups ask files that name this locale, from 0 on; -1 for never.
        std::function<int(const QString& locale)> turnOf;
        /// Whether the tip for that key may be the one in this file, as far as that can be said
        /// without reading one.
        std::function<bool(const QString& key, const QString& path)> mayServe;
        /// Gives the root of the tip that a lookup gives, which is its one child, and its file.
        std::function<std::unique_ptr<VLXmlElement>(const QString& key, QString& path)> lookUp;
        std::function<QString(const QString& path)> packageOf;
        /// Gives the tip what is not from its file, if anything is.
        std::function<void(const QString& key, VLXmlElement* tip)> complete;
    };

    /// Makes a search that calls @p announce, on the thread of the builder, when there are results
    /// to be taken.
    explicit VLTipSearch(std::function<void()> announce);
    ~VLTipSearch();

    /// Sets the file of the store; an empty path stands for memory.
    void setFile(const QString& path);
    /// Returns whether the words of each file are in the store.
    bool isBuilt() const
    {
        return m_pending.isEmpty();
    }
    /// Returns the files whose words are not in the store, or not those that they have now.
    const QSet<int>& pending() const
    {
        return m_pending;
    }
    /// Returns whether there is no store, and never will be.
    bool isWithoutStore() const
    {
        return m_hasFailed;
    }

    /// @p file is another than it was.
    void await(int file);
    /// Has the files that wait put into the store; @p pathOf gives their paths, null
    /// for one that is forgotten.
    void build(const std::function<QString(int file)>& pathOf);
    /// Takes over what the builder has done; @p stampOf gives the state that the index knows.
    /// Returns the files that the builder has come across in another one.
    QList<int> takeResults(const std::function<VLFileStamp(int file)>& stampOf);
    /// Gives what was wrong with a store since the last call; null where nothing was.
    QString takeProblem()
    {
        return std::exchange(m_problem, {});
    }
    /// Waits until there are results. Returns false where @p deadline has passed or none can come.
    bool waitForResults(const QDeadlineTimer& deadline);
    /// Ends the thread.
    void stop();

    QList<VLSearchHit> search(const Request& request);

    /// What is searched of a tip that a lookup gives.
    static VLSearchText textOf(const QString& key, const VLXmlElement& tip);

private:
    Q_DISABLE_COPY_MOVE(VLTipSearch)

    /// A tip that may have the words.
    struct Candidate
    {
        QString path;
        QString key;
    };

    /// A search that is going on.
    struct Run
    {
        const Request& request;
        VLSearchQuery query;
        VLSearchStore::Question question;
        /// Those of the files that the search has read by itself.
        std::array<QList<Candidate>, VLSearchQuery::Nowhere> read;
        QStringList locales;
        /// Those that were looked at.
        QSet<QString> seen;
        /// How many of them are not the tip of their key.
        int shadowed = 0;
        QList<VLSearchHit> hits;
    };

    void openStore();
    bool prepareStore(Run& run);
    void readFiles(Run& run) const;
    void look(Run& run, VLSearchQuery::Place place);
    void lookInStore(Run& run, VLSearchQuery::Place place, const QString& locale);
    static bool isWanting(const Run& run);
    static void tryOne(Run& run, VLSearchQuery::Place place, const Candidate& candidate);
    void storeFailed();
    void dropStore();
    void awaitAll();

    QString m_path;
    bool m_isStoreSet = false;
    bool m_hasFailed = false;
    QString m_problem;
    QSet<int> m_pending;
    /// Those of them that the builder has not been given.
    QSet<int> m_unsubmitted;
    /// All that were ever awaited; a store that is made anew begins with them.
    int m_fileCount = 0;
    /// Of the store that the builder writes.
    qint64 m_epoch = 0;
    std::unique_ptr<VLSearchStore> m_store;

    /// Last, so that its thread ends first.
    VLSearchBuilder m_builder;
};

} // namespace Vidlets

#endif
