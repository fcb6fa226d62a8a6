// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEINDEX_H
#define VLKEYTABLEINDEX_H

#include <Vidlets/VLIndex.h>

#include <QList>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <memory>

#include <VidletsHost/VLSearchHit.h>
#include <VidletsHost/VidletsHostExport.h>

namespace Vidlets {

class VLKeyTableIndexPrivate;

/**
 * A VLIndex whose lookups take the same time however many control files there are.
 *
 * It keeps a table of which key stands where in which control file, and reads nothing but the bytes
 * of the one tip that is asked for. It answers as VLIndex does:
 *
 * 1. The control file that was indexed last comes first, those added by store() come last.
 * 2. A file counts as having a key only if exactly one of its tips has it, and only if the file has
 *    no locale or the requested one; see setLocaleChain() for others.
 * 3. The first file that counts serves the key.
 *
 * The root that comes with a tip has its tag, its namespace and its attributes, but no text.
 *
 * The table is built on a thread of its own, from the next turn of the event loop on. Until a file
 * is in the table, a lookup that comes to it reads it at once, so that each answer is right from
 * the first moment on.
 *
 * The file that answers is looked at in each lookup: where it has gone, or has another size or
 * time, it is read anew before the answer is given. A change in any other file, which could answer
 * in its place, counts when the watch has told of it, see setWatching(), or after refresh().
 *
 * No file ends the process. One that VLIndex does not survive, or that is no regular file, counts
 * as having no keys until it changes, and so does any file with a fault where ckGuardContent is
 * set; problemFound() tells of it. Without ckGuardContent a file that breaks between two tips keeps
 * those before the fault. Nothing is written to standard output.
 *
 * All on the user-interface thread. Unlike a VLIndex, it may be deleted, which ends its thread; a
 * host that deletes it does so after its VLInterface.
 */
class VIDLETSHOST_EXPORT VLKeyTableIndex : public VLIndex
{
    Q_OBJECT

public:
    /**
     * Makes an empty index without a parent.
     *
     * @param context The settings to read; stays the caller's and may be null or die before the
     *                index, which then goes on with defaults.
     * @param paths The data paths, as for VLIndex.
     */
    VLKeyTableIndex(VLContext* context, const QList<QString>& paths);
    /// Ends the thread; at most the file that it reads is in the way of that, up to its next part.
    ~VLKeyTableIndex() override;

    /// Returns whether each control file that is recorded has been read; true where there are none.
    bool isBuilt() const;

    /**
     * Waits until each control file has been read and the table is on disk, without an event loop.
     * built() and progressChanged() are emitted meanwhile.
     *
     * @param ms How long to wait at most, in milliseconds; below 0 there is no limit.
     * @return isBuilt().
     */
    bool waitUntilBuilt(int ms = -1);

    /**
     * Sets whether the index sees by itself what happens to control files, packages, data paths and
     * the key data file; it does by default, from the next turn of the event loop on. Data paths
     * are those of the constructor and those that the manager has looked for packages in, whether
     * or not they are there.
     *
     * All control files in data paths are recorded, those that nobody has indexed before, too. A
     * new control file counts as if it were indexed then, and so comes first in the search order;
     * one that has gone and comes again keeps its place. A change counts within a third of a
     * second, when changed() is emitted. Where the system refuses to watch more files,
     * problemFound() says so once, and what is not watched counts after refresh().
     */
    void setWatching(bool on);
    /// Returns what was set by setWatching().
    bool isWatching() const;

    /**
     * Asks each recorded control file and the key data file for its size and time, and looks for
     * control files that have come into data paths, as by a new scan. It returns at once; lookups
     * after it are right, and the first may have to wait until all have been asked.
     */
    void refresh();

    /**
     * Sets the file that the table is kept in, so that the next start of the host reads no control
     * file that has not changed. By default that is "vidlets-keys.sqlite" in the host's
     * QStandardPaths::CacheLocation. To be called before anything is indexed; later, all is read
     * anew.
     *
     * Several processes may share the file. One that is damaged, of another version or no table at
     * all is renamed to end in ".damaged", and made anew; one that cannot be opened or written,
     * also later on, is done without. Either way problemFound() tells of @p path once, with a line
     * of 0, and lookups give what they would have given.
     *
     * @param path The file, which is made if need be; where it is empty, the table is in memory
     *             alone.
     */
    void setCacheFile(const QString& path);
    /// Returns the file that the table is kept in; empty where it is in memory alone.
    QString cacheFile() const;

    /**
     * Sets whether a lookup that finds nothing goes on to other locales of the same language; it
     * does not by default. What was asked for as de_AT is then looked for in files of de, and at
     * last in those of any other de_*, each time in search order. The script stays the same. Files
     * without a locale are asked with the first locale only.
     *
     * The manager asks for its fallback locale after all that.
     */
    void setLocaleChain(bool on);
    /// Returns what was set by setLocaleChain().
    bool localeChain() const;

    /// Drops what was read of the control files. They stay recorded, and are read anew. Always
    /// returns true.
    bool clear() override;
    /// As clear().
    bool remove() override;

    /**
     * Finds the content for @p key in @p locale. Both are matched exactly, unless setLocaleChain()
     * is on.
     *
     * @param[out] path The absolute path of the control file's directory. It is left untouched on
     *             failure.
     * @param[out] depth How many steps lead from the control file up to the package root. It is
     *             left untouched on failure.
     * @param[out] root The top of the tree that the result is part of. The caller owns it, and with
     *             it the result. Null without a result; left untouched where no file is recorded.
     * @return The content, or null where no control file has it.
     */
    VLXmlElement* retrieve(const QString& key, const QLocale& locale, QString& path, int& depth,
                           VLXmlElement*& root) override;

    /// Records the control file @p location at the end of the search order, unless it is recorded
    /// with the same @p depth already. @p element and @p locale are ignored. Always returns true.
    bool store(VLXmlElement* element, const QLocale& locale, const QString& location,
               int depth) override;

    /**
     * Reads every control file and lists the keys in it.
     *
     * @return The keys in search order, then document order. They are neither sorted nor freed of
     *         duplicates.
     */
    QList<QString> keys() override;

    /**
     * Finds tips by their words.
     *
     * The words are looked for in the title, the shortcut, the key and the text of each tip that
     * retrieve() gives for @p locale. All of them must be in the tip, the last may be the beginning
     * of a word. Of @p words the first 256 characters count, and letters and digits alone: nothing
     * in it is syntax. Case, accents, the dots of umlauts, vowel signs, tatweel and hamza make no
     * difference, "ß" is "ss", and a ligature is its letters. In scripts without blanks two
     * neighbours are a word. The texts are those of the control file, in which references to
     * variables count for nothing; attributes of the key data file are not searched, but a hit has
     * the title that they give.
     *
     * Tips with all words in the title come first, then those with one of them there, those with
     * one of them in the shortcut or the key, and those with all of them in the text.
     *
     * The words are read after the table is built, on a thread of their own, and kept in a file
     * beside cacheFile(), with "-search" at its end. Until isSearchBuilt(), hits are those of what
     * has been read so far; a few files of which the words are not known, half a megabyte of them,
     * are read at once, so that a change counts when it does for lookups.
     *
     * @param limit How many hits to give at most.
     * @return The hits, each with a key of its own; none where @p words has no letter and no digit.
     */
    QList<VLSearchHit> search(const QString& words, const QLocale& locale, int limit = 20);

    /// Returns whether isBuilt(), and search() knows the words of all tips.
    bool isSearchBuilt() const;
    /// Waits for @p ms milliseconds at most, or without a limit below 0, until isSearchBuilt(), as
    /// waitUntilBuilt() does. Returns that.
    bool waitUntilSearchBuilt(int ms = -1);

    /// Records @p file at the front of the search order if its first tag marks it as a control
    /// file. What is no regular file, or does not lie below @p root, is not recorded.
    void indexControlFile(const QString& file, const QString& root) override;

Q_SIGNALS:
    /// Each control file that is recorded has been read. It comes again after files were added,
    /// changed or dropped.
    void built();

    /// search() knows the words of all tips. It comes again after files were added, changed or
    /// dropped.
    void searchBuilt();

    /// @p done of the @p total control files that are recorded have been read.
    void progressChanged(int done, int total);

    /// Lookups of @p keys, each named once, may give something else than before, in some locale: a
    /// file that was read before has been read anew. By then they do. Where another process was
    /// first to put the new state of a file into cacheFile(), all keys that are there are named,
    /// and of those that went the ones among the last hundred that retrieve() has given.
    void changed(const QStringList& keys);

    /// The file @p file has a fault at @p line and @p column, both counted from 1; a line of 0
    /// stands for the file as a whole. It comes once for each state of a file. @p file may be
    /// that of setCacheFile(), too, or that of search() beside it.
    void problemFound(const QString& file, int line, int column, const QString& text);

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableIndex)

    friend class VLKeyTableIndexPrivate;

    const std::unique_ptr<VLKeyTableIndexPrivate> d;
};

} // namespace Vidlets

#endif
