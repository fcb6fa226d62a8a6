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

namespace Vidlets {

class VLAccessPrivate;
class VLHostInterface;
class VLXmlElement;

/**
 * Makes tips reachable for the keyboard and for screen readers.
 *
 * The show sequence brings up the tip of the focused control, Esc takes any tip away, F6 leads into
 * the one that is up. While a tip is up its control is described by its text. VLHostInterface makes
 * and owns it; see VLHostInterface::createAccess(). All on the user-interface thread.
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
    /// Turns all of it on or off. What is described meanwhile gets its old description back.
    void setEnabled(bool enabled);

    /// Returns the keys that bring up the tip of the focused control. Shift+F1 by default.
    QKeySequence showSequence() const;
    /// Sets the keys that bring up the tip of the focused control; an empty sequence for none.
    void setShowSequence(const QKeySequence& sequence);

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
