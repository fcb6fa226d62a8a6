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
     * Searches the descendants for the tag name @p name: the direct children first, then the
     * subtree of each child in turn.
     *
     * @return The first match, which stays owned by its parent, or null where there is none.
     */
    Q_INVOKABLE Vidlets::VLXmlElement* childElement(const QString& name) const;

    /**
     * Searches the descendants for the tag name @p name. An empty name matches all of them.
     *
     * @return The matches in document order. They stay owned by their parents.
     */
    Q_INVOKABLE QList<QObject*> childElementList(const QString& name) const;

    /// Returns the value of the attribute @p name, or a null string where there is none.
    Q_INVOKABLE QString attribute(const QString& name) const;

    /// Returns whether there is an attribute @p name. One with an empty value counts.
    Q_INVOKABLE bool hasAttribute(const QString& name) const;

    /// Appends @p content to the character data, with nothing in between, and sends the signal.
    Q_INVOKABLE void appendContent(const QString& content);

    /**
     * Writes an outline of the tree for people: tags and attributes, one tag to a line.
     *
     * It is not an inverse of the parser: character data and namespaces are left out, attributes
     * are sorted by name, and nothing is escaped. It takes time by the length of the outline, which
     * grows by the square of the depth.
     *
     * @param index How many blanks come before the outermost tag; each level has two more. Where
     *              the number is below zero there are none.
     * @return The lines, without a line feed at the end.
     */
    Q_INVOKABLE QString toXml(int index = 0);

    /// Returns the names of all attributes, sorted.
    QList<QString> attributeNames() const;

    /// Inserts or replaces the attribute @p name. No signal tells of it.
    void setAttribute(const QString& name, const QString& value);

    /// Returns the tag name.
    QString getTagName() const;
    /// Returns the namespace URI, which is empty where there is none.
    QString getTagNameSpace() const;
    /// Returns the character data directly inside the element, with all its white space.
    QString content() const;

    /// Sets the tag name. The signal is sent also when the name stays the same.
    void setTagName(const QString& name);
    /// Sets the namespace URI. The signal is sent also when the URI stays the same.
    void setTagNameSpace(const QString& nameSpace);
    /// Replaces the character data. The signal is sent also when the data stays the same.
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
