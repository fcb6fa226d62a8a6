// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLXmlElement.h"

#include <QList>
#include <QMap>
#include <QStringList>

#include <initializer_list>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

/// Fills the place markers one after the other, and not at once, on purpose: a marker inside an
/// earlier argument is filled by a later one.
QString fillInTurn(QString format, std::initializer_list<QString> arguments)
{
    for (const QString& argument : arguments)
        format = format.arg(argument);
    return format;
}

// Qt deletes a tree by recursion: content that nests without bounds must not fill the stack.
constexpr int kMaxDeletionDepth = 1000;

} // namespace

class VLXmlElementPrivate
{
public:
    QString attributeText() const;

    QMap<QString, QString> attributes;
    QString tagNameSpace;
    QString content;
    /// Whether an ancestor that is being deleted has looked after the depth below.
    bool isWithinReach = false;
};

QString VLXmlElementPrivate::attributeText() const
{
    if (attributes.isEmpty())
        return QString();

    QStringList items;
    items.reserve(attributes.size());
    for (auto it = attributes.cbegin(); it != attributes.cend(); ++it)
        items += fillInTurn(u"%1=\"%2\""_s, {it.key(), it.value()});
    return u' ' + items.join(u' ');
}

VLXmlElement::VLXmlElement(QObject* parent, const QXmlStreamAttributes& attributes)
    : QObject(parent)
    , d(std::make_unique<VLXmlElementPrivate>())
{
    for (const QXmlStreamAttribute& attribute : attributes)
        setAttribute(attribute.qualifiedName().toString(), attribute.value().toString());
}

VLXmlElement::~VLXmlElement()
{
    if (d->isWithinReach)
        return;
    QList<std::pair<QObject*, int>> reached{{this, 0}};
    QList<QObject*> tooDeep;
    for (qsizetype i = 0; i < reached.size(); ++i) {
        const auto [object, depth] = reached.at(i);
        if (auto* element = qobject_cast<VLXmlElement*>(object))
            element->d->isWithinReach = true;
        for (QObject* child : object->children()) {
            if (depth < kMaxDeletionDepth)
                reached.append({child, depth + 1});
            else
                tooDeep.append(child);
        }
    }
    qDeleteAll(tooDeep);
}

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

    const QString indent(index, u' ');
    const QString closingMark = childLines.isEmpty() ? u"/"_s : QString();

    QStringList lines(
        fillInTurn(u"%1<%2%3%4>"_s, {indent, getTagName(), d->attributeText(), closingMark}));
    if (!childLines.isEmpty()) {
        lines += childLines;
        lines += fillInTurn(u"%1</%2>"_s, {indent, getTagName()});
    }
    return lines.join(u'\n');
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
