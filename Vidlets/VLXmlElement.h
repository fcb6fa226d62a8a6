// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLXMLELEMENT_H
#define VLXMLELEMENT_H

#include <Vidlets/VidletsExport.h>

#include <QList>
#include <QObject>
#include <QString>
#include <QXmlStreamAttributes>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace Vidlets {

class VLXmlElementPrivate;

/**
 * One element of an XML file: tag name, attributes, character data and child elements.
 *
 * The tree is an ordinary QObject tree, so that a scene can walk it: children in document order,
 * owned by their parent. The tag name is the object name, which is what the search by tag name
 * goes by, and nothing else may use the object name. All lookups by name are exact and
 * case-sensitive. An element stays valid only as long as the root of its tree does.
 *
 * No operation fails: a missing attribute reads as a null string, a missing child as null. Elements
 * belong to the user-interface thread.
 */
class VIDLETS_EXPORT VLXmlElement : public QObject
{
    Q_OBJECT
    QML_ELEMENT

    /// The qualified name of the tag, with its prefix where the source has one.
    Q_PROPERTY(QString tagName READ getTagName WRITE setTagName NOTIFY tagNameChanged)
    /// The namespace URI of the tag, empty where there is none.
    Q_PROPERTY(
        QString tagNameSpace READ getTagNameSpace WRITE setTagNameSpace NOTIFY tagNameSpaceChanged)
    /// The character data directly inside the element; a scene changes it by appendContent() alone.
    Q_PROPERTY(QString content READ content NOTIFY contentChanged)

public:
    /// Makes an element under @p parent, which owns it, with @p attributes by qualified name.
    Q_INVOKABLE explicit VLXmlElement(
        QObject* parent = nullptr, const QXmlStreamAttributes& attributes = QXmlStreamAttributes());
    ~VLXmlElement() override;

    /**
     * The first descendant with the tag name @p name, or null.
     *
     * Direct children are tried first, then the subtree of each child in turn. The element stays
     * owned by its parent.
     */
    Q_INVOKABLE Vidlets::VLXmlElement* childElement(const QString& name) const;

    /// All descendants with the tag name @p name in document order; with an empty name, all
    /// descendants. They stay owned by their parents.
    Q_INVOKABLE QList<QObject*> childElementList(const QString& name) const;

    /// The value of the attribute @p name, or a null string where there is no such attribute.
    Q_INVOKABLE QString attribute(const QString& name) const;

    /// Whether there is an attribute @p name, also one with an empty value.
    Q_INVOKABLE bool hasAttribute(const QString& name) const;

    /// Appends @p content to the character data, with nothing in between.
    Q_INVOKABLE void appendContent(const QString& content);

    /**
     * An outline of the tree for people: tags and attributes, indented by @p index blanks and two
     * more per level, without a line feed at the end.
     *
     * It is not an inverse of the parser: character data and namespaces are left out, attributes
     * are sorted by name, and nothing is escaped.
     */
    Q_INVOKABLE QString toXml(int index = 0);

    /// The names of all attributes, sorted.
    QList<QString> attributeNames() const;

    /// Inserts or replaces the attribute @p name. No signal tells of it.
    void setAttribute(const QString& name, const QString& value);

    /// The tag name.
    QString getTagName() const;
    /// The namespace URI.
    QString getTagNameSpace() const;
    /// The character data.
    QString content() const;

    /// Sets the tag name; the signal is sent also when it stays the same.
    void setTagName(const QString& name);
    /// Sets the namespace URI; the signal is sent also when it stays the same.
    void setTagNameSpace(const QString& nameSpace);
    /// Replaces the character data; the signal is sent also when it stays the same.
    void setContent(const QString& content);

Q_SIGNALS:
    /// The tag name was set.
    void tagNameChanged();
    /// The namespace URI was set.
    void tagNameSpaceChanged();
    /// The character data was set or appended to.
    void contentChanged();

private:
    Q_DISABLE_COPY_MOVE(VLXmlElement)

    const std::unique_ptr<VLXmlElementPrivate> d;
};

} // namespace Vidlets

#endif
