// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORDRAFTS_H
#define AUTHORDRAFTS_H

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QTranslator>

namespace Vidlets {

/**
 * Translations that have been saved, but not released yet.
 *
 * A file for translators, "*.ts", is a draft as long as the compiled file beside it, "*.qm", is
 * older or not there. Keeps the last one that was asked for.
 */
class AuthorDrafts
{
public:
    AuthorDrafts();

    /// Returns what the draft @p path makes of @p text in @p context, @p text itself where it has
    /// nothing for it. Null where the file is no draft or cannot be read.
    QString translation(const QString& path, const QString& text, const QString& context);

private:
    Q_DISABLE_COPY_MOVE(AuthorDrafts)

    bool load(const QString& path, const QDateTime& modified);

    QString m_path;
    QDateTime m_modified;
    bool m_isReadable = false;
    /// Used in place by the translator.
    QByteArray m_bytes;
    QTranslator m_translator;
};

} // namespace Vidlets

#endif
