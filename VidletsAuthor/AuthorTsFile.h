// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORTSFILE_H
#define AUTHORTSFILE_H

#include <Vidlets/VLXmlReport.h>

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

class QXmlStreamReader;

namespace Vidlets {

/// Where a text comes from.
struct AuthorTsLocation
{
    /// Relative to the file of translations.
    QString file;
    qint64 line = 0;
};

/// A text and its translation.
struct AuthorTsMessage
{
    enum class State {
        Finished,
        Unfinished,
        /// No longer in use, but kept for the day when it is again.
        Vanished,
        /// Likewise, and it was never finished.
        Obsolete
    };

    bool isGone() const
    {
        return state == State::Vanished || state == State::Obsolete;
    }
    bool isTranslated() const;
    /// Returns whether it is no text at all, but the way in which a context has a comment().
    bool isContextComment() const
    {
        return source.isEmpty() && id.isEmpty();
    }

    QString context;
    QString source;
    /// Tells equal texts apart.
    QString comment;
    /// For the translator.
    QString extraComment;
    QString translatorComment;
    QString oldSource;
    QString oldComment;
    QString id;
    QString userData;
    /// Several for a text with a number.
    QStringList translations;
    /// Names and values of what other tools have added.
    QList<std::pair<QString, QString>> extras;
    QList<AuthorTsLocation> locations;
    /// What else an author has written in front of it, such as a comment, as it stands there.
    QStringList above;
    /// Likewise inside of it, each with the name of the element in front of which it stands.
    QList<std::pair<QString, QString>> inside;
    State state = State::Unfinished;
    bool isNumerus = false;
    /// In the file that was read.
    XmlPosition position;
};

/// What stands around the texts of a context, each part as it is.
struct AuthorTsContext
{
    QString name;
    QStringList above;
    /// Behind the name.
    QStringList inside;
    /// Behind the last text.
    QStringList below;
};

/**
 * A file of translations as Qt Linguist writes it, "*.ts".
 *
 * What it does not know it keeps as it is: comments, elements and attributes of the root.
 */
class AuthorTsFile
{
public:
    /// What is wrong with a file.
    struct Fault
    {
        XmlPosition position;
        QString reason;
    };

    /// Reads a file; nothing, with the @p fault, for one that is none or not well-formed. Places
    /// where texts come from are not read.
    static std::optional<AuthorTsFile> read(const QByteArray& bytes, Fault& fault);
    /// Returns the file in the layout of Qt's own tools.
    QByteArray write() const;
    /// Returns the compiled file, "*.qm".
    QByteArray compiled() const;

    QString language;
    QString sourceLanguage;
    /// Comments in front of the root, each with its marks.
    QStringList comments;
    /// What the root has besides the languages.
    QList<std::pair<QString, QString>> attributes;
    /// Those about which there is something to keep, at least; those of messages alone come last.
    QList<AuthorTsContext> contexts;
    QList<AuthorTsMessage> messages;
    /// Behind the last context.
    QStringList below;
    /// Behind the root.
    QStringList behind;

private:
    void readRoot(QXmlStreamReader& reader);
};

} // namespace Vidlets

#endif
