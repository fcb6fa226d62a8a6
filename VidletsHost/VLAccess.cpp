// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLAccess.h"

#include "VLHostInterface.h"
#include <Vidlets/VLXmlElement.h>

using namespace Qt::StringLiterals;

namespace Vidlets {

class VLAccessPrivate
{
public:
    VLHostInterface* interface = nullptr;
    QKeySequence showSequence{Qt::SHIFT | Qt::Key_F1};
    bool isEnabled = true;
};

VLAccess::VLAccess(VLHostInterface* interface)
    : QObject(nullptr)
    , d(std::make_unique<VLAccessPrivate>())
{
    d->interface = interface;
}

VLAccess::~VLAccess() = default;

bool VLAccess::isEnabled() const
{
    return d->isEnabled;
}

void VLAccess::setEnabled(bool enabled)
{
    d->isEnabled = enabled;
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
    return content.attribute(u"title"_s);
}

bool VLAccess::filter(QObject* /*object*/, QEvent* /*event*/)
{
    return false;
}

} // namespace Vidlets

#include "moc_VLAccess.cpp"
