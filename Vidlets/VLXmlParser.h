// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLXMLPARSER_H
#define VLXMLPARSER_H

#include <Vidlets/VidletsExport.h>

#include <QList>
#include <QString>
#include <QXmlStreamAttributes>

#include <memory>

class QFile;
class QObject;

namespace Vidlets {

class VLXmlParserPrivate;

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
 * An element filter: decides tag by tag what the parser builds.
 *
 * It gets the qualified name of the tag, its attributes and the user data of the parser, and gives
 * ElementFilterFlag values.
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

    /// Deletes the elements that the last, failed parse left open.
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

    /// Handles a start tag. Called by parse(), but for the tags in a subtree that it passes over.
    /// False where no object could be made.
    bool startElement(const QString& namespaceUri, const QString& name,
                      const QString& qualifiedName, const QXmlStreamAttributes& attributes);
    /// Handles an end tag. Called by parse(). Always true.
    bool endElement();
    /// Handles character data, which goes to the innermost element if it was built. Called by
    /// parse(). Always true.
    bool characters(const QString& text);
    /// Handles white space as characters() does. Always true.
    bool ignorableWhitespace(const QString& text);

private:
    Q_DISABLE_COPY_MOVE(VLXmlParser)

    const std::unique_ptr<VLXmlParserPrivate> d;
};

} // namespace Vidlets

#endif
