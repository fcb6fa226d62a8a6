// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLHOSTINTERFACE_H
#define VLHOSTINTERFACE_H

#include <Vidlets/VLInterface.h>

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>

#include <VidletsHost/VidletsHostExport.h>

class QPoint;
class QRect;
class QWidget;
class VLContext;

namespace Vidlets {

class VLAccess;
class VLHostInterfacePrivate;
class VLIndex;
class VLManager;
class VLPreferences;
class VLWidget;

/// Roles of item models that the host kit reads.
enum VLItemDataRole : int {
    /// String: the key of the tip of a cell, or of a section of a header.
    KeyRole = Qt::UserRole + 0x5649
};

/**
 * A VLInterface that does by itself what each host of widgets needs.
 *
 * It watches the application, gives each control its key, pins tips, hands messages to Qt's
 * logging, shows tips at the keyboard's request and to screen readers, and turns every safeguard
 * on: those of the keys ckReleaseClips to ckTendPinned that the host's context does not set.
 * Whatever the context says, ckInstallEventFilter is off, as the filter is its own.
 *
 * A host builds one after its QApplication and keeps it. It may go before or after the windows and
 * the application object, be the child of a window or of the application, or never go: tips that
 * are up, pinned ones too, go with the application at the latest. All on the user-interface thread.
 */
class VIDLETSHOST_EXPORT VLHostInterface : public VLInterface
{
    Q_OBJECT

public:
    /**
     * Builds the library's objects, scans @p dataPaths, and begins to watch the application.
     *
     * @param context The host's settings. The library keeps a copy, which context() gives and in
     *                which the safeguards are turned on; the host's own stays as it is.
     * @param dataPaths Directories that hold packages. What is no directory is passed over.
     * @param index An index of the host's, which stays the host's, or null for a VLKeyTableIndex of
     *              the interface's own, which manager() gives. One of the host's reads the settings
     *              that it was made with. What a VLKeyTableIndex finds broken is a warning, and
     *              what it sees change shows in tips that are up.
     */
    VLHostInterface(VLContext& context, const QStringList& dataPaths, VLIndex* index = nullptr);

    /// Takes the popup, the pinned tips and the docks down that hold them. Tips in a window that a
    /// derived class has given stay with that window.
    ~VLHostInterface() override;

    /**
     * Gives the key of what the user points at.
     *
     * The default looks, in this order, at
     *
     * 1. the action under the pointer, in a tool button, a menu or a menu bar: its property
     *    "vidletKey", then its object name, and for the action of a submenu those of the menu;
     * 2. the tab of a tab bar: its data as a string, else "NAME.INDEX";
     * 3. the section of a header and the cell of an item view: KeyRole, and for a horizontal
     *    section else "NAME.LOGICAL-COLUMN"; a cell without it counts as the view;
     * 4. the widget: its property "vidletKey", then its object name.
     *
     * NAME is the key of the widget. A viewport, a header, the line edit of a combo box or spin
     * box, and a tab bar that have no name, or one of Qt's own ("qt_"), count as their parent. No
     * other ancestor is asked.
     *
     * @param object The widget or the Qt Quick item under the pointer.
     * @param globalPos Where the pointer is, in global coordinates.
     * @param[out] zone The rectangle of what has the key, in global coordinates, to which its tip
     *             belongs. May be null. It is a null rectangle where there is no key.
     * @return The key; an empty one for none, which is not looked up.
     */
    virtual QString keyAt(QObject* object, const QPoint& globalPos, QRect* zone);

    /// Gives the dock that takes the tip which is being pinned, or null for a tool window; see
    /// setPinnedArea().
    QWidget* createWindow() override;

    /// Opens a name within the documentation below documentationBase(), and all else as
    /// VLInterface does. Returns whether it was opened.
    bool openExternalResource(VLExternalResourceType type, const QString& resource) override;

    /// Writes @p message to the logging category "vidlets": critical for errors, else warning, info
    /// or debug. Sends messageRaised() then, whatever the rules of the category say.
    void handleMessage(VLMessageType type, const QString& message) override;

    /// Returns what VLInterface makes of @p text, or @p text itself where that is empty.
    QString translateString(const QString& text, const QString& context) override;

    /// Returns the shortcut that is bound to the action with the key @p key, as the user knows it
    /// from menus; @p shortcut where there is no such action or it has none.
    QString shortCutForObject(const QString& key, QObject* object,
                              const QString& shortcut) override;

    /// Sets the place that names within the documentation are resolved against, a directory or the
    /// like. Tells scenes that there is documentation, unless ckDocumentationEnabled is set
    /// already. An empty one takes it away.
    void setDocumentationBase(const QUrl& base);
    /// Returns the place of the documentation, empty by default.
    QUrl documentationBase() const;

    /**
     * Sets where tips go that the user pins from now on.
     *
     * Qt::NoDockWidgetArea, which is the default, stands for a tool window with the title of the
     * tip, a child of the control's window. All others for a dock in that area of the main window
     * that the control is in; without one it is a tool window again.
     */
    void setPinnedArea(Qt::DockWidgetArea area);
    /// Returns where tips go that the user pins.
    Qt::DockWidgetArea pinnedArea() const;

    /// Returns the tips that the user has pinned and not closed yet, the oldest first. Each belongs
    /// to its window, and is deleted when that is closed.
    QList<VLWidget*> pinnedTips() const;
    /// Closes all pinned tips. A window of createWindow() is closed as well; it goes, and its tip
    /// with it, only if it has Qt::WA_DeleteOnClose.
    void closePinnedTips();

    /// Returns the manager, which the interface owns. Never null.
    VLManager* manager() const;

    /// Hides the tip that is up at once. Pinned tips stay.
    void hideTip();

    /**
     * Has the popup, its engine and a package's scene made while the event loop is idle, so that
     * the first tip comes up as soon as later ones. Returns at once and maps no window.
     */
    void warmUp();

    /// Returns what makes tips reachable for the keyboard and for screen readers; see
    /// createAccess(). Owned by the interface.
    VLAccess* access();

    /// Returns what the user prefers of the look of tips. Owned by the interface.
    VLPreferences* preferences();

Q_SIGNALS:
    /// A message was raised that ckMessageLevel let pass. Those of the constructor come when the
    /// event loop runs.
    void messageRaised(Vidlets::VLMessageType type, const QString& text);

protected:
    /// Makes what access() gives: called once, by access() or when the event loop first runs.
    /// Returns an object that becomes the interface's own, or null for none, which is not asked for
    /// again. The default makes a VLAccess.
    virtual VLAccess* createAccess();

private:
    Q_DISABLE_COPY_MOVE(VLHostInterface)

    VLHostInterface(std::unique_ptr<VLHostInterfacePrivate> record, const QStringList& dataPaths,
                    VLIndex* index);

    friend class VLHostInterfacePrivate;

    const std::unique_ptr<VLHostInterfacePrivate> d;
};

} // namespace Vidlets

#endif
