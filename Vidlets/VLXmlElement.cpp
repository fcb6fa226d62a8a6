// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLXmlElement.h"

#include <QMap>
#include <QStringList>

namespace Vidlets {

class VLXmlElementPrivate
{
public:
    QString attributeText() const;

    QMap<QString, QString> attributes;
    QString tagNameSpace;
    QString content;
};

QString VLXmlElementPrivate::attributeText() const
{
    if (attributes.isEmpty())
        return QString();

    QStringList items;
    items.reserve(attributes.size());
    for (auto it = attributes.cbegin(); it != attributes.cend(); ++it) {
        // Chained on purpose: a place marker inside a name is filled by the value.
        items +=
            QStringLiteral("%1=\"%2\"").arg(it.key()).arg(it.value()); // clazy:exclude=qstring-arg
    }
    return QLatin1Char(' ') + items.join(QLatin1Char(' '));
}

VLXmlElement::VLXmlElement(QObject* parent, const QXmlStreamAttributes& attributes)
    : QObject(parent)
    , d(std::make_unique<VLXmlElementPrivate>())
{
    for (const QXmlStreamAttribute& attribute : attributes)
        setAttribute(attribute.qualifiedName().toString(), attribute.value().toString());
}

VLXmlElement::~VLXmlElement() = default;

VLXmlElement* VLXmlElement::childElement(const QString& name) const
{
    return findChild<VLXmlElement*>(name, Qt::FindChildrenRecursively);
}

QList<QObject*> VLXmlElement::childElementList(const QString& name) const
{
    // A null name matches every object, an empty one only objects without a name.
    return findChildren<QObject*>(name.isEmpty() ? QString() : name, Qt::FindChildrenRecursively);
}

QString VLXmlElement::attribute(const QString& name) const
{
    return d->attributes.value(name);
}

bool VLXmlElement::hasAttribute(const QString& name) const
{
    return d->attributes.contains(name);
}

void VLXmlElement::appendContent(const QString& content)
{
    d->content.append(content);
    Q_EMIT contentChanged();
}

QString VLXmlElement::toXml(int index)
{
    QStringList childLines;
    for (QObject* child : children()) {
        if (auto* element = qobject_cast<VLXmlElement*>(child))
            childLines += element->toXml(index + 2);
    }

    const QString indent(index, QLatin1Char(' '));
    const QString closingMark = childLines.isEmpty() ? QStringLiteral("/") : QString();

    // Chained on purpose, here and below: a place marker inside an earlier argument is filled by a
    // later one.
    QStringList lines(QStringLiteral("%1<%2%3%4>")
                          .arg(indent)
                          .arg(getTagName())
                          .arg(d->attributeText())
                          .arg(closingMark)); // clazy:exclude=qstring-arg
    if (!childLines.isEmpty()) {
        lines += childLines;
        lines +=
            QStringLiteral("%1</%2>").arg(indent).arg(getTagName()); // clazy:exclude=qstring-arg
    }
    return lines.join(QLatin1Char('\n'));
}

QList<QString> VLXmlElement::attributeNames() const
{
    return d->attributes.keys();
}

void VLXmlElement::setAttribute(const QString& name, const QString& value)
{
    d->attributes.insert(name, value);
}

QString VLXmlElement::getTagName() const
{
    return objectName();
}

QString VLXmlElement::getTagNameSpace() const
{
    return d->tagNameSpace;
}

QString VLXmlElement::content() const
{
    return d->content;
}

void VLXmlElement::setTagName(const QString& name)
{
    setObjectName(name);
    Q_EMIT tagNameChanged();
}

void VLXmlElement::setTagNameSpace(const QString& nameSpace)
{
    d->tagNameSpace = nameSpace;
    Q_EMIT tagNameSpaceChanged();
}

void VLXmlElement::setContent(const QString& content)
{
    d->content = content;
    Q_EMIT contentChanged();
}

} // namespace Vidlets

#include "moc_VLXmlElement.cpp"
