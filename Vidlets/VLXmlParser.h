// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLXMLPARSER_H
#define VLXMLPARSER_H

#include <Vidlets/VidletsExport.h>

#include <QList>
#include <QString>
#include <QXmlStreamAttributes>

#include <memory>

class QByteArray;
class QFile;
class QObject;
class QXmlStreamReader;

namespace Vidlets {

class VLXmlElement;
class VLXmlParserPrivate;
struct XmlReport;

/**
 * What an element filter answers for a tag, as a combination of these flags.
 *
 * SkipChildren goes before KeepChildren, and KeepChildren before FilterChildren; NoElement is
 * independent of the three.
 */
enum ElementFilterFlag {
    FilterChildren = 1, ///< The children go through the filter in their turn.
    KeepChildren = 2,   ///< All descendants are built without asking the filter.
    NoElement = 4,      ///< Nothing is built for this tag; what is inside is still walked.
    SkipChildren = 8    ///< Everything inside this tag is passed over.
};

/**
 * An element filter, which decides tag by tag what the parser builds.
 *
 * It is given the qualified name of the tag, its attributes and the user data of the parser, and
 * returns ElementFilterFlag values.
 */
using ShouldGenerateElementFunction = int (*)(const QString& tag,
                                              const QXmlStreamAttributes& attributes,
                                              void* userData);

/**
 * Turns an XML file into a tree of VLXmlElement in one pass, building only what a filter asks for.
 *
 * One parser may read several files in turn. It is used on one thread from construction to
 * destruction.
 *
 * A file that is not well-formed gives what was built before the fault, and one line on standard
 * output. If a tag below the root was open by then, built or not, the parser keeps hold of the
 * root: deleting the parser deletes it, although it is in the list that parse() returned. A fault
 * outside the root, in an empty file for instance or behind the root's end, violates a container
 * precondition and ends the process.
 */
class VIDLETS_EXPORT VLXmlParser
{
public:
    /// Makes a parser that asks @p filter, handing it @p userData, which stays the caller's.
    /// Without a filter everything is built.
    explicit VLXmlParser(ShouldGenerateElementFunction filter = nullptr, void* userData = nullptr);

    /// Deletes the elements that the last parse left open, if it failed.
    ~VLXmlParser();

    /// @overload
    QList<QObject*> parse(QFile& file);

    /**
     * Reads @p file, which must be open for reading and is left open.
     *
     * @return The top-level elements, owned by the caller: the root, or nothing where the filter
     *         dropped it.
     */
    QList<QObject*> parse(QFile* file);

    /**
     * Handles a start tag as parse() does: asks the filter and builds an element if it says so.
     *
     * @return Whether all went well: false where an element was wanted and could not be made.
     */
    bool startElement(const QString& namespaceUri, const QString& name,
                      const QString& qualifiedName, const QXmlStreamAttributes& attributes);
    /// Handles an end tag as parse() does, whichever tag it is of. Always returns true.
    bool endElement();
    /// Handles character data as parse() does: it goes to the innermost tag if an element was built
    /// for that. Always returns true.
    bool characters(const QString& text);
    /// Handles white space as characters() does. Always returns true.
    bool ignorableWhitespace(const QString& text);

private:
    Q_DISABLE_COPY_MOVE(VLXmlParser)

    friend class VLContentGuard;
    friend class VLIndexHooks;

    /**
     * Reads @p document and gives its root only if all of it is well-formed.
     *
     * Whatever was built otherwise is deleted, and nothing stays open. @p report tells where and
     * why.
     */
    VLXmlElement* parseGuarded(const QByteArray& document, XmlReport& report);

    /**
     * Reads all of @p reader and gives the root, even where the document breaks off, as long as
     * nothing but the root was open then: such a root outlives the parser that parse() is asked of.
     *
     * Whatever was built otherwise is deleted, and nothing stays open. @p report tells where and
     * why.
     */
    VLXmlElement* parseSurviving(QXmlStreamReader& reader, XmlReport& report);

    const std::unique_ptr<VLXmlParserPrivate> d;
};

} // namespace Vidlets

#endif
