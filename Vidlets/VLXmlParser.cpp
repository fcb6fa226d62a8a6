// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLXmlParser.h"

#include "VLXmlElement.h"
#include "VLXmlReport.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QMetaProperty>
#include <QPointer>
#include <QStringView>
#include <QTextStream>
#include <QXmlStreamReader>

#include <array>
#include <utility>

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

XmlPosition readPosition(const QXmlStreamReader& reader)
{
    return {reader.lineNumber(), reader.columnNumber()};
}

/// Where the next tag begins, if one follows at once.
XmlPosition startOfNext(const QXmlStreamReader& reader)
{
    XmlPosition position = readPosition(reader);
    // Text ends where the reader meets the "<" behind it, which then counts as read.
    const bool hasReadBracket = reader.isCharacters() && !reader.isCDATA();
    if (!hasReadBracket)
        ++position.column;
    return position;
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

    VLXmlElement* openDocument();
    void readDocument(QXmlStreamReader& reader);
    void readStartTag(const QXmlStreamReader& reader);
    void readText(const QXmlStreamReader& reader);
    bool isNoted() const;
    void noteStartTag(const QXmlStreamReader& reader, XmlPosition start);
    const QString& inBuffer(QStringView text);

    bool isSkipping() const;
    bool openTag(QStringView namespaceUri, QStringView name, const QString& qualifiedName,
                 const QXmlStreamAttributes& attributes);
    int askFilter(const QString& qualifiedName, const QXmlStreamAttributes& attributes) const;
    void closeTag();
    void push(QObject* element);
    void appendText(QObject* element, const QString& text);

    QObject* createElement(QStringView name, const QXmlStreamAttributes& attributes);
    bool writeAttributes(QObject* object, const QXmlStreamAttributes& attributes) const;
    int appendMethodOf(const QMetaObject* type);

    const QMetaObject* metaObject = &VLXmlElement::staticMetaObject;
    QList<ElementStackEntry> stack;
    ShouldGenerateElementFunction filter = nullptr;
    void* userData = nullptr;
    /// The index of the method that takes character data, and the class that it was found in: text
    /// is frequent, and the search for a method by its name costs more than the rest of its way.
    int appendMethod = -1;
    const QMetaObject* appendMethodOwner = nullptr;
    /// The string of the document that is being handed on. Kept from one to the next, which saves
    /// an allocation for each; who keeps a copy shares it until then.
    QString buffer;
    /// Takes notes of a guarded parse; null outside of one.
    XmlReport* report = nullptr;
    /// The elements of a guarded parse that have no parent and reach no result.
    QList<QObject*> orphans;
    /// What governs the next start tag: FilterChildren, KeepChildren or SkipChildren.
    int state = FilterChildren;
};

/// Gives what stands for the document and is the parent of the top-level elements while they are
/// built.
VLXmlElement* VLXmlParserPrivate::openDocument()
{
    state = FilterChildren;
    // What a failed parse left open is dropped here, not deleted.
    stack.clear();
    auto* sentinel = new VLXmlElement;
    stack.append({QPointer<QObject>(sentinel), FilterChildren});
    return sentinel;
}

void VLXmlParserPrivate::readDocument(QXmlStreamReader& reader)
{
    while (!reader.atEnd()) {
        const XmlPosition start = isNoted() ? startOfNext(reader) : XmlPosition();
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            readStartTag(reader);
            if (start.line > 0)
                noteStartTag(reader, start);
            break;
        case QXmlStreamReader::Characters:
            readText(reader);
            break;
        case QXmlStreamReader::EndElement:
            closeTag();
            break;
        default:
            break;
        }
    }
}

void VLXmlParserPrivate::readStartTag(const QXmlStreamReader& reader)
{
    // A control file of many tips is mostly skipped tags: they take no copies of strings.
    if (isSkipping())
        push(nullptr);
    else
        openTag(reader.namespaceUri(), reader.name(), inBuffer(reader.qualifiedName()),
                reader.attributes());
}

void VLXmlParserPrivate::readText(const QXmlStreamReader& reader)
{
    if (QObject* element = stack.constLast().element)
        appendText(element, inBuffer(reader.text()));
}

/// Whether the place of the next tag is of interest: that of the root and those of its children
/// are.
bool VLXmlParserPrivate::isNoted() const
{
    constexpr qsizetype kMaxOpenTags = 2;
    return report && stack.size() <= kMaxOpenTags;
}

void VLXmlParserPrivate::noteStartTag(const QXmlStreamReader& reader, XmlPosition start)
{
    const bool isRoot = report->rootTag.isNull();
    // The reader passes over the white space before the root without a word.
    const XmlPosition position = isRoot ? readPosition(reader) : start;
    if (isRoot) {
        report->rootTag = reader.qualifiedName().toString();
        report->rootPosition = position;
    }
    if (stack.constLast().element)
        report->positions.append(position);
}

const QString& VLXmlParserPrivate::inBuffer(QStringView text)
{
    return buffer.setUnicode(text.data(), text.size());
}

bool VLXmlParserPrivate::isSkipping() const
{
    return state & SkipChildren;
}

/// Opens a tag that is not within a skipped one. False where no object could be made.
bool VLXmlParserPrivate::openTag(QStringView namespaceUri, QStringView name,
                                 const QString& qualifiedName,
                                 const QXmlStreamAttributes& attributes)
{
    const int flags = askFilter(qualifiedName, attributes);
    if (flags & SkipChildren)
        state = SkipChildren;
    else if (flags & KeepChildren)
        state = KeepChildren;
    else
        state = FilterChildren;

    if (flags & NoElement) {
        push(nullptr);
        return true;
    }

    QObject* object = createElement(name, attributes);
    if (!object)
        return false;
    writePropertyIfPresent(object, "tagNameSpace", namespaceUri.trimmed().toString());
    writePropertyIfPresent(object, "tagName", qualifiedName.trimmed());
    push(object);
    return true;
}

int VLXmlParserPrivate::askFilter(const QString& qualifiedName,
                                  const QXmlStreamAttributes& attributes) const
{
    return (state & FilterChildren) && filter ? filter(qualifiedName, attributes, userData) : state;
}

void VLXmlParserPrivate::closeTag()
{
    stack.removeLast();
    state = stack.constLast().state;
}

/// Makes a tag the innermost; @p element is null where it has none.
void VLXmlParserPrivate::push(QObject* element)
{
    stack.append({QPointer<QObject>(element), state});
}

void VLXmlParserPrivate::appendText(QObject* element, const QString& text)
{
    const int method = appendMethodOf(element->metaObject());
    if (method < 0)
        return;
    // The first argument is the result, of which there is none.
    std::array<void*, 2> arguments = {nullptr, const_cast<QString*>(&text)};
    QMetaObject::metacall(element, QMetaObject::InvokeMetaMethod, method, arguments.data());
}

QObject* VLXmlParserPrivate::createElement(QStringView name, const QXmlStreamAttributes& attributes)
{
    // The parent of an element beneath a dropped tag is null: such an element reaches no result.
    QObject* parent = stack.constLast().element;
    QObject* object =
        metaObject->newInstance(Q_ARG(QObject*, parent), Q_ARG(QXmlStreamAttributes, attributes));
    if (object) {
        if (report && !parent)
            orphans.append(object);
        return object;
    }

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

int VLXmlParserPrivate::appendMethodOf(const QMetaObject* type)
{
    if (type != appendMethodOwner) {
        const QByteArray signature =
            QMetaObject::normalizedSignature("appendContent(const QString&)");
        appendMethod = type->indexOfMethod(signature.constData());
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
    VLXmlElement* sentinel = d->openDocument();
    QXmlStreamReader reader(file);
    d->readDocument(reader);
    if (reader.error() != QXmlStreamReader::NoError) {
        reportInvalidXml(*file, reader);
        // One entry goes, however many are open. Where only the sentinel is, the stack runs empty
        // and the list's assertion ends the process: intended, and not to be guarded.
        d->closeTag();
    }

    QList<QObject*> elements = sentinel->children();
    for (QObject* element : std::as_const(elements))
        element->setParent(nullptr);
    delete sentinel;
    d->stack.first().element.clear();
    return elements;
}

VLXmlElement* VLXmlParser::parseGuarded(const QByteArray& document, XmlReport& report)
{
    QXmlStreamReader reader(document);
    std::unique_ptr<VLXmlElement> root(parseSurviving(reader, report));
    return report.fault.isNull() ? root.release() : nullptr;
}

VLXmlElement* VLXmlParser::parseSurviving(QXmlStreamReader& reader, XmlReport& report)
{
    const std::unique_ptr<VLXmlElement> sentinel(d->openDocument());
    d->report = &report;
    d->readDocument(reader);
    d->report = nullptr;
    report.openTags = d->stack.size() - 1;
    d->stack.clear();
    qDeleteAll(std::exchange(d->orphans, {}));
    if (reader.hasError()) {
        report.fault = reader.errorString();
        report.faultPosition = readPosition(reader);
        if (report.openTags != 1)
            return nullptr;
    }
    // A document has one root at most.
    auto* root = sentinel->findChild<VLXmlElement*>(QString(), Qt::FindDirectChildrenOnly);
    if (root)
        root->setParent(nullptr);
    return root;
}

bool VLXmlParser::startElement(const QString& namespaceUri, const QString& name,
                               const QString& qualifiedName, const QXmlStreamAttributes& attributes)
{
    if (!d->isSkipping())
        return d->openTag(namespaceUri, name, qualifiedName, attributes);
    d->push(nullptr);
    return true;
}

bool VLXmlParser::endElement()
{
    d->closeTag();
    return true;
}

bool VLXmlParser::characters(const QString& text)
{
    if (QObject* element = d->stack.constLast().element)
        d->appendText(element, text);
    return true;
}

bool VLXmlParser::ignorableWhitespace(const QString& text)
{
    return characters(text);
}

} // namespace Vidlets
