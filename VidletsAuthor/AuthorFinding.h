// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORFINDING_H
#define AUTHORFINDING_H

#include <Vidlets/VLXmlReport.h>

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace Vidlets {

/// How much a finding weighs; in ascending order.
enum class AuthorSeverity {
    Off,
    Note,
    Warning,
    Error
};

/// Returns the word that authors write for it.
QString severityName(AuthorSeverity severity);
/// Returns the severity that @p name stands for; nothing for any other word.
std::optional<AuthorSeverity> severityNamed(QStringView name);

/// Returns @p text as it may be shown on one line of a terminal: what would steer it is spelt out.
QString printable(const QString& text);

/// Returns @p count and @p noun, which is in the plural for any number but one.
QString counted(qsizetype count, const QString& noun);

/// One thing that is wrong at one place.
struct AuthorFinding
{
    QString file;
    /// Both numbers count from 1; 0 for a finding that is about the file or directory as a whole.
    XmlPosition position;
    QString rule;
    AuthorSeverity severity = AuthorSeverity::Warning;
    /// What is wrong, as a sentence.
    QString message;
    /// What to do about it, as a sentence.
    QString help;
};

/// A comment of an author that switches rules off.
struct AuthorSuppression
{
    QStringList rules;
    /// The lines that the comment itself stands on.
    qint64 firstLine = 0;
    qint64 lastLine = 0;
    /// The element or statement behind it; lines of 0 where there is none. The end is included, and
    /// its line is 0 where the file ends first.
    XmlPosition begin;
    XmlPosition end;
};

/// Takes the rules out of the text of a comment; empty if it switches nothing off.
QStringList suppressedRules(const QString& comment);

/// Collects what the rules find.
class AuthorFindings
{
public:
    /// Adds a finding with the default severity of @p rule, and its help where @p help is empty.
    void add(const QString& file, XmlPosition position, const QString& rule, const QString& message,
             const QString& help = QString());
    void suppress(const QString& file, const AuthorSuppression& suppression);

    const QList<AuthorFinding>& all() const
    {
        return m_findings;
    }
    /// Returns what no comment switches off.
    QList<AuthorFinding> unsuppressed() const;

private:
    struct FileSuppression
    {
        QString file;
        AuthorSuppression suppression;
    };
    QList<AuthorFinding> m_findings;
    QList<FileSuppression> m_suppressions;
};

} // namespace Vidlets

#endif
