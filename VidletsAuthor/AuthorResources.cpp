// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorResources.h"

#include "AuthorClips.h"
#include "AuthorFiles.h"
#include "AuthorSceneText.h"
#include "AuthorScenes.h"
#include <Vidlets/VLContentGuard.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QRegularExpression>

#include <algorithm>
#include <iterator>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr qint64 kMaxFileBytes = 20'000'000;
constexpr int kMaxSidePx = 4096;

QString usualDirectory()
{
    return u"Resources"_s;
}

QString lastPart(const QString& name)
{
    return name.section(u'/', -1).toLower();
}

/// Whether a name stands for a file that can be looked for.
bool isFileName(const QString& name)
{
    static const QRegularExpression scheme(u"^[A-Za-z][-+.A-Za-z0-9]*:"_s);
    return !name.startsWith(u'/') && !name.contains(u'*') && !name.contains("%("_L1)
        && !name.contains("${"_L1) && !scheme.match(name).hasMatch();
}

bool hasWhiteSpace(const QString& name)
{
    return std::any_of(name.cbegin(), name.cend(),
                       [](QChar character) { return character.isSpace(); });
}

} // namespace

AuthorResources::AuthorResources(const AuthorPackages& packages, AuthorFindings& findings)
    : m_packages(packages)
    , m_findings(findings)
{
}

void AuthorResources::addControlFile(const AuthorPackage& package, const AuthorControlFile& file)
{
    PackageFacts& facts = m_facts[package.name];
    // Names that lead nowhere are told of elsewhere, and would be looked through for each resource.
    QStringList search;
    std::copy_if(file.search.cbegin(), file.search.cend(), std::back_inserter(search),
                 [this](const QString& name) { return !packagePaths(name).isEmpty(); });
    search.removeDuplicates();
    for (const QString& name : std::as_const(search))
        facts.search.insert(name);
    facts.directories += file.resourceDirectories;
    for (const AuthorReference& reference : file.references) {
        m_uses.append({file.path, reference, &package, false, search});
        m_named.insert(lastPart(reference.name));
    }
}

void AuthorResources::addKeyData(const AuthorControlFile& file)
{
    // Key data alone says nothing of the packages that it is for.
    if (m_packages.packages().isEmpty())
        return;
    for (const AuthorReference& reference : file.references) {
        m_uses.append({file.path, reference, nullptr, false});
        m_named.insert(lastPart(reference.name));
    }
}

void AuthorResources::addScenes(const AuthorPackage& package)
{
    const QStringList files = AuthorScenes::filesOf(package.path);
    for (const QString& file : files)
        addScene(package, file);
}

void AuthorResources::addScene(const AuthorPackage& package, const QString& path)
{
    QString reason;
    const auto content = AuthorFiles::read(path, reason);
    if (!content)
        return;
    const QString text = QString::fromUtf8(*content);
    const AuthorSceneText scene(text);
    for (const AuthorSuppression& suppression : scene.suppressions())
        m_findings.suppress(path, suppression);
    for (const AuthorLiteral& literal : scene.literals()) {
        if (!looksLikeResource(literal.text))
            continue;
        m_uses.append({path, {literal.text, literal.position, QString()}, &package, true});
        m_named.insert(lastPart(literal.text));
    }
}

void AuthorResources::check()
{
    for (const Use& use : std::as_const(m_uses)) {
        if (isFileName(use.reference.name))
            checkUse(use);
    }
    for (const AuthorPackage& package : m_packages.packages()) {
        QSet<QString> directories = m_facts.value(package.name).directories;
        directories.insert(usualDirectory());
        for (const QString& directory : std::as_const(directories))
            checkFiles(package, directory);
    }
    m_clips.removeDuplicates();
}

void AuthorResources::checkUse(const Use& use)
{
    const QStringList paths = candidates(use);
    for (const QString& path : paths) {
        const auto known = m_exists.constFind(path);
        if (known != m_exists.cend() ? *known : *m_exists.insert(path, QFileInfo(path).isFile()))
            return;
    }
    for (const QString& path : paths) {
        const QString found = otherCase(path);
        if (found.isNull())
            continue;
        m_findings.add(use.file, use.reference.position, u"resource-case"_s,
                       u"\"%1\" is not there, but %2 is."_s.arg(use.reference.name, found));
        return;
    }
    // A sentence may end in the name of a file.
    if (hasWhiteSpace(use.reference.name))
        return;
    m_findings.add(use.file, use.reference.position, u"resource-missing"_s,
                   u"There is no \"%1\" in the resources."_s.arg(use.reference.name));
}

QStringList AuthorResources::candidates(const Use& use) const
{
    QSet<QString> directories{use.reference.directory};
    if (use.reference.directory.isEmpty())
        directories = {usualDirectory()};
    QStringList paths;
    const QSet<QString> names = packageNamesFor(use);
    for (const QString& name : names) {
        QSet<QString> all = directories;
        if (use.isInScene)
            all += m_facts.value(name).directories;
        const QStringList packages = packagePaths(name);
        for (const QString& package : packages) {
            for (const QString& directory : std::as_const(all))
                paths.append(QDir::cleanPath(
                    AuthorFiles::join(package, directory + u'/' + use.reference.name)));
        }
    }
    if (use.isInScene)
        paths.append(QDir::cleanPath(QFileInfo(use.file).path() + u'/' + use.reference.name));
    return paths;
}

/// A scene serves the tips of its own package and of those that name it in "search", and key data
/// may be of a tip of any package.
QSet<QString> AuthorResources::packageNamesFor(const Use& use) const
{
    QSet<QString> names(use.search.cbegin(), use.search.cend());
    if (!use.package) {
        for (const AuthorPackage& package : m_packages.packages())
            names.insert(package.name);
        return names;
    }
    const QString own = use.package->name;
    names.insert(own);
    if (!use.isInScene)
        return names;
    names += m_facts.value(own).search;
    for (auto it = m_facts.cbegin(); it != m_facts.cend(); ++it) {
        if (it->search.contains(own))
            names.insert(it.key());
    }
    return names;
}

QStringList AuthorResources::packagePaths(const QString& name) const
{
    const auto known = m_paths.constFind(name);
    return known != m_paths.cend() ? *known : *m_paths.insert(name, m_packages.pathsOf(name));
}

/// The path as it is on disk, where it differs from @p path in case; else null.
QString AuthorResources::otherCase(const QString& path) const
{
    const AuthorPackage* package = m_packages.packageOf(path);
    if (!package)
        return QString();
    QString found = package->path;
    const QStringList parts = AuthorFiles::below(found, path).split(u'/', Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        const QStringList names = namesIn(found);
        const auto like = std::find_if(names.cbegin(), names.cend(), [&part](const QString& name) {
            return name.compare(part, Qt::CaseInsensitive) == 0;
        });
        if (like == names.cend())
            return QString();
        found = AuthorFiles::join(found, names.contains(part) ? part : *like);
    }
    return found != path && QFileInfo(found).isFile() ? found : QString();
}

QStringList AuthorResources::namesIn(const QString& directory) const
{
    const auto known = m_listed.constFind(directory);
    if (known != m_listed.cend())
        return *known;
    QStringList names;
    const auto entries = AuthorFiles::list(directory);
    for (const AuthorFiles::Entry& entry : entries.value_or(QList<AuthorFiles::Entry>()))
        names.append(entry.name);
    m_listed.insert(directory, names);
    return names;
}

void AuthorResources::checkFiles(const AuthorPackage& package, const QString& directory)
{
    const QString root = QDir::cleanPath(AuthorFiles::join(package.path, directory));
    // What lies outside of the package is not the package's, whatever its control files say.
    const QString canonical = QFileInfo(root).canonicalFilePath();
    if (canonical.isEmpty() || !AuthorFiles::isBelow(package.canonicalPath, canonical))
        return;
    const QStringList folders = AuthorFiles::foldersBelow(root);
    for (const QString& folder : folders) {
        const auto entries = AuthorFiles::list(folder);
        for (const AuthorFiles::Entry& entry : entries.value_or(QList<AuthorFiles::Entry>())) {
            if (entry.kind == AuthorFiles::Kind::File && entry.isNamed)
                checkFile(AuthorFiles::join(folder, entry.name));
        }
    }
}

void AuthorResources::checkFile(const QString& path)
{
    if (!looksLikeResource(path))
        return;
    if (!m_named.contains(lastPart(path)))
        m_findings.add(path, {}, u"resource-unused"_s, u"No tip and no scene names the file."_s);
    if (AuthorClips::isClip(path))
        m_clips.append(path);
    const qint64 bytes = QFileInfo(path).size();
    if (bytes > kMaxFileBytes)
        m_findings.add(path, {}, u"resource-huge"_s,
                       u"The file has %L1 bytes, more than %L2."_s.arg(bytes).arg(kMaxFileBytes));
    else
        checkPixels(path);
}

/// By the beginning of the file; pictures that are drawn from lines have no pixels.
void AuthorResources::checkPixels(const QString& path)
{
    static const QSet<QByteArray> formats{"png", "jpg", "jpeg", "gif", "bmp", "webp"};
    const QByteArray format = path.section(u'.', -1).toLower().toLatin1();
    QFile file(path);
    if (!formats.contains(format) || !VLContentGuard::open(file))
        return;
    QImageReader reader(&file, format);
    reader.setAutoDetectImageFormat(false);
    // Some readers complain on standard error of what is no picture of their kind.
    const QSize size = reader.canRead() ? reader.size() : QSize();
    if (size.width() > kMaxSidePx || size.height() > kMaxSidePx)
        m_findings.add(path, {}, u"resource-huge"_s,
                       u"The picture has %1 x %2 pixels, more than %3 a side."_s.arg(size.width())
                           .arg(size.height())
                           .arg(kMaxSidePx));
}

} // namespace Vidlets
