// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLXmlElement.h"

#include <QList>
#include <QMap>
#include <QStringList>

#include <algorithm>
#include <initializer_list>
#include <iterator>
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

constexpr int kIndentPerLevel = 2;

/// A line of an outline that is still to be written.
struct OutlineLine
{
    const VLXmlElement* element;
    int indent;
    bool isClosingTag;
};

/// Puts @p items on top of @p pending, the first of them topmost: the way to walk a tree in
/// document order without recursion.
template <typename T> void pushReversed(QList<T>& pending, const QList<T>& items)
{
    std::copy(items.crbegin(), items.crend(), std::back_inserter(pending));
}

QList<OutlineLine> linesOfChildren(const QObject* parent, int indent)
{
    QList<OutlineLine> lines;
    for (const QObject* child : parent->children()) {
        if (const auto* element = qobject_cast<const VLXmlElement*>(child))
            lines.append({element, indent, false});
    }
    return lines;
}

void appendLine(QString& outline, int indent, const QString& text)
{
    if (!outline.isEmpty())
        outline += u'\n';
    outline.resize(outline.size() + qMax(indent, 0), u' ');
    outline += text;
}

} // namespace

class VLXmlElementPrivate
{
public:
    QString attributeText() const;
    QString openingTag(const QString& name, bool hasChildren) const;

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

QString VLXmlElementPrivate::openingTag(const QString& name, bool hasChildren) const
{
    // The markers count from 2, as they do in the closing tag: a marker within the name or an
    // attribute is filled or left by its number.
    const QString closingMark = hasChildren ? QString() : u"/"_s;
    return fillInTurn(u"<%2%3%4>"_s, {name, attributeText(), closingMark});
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
    // QObject's destructor, which runs after this one, deletes the children and they theirs, one
    // call inside the other. So the topmost element of the deletion first cuts off what lies too
    // deep for that. It walks its subtree level by level down to the greatest depth and marks what
    // it meets, so that those elements do not walk again. What lies just below the last level is
    // deleted here, each as a topmost element of its own, whose walk goes on from there: calls nest
    // once for that many levels.
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
    // QObject::findChild() goes the same way with a call per level: too many for deep content.
    QObjectList pending;
    for (const QObject* parent = this; parent;
         parent = pending.isEmpty() ? nullptr : pending.takeLast()) {
        for (QObject* child : parent->children()) {
            auto* element = qobject_cast<VLXmlElement*>(child);
            // A null name matches every element, an empty one only elements without a name.
            if (element && (name.isNull() || element->objectName() == name))
                return element;
        }
        pushReversed(pending, parent->children());
    }
    return nullptr;
}

QList<QObject*> VLXmlElement::childElementList(const QString& name) const
{
    QList<QObject*> found;
    QObjectList pending;
    pushReversed(pending, children());
    while (!pending.isEmpty()) {
        QObject* object = pending.takeLast();
        if (name.isEmpty() || object->objectName() == name)
            found.append(object);
        pushReversed(pending, object->children());
    }
    return found;
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
    QString outline;
    QList<OutlineLine> pending{{this, index, false}};
    while (!pending.isEmpty()) {
        const auto [element, indent, isClosingTag] = pending.takeLast();
        const QString name = element->getTagName();
        if (isClosingTag) {
            appendLine(outline, indent, fillInTurn(u"</%2>"_s, {name}));
            continue;
        }
        const QList<OutlineLine> children = linesOfChildren(element, indent + kIndentPerLevel);
        appendLine(outline, indent, element->d->openingTag(name, !children.isEmpty()));
        if (children.isEmpty())
            continue;
        pending.append({element, indent, true});
        pushReversed(pending, children);
    }
    return outline;
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
