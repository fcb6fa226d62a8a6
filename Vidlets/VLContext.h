// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLCONTEXT_H
#define VLCONTEXT_H

#include <Vidlets/VidletsExport.h>

#include <QList>
#include <QMap>
#include <QMetaType>
#include <QObject>
#include <QVariant>

/// A key of the settings store. Any number is valid; Vidlets::contextKey names those with a reader.
using VLContextKey = int;

namespace Vidlets {

/**
 * The settings that the library reads, each with the type, the unit and the default of its reader.
 *
 * The numbers are fixed, since hosts store values under them. Unless it says otherwise, a key is
 * read anew at each use, so a change takes effect at the next one.
 */
enum contextKey : int {
    /// Float, milliseconds, 3000: from the moment the pointer leaves the safe zone to the start of
    /// hiding. At 0 or below the popup does not hide by itself.
    ckStayDuration = 2,
    /// Bool, false: keep the window flags that a popup was built with instead of making it a
    /// frameless tool window. Read at construction of each popup.
    ckKeepPopupWindowFlags = 3,
    /// String, "vidlets": file-name extension of a package directory.
    ckPackageExtension = 10,
    /// String, empty: one further root added to the component paths of every package.
    ckExtraComponentPath = 11,
    /// String, "ui/VidletUI.qml": the main scene, relative to a package root.
    ckUiFile = 12,
    /// String, "ui/SimpleTooltip.qml": the scene of the simple tooltip, relative to a package root.
    ckSimpleUiFile = 13,
    /// String, "Resources": name of a package's directory of resources.
    ckResourceDirectory = 16,
    /// Bool, false: watch the events of the whole application. Read at construction of the manager.
    ckInstallEventFilter = 17,
    /// QSize, pixels, 20 by 20: by how much the popup's frame is grown on each side to form the
    /// zone in which the pointer keeps it open.
    ckSafeZoneMargin = 18,
    /// QSize, pixels, 35 by 30: from the pointer to the popup's top left corner.
    ckTooltipOffset = 19,
    /// Bool, false: load the scene of the simple tooltip instead of the main scene.
    ckSimpleTooltips = 20,
    /// Bool: whether documentation can be opened. With the key absent, the view's property
    /// documentationAvailable says no and the opening itself is still allowed.
    ckDocumentationEnabled = 21,
    /// Bool, true: whether URLs and paths can be opened.
    ckExternalLinksEnabled = 22,
    /// String, null: the key whose content is shown where the requested key has none.
    ckFallbackKey = 23,
    /// String, "en_US" for content, empty for translation: the second locale tried, and the only
    /// one for ckFallbackKey.
    ckFallbackLocale = 24,
    /// String, "en_US" for content, empty for translation: the first locale tried.
    ckLocale = 25,
    /// Bool, false: refuse every request for a popup.
    ckDisabled = 26,
    /// Bool, true: VLIndex::setup() calls VLIndex::clear().
    ckClearIndexOnSetup = 27,
    /// Bool, false: set Qt::WA_AlwaysShowToolTips on every top-level widget. Read at construction
    /// of the manager.
    ckAlwaysShowToolTips = 29,
    /// String, empty: path of the key data file.
    ckKeyDataFile = 30,
    /// Int, a Qt::KeyboardModifiers value, 0: popups come only while exactly these modifiers are
    /// held; 0 asks for nothing.
    ckRequiredModifiers = 31,
    /// String, "Control": name of a package's directory of control files.
    ckControlDirectory = 32,
    /// String, "l10n": name of a package's directory of translation files.
    ckTranslationDirectory = 33,
    /// Int, milliseconds, 0: length of the fade-in; 0 means none.
    ckShowDuration = 34,
    /// Int, milliseconds, 300: length of the fade-out; 0 means none.
    ckHideDuration = 35,
    /// Int, a VLMessageType, 200: messages with a greater number are dropped.
    ckMessageLevel = 36,
    /// String, "Vidlets": stem of the names of translation files.
    ckTranslationStem = 37,
    /// Float, 1.0: scale factor of sizes. Read at construction of the manager.
    ckScale = 38,

    // Safeguards, from 1000 on: off until a host asks for them, one by one or with useSafeguards().

    /// Bool, false: all that a clip holds goes with its item or with its source, its pictures and
    /// its open file included, also in mid-decoding; and so does all else that a show would leave
    /// behind. A thread that had to be terminated keeps what it holds.
    ckReleaseClips = 1000,
    /// 64-bit integer, bytes, 0 for none: what the pictures of one clip may take, at width times
    /// height times 4 each. A clip ends before the picture that would exceed it.
    ckClipMemoryLimit = 1001,
    /// Bool, false: a clip's threads wake as soon as there is something to do, and only then.
    ckPromptClips = 1002,
    /// Bool, false: no file of a package can end or hang the process; a broken one is passed over
    /// with a warning that names file, line and column.
    ckGuardContent = 1003,
    /// Bool, false: scenes reach no network and no file outside the packages, and clips neither.
    ckConfineContent = 1004,
    /// Bool, false: a tip stays with its control and goes with it, whatever way the pointer takes.
    ckSteadyHover = 1005,
    /// Bool, false: a popup covers neither the pointer nor, where any side has room, its control.
    ckKeepOffReference = 1006,
    /// Bool, false: a pinned window follows the size of its scene, carries the title of its tip and
    /// is translated by its own package.
    ckTendPinned = 1007
};

} // namespace Vidlets

Q_DECLARE_METATYPE(Vidlets::contextKey)

/**
 * The store through which a host tunes the library: integer keys with QVariant values.
 *
 * An empty store gives a fully working library, since each reader brings its own default. Copies
 * share their values until one of them is written. VLManager works on a copy of its own, so once a
 * VLInterface exists, settings are changed through VLInterface::context().
 *
 * The store interprets and validates nothing; readers convert at the point of use. It belongs to
 * the user-interface thread and has no lock. No operation fails.
 */
class VIDLETS_EXPORT VLContext : public QObject
{
    Q_OBJECT

public:
    /// Makes an empty store, which allocates nothing until the first set(). @p parent may be null.
    explicit VLContext(QObject* parent = nullptr);
    /// Makes a store without a parent that shares the values of @p other, but not its connections.
    VLContext(const VLContext& other);
    ~VLContext() override;

    /// Takes over the values of @p other. The parent stays, and no signal tells of it, although any
    /// value may have changed.
    VLContext& operator=(const VLContext& other);

    /**
     * Reads the entry for @p key.
     *
     * @return The stored value, also where it is an invalid QVariant; @p defaultValue where there
     *         is no entry.
     */
    QVariant get(const VLContextKey& key, const QVariant& defaultValue) const;

    /**
     * Stores @p value under @p key, between settingWillChange() and settingDidChange().
     *
     * Both signals are sent on every call, also when the value stays the same.
     */
    void set(const VLContextKey& key, const QVariant& value);

    /// Returns whether there is an entry for @p key. One with an invalid value counts.
    bool contains(const VLContextKey& key);

    /// Returns the keys of all entries in ascending order.
    QList<int> keys();

Q_SIGNALS:
    /// Sent after a set() on this object, when get() returns the new value.
    void settingDidChange(const VLContextKey& key);
    /// Sent before a set() on this object, when get() still returns the old value.
    void settingWillChange(const VLContextKey& key);

private:
    QMap<int, QVariant> m_settings;
};

#endif
