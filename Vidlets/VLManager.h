// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLMANAGER_H
#define VLMANAGER_H

#include "VLInterface.h"
#include <Vidlets/VidletsExport.h>

#include <QList>
#include <QLocale>
#include <QMap>
#include <QObject>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

class QEvent;
class QFileInfo;
class QMouseEvent;
class QWidget;
class VLContext;

namespace Vidlets {

class VLContentGuard;
class VLHostHooks;
struct VLHostState;
struct VLTipAnchor;
class VLIndex;
class VLManagerPrivate;
class VLWidget;
class VLXmlElement;

/**
 * The coordinator between the host, the index and the popup.
 *
 * It scans the data paths, gets content in the right language, decides when a popup comes and goes,
 * and keeps track of the popups that the user has kept open. VLInterface makes and owns it; scenes
 * and popups reach it through VLView::manager() and VLWidget::manager().
 *
 * Everything runs on the user-interface thread. The class has no error channel but handleMessage()
 * and boolean results.
 */
class VIDLETS_EXPORT VLManager : public QObject
{
    Q_OBJECT

public:
    /**
     * Sets up the index and scans @p dataPaths: lists them, and reads each control file up to its
     * first tag. No popup is made before the first show().
     *
     * @param interface The owner; outlives the manager.
     * @param context The host's settings, of which the manager keeps a copy.
     * @param dataPaths Directories that hold packages.
     * @param index An index that stays the caller's, or null for one of the manager's own, which is
     *              never deleted.
     */
    VLManager(VLInterface* interface, VLContext& context, const QStringList& dataPaths,
              VLIndex* index);

    /// Releases the popup by deferred deletion. Reserved windows stay, as they belong to the user.
    /// Clears Qt::WA_AlwaysShowToolTips on every top-level widget, whoever has set it.
    ~VLManager() override;

    /// Returns the manager's own copy of the settings, which is the one that the library reads.
    VLContext& context();
    /// @overload
    const VLContext& context() const;
    /// Returns the index; see the constructor for who owns it.
    VLIndex* index();
    /// Returns the host's interface.
    VLInterface* interface();
    /// Returns the current popup, which the manager owns, or null before the first show().
    VLWidget* widget();
    /// Returns the scale factor of getScaledSize().
    float realScaleValue();

    /// Hands @p message to the host unless its @p type is greater than ckMessageLevel.
    void handleMessage(VLMessageType type, const QString& message);

    /// Returns @p size, in pixels, times the scale factor, truncated; @p size itself if the factor
    /// is 0.
    int getScaledSize(int size);

    /// Returns the key that the host gives for @p object.
    QString keyForObject(QObject* object);

    /// Sets the text variable @p name; text that has been interpolated already stays as it is.
    void setGlobalProperty(const QString& name, const QVariant& value);

    /// Returns where the popup goes for a pointer at @p position, in global coordinates: away from
    /// it by ckTooltipOffset. @p reference is not used.
    QPoint tooltipPosition(const QPoint& position, QWidget* reference);

    /**
     * Scans each of @p paths for packages, and indexes their control files.
     *
     * What is no directory is passed over without a word, and so are links to packages and to
     * control files. A data path may be a link; what lies in it is indexed under its canonical
     * path.
     */
    void loadDataPath(const QStringList& paths);

    /// Indexes the control files directly in the control directory of @p package.
    void loadPackage(const QFileInfo& package);

    /// Hands @p controlFile of the package at @p packagePath to the index. The name lacks an "l"
    /// and stays so.
    void indexControFile(const QString& controlFile, const QString& packagePath);

    /// Returns the data paths that were given to the constructor, without those loaded later.
    QStringList searchPaths();

    /// Returns the keys of all control files; see VLIndex::keys().
    QStringList keys();

    /**
     * Gets the content for @p key in ckLocale, else in ckFallbackLocale.
     *
     * The output arguments are those of VLIndex::retrieve(). The caller owns @p root, and with it
     * the result.
     *
     * @return The content, or null, which is the normal answer for an unknown key.
     */
    VLXmlElement* retrieve(const QString& key, QString& path, int& depth, VLXmlElement*& root);

    /// Returns the locale of translation: ckLocale, else ckFallbackLocale, else the system's.
    QLocale currentLocale();

    /// Returns @p text with the variables of setGlobalProperty() filled in; see the overload.
    QString interpolate(const QString& text);

    /**
     * Replaces each "%(name)s" in @p text whose name is in @p variables.
     *
     * Names consist of letters, digits, "-" and "_", and their case matters. Unknown names stay,
     * and so do those whose value has a null string form. References inside a value are filled in
     * too; a value that contains its own reference never finishes, unless ckGuardContent is set,
     * which leaves it as it stands.
     *
     * @return The text with its references replaced.
     */
    QString interpolate(const QString& text, const QMap<QString, QVariant>& variables);

    /**
     * Tells a URL, a path and a name within the documentation apart, and asks the host to open
     * @p resource.
     *
     * @return The host's answer; false where ckExternalLinksEnabled or ckDocumentationEnabled
     *         forbids it.
     */
    bool openExternalResource(const QString& resource);

    /// Follows the pointer while the popup is visible. @p object is not looked at. Always
    /// returns false.
    bool mouseMoveEventFilter(QObject* object, QMouseEvent* event);

    /// Hides the popup at a mouse button event outside it, or brings it forward if its scene asked
    /// for it to stay open. Always returns false.
    bool mouseButtonEventFilter(QObject* object, QMouseEvent* event);

    /**
     * Shows the content for @p key; see VLInterface::show().
     *
     * The first call that ckDisabled and ckRequiredModifiers let pass makes the popup, the view and
     * the QML engine, even where there is no content.
     *
     * @return Whether the request is dealt with.
     */
    bool show(const QString& key, const QPoint& position, QObject* reference);

    /**
     * Gives up @p popup, the current one, to the user, and makes a fresh one for later requests.
     *
     * @param[out] window The host's window that takes the popup, or null; untouched on refusal.
     * @return Whether @p popup was the current one.
     */
    bool reserve(VLWidget* popup, QWidget*& window);

    /// Raises all reserved windows.
    void raise();

    /// Keeps all reserved windows on top, or no longer so. The current popup is not touched.
    void setStayOnTop(bool onTop);

    /**
     * Translates @p text within @p context by the translation file of the package on show.
     *
     * @return The translation. It is @p text itself where no popup exists or the file cannot be
     *         loaded, and an empty string where the file has no entry for it, or where there is no
     *         content on show and no file was loaded yet.
     */
    QString translateString(const QString& text, const QString& context);

    /// Returns one attribute of the content for @p key; see VLInterface::vidletAttribute().
    QString vidletAttribute(const QString& key, const QString& attribute,
                            const QString& defaultValue);

protected:
    /// Makes the current popup with its view and container, when there is none.
    void initializeTooltipWindow();

    /// Watches tooltip, mouse and deactivation events. Returns true for a tooltip event that was
    /// dealt with, which goes no further, and false for all others.
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    Q_DISABLE_COPY_MOVE(VLManager)

    friend class VLHostHooks;
    friend class VLInterface;
    friend class VLSceneCall;
    friend class VLView;

    /// Returns whether a warning comes to the host's override that the default has given out.
    bool isRepeating() const;

    /// What helpers of a host have set.
    VLHostState& hostState();
    /// show() for what @p anchor says, where an empty key is not looked up.
    bool showAnchored(const QString& key, const QPoint& position, QObject* reference,
                      const VLTipAnchor& anchor);

    /// Retrieves all that is up anew, in the languages that are set now.
    void showAnew();
    /// Retrieves what is up with one of @p keys anew; see VLHostHooks.
    void renewTips(const QStringList& keys);
    /// Returns whether there still is content.
    bool renewTip(VLWidget* popup);
    /// Has the index of the host's go with the manager and read its settings.
    void keepIndex(std::unique_ptr<VLIndex> index);
    /// Returns the scene of one of the packages; null where none has one.
    QString anyScene() const;

    /// Returns the living reserved windows, the oldest first.
    QList<VLWidget*> reservedTips() const;

    /// The way to content files where ckGuardContent is set.
    VLContentGuard& contentGuard();

    /// interpolate() where ckGuardContent is set: always comes to an end.
    QString interpolateGuarded(const QString& text, const QMap<QString, QVariant>& variables);

    const std::unique_ptr<VLManagerPrivate> d;
};

} // namespace Vidlets

#endif
