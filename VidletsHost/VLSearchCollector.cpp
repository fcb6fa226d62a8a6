// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSearchCollector.h"

#include "VLTipText.h"
#include <Vidlets/VLContentNames.h>

#include <utility>

namespace Vidlets {

void VLSearchCollector::open(const QXmlStreamAttributes& attributes)
{
    if (m_open.isEmpty()) {
        const auto plain = [&attributes](const QString& name) {
            return TipText::plain(attributes.value(name).toString());
        };
        m_text = VLSearchText();
        m_parts.clear();
        m_text.title = plain(ContentNames::titleAttribute());
        m_text.shortcut = plain(ContentNames::shortcutAttribute());
        m_parts += plain(TipText::summaryAttribute());
    }
    m_open.append(QString());
}

void VLSearchCollector::close()
{
    if (!m_open.isEmpty())
        m_parts += TipText::plain(m_open.takeLast());
}

void VLSearchCollector::addText(QStringView text)
{
    if (!m_open.isEmpty())
        m_open.last() += text;
}

VLSearchText VLSearchCollector::take()
{
    m_text.text = TipText::asSentences(m_parts);
    m_open.clear();
    m_parts.clear();
    return std::exchange(m_text, {});
}

} // namespace Vidlets
