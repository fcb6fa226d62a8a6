// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef TREETEXT_H
#define TREETEXT_H

#include <Vidlets/VLXmlElement.h>

#include <QString>

/// Returns all there is to @p element and what is in it, for comparisons; "none" for null.
inline QString textOfTree(const Vidlets::VLXmlElement* element)
{
    if (!element)
        return QStringLiteral("none");
    QString text = QStringLiteral("(%1|%2|%3")
                       .arg(element->getTagName(), element->getTagNameSpace(), element->content());
    const QList<QString> names = element->attributeNames();
    for (const QString& name : names)
        text += QStringLiteral("|%1=%2").arg(name, element->attribute(name));
    for (const QObject* child : element->children())
        text += textOfTree(qobject_cast<const Vidlets::VLXmlElement*>(child));
    return text + u')';
}

#endif
