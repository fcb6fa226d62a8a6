// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLXmlParser.h"

#include "VLXmlElement.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QPointer>
#include <QTextStream>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

void reportInvalidXml(const QFile& file, const QXmlStreamReader& reader)
{
    const QString message =
        u"\nError parsing %1 file (line %2, column %3): the file "
        "contains invalid xml. Check for unexpected elements, "
        "unclosed tags, missing quotes or spaces, or other "
        "formatting errors."_s.arg(QFileInfo(file).fileName(), QString::number(reader.lineNumber()),
                                   QString::number(reader.columnNumber()));
    QTextStream(stdout) << message << Qt::endl;
}

void writePropertyIfPresent(QObject* object, const char* name, const QString& value)
{
    const int index = object->metaObject()->indexOfProperty(name);
    if (index >= 0)
        object->metaObject()->property(index).write(object, value);
}

} // namespace

class VLXmlParserPrivate
{
public:
    struct ElementStackEntry
    {
        /// Empty where the tag has no element. Guarded, since an element may go with an ancestor.
        QPointer<QObject> element;
        /// The state to restore when this entry becomes the innermost again.
        int state;
    };

    void readDocument(VLXmlParser* parser, QXmlStreamReader& reader);
    QObject* createElement(const QString& name, const QXmlStreamAttributes& attributes) const;
    bool writeAttributes(QObject* object, const QXmlStreamAttributes& attributes) const;
    void pushSkipped();
    QMetaMethod appendMethodOf(const QMetaObject* type);

    const QMetaObject* metaObject = &VLXmlElement::staticMetaObject;
    QList<ElementStackEntry> stack;
    ShouldGenerateElementFunction filter = nullptr;
    void* userData = nullptr;
    /// The method that takes character data, and the class that it was found in: text is frequent,
    /// and the search for a method by its name costs more than the rest of its way.
    QMetaMethod appendMethod;
    const QMetaObject* appendMethodOwner = nullptr;
    /// What governs the next start tag: FilterChildren, KeepChildren or SkipChildren.
    int state = FilterChildren;
};

void VLXmlParserPrivate::readDocument(VLXmlParser* parser, QXmlStreamReader& reader)
{
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            // A control file of many tips is mostly skipped tags: they take no copies of strings.
            if (state & SkipChildren)
                pushSkipped();
            else
                parser->startElement(reader.namespaceUri().toString(), reader.name().toString(),
                                     reader.qualifiedName().toString(), reader.attributes());
            break;
        case QXmlStreamReader::Characters:
            if (!stack.constLast().element.isNull())
                parser->characters(reader.text().toString());
            break;
        case QXmlStreamReader::EndElement:
            parser->endElement();
            break;
        default:
            break;
        }
    }
}

QObject* VLXmlParserPrivate::createElement(const QString& name,
                                           const QXmlStreamAttributes& attributes) const
{
    // The parent of an element beneath a dropped tag is null: such an element reaches no result.
    QObject* parent = stack.constLast().element;
    QObject* object =
        metaObject->newInstance(Q_ARG(QObject*, parent), Q_ARG(QXmlStreamAttributes, attributes));
    if (object)
        return object;

    object = metaObject->newInstance(Q_ARG(QObject*, parent));
    if (!object) {
        qDebug().noquote() << u"Could not find object for element: %1"_s.arg(name);
        return nullptr;
    }
    if (!writeAttributes(object, attributes)) {
        delete object;
        return nullptr;
    }
    return object;
}

bool VLXmlParserPrivate::writeAttributes(QObject* object,
                                         const QXmlStreamAttributes& attributes) const
{
    const QString className = QString::fromLatin1(metaObject->className());
    for (const QXmlStreamAttribute& attribute : attributes) {
        const QString name = attribute.name().toString();
        const QString value = attribute.value().toString();
        const int index = metaObject->indexOfProperty(name.toLatin1().constData());
        if (index < 0) {
            qDebug().noquote() << u"No Property named %1 on %2"_s.arg(name, className);
            return false;
        }
        if (!metaObject->property(index).write(object, QVariant(value))) {
            qDebug().noquote() << u"Could not write \"%1\" to property %2 of %3"_s.arg(value, name,
                                                                                       className);
        }
    }
    return true;
}

void VLXmlParserPrivate::pushSkipped()
{
    stack.append({QPointer<QObject>(), SkipChildren});
}

QMetaMethod VLXmlParserPrivate::appendMethodOf(const QMetaObject* type)
{
    if (type != appendMethodOwner) {
        const QByteArray signature =
            QMetaObject::normalizedSignature("appendContent(const QString&)");
        appendMethod = type->method(type->indexOfMethod(signature.constData()));
        appendMethodOwner = type;
    }
    return appendMethod;
}

VLXmlParser::VLXmlParser(ShouldGenerateElementFunction filter, void* userData)
    : d(std::make_unique<VLXmlParserPrivate>())
{
    d->filter = filter;
    d->userData = userData;
}

VLXmlParser::~VLXmlParser()
{
    for (const auto& entry : std::as_const(d->stack))
        delete entry.element.data();
}

QList<QObject*> VLXmlParser::parse(QFile& file)
{
    return parse(&file);
}

QList<QObject*> VLXmlParser::parse(QFile* file)
{
    d->state = FilterChildren;
    // What a failed parse left open is dropped here, not deleted.
    d->stack.clear();

    // Stands for the document and is the parent of the top-level elements while they are built.
    auto* sentinel = new VLXmlElement;
    d->stack.append({QPointer<QObject>(sentinel), FilterChildren});

    QXmlStreamReader reader(file);
    d->readDocument(this, reader);
    if (reader.error() != QXmlStreamReader::NoError) {
        reportInvalidXml(*file, reader);
        // One entry goes, however many are open. Where only the sentinel is, the stack runs empty
        // and the list's assertion ends the process: intended, and not to be guarded.
        endElement();
    }

    QList<QObject*> elements = sentinel->children();
    for (QObject* element : std::as_const(elements))
        element->setParent(nullptr);
    delete sentinel;
    d->stack.first().element.clear();
    return elements;
}

bool VLXmlParser::startElement(const QString& namespaceUri, const QString& name,
                               const QString& qualifiedName, const QXmlStreamAttributes& attributes)
{
    int flags = d->state;
    if (flags & SkipChildren) {
        d->pushSkipped();
        return true;
    }
    if ((flags & FilterChildren) && d->filter)
        flags = d->filter(qualifiedName, attributes, d->userData);

    if (flags & SkipChildren)
        d->state = SkipChildren;
    else if (flags & KeepChildren)
        d->state = KeepChildren;
    else
        d->state = FilterChildren;

    if (flags & NoElement) {
        d->stack.append({QPointer<QObject>(), d->state});
        return true;
    }

    QObject* object = d->createElement(name, attributes);
    if (!object)
        return false;
    writePropertyIfPresent(object, "tagNameSpace", namespaceUri.trimmed());
    writePropertyIfPresent(object, "tagName", qualifiedName.trimmed());
    d->stack.append({QPointer<QObject>(object), d->state});
    return true;
}

bool VLXmlParser::endElement()
{
    d->stack.removeLast();
    d->state = d->stack.constLast().state;
    return true;
}

bool VLXmlParser::characters(const QString& text)
{
    QObject* element = d->stack.constLast().element;
    if (!element)
        return true;

    const QMetaMethod method = d->appendMethodOf(element->metaObject());
    if (method.isValid())
        method.invoke(element, Qt::DirectConnection, Q_ARG(QString, text));
    return true;
}

bool VLXmlParser::ignorableWhitespace(const QString& text)
{
    return characters(text);
}

} // namespace Vidlets
