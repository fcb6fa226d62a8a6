// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSEARCHCOLLECTOR_H
#define VLSEARCHCOLLECTOR_H

#include "VLSearchText.h"

#include <QStringList>
#include <QStringView>
#include <QXmlStreamAttributes>

namespace Vidlets {

/**
 * Gathers what is searched of a tip while its file is read, as VLTipText finds it in the elements
 * that a lookup builds. Internal to the host kit. A value; one is used on one thread.
 */
class VLSearchCollector
{
public:
    /// A tag has begun; the first one is that of the tip.
    void open(const QXmlStreamAttributes& attributes);
    /// The innermost tag has ended.
    void close();
    void addText(QStringView text);

    /// Gives what was gathered, without the key, and begins anew.
    VLSearchText take();

private:
    VLSearchText m_text;
    QStringList m_parts;
    /// The character data of each open tag: what stands around a child is one text.
    QStringList m_open;
};

} // namespace Vidlets

#endif
