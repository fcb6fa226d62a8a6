// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorStringsFiles.h"

#include "AuthorFiles.h"
#include <Vidlets/VLSettings.h>

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

QString stem()
{
    return Settings::translationStem(VLContext()) + u'_';
}

} // namespace

AuthorStringsFiles::AuthorStringsFiles(const AuthorPackage& package, const QString& directory)
    : m_directory(AuthorFiles::join(package.path, AuthorStrings::directoryFor(directory)))
    , m_strings(package, directory)
{
}

void AuthorStringsFiles::addExisting()
{
    const auto entries = AuthorFiles::list(m_directory).value_or(QList<AuthorFiles::Entry>());
    for (const AuthorFiles::Entry& entry : entries) {
        const bool isSource = entry.kind != AuthorFiles::Kind::Directory && entry.isNamed
            && entry.name.startsWith(stem()) && entry.name.endsWith(".ts"_L1);
        const QString locale = QFileInfo(entry.name).completeBaseName().mid(stem().size());
        // That one has nothing to translate.
        if (isSource && locale != AuthorStrings::pseudoLocale())
            add(locale);
    }
}

void AuthorStringsFiles::add(const QString& locale)
{
    if (!m_locales.contains(locale))
        m_locales.append(locale);
}

void AuthorStringsFiles::addPseudo()
{
    add(AuthorStrings::pseudoLocale());
}

bool AuthorStringsFiles::write()
{
    m_faults += m_strings.faults();
    // What could not be read would count as gone.
    if (!m_faults.isEmpty())
        return false;
    bool isDone = true;
    for (const QString& locale : std::as_const(m_locales))
        isDone = update(locale) && isDone;
    return isDone;
}

QString AuthorStringsFiles::pathFor(const QString& locale) const
{
    return u"%1/%2%3.ts"_s.arg(m_directory, stem(), locale);
}

bool AuthorStringsFiles::update(const QString& locale)
{
    const QString path = pathFor(locale);
    if (locale == AuthorStrings::pseudoLocale()) {
        const AuthorTsFile file = m_strings.pseudo();
        m_report.append(
            u"%1: %2 in other words"_s.arg(path, counted(file.messages.size(), u"text"_s)));
        return save(path, file.write()) && compile(path, file);
    }
    auto file = read(path, locale);
    if (!file)
        return false;
    const AuthorStrings::Change change = m_strings.update(*file);
    // All at once, since a path may have a "%2" in it.
    m_report.append(u"%1: %2, %3 new, %4 gone, %5 unfinished"_s.arg(
        path, counted(m_strings.messages().size(), u"text"_s), QString::number(change.added),
        QString::number(change.gone), QString::number(change.unfinished)));
    return save(path, file->write()) && (!m_isCompiling || compile(path, *file));
}

/// Gives a new file where there is none, and nothing where the one that is there has to be kept.
std::optional<AuthorTsFile> AuthorStringsFiles::read(const QString& path, const QString& locale)
{
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink()) {
        AuthorTsFile file;
        file.language = locale;
        return file;
    }
    AuthorTsFile::Fault fault;
    const auto bytes = AuthorFiles::read(path, fault.reason);
    auto file = bytes ? AuthorTsFile::read(*bytes, fault) : std::nullopt;
    if (!file)
        m_faults.append(u"%1:%2: The file is left as it is, since it cannot be read: %3"_s.arg(
            path, QString::number(fault.position.line), fault.reason));
    return file;
}

bool AuthorStringsFiles::compile(const QString& path, const AuthorTsFile& file)
{
    const QString compiled = path.chopped(2) + u"qm"_s;
    qsizetype count = 0;
    for (const AuthorTsMessage& message : file.messages)
        count += message.isTranslated() && !message.isGone() ? 1 : 0;
    if (count == 0) {
        m_report.append(u"%1: not written, since nothing is translated"_s.arg(compiled));
        return true;
    }
    m_report.append(u"%1: %2"_s.arg(compiled, counted(count, u"translation"_s)));
    return save(compiled, file.compiled());
}

/// By rename: an application may have the file mapped into its memory.
bool AuthorStringsFiles::save(const QString& path, const QByteArray& content)
{
    QString reason;
    if (AuthorFiles::read(path, reason) == content)
        return true;
    QSaveFile file(path);
    const bool isSaved = QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly)
        && file.write(content) == content.size() && file.commit();
    if (!isSaved)
        m_faults.append(u"%1: The file cannot be written: %2"_s.arg(path, file.errorString()));
    return isSaved;
}

} // namespace Vidlets
