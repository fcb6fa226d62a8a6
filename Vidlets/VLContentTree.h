// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLCONTENTTREE_H
#define VLCONTENTTREE_H

#include "VLContentNames.h"
#include "VLXmlElement.h"

namespace Vidlets {

/// Deletes a tip with the root of the control file above it, where there is one: a host may have
/// put the tip into a tree of its own. Internal to the library.
inline void deleteTreeOf(VLXmlElement* element)
{
    auto* root = element ? qobject_cast<VLXmlElement*>(element->parent()) : nullptr;
    if (root && !root->parent() && root->getTagName() == ContentNames::kControlFileTag)
        delete root;
    else
        delete element;
}

} // namespace Vidlets

#endif
