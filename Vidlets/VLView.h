// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLVIEW_H
#define VLVIEW_H

#include "VLContext.h"
#include "VLXmlElement.h"
#include <Vidlets/VidletsExport.h>

#include <QDir>
#include <QList>
#include <QPointer>
#include <QQmlError>
#include <QQuickView>
#include <QString>

namespace Vidlets {

class VLManager;
class VLSceneFence;

/**
 * The window inside a popup that holds the scene.
 *
 * It finds and loads the scene for the content on show, owns that content, and is what a scene
 * talks to, under the context name "vidletView". A scene is also given "vidlet", the content
 * element, and "dataLocation", the package root. The root object of a scene is a QQuickItem whose
 * bounding rectangle gives the size of the popup.
 *
 * A popup owns its one view. Everything runs on the user-interface thread. All trouble is reported
 * as a debug message of the manager, and where ckGuardContent is set as a warning too. The view
 * stays usable.
 */
class VIDLETS_EXPORT VLView : public QQuickView
{
    Q_OBJECT

    /// Written by the scene: the popup does not hide by itself. Acts when the hide timer is about
    /// to start; one that runs already goes on.
    Q_PROPERTY(bool stayOpen READ stayOpen WRITE setStayOpen NOTIFY stayOpenChanged)
    /// Written by the scene: the popup leaves the tooltip cycle and stays with the user.
    Q_PROPERTY(bool reserved READ reserved WRITE setReserved NOTIFY reservedChanged)
    /// The content on show. The signal is never sent.
    Q_PROPERTY(Vidlets::VLXmlElement* content READ content WRITE setContent NOTIFY contentChanged)
    /// Whether the host can open documentation. False where ckDocumentationEnabled is not set.
    Q_PROPERTY(bool documentationAvailable READ documentationAvailable NOTIFY
                   documentationAvailableChanged)
    /// What the content calls its resource directory: a name, not a resolved path. No signal tells
    /// of a change, as a scene reads it when it is loaded.
    // clazy:excludeall=qproperty-without-notify
    Q_PROPERTY(QString resourceDirectory READ resourceDirectoryPath)

public:
    /// Makes a frameless view that follows the size of its scene. @p manager stays the caller's;
    /// @p parent may be null. A view that outlives the manager goes on with the default of each
    /// setting, finds no components, and sends no messages.
    explicit VLView(VLManager* manager, QWindow* parent = nullptr);

    /// Empties the scene, then deletes the content element, but nothing above it in its tree.
    ~VLView() override;

    /// Sets the cursor of @p object, if it is an item, to @p shape: "PointingHandCursor",
    /// "IBeamCursor" or "BlankCursor", anything else for the arrow, or an empty string for that of
    /// the item below. @p tag is ignored.
    Q_INVOKABLE void setItemCursor(QObject* object, const QString& shape, const QString& tag);

    /// Sends @p msg as a debug message.
    Q_INVOKABLE void debugLog(const QString& msg);

    /// Asks the host to open a URL, a path or a name within the documentation.
    Q_INVOKABLE void openExternalResource(const QString& resourceLocator);

    /// Returns @p string with the host's text variables filled in; see VLManager::interpolate().
    Q_INVOKABLE QString interpolate(const QString& string);

    /// Sets the cursor of the whole application; shapes as in setItemCursor(), but an empty string
    /// means the arrow.
    Q_INVOKABLE void setOverrideCursor(const QString& shape);

    /// Undoes the last setOverrideCursor().
    Q_INVOKABLE void restoreOverrideCursor();

    /// Returns what the host makes of @p string within @p context, or @p string itself where there
    /// is no host.
    Q_INVOKABLE QString translate(const QString& string, const QString& context) const;

    /**
     * Finds the resource @p relativePath of the content on show.
     *
     * @return The absolute path of the file, or the name of the resource directory, "Resources" by
     *         default, where no such file exists.
     */
    Q_INVOKABLE QString findResource(const QString& relativePath) const;

    /// Returns @p size, in pixels, scaled by ckScale and truncated.
    Q_INVOKABLE int getScaledSize(int size);

    /**
     * Looks up what the content calls a kind of component.
     *
     * An attribute that is present but empty leads on to the setting, not to the parent.
     *
     * @return The content's attribute @p attribute, else that of its parent, else the setting
     *         @p key, else @p defaultValue. A null string where there is no content.
     */
    QString categoryPath(const QString& attribute, const QString& defaultValue,
                         Vidlets::contextKey key) const;

    /**
     * Searches the component paths of the content for @p relativePath within a kind of component.
     *
     * @return The absolute path of the first file or directory that exists, or just what
     *         categoryPath() gives for the first three arguments where none does.
     */
    QString findComponent(const QString& attribute, Vidlets::contextKey key,
                          const QString& defaultValue, const QString& relativePath) const;

    /// Returns the scene for the content, as findComponent() gives it: the simple one if
    /// ckSimpleTooltips is set, else the main one.
    QString uiRootFilePath() const;

    /// Returns the property resourceDirectory. Nothing is searched.
    QString resourceDirectoryPath() const;

    /// Returns the property documentationAvailable.
    bool documentationAvailable();

    /// Returns the package directory of the content.
    QDir packageRoot() const;
    /// Sets the package directory of the content.
    void setPackageRoot(const QDir& dir);

    /// Moves the window, in pixels, within its parent.
    void setViewPos(int x, int y);

    /// Returns the manager, or null once it is gone.
    VLManager* manager() const;

    /// Returns the content on show, which the view owns, or null.
    VLXmlElement* content();
    /// @overload
    const VLXmlElement* content() const;
    /// Replaces the pointer to the content and takes ownership. The old content is not deleted, and
    /// no signal is sent.
    void setContent(Vidlets::VLXmlElement* content);

    /// Returns the property stayOpen.
    bool stayOpen() const;
    /// Sets the property; the signal is sent also when it stays the same.
    void setStayOpen(bool stayOpen);

    /// Returns the property reserved.
    bool reserved() const;
    /// Sets the property; the signal is sent only when it changes.
    void setReserved(bool reserved);

public Q_SLOTS:
    /// Reports each of @p warnings. Connected to the engine of the view.
    void handleWarnings(const QList<QQmlError>& warnings);

    /// Reports the view's errors if @p s is QQuickView::Error. The library does not connect it; a
    /// host may.
    void statusHasChanged(QQuickView::Status s);

    /// Loads the scene @p path unless it is loaded already; keeps the present one if there is no
    /// such file.
    void loadQML(const QString& path);

    /// Sets the property "state" of the scene's root object to the empty string.
    void resetState();

    /// Tells that documentationAvailable may have changed if @p key is ckDocumentationEnabled. The
    /// library does not connect it; a host may.
    void managerContextSettingDidChange(Vidlets::contextKey key);

Q_SIGNALS:
    /// The property was set.
    void stayOpenChanged();
    /// The property changed.
    void reservedChanged();
    /// Never sent, whichever way the content changes.
    void contentChanged();
    /// The window was resized, or a new scene has brought its size; the popup follows.
    void contentSizeChanged();
    /// Whether documentation can be opened may have changed.
    void documentationAvailableChanged();
    /// Never sent, whichever way the package changes.
    void resourceDirectoryChanged();

protected:
    /// Repaints, and tells the popup of the new size.
    void resizeEvent(QResizeEvent* event) override;

private:
    Q_DISABLE_COPY_MOVE(VLView)

    // For the files of its clips.
    friend class VLVideoComponent;

    /// Where a search has led.
    struct Finding
    {
        /// The first file or directory that exists and may be had; null where none does.
        QString path;
        /// What is given out where there is none.
        QString fallback;
        /// Whether something was kept back, which was warned of.
        bool isRefused = false;
    };

    bool isGuarded() const;
    /// Warns, where content is guarded, that there is no scene @p path.
    void warnOfMissing(const QString& path);
    /// Warns, where content is guarded, that the scene of @p url did not come up.
    void warnOfFailure(const QUrl& url);
    /// Hands @p error on as a warning with its file and place.
    void warnOf(const QQmlError& error);
    /// Warns of @p reason at the place of the tip, or in the file of the scene where that is
    /// unknown.
    void warnOfTip(const QString& reason) const;
    Finding find(const QString& category, const QString& relativePath) const;
    Finding searchScene() const;
    /// Warns, where content is guarded, if there is none.
    Finding searchResource(const QString& relativePath) const;

    /// Null once the manager is gone, which a scene may outlive.
    QPointer<VLManager> m_manager;
    // Kept: two strings and a flag that nothing reads.
    QString m_spareText;
    QString m_spareName;
    /// Owned.
    VLXmlElement* m_content = nullptr;
    [[maybe_unused]] bool m_spareFlag = true;
    /// Absolute path of the package directory of the content.
    QString m_packageRoot;
    /// A child of the engine.
    VLSceneFence* m_fence = nullptr;
    bool m_stayOpen = false;
    bool m_reserved = false;
    /// The content goes with the root above it.
    bool m_releasesContent = false;
};

} // namespace Vidlets

#endif
