// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLACCESS_H
#define VLACCESS_H

#include <QKeySequence>
#include <QObject>
#include <QString>

#include <memory>

#include <VidletsHost/VidletsHostExport.h>

class QEvent;
class QWidget;

namespace Vidlets {

class VLAccessPrivate;
class VLHostInterface;
class VLXmlElement;

/**
 * Makes tips reachable for the keyboard and for screen readers.
 *
 * The show sequence calls the tip of what has the focus: the current cell of an item view, the
 * current tab of a tab bar, the item of a menu, or the widget; what has no content leads to its
 * parent, up to the window. A called tip is beside its control, and stays until Esc, a change of
 * focus, a click beside it, or the sequence again. With a hovered tip up the sequence makes that a
 * called one.
 *
 * Esc closes the tip that is up, and the host hears nothing of it. F6 moves the focus into the tip:
 * Tab and Shift+Tab walk what has QQuickItem::activeFocusOnTab, Enter uses it, all other keys go to
 * the scene. Esc closes the tip and gives the focus back, F6 gives it back and leaves the tip. The
 * window of the tip does not become the active one, so that all of this works in modal dialogs and
 * while a menu has the keyboard, too.
 *
 * While a tip is up its control is described by its text. VLHostInterface makes and owns the
 * object; see VLHostInterface::createAccess(). All on the user-interface thread.
 */
class VIDLETSHOST_EXPORT VLAccess : public QObject
{
    Q_OBJECT

public:
    /// Makes the access to the tips of @p interface, which outlives it.
    explicit VLAccess(VLHostInterface* interface);
    ~VLAccess() override;

    /// Returns whether keys are taken and controls described. True by default.
    bool isEnabled() const;
    /// Turns all of it on or off. A called tip goes when it is turned off, and what is described
    /// meanwhile gets its old description back.
    void setEnabled(bool enabled);

    /// Returns the keys that bring up the tip of the focused control. Shift+F1 by default.
    QKeySequence showSequence() const;
    /// Sets the keys that bring up the tip of the focused control; an empty sequence for none. They
    /// are taken from the host only where there is a tip to show or to take away, but for all keys
    /// of a sequence before its last.
    void setShowSequence(const QKeySequence& sequence);

    /**
     * Calls the tip for @p key, as if its control had the focus: beside what
     * VLHostInterface::keyAt() gives the key for in @p window, which is a widget, an entry of a
     * menu bar or a tab; where nothing of the kind is to be seen, from the middle of the window on.
     *
     * @return Whether the tip is up; it is not without content, or while isEnabled() is off.
     */
    bool showTip(const QString& key, QWidget* window);

    /// Returns what a screen reader is to say for a tip: the default joins the title, the shortcut
    /// and the text of @p content, with the host's variables and without markup. The text is the
    /// attribute "summary", where there is one, and all character data.
    virtual QString spokenText(const VLXmlElement& content);

private:
    Q_DISABLE_COPY_MOVE(VLAccess)

    friend class VLHostFilter;

    /// Takes part in the filter of the application's events, before anybody else of the kit. Gives
    /// whether @p event goes no further.
    bool filter(QObject* object, QEvent* event);

    const std::unique_ptr<VLAccessPrivate> d;
};

} // namespace Vidlets

#endif
