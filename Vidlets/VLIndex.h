// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLINDEX_H
#define VLINDEX_H

#include <Vidlets/VidletsExport.h>

#include <QList>
#include <QLocale>
#include <QObject>
#include <QString>
#include <QXmlStreamAttributes>

#include <memory>

class VLContext;

namespace Vidlets {

class VLContentGuard;
class VLContentRoots;
class VLIndexHooks;
class VLIndexPrivate;
class VLManagerPrivate;
class VLXmlElement;

/// Where a control file lies; equal when both fields are.
struct IndexedLocation
{
    /// Path of the control file, as it was handed in.
    QString location;
    /// How many steps up from the file's path lead to the package root; 2 for a file in the control
    /// directory directly under the root.
    int depth = 0;

    friend bool operator==(const IndexedLocation& left, const IndexedLocation& right)
    {
        return left.depth == right.depth && left.location == right.location;
    }
    friend bool operator!=(const IndexedLocation& left, const IndexedLocation& right)
    {
        return !(left == right);
    }
};

/**
 * Finds the content for a key and a locale in the control files of the packages.
 *
 * Only paths are kept: a path and a number per control file, a few paths per package. Every lookup
 * parses control files one after the other until one has the key, so an edited file takes effect at
 * the next lookup, and a key that does not exist costs a pass over all of them. Search order:
 *
 * 1. The control file that was indexed last comes first, so a later data path shadows an earlier
 *    one. Files added by store() come last.
 * 2. A file counts as having a key only if exactly one of its tips has it, and only if the file has
 *    no locale or the requested one.
 * 3. The first file that counts serves the key.
 *
 * A host may derive an index of its own: all operations of a storage back end are virtual, and most
 * do nothing here. The library deletes no index, neither the host's nor, unless ckReleaseClips is
 * set, one of its own. Failures show as null or as a shorter list, and the parser reports invalid
 * XML on standard output. The faults that end the process are described at VLXmlParser. With
 * ckGuardContent set none does: a broken file counts as having no keys, and the manager is warned.
 * An index belongs to the user-interface thread.
 */
class VIDLETS_EXPORT VLIndex : public QObject
{
    Q_OBJECT

public:
    /**
     * Makes an empty index without a parent.
     *
     * @param context The settings to read; stays the caller's and may be null or die before the
     *                index, which then goes on with defaults.
     * @param paths The data paths; kept, and read by nothing in this class.
     */
    VLIndex(VLContext* context, const QList<QString>& paths);
    /// Leaves the record of the index allocated.
    ~VLIndex() override;

    /// Hook for a back end: the manager calls it before it scans. Always returns true.
    virtual bool open();
    /// Hook for a back end: calls clear() if ckClearIndexOnSetup is set. The library does not call
    /// it. Always returns true.
    virtual bool setup();
    /// Hook for a back end: does nothing here, so that control files stay recorded. Always returns
    /// true.
    virtual bool clear();
    /// Hook for a back end: does nothing here. Always returns true.
    virtual bool close();
    /// Hook for a back end: does nothing here. Always returns true.
    virtual bool remove();

    /**
     * Finds the content for @p key in @p locale. Both are matched exactly.
     *
     * A file that breaks while a tag below its root is open, once the wanted one was begun, gives
     * addresses of objects that have been deleted.
     *
     * @param[out] path The absolute path of the control file's directory. It is left untouched on
     *             failure.
     * @param[out] depth How many steps lead from the control file up to the package root. It is
     *             left untouched on failure.
     * @param[out] root The top of the tree that the result is part of. The caller owns it, and with
     *             it the result. It means something only when the result is not null.
     * @return The content, or null where no control file has it.
     */
    virtual VLXmlElement* retrieve(const QString& key, const QLocale& locale, QString& path,
                                   int& depth, VLXmlElement*& root);

    /**
     * Records the control file @p location at the end of the search order, unless it is recorded
     * with the same @p depth already.
     *
     * @p element and @p locale are for a back end and are ignored here.
     *
     * @return Always true.
     */
    virtual bool store(VLXmlElement* element, const QLocale& locale, const QString& location,
                       int depth);

    /// Hook for a back end: sets the update flag.
    virtual void startUpdate();
    /// Hook for a back end: clears the update flag.
    virtual void endUpdate();

    /**
     * Reads every control file and lists the keys in it.
     *
     * Each call leaves the trees that it parsed allocated. A file that can be read and whose root
     * is no longer that of a control file ends the process.
     *
     * @return The keys in search order, then document order. They are neither sorted nor freed of
     *         duplicates.
     */
    virtual QList<QString> keys();

    /**
     * Records @p file at the front of the search order if its first tag marks it as a control file.
     *
     * The two paths are compared as strings first. A file in a directory whose name merely begins
     * with that of @p root passes this test, and the search for the root then never ends, as for
     * any file that does not truly lie below it.
     *
     * @param file The path of the file, which begins with @p root. Of any other nothing is
     * recorded.
     * @param root The package root.
     */
    virtual void indexControlFile(const QString& file, const QString& root);

    /// Returns the settings. Where the given store is gone, that is a new and empty one, which the
    /// index owns.
    VLContext& context();
    /// @overload
    const VLContext& context() const;

    /**
     * Reads the one control file @p location for @p key in @p locale.
     *
     * @param[out] root The top of the tree, which the caller owns. Where the result is null it is
     *             left untouched, set to null, or left with the address of a deleted object.
     * @return The content with the key data and the reserved attributes, or null. See retrieve()
     *         for a file that is broken.
     */
    VLXmlElement* load(const QString& key, const QString& location, const QLocale& locale,
                       VLXmlElement*& root);

    /// Copies the attributes that the key data file has for @p key on to @p element. Without such a
    /// record the small tree that was read for it stays allocated.
    void loadKeyData(const QString& key, VLXmlElement* element);

    /// Records @p root as a root of its package. @p file is not used.
    void mapControlFile(const QString& file, const QString& root);

    /// Returns the name of the innermost package directory that is or contains @p location, or a
    /// null string where there is none.
    QString packageNameForLocation(const QString& location) const;

    /// Returns the directories in which a component of the package @p name may lie, in search
    /// order: the package's roots, then the one of ckExtraComponentPath.
    QList<QString> componentPathsForPackageNamed(const QString& name) const;

    /**
     * Lists the places in which a component of @p element may lie. Whether anything is there is not
     * looked at.
     *
     * @param element Content from retrieve(), or null.
     * @param category A relative path to be added to each directory. An empty one adds nothing, an
     *                 absolute one replaces each.
     * @return The places in search order: those of the element's own package, then the roots of the
     *         packages that its control file names in "search". Null has none.
     */
    QList<QString> componentPathsForElement(const VLXmlElement* element,
                                            const QString& category) const;

    /// The element filter of keys(), which builds control file roots and tips, wherever they stand,
    /// and nothing else.
    /// @return ElementFilterFlag values.
    static int indexDataShouldGenerateElement(const QString& tag,
                                              const QXmlStreamAttributes& attributes,
                                              void* userData);

protected:
    /// Returns whether startUpdate() was called and endUpdate() was not. This is for derived
    /// classes.
    bool isInUpdate() const;

private:
    Q_DISABLE_COPY_MOVE(VLIndex)

    friend class VLIndexHooks;
    friend class VLManager;
    friend class VLManagerPrivate;
    friend class VLSceneFence;
    friend class VLView;

    /// Returns the roots of all packages, each as it was recorded.
    QList<QString> packageRoots() const;

    /// Returns where content may read from. Directories that were not there are looked for again
    /// where @p path, which may be null, lies in none of the others.
    const VLContentRoots& contentRoots(const QString& path);

    /// Deletes the index with its record, which else stays allocated.
    void deleteWhole();

    /**
     * Says that @p file and @p root are canonical paths, until the next call.
     *
     * The walk of the manager resolves each directory once and lists no links, so nothing of it
     * need be asked of the disk again for each file. Null strings end a walk.
     */
    void setResolvedPaths(const QString& file, const QString& root);

    /// Says that the manager looks for packages in @p path, with the extension and in the control
    /// directory that it has settings for.
    void noteDataPath(const QString& path, const QString& extension,
                      const QString& controlDirectory);

    /// Returns the control files in search order.
    const QList<IndexedLocation>& locations() const;

    /// The way to content files where ckGuardContent is set.
    VLContentGuard& guard();

    /// load() where ckGuardContent is set: the result lives, or is null together with @p root.
    VLXmlElement* loadGuarded(const QString& key, const QString& location, const QLocale& locale,
                              VLXmlElement*& root);
    /// Warns of @p reason with the place of @p tip in its file, once for as long as that stays.
    void warnInTip(const VLXmlElement* tip, const QString& reason);
    /// loadKeyData() of the file @p path where ckGuardContent is set.
    void loadKeyDataGuarded(const QString& path, const QString& key, VLXmlElement* element);
    /// keys() where ckGuardContent is set: leaves nothing allocated.
    QList<QString> guardedKeys();

    VLIndexPrivate* const d;
};

} // namespace Vidlets

#endif
