// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLAccess.h"

#include "VLHostInterface.h"
#include "VLTipSpeaker.h"
#include "VLTipText.h"

namespace Vidlets {

class VLAccessPrivate
{
public:
    VLHostInterface* interface = nullptr;
    QKeySequence showSequence{Qt::SHIFT | Qt::Key_F1};
    bool isEnabled = true;
    std::unique_ptr<VLTipSpeaker> speaker;
};

VLAccess::VLAccess(VLHostInterface* interface)
    : QObject(nullptr)
    , d(std::make_unique<VLAccessPrivate>())
{
    d->interface = interface;
    d->speaker = std::make_unique<VLTipSpeaker>(*this, interface->manager());
}

VLAccess::~VLAccess() = default;

bool VLAccess::isEnabled() const
{
    return d->isEnabled;
}

void VLAccess::setEnabled(bool enabled)
{
    d->isEnabled = enabled;
    d->speaker->setEnabled(enabled);
}

QKeySequence VLAccess::showSequence() const
{
    return d->showSequence;
}

void VLAccess::setShowSequence(const QKeySequence& sequence)
{
    d->showSequence = sequence;
}

QString VLAccess::spokenText(const VLXmlElement& content)
{
    return TipText::spoken(content, d->interface->manager());
}

bool VLAccess::filter(QObject* /*object*/, QEvent* /*event*/)
{
    return false;
}

} // namespace Vidlets

#include "moc_VLAccess.cpp"
