// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLINTERFACE_H
#define VLINTERFACE_H

#include <Vidlets/VidletsExport.h>

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

class QMouseEvent;
class QPoint;
class QWidget;
class VLContext;

namespace Vidlets {

class VLHostHooks;
class VLIndex;
class VLInterfacePrivate;
class VLManager;

/// How severe a message is; the smaller, the more severe. Filtered by ckMessageLevel.
enum VLMessageType : int {
    VLMessageError = 100,       ///< For the host's own use.
    VLMessageWarning = 200,     ///< For the host's own use.
    VLMessageInformation = 300, ///< Progress of indexing, retrieval and lookup.
    VLMessageDebug = 400        ///< The scene's debug output, warnings and load errors.
};

/// What kind of thing a locator is that a scene asks the host to open.
enum VLExternalResourceType : int {
    VLResourceDocumentation = 1, ///< No URL and no "/": a name within the documentation.
    VLResourceUrl = 2,           ///< A valid URL with a scheme.
    VLResourcePath = 3           ///< No URL, but with a "/".
};

/**
 * The one object that a host holds, and the only way in which the library calls the host back.
 *
 * A host fills a VLContext with what differs from the defaults, builds this class or one derived
 * from it, and then either lets the library watch the application (ckInstallEventFilter) or calls
 * show(), mouseMoveEventFilter() and mouseButtonEventFilter() from an event filter of its own.
 * Settings are changed afterwards through context() alone.
 *
 * The virtual operations are the callbacks. Each has a working default. All run on the
 * user-interface thread, some in the middle of the delivery of an event.
 *
 * The host owns the object, and destroys it before the application object goes: the destructor
 * still touches the top-level widgets and the application's event filters.
 */
class VIDLETS_EXPORT VLInterface : public QObject
{
    Q_OBJECT

public:
    /**
     * Builds the library's objects and scans @p dataPaths, all before it returns.
     *
     * @param context The host's settings. The library keeps a copy; see context().
     * @param dataPaths Directories that hold packages. What is no directory is passed over.
     * @param index An index of the host's, which stays the host's, or null for the library's own.
     *
     * The overrides of a derived class are not in force yet: what is raised meanwhile ends in the
     * default handleMessage().
     */
    VLInterface(VLContext& context, const QStringList& dataPaths, VLIndex* index);

    /// Takes the manager down; the popup goes by deferred deletion. Reserved windows stay with the
    /// user, and go on with the default of each setting.
    ~VLInterface() override;

    /**
     * Gives the window that takes a popup that a scene has reserved.
     *
     * @return A window that stays the host's, or null, which is the default: the popup then becomes
     *         a window of its own.
     */
    virtual QWidget* createWindow();

    /// Returns the key of the content for @p object; asked at each tooltip event. The default is
    /// the object's name. An empty key is looked up like any other.
    virtual QString keyForObject(QObject* object);

    /**
     * Opens @p resource, the locator as the scene gave it.
     *
     * @return Whether it was opened. The default hands a VLResourceUrl to QDesktopServices, and
     *         gives false for the other types.
     */
    virtual bool openExternalResource(VLExternalResourceType type, const QString& resource);

    /**
     * Takes a message that ckMessageLevel let pass.
     *
     * The default writes "label:message" to Qt's log at debug level, where the label is the type's
     * name, or its number if it is none of VLMessageType.
     */
    virtual void handleMessage(VLMessageType type, const QString& message);

    /**
     * Translates @p text of a scene within @p context.
     *
     * The default looks into the translation file of the package on show.
     *
     * @return The translation. By default it is @p text itself where there is no popup or no such
     *         file can be loaded, and an empty string where the file has no entry for the text, or
     *         where there is no content on show and no file was loaded yet.
     */
    virtual QString translateString(const QString& text, const QString& context);

    /**
     * Gives the shortcut to be shown for @p object; asked before each display.
     *
     * @param key The requested key, also where the fallback's content is shown.
     * @param object The object that the popup belongs to; may be null or no widget.
     * @param shortcut The shortcut that the content names.
     * @return The text to show in its place; an empty one changes nothing. By default @p shortcut.
     */
    virtual QString shortCutForObject(const QString& key, QObject* object, const QString& shortcut);

    /// Returns the settings that the library reads. A change takes effect at the next reading.
    VLContext& context();
    /// @overload
    const VLContext& context() const;

    /// Sets the text variable @p name, which scenes refer to as "%(name)s". Text that has been
    /// interpolated already stays as it is.
    void setGlobalProperty(const QString& name, const QVariant& value);

    /**
     * Lists the keys of all control files.
     *
     * It reads every control file, and each call leaves the trees that it parsed allocated.
     *
     * @return The keys in search order. A key with a file per locale comes once per file.
     */
    QStringList keys();

    /**
     * Shows the content for @p key.
     *
     * @param position Where the pointer is, in global coordinates.
     * @param reference The object under the pointer, or null. Not owned.
     * @return Whether the request is dealt with. If false, the host should go on as if the library
     *         were not there; an ordinary tooltip may appear.
     */
    bool show(const QString& key, const QPoint& position, QObject* reference);

    /// For a host's own filter: dismisses the popup at a mouse button event outside it. Always
    /// returns false, so that the event goes on.
    bool mouseButtonEventFilter(QObject* object, QMouseEvent* event);

    /// For a host's own filter: follows the pointer, anywhere in the application, for the popup's
    /// automatic hiding. Always returns false, so that the event goes on.
    bool mouseMoveEventFilter(QObject* object, QMouseEvent* event);

    /**
     * Reads one attribute of the content for @p key: from the popup or a reserved window that
     * shows the key, where there is one, else from disk.
     *
     * A reading from disk leaves what is above the content in its tree allocated.
     *
     * @return The value, or @p defaultValue where there is no such content or it has no such
     *         attribute.
     */
    QString vidletAttribute(const QString& key, const QString& attribute,
                            const QString& defaultValue);

private:
    Q_DISABLE_COPY_MOVE(VLInterface)

    friend class VLHostHooks;

    VLManager* ownManager() const;

    const std::unique_ptr<VLInterfacePrivate> d;
};

} // namespace Vidlets

#endif
