// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorFiles.h"

#include <Vidlets/VLContentGuard.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>

using namespace Qt::StringLiterals;

namespace Vidlets::AuthorFiles {

namespace {

Kind kindOf(const std::filesystem::directory_entry& entry)
{
    std::error_code error;
    switch (entry.symlink_status(error).type()) {
    case std::filesystem::file_type::regular:
        return Kind::File;
    case std::filesystem::file_type::directory:
        return Kind::Directory;
    case std::filesystem::file_type::symlink:
        return Kind::Link;
    default:
        return Kind::Other;
    }
}

Entry entryOf(const std::filesystem::directory_entry& entry)
{
    const std::string native = entry.path().filename().string();
    const QByteArrayView bytes(native.data(), static_cast<qsizetype>(native.size()));
    return {QString::fromUtf8(bytes), kindOf(entry), bytes.isValidUtf8()};
}

} // namespace

QString join(const QString& directory, const QString& name)
{
    if (directory == u'.')
        return name;
    return directory.endsWith(u'/') ? directory + name : directory + u'/' + name;
}

bool isBelow(const QString& directory, const QString& path)
{
    if (path == directory)
        return true;
    const QString root = join(directory, QString());
    if (!path.startsWith(root) || path.startsWith(u'/') != directory.startsWith(u'/'))
        return false;
    // A clean path has its ".." at the beginning only.
    const QStringView rest = QStringView(path).sliced(root.size());
    return rest != u".." && !rest.startsWith(u"../");
}

QString below(const QString& directory, const QString& path)
{
    return path.mid(join(directory, QString()).size());
}

// QDir passes over names that are not UTF-8, of which authors have to be told.
std::optional<QList<Entry>> list(const QString& path)
{
    std::error_code error;
    std::filesystem::directory_iterator it(QFile::encodeName(path).toStdString(), error);
    if (error)
        return std::nullopt;
    QList<Entry> entries;
    for (; it != std::filesystem::directory_iterator(); it.increment(error)) {
        entries.append(entryOf(*it));
        if (error)
            break;
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry& left, const Entry& right) { return left.name < right.name; });
    return entries;
}

QStringList foldersBelow(const QString& root)
{
    // Far above what any package holds.
    constexpr qsizetype kMaxFolders = 10'000;
    QStringList folders{root};
    for (qsizetype i = 0; i < folders.size() && folders.size() < kMaxFolders; ++i) {
        const auto entries = list(folders.at(i));
        for (const Entry& entry : entries.value_or(QList<Entry>())) {
            if (entry.kind == Kind::Directory && entry.isNamed)
                folders.append(join(folders.at(i), entry.name));
        }
    }
    return folders;
}

std::optional<QByteArray> read(const QString& path, QString& reason, qint64 limit)
{
    QFile file(path);
    if (!VLContentGuard::open(file)) {
        const QFileInfo info(path);
        reason =
            info.exists() && !info.isFile() ? u"it is no regular file"_s : u"it cannot be read"_s;
        return std::nullopt;
    }
    if (file.size() > limit) {
        reason = u"it is larger than %1 MiB"_s.arg(limit / (qint64(1024) * 1024));
        return std::nullopt;
    }
    // Not the whole of it: a file may grow while it is being read.
    return file.read(limit);
}

} // namespace Vidlets::AuthorFiles
