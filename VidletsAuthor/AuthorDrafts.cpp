// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorDrafts.h"

#include "AuthorFiles.h"
#include "AuthorTsFile.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace Vidlets {

AuthorDrafts::AuthorDrafts() = default;

QString AuthorDrafts::translation(const QString& path, const QString& text, const QString& context)
{
    const QFileInfo draft(path);
    if (!draft.isFile())
        return QString();
    const QFileInfo released(draft.path() + u'/' + draft.completeBaseName() + u".qm"_s);
    if (released.isFile() && released.lastModified() >= draft.lastModified())
        return QString();
    if (!load(path, draft.lastModified()))
        return QString();
    const QString translated =
        m_translator.translate(context.toUtf8().constData(), text.toUtf8().constData());
    return translated.isEmpty() ? text : translated;
}

bool AuthorDrafts::load(const QString& path, const QDateTime& modified)
{
    if (path == m_path && modified == m_modified)
        return m_isReadable;
    m_path = path;
    m_modified = modified;
    QString reason;
    AuthorTsFile::Fault fault;
    const auto content = AuthorFiles::read(path, reason);
    const auto file = AuthorTsFile::read(content.value_or(QByteArray()), fault);
    m_isReadable = file.has_value();
    if (!m_isReadable)
        return false;
    const QByteArray bytes = file->compiled();
    // The translator lets go of the bytes that it has, and then takes these; one without any text
    // it refuses, and is empty afterwards.
    (void)m_translator.load(reinterpret_cast<const uchar*>(bytes.constData()),
                            static_cast<int>(bytes.size()));
    m_bytes = bytes;
    return true;
}

} // namespace Vidlets
