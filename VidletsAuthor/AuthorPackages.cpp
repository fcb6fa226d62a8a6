// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorPackages.h"

#include "AuthorFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

QString controlDirectory()
{
    return u"Control"_s;
}

/// Whether a directory of this name would be a package, but for the dot that hides it.
bool isHiddenPackage(const QString& name)
{
    return name.startsWith(u'.') && name.endsWith(packageSuffix()) && name != packageSuffix();
}

QString nameOf(const QString& packagePath)
{
    return QFileInfo(packagePath).completeBaseName();
}

} // namespace

QString packageSuffix()
{
    return u".vidlets"_s;
}

AuthorPackages::AuthorPackages(AuthorFindings& findings)
    : m_findings(findings)
{
}

bool AuthorPackages::add(const QString& path, QString& reason)
{
    const QString clean = QDir::cleanPath(path);
    const QFileInfo info(clean);
    const QString absolute = QDir::cleanPath(info.absoluteFilePath());
    if (path.isEmpty() || !info.exists()) {
        reason = u"There is no \"%1\"."_s.arg(path);
        return false;
    }
    if (info.isDir()) {
        if (isHiddenPackage(QFileInfo(absolute).fileName()))
            ignored(clean, u"its name begins with a dot"_s);
        else if (absolute.endsWith(packageSuffix()))
            addPackage(clean, QFileInfo(absolute).path());
        else
            addDataPath(clean);
        return true;
    }
    if (!info.isFile()) {
        reason = u"\"%1\" is neither a directory nor a regular file."_s.arg(path);
        return false;
    }
    const bool isKnown =
        std::any_of(m_keyDataFiles.cbegin(), m_keyDataFiles.cend(), [&info](const QString& other) {
            return QFileInfo(other).canonicalFilePath() == info.canonicalFilePath();
        });
    if (!isKnown)
        m_keyDataFiles.append(clean);
    return true;
}

QString AuthorPackages::noneIn(const QString& path)
{
    return u"There is no package in \"%1\"."_s.arg(path);
}

void AuthorPackages::addDataPath(const QString& path)
{
    const auto entries = AuthorFiles::list(path);
    if (!entries) {
        ignored(path, u"it cannot be read"_s);
        return;
    }
    for (const AuthorFiles::Entry& entry : *entries) {
        const bool isNamedPackage = entry.name.endsWith(packageSuffix());
        const QString place = AuthorFiles::join(path, entry.name);
        if (entry.isNamed && isHiddenPackage(entry.name))
            ignored(place, u"its name begins with a dot"_s);
        else if (entry.kind == AuthorFiles::Kind::Directory && entry.isNamed && isNamedPackage)
            addPackage(place, path);
        else if (entry.kind == AuthorFiles::Kind::Directory && entry.isNamed)
            checkEntry(path, entry.name);
        else if (isNamedPackage && !entry.isNamed)
            ignored(place, u"its name is not UTF-8"_s);
        else if (isNamedPackage && entry.kind == AuthorFiles::Kind::Link)
            ignored(place, u"it is a link"_s);
        else if (isNamedPackage)
            ignored(place, u"it is no directory"_s);
    }
}

/// Reports a directory that holds a package and is not named like one.
void AuthorPackages::checkEntry(const QString& dataPath, const QString& name)
{
    const QString path = AuthorFiles::join(dataPath, name);
    // Kept: the library searches such a directory for tips, and then knows no package by its name.
    if (name.endsWith(packageSuffix(), Qt::CaseInsensitive))
        m_findings.add(
            path, {}, u"package-name"_s,
            u"Its scenes and resources are not found: the name does not end in \"%1\", in "
            "small letters."_s.arg(packageSuffix()));
    else if (QFileInfo(AuthorFiles::join(path, controlDirectory())).isDir())
        m_findings.add(path, {}, u"package-name"_s,
                       u"The directory is passed over: its name does not end in \"%1\"."_s.arg(
                           packageSuffix()));
}

void AuthorPackages::addPackage(const QString& path, const QString& dataPath)
{
    static const QRegularExpression separators(u"[,;\\s]"_s);
    AuthorPackage package;
    package.path = path;
    package.canonicalPath = QFileInfo(path).canonicalFilePath();
    package.name = nameOf(package.canonicalPath);
    const bool isKnown =
        std::any_of(m_packages.cbegin(), m_packages.cend(), [&package](const AuthorPackage& other) {
            return other.canonicalPath == package.canonicalPath;
        });
    if (isKnown)
        return;
    const QString canonicalDataPath = QFileInfo(dataPath).canonicalFilePath();
    if (!m_dataPaths.contains(canonicalDataPath))
        m_dataPaths.append(canonicalDataPath);
    package.dataPath = static_cast<int>(m_dataPaths.indexOf(canonicalDataPath));
    if (package.name.isEmpty())
        m_findings.add(path, {}, u"package-name"_s, u"The package has no name."_s);
    else if (package.name.contains(separators))
        m_findings.add(
            path, {}, u"package-name"_s,
            u"\"search\" cannot name \"%1\": blanks, commas and semicolons separate names."_s.arg(
                package.name));
    listControlDirectory(package);
    m_packages.append(package);
}

void AuthorPackages::listControlDirectory(AuthorPackage& package)
{
    using AuthorFiles::Kind;
    const QString directory = AuthorFiles::join(package.path, controlDirectory());
    const auto entries = AuthorFiles::list(directory);
    const QFileInfo control(directory);
    if (control.isDir()
        && !AuthorFiles::isBelow(package.canonicalPath, control.canonicalFilePath())) {
        ignored(directory, u"it is a link that leads out of the package"_s);
        return;
    }
    if (control.isDir() && !entries)
        ignored(directory, u"it cannot be read"_s);
    // A package without any control file is told of where the files have been looked at.
    for (const AuthorFiles::Entry& entry : entries.value_or(QList<AuthorFiles::Entry>())) {
        const QString path = AuthorFiles::join(directory, entry.name);
        const QFileInfo info(path);
        if (!entry.isNamed)
            ignored(path, u"its name is not UTF-8"_s);
        else if (entry.name.startsWith(u'.'))
            ignored(path, u"its name begins with a dot"_s);
        else if (entry.kind == Kind::Directory)
            ignored(path, u"control files in a subfolder are not found"_s);
        else if (entry.kind == Kind::Link)
            ignored(path, u"it is a link"_s);
        else if (entry.kind != Kind::File)
            ignored(path, u"it is no regular file"_s);
        // Kept: the library's filter for names does not regard case.
        else if (!entry.name.endsWith(".xml"_L1, Qt::CaseInsensitive))
            ignored(path, u"its name does not end in \".xml\""_s);
        else if (!info.isReadable())
            ignored(path, u"it cannot be read"_s);
        else
            package.candidates.append(path);
    }
}

void AuthorPackages::ignored(const QString& path, const QString& reason)
{
    m_findings.add(path, {}, u"file-ignored"_s, u"The library passes it over: %1."_s.arg(reason));
}

void AuthorPackages::reportShadowed()
{
    QHash<QString, const AuthorPackage*> first;
    for (const AuthorPackage& package : m_packages) {
        const AuthorPackage*& other = first[package.name];
        if (!other) {
            other = &package;
            continue;
        }
        m_findings.add(package.path, {}, u"package-shadowed"_s,
                       u"%1 has the same name. Tips are taken from the later data path, scenes and "
                       "resources from the earlier one."_s.arg(other->path));
    }
}

const AuthorPackage* AuthorPackages::packageOf(const QString& path) const
{
    const auto found =
        std::find_if(m_packages.cbegin(), m_packages.cend(), [&path](const AuthorPackage& package) {
            return AuthorFiles::isBelow(package.path, path);
        });
    return found == m_packages.cend() ? nullptr : &*found;
}

QList<const AuthorPackage*> AuthorPackages::named(const QString& name) const
{
    QList<const AuthorPackage*> result;
    for (const AuthorPackage& package : m_packages) {
        if (package.name == name)
            result.append(&package);
    }
    std::stable_sort(result.begin(), result.end(),
                     [](const AuthorPackage* left, const AuthorPackage* right) {
                         return left->dataPath < right->dataPath;
                     });
    return result;
}

QStringList AuthorPackages::pathsOf(const QString& name) const
{
    QStringList paths;
    const QList<const AuthorPackage*> added = named(name);
    for (const AuthorPackage* package : added)
        paths.append(package->path);
    if (!paths.isEmpty())
        return paths;
    for (const QString& dataPath : m_dataPaths) {
        const QString path = AuthorFiles::join(dataPath, name + packageSuffix());
        if (QFileInfo(path).isDir())
            paths.append(path);
    }
    return paths;
}

} // namespace Vidlets
