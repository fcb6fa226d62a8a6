// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLAccess.h"

#include "VLHostInterface.h"
#include "VLTipCaller.h"
#include "VLTipSpeaker.h"
#include "VLTipText.h"

namespace Vidlets {

class VLAccessPrivate
{
public:
    explicit VLAccessPrivate(VLHostInterface* host)
        : interface(host)
        , caller(host)
    {
    }

    VLHostInterface* interface;
    VLTipCaller caller;
    std::unique_ptr<VLTipSpeaker> speaker;
};

VLAccess::VLAccess(VLHostInterface* interface)
    : QObject(nullptr)
    , d(std::make_unique<VLAccessPrivate>(interface))
{
    d->speaker = std::make_unique<VLTipSpeaker>(*this, interface->manager());
}

VLAccess::~VLAccess() = default;

bool VLAccess::isEnabled() const
{
    return d->caller.isEnabled();
}

void VLAccess::setEnabled(bool enabled)
{
    d->caller.setEnabled(enabled);
    d->speaker->setEnabled(enabled);
}

QKeySequence VLAccess::showSequence() const
{
    return d->caller.showSequence();
}

void VLAccess::setShowSequence(const QKeySequence& sequence)
{
    d->caller.setShowSequence(sequence);
}

QString VLAccess::spokenText(const VLXmlElement& content)
{
    return TipText::spoken(content, d->interface->manager());
}

bool VLAccess::showTip(const QString& key, QWidget* window)
{
    return d->caller.call(key, window);
}

bool VLAccess::filter(QObject* object, QEvent* event)
{
    return d->caller.filter(object, event);
}

} // namespace Vidlets

#include "moc_VLAccess.cpp"
