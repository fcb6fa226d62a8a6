// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLIndex.h"

#include "VLContentGuard.h"
#include "VLContentNames.h"
#include "VLContentRoots.h"
#include "VLContext.h"
#include "VLFirstTag.h"
#include "VLIndexHooks.h"
#include "VLSettings.h"
#include "VLTipFilter.h"
#include "VLXmlElement.h"
#include "VLXmlParser.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMap>
#include <QPointer>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace Vidlets {

using namespace ContentNames;
using namespace TipFilter;

namespace {

QString firstTag(const QString& filePath)
{
    QFile file(filePath);
    return file.open(QIODevice::ReadOnly) ? FirstTag::in(file) : QString();
}

/// Nothing for a file that cannot be read.
std::optional<QString> guardedFirstTag(const QString& filePath, bool isListed)
{
    bool isWhole = false;
    QByteArray head = VLContentGuard::readHead(filePath, isListed, isWhole);
    QBuffer buffer(&head);
    buffer.open(QIODevice::ReadOnly);
    QString tag = FirstTag::in(buffer);
    // The line that the head ends in may go on behind it.
    if (!tag.isNull() && (isWhole || !buffer.atEnd()))
        return tag;
    QFile file(filePath);
    if (!VLContentGuard::open(file))
        return std::nullopt;
    // No more than that would be read of it, and a file may be as large as the disk.
    return FirstTag::in(file, VLContentGuard::kMaxDocumentBytes);
}

/// Why a file whose first tag is @p tag, null for none, is passed over.
QString noControlFile(const QString& tag)
{
    return tag.isNull() ? u"no control file: it holds no tag"_s
                        : u"no control file: its first tag is not <%1 with an attribute or the "
                          "bracket on the same line"_s.arg(kControlFileTag);
}

/// Where the first tag in the beginning of the file stands; its start where there is none.
XmlPosition placeOfFirstTag(const QString& filePath)
{
    bool isWhole = false;
    QByteArray head = VLContentGuard::readHead(filePath, false, isWhole);
    QBuffer buffer(&head);
    buffer.open(QIODevice::ReadOnly);
    return FirstTag::placeIn(buffer);
}

bool isTextuallyBelow(const QString& root, const QString& file)
{
    return file.size() > root.size() && file.at(root.size()) == u'/' && file.startsWith(root);
}

/// Between canonical paths each step up is one in the text, and asks nothing of the disk.
int stepsUp(const QString& root, const QString& file)
{
    return static_cast<int>(QStringView(file).mid(root.size()).count(u'/'));
}

int depthBelow(const QString& root, const QString& file)
{
    const QString rootPath = QDir(root).canonicalPath();
    if (QDir(file).canonicalPath() == file && isTextuallyBelow(rootPath, file))
        return stepsUp(rootPath, file);

    QDir dir(file);
    int depth = 0;
    // No other exit: the paths must truly nest.
    while (dir.canonicalPath() != rootPath) {
        dir.cdUp();
        ++depth;
    }
    return depth;
}

/// As depthBelow(), but -1 where the paths do not nest.
int guardedDepthBelow(const QString& root, const QString& file)
{
    const QString rootPath = QDir(root).canonicalPath();
    if (rootPath.isEmpty())
        return -1;
    if (QDir(file).canonicalPath() == file && isTextuallyBelow(rootPath, file))
        return stepsUp(rootPath, file);
    QDir dir(QFileInfo(file).absoluteFilePath());
    int depth = 0;
    while (dir.canonicalPath() != rootPath) {
        if (dir.isRoot() || !dir.cdUp())
            return -1;
        ++depth;
    }
    return depth;
}

/// Copies what @p record says of its key.
void copyRecord(const VLXmlElement* record, VLXmlElement* element)
{
    const QList<QString> names = record->attributeNames();
    for (const QString& name : names) {
        if (name != nameAttribute())
            element->setAttribute(name, record->attribute(name));
    }
}

QString standsTwice(const QString& key)
{
    return u"the key \"%1\" stands twice in the file"_s.arg(key);
}

} // namespace

class VLIndexPrivate
{
public:
    void warnOfUnknownPackages(const QString& location, const VLXmlElement* root,
                               XmlPosition position);

    /// Returns how many steps lead up from @p file to @p root; below 0, after a warning, where
    /// content is guarded and the paths do not nest.
    int depthOf(const QString& file, const QString& root, bool isGuarded);
    /// Records a control file at the front, unless it is recorded with this depth. Returns whether
    /// its package is to be mapped to the root as well.
    bool record(const QString& file, const QString& root, int depth);

    void forget(const IndexedLocation& entry);
    void forgetRootsAbove(const QString& file);

    bool contains(const IndexedLocation& entry) const
    {
        return knownPaths.contains(entry.location) && locations.contains(entry);
    }

    bool isResolved(const QString& file, const QString& root) const
    {
        return file == resolvedFile && root == resolvedRoot && isTextuallyBelow(root, file);
    }

    /// The given store, or one of the index's own once that is gone.
    QPointer<VLContext> context;
    QList<QString> paths;
    /// Those that the manager has walked over.
    QList<VLDataPath> walkedPaths;
    std::function<void()> dataPathListener;
    /// The control files in search order; a list, since every lookup walks it from the front.
    QList<IndexedLocation> locations;
    /// The paths in locations, so that a scan need not search the list for each new file.
    QSet<QString> knownPaths;
    /// The roots of each package in order of discovery.
    QMap<QString, QList<QString>> packages;
    bool inUpdate = false;
    QRegularExpression keySeparators;
    /// Where the walk of the manager is; null outside of one.
    QString resolvedFile;
    QString resolvedRoot;
    /// Whether the walk has recorded resolvedRoot for its package.
    bool isResolvedRootMapped = false;
    VLContentGuard guard;
    VLContentRoots contentRoots;
    /// What contentRoots was made of besides the packages.
    QString extraPath;
    bool areContentRootsStale = true;
};

void VLIndexPrivate::warnOfUnknownPackages(const QString& location, const VLXmlElement* root,
                                           XmlPosition position)
{
    const QString search = root->attribute(searchAttribute());
    if (search.isEmpty())
        return;
    const QStringList names = search.split(keySeparators, Qt::SkipEmptyParts);
    for (const QString& name : names) {
        if (!packages.contains(name)) {
            guard.warn(location, position,
                       u"\"search\" names the unknown package \"%1\""_s.arg(name));
        }
    }
}

VLIndex::VLIndex(VLContext* context, const QList<QString>& paths)
    : QObject(nullptr)
    , d(new VLIndexPrivate)
{
    d->context = context;
    d->paths = paths;
    d->keySeparators = QRegularExpression(u"[,;\\s]+"_s);
}

// The record stays allocated, also where a host deletes its index: intended.
VLIndex::~VLIndex() = default;

void VLIndex::deleteWhole()
{
    const std::unique_ptr<VLIndexPrivate> record(d);
    delete this;
}

// Here, where the record is known.
void VLIndexHooks::deleteRecord(VLIndex& index)
{
    delete index.d;
}

// Here, too.
QList<VLDataPath> VLIndexHooks::dataPaths(const VLIndex& index)
{
    QList<VLDataPath> all;
    const QList<VLDataPath>& walked = index.d->walkedPaths;
    for (const QString& name : std::as_const(index.d->paths)) {
        const QString path = QFileInfo(name).absoluteFilePath();
        const qsizetype count = all.size();
        std::copy_if(walked.cbegin(), walked.cend(), std::back_inserter(all),
                     [&path](const VLDataPath& other) { return other.path == path; });
        if (all.size() == count) {
            all.append({path, Settings::packageExtension(index.context()),
                        Settings::controlDirectory(index.context())});
        }
    }
    std::copy_if(walked.cbegin(), walked.cend(), std::back_inserter(all),
                 [&all](const VLDataPath& other) { return !all.contains(other); });
    return all;
}

void VLIndexHooks::setDataPathListener(VLIndex& index, const std::function<void()>& listener)
{
    index.d->dataPathListener = listener;
}

void VLIndexHooks::setContext(VLIndex& index, VLContext* context)
{
    index.d->context = context;
}

bool VLIndex::open()
{
    return true;
}

bool VLIndex::setup()
{
    if (Settings::clearIndexOnSetup(context()))
        clear();
    return true;
}

bool VLIndex::clear()
{
    return true;
}

bool VLIndex::close()
{
    return true;
}

bool VLIndex::remove()
{
    return true;
}

VLXmlElement* VLIndex::retrieve(const QString& key, const QLocale& locale, QString& path,
                                int& depth, VLXmlElement*& root)
{
    for (const IndexedLocation& entry : std::as_const(d->locations)) {
        VLXmlElement* element = load(key, entry.location, locale, root);
        if (!element)
            continue;
        depth = entry.depth;
        path = QFileInfo(entry.location).dir().absolutePath();
        return element;
    }
    return nullptr;
}

bool VLIndex::store(VLXmlElement* /*element*/, const QLocale& /*locale*/, const QString& location,
                    int depth)
{
    const IndexedLocation entry{location, depth};
    if (d->contains(entry))
        return true;
    d->locations.append(entry);
    d->knownPaths.insert(location);
    return true;
}

void VLIndex::startUpdate()
{
    d->inUpdate = true;
}

void VLIndex::endUpdate()
{
    d->inUpdate = false;
}

QList<QString> VLIndex::keys()
{
    if (!d->locations.isEmpty() && Settings::guardContent(context()))
        return guardedKeys();
    QList<QString> result;
    VLXmlParser parser(indexDataShouldGenerateElement);
    for (const IndexedLocation& entry : std::as_const(d->locations)) {
        QFile file(entry.location);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        // By default the trees stay allocated, and an empty result ends the process.
        const QList<QObject*> elements = parser.parse(file);
        for (QObject* child : elements.first()->children()) {
            const auto* tip = qobject_cast<VLXmlElement*>(child);
            if (tip && tip->hasAttribute(keyAttribute()))
                result.append(tip->attribute(keyAttribute()));
        }
        if (Settings::releaseClips(context()))
            qDeleteAll(elements);
    }
    return result;
}

QList<QString> VLIndex::guardedKeys()
{
    QList<QString> result;
    for (const IndexedLocation& entry : std::as_const(d->locations)) {
        QList<XmlPosition> positions;
        const std::unique_ptr<VLXmlElement> root = d->guard.parse(
            entry.location, kControlFileTag, indexDataShouldGenerateElement, nullptr, positions);
        if (!root)
            continue;
        QHash<QString, int> counts;
        const QObjectList& children = root->children();
        for (qsizetype i = 0; i < children.size(); ++i) {
            const auto* tip = qobject_cast<VLXmlElement*>(children.at(i));
            if (!tip->hasAttribute(keyAttribute()))
                continue;
            const QString key = tip->attribute(keyAttribute());
            result.append(key);
            // Warned of once, at the same place as by a lookup.
            if (++counts[key] == 2)
                d->guard.warn(entry.location, positions.at(i + 1), standsTwice(key));
        }
    }
    return result;
}

void VLIndex::indexControlFile(const QString& file, const QString& root)
{
    if (!file.startsWith(root))
        return;
    const bool isGuarded = Settings::guardContent(context());
    const int depth = d->depthOf(file, root, isGuarded);
    if (depth < 0)
        return;
    const std::optional<QString> tag = isGuarded ? guardedFirstTag(file, d->isResolved(file, root))
                                                 : std::optional(firstTag(file));
    if (tag != kControlFileTag) {
        if (isGuarded && tag)
            d->guard.warn(
                file, [&file] { return placeOfFirstTag(file); }, noControlFile(*tag));
        return;
    }
    if (d->record(file, root, depth))
        mapControlFile(file, root);
}

void VLIndexHooks::indexKnownFile(VLIndex& index, const QString& file, const QString& root)
{
    if (!file.startsWith(root))
        return;
    const int depth = index.d->depthOf(file, root, Settings::guardContent(index.context()));
    if (depth >= 0 && index.d->record(file, root, depth))
        index.mapControlFile(file, root);
}

int VLIndexPrivate::depthOf(const QString& file, const QString& root, bool isGuarded)
{
    if (isResolved(file, root))
        return stepsUp(root, file);
    if (!isGuarded)
        return depthBelow(root, file);
    const int depth = guardedDepthBelow(root, file);
    if (depth < 0)
        guard.warn(file, u"not below the package %1"_s.arg(root));
    return depth;
}

bool VLIndexPrivate::record(const QString& file, const QString& root, int depth)
{
    const IndexedLocation entry{file, depth};
    if (contains(entry))
        return false;
    locations.prepend(entry);
    knownPaths.insert(file);
    const bool isResolvedFile = isResolved(file, root);
    if (isResolvedFile && isResolvedRootMapped)
        return false;
    isResolvedRootMapped = isResolvedFile;
    return true;
}

void VLIndexHooks::forgetLocation(VLIndex& index, const IndexedLocation& entry)
{
    index.d->forget(entry);
    index.d->guard.m_records.remove(entry.location);
}

void VLIndexPrivate::forget(const IndexedLocation& entry)
{
    locations.removeOne(entry);
    const auto isOfPath = [&entry](const IndexedLocation& other) {
        return other.location == entry.location;
    };
    if (std::any_of(locations.cbegin(), locations.cend(), isOfPath))
        return;
    knownPaths.remove(entry.location);
    forgetRootsAbove(entry.location);
}

void VLIndexPrivate::forgetRootsAbove(const QString& file)
{
    const auto isOver = [this, &file](const QString& root) {
        const auto isBelow = [&root](const IndexedLocation& other) {
            return isTextuallyBelow(root, other.location);
        };
        return isTextuallyBelow(root, file) && !QFileInfo(root).isDir()
            && std::none_of(locations.cbegin(), locations.cend(), isBelow);
    };
    for (QList<QString>& roots : packages)
        areContentRootsStale = roots.removeIf(isOver) > 0 || areContentRootsStale;
    packages.removeIf(
        [](const QMap<QString, QList<QString>>::iterator& it) { return it->isEmpty(); });
}

void VLIndex::setResolvedPaths(const QString& file, const QString& root)
{
    if (root != d->resolvedRoot)
        d->isResolvedRootMapped = false;
    d->resolvedFile = file;
    d->resolvedRoot = root;
}

void VLIndex::noteDataPath(const QString& path, const QString& extension,
                           const QString& controlDirectory)
{
    const VLDataPath walked{QFileInfo(path).absoluteFilePath(), extension, controlDirectory};
    if (d->walkedPaths.contains(walked))
        return;
    d->walkedPaths.append(walked);
    if (d->dataPathListener)
        d->dataPathListener();
}

VLContentGuard& VLIndex::guard()
{
    return d->guard;
}

const QList<IndexedLocation>& VLIndex::locations() const
{
    return d->locations;
}

VLContext& VLIndex::context()
{
    if (d->context.isNull())
        d->context = new VLContext(this);
    return *d->context;
}

const VLContext& VLIndex::context() const
{
    return const_cast<VLIndex*>(this)->context();
}

VLXmlElement* VLIndex::load(const QString& key, const QString& location, const QLocale& locale,
                            VLXmlElement*& root)
{
    if (Settings::guardContent(context()))
        return loadGuarded(key, location, locale, root);
    VLXmlParser parser(matchKeyElement, const_cast<QString*>(&key));
    QFile file(location);
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    const QList<QObject*> elements = parser.parse(file);
    if (elements.size() != 1)
        return nullptr;

    root = qobject_cast<VLXmlElement*>(elements.first());
    // A key that stands twice in a file counts as missing from it: no tie is broken.
    if (root->children().size() != 1) {
        delete root;
        root = nullptr;
        return nullptr;
    }

    auto* element = qobject_cast<VLXmlElement*>(root->children().first());
    const QString localeName = root->attribute(localeAttribute());
    if (!localeName.isEmpty() && QLocale(localeName) != locale) {
        // The caller's root keeps the stale address: it means something only with a result.
        delete element;
        delete root;
        return nullptr;
    }

    loadKeyData(key, element);
    element->setAttribute(locationAttribute(), location);
    element->setAttribute(packageNameAttribute(), packageNameForLocation(location));
    // Where the file broke with a tag below the root open, the parser takes the tree with it now
    // and the address goes out all the same: intended, the search goes by what was built.
    return element;
}

VLXmlElement* VLIndex::loadGuarded(const QString& key, const QString& location,
                                   const QLocale& locale, VLXmlElement*& root)
{
    root = nullptr;
    QList<XmlPosition> positions;
    std::unique_ptr<VLXmlElement> tree = d->guard.parse(location, kControlFileTag, matchKeyElement,
                                                        const_cast<QString*>(&key), positions);
    if (!tree || tree->children().isEmpty())
        return nullptr;
    if (tree->children().size() > 1) {
        d->guard.warn(location, positions.at(2), standsTwice(key));
        return nullptr;
    }
    const QString localeName = tree->attribute(localeAttribute());
    if (!localeName.isEmpty() && QLocale(localeName) != locale)
        return nullptr;

    auto* element = qobject_cast<VLXmlElement*>(tree->children().constFirst());
    d->warnOfUnknownPackages(location, tree.get(), positions.constFirst());
    loadKeyData(key, element);
    element->setAttribute(locationAttribute(), location);
    element->setAttribute(packageNameAttribute(), packageNameForLocation(location));
    root = tree.release();
    return element;
}

void VLIndex::loadKeyData(const QString& key, VLXmlElement* element)
{
    const QString path = Settings::keyDataFile(context());
    if (path.isEmpty() || !QFile::exists(path))
        return;
    if (Settings::guardContent(context())) {
        loadKeyDataGuarded(path, key, element);
        return;
    }
    VLXmlParser parser(matchKeyDataElement, const_cast<QString*>(&key));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;

    const QList<QObject*> elements = parser.parse(file);
    // By default a root without a record stays allocated.
    if (elements.isEmpty() || elements.first()->children().isEmpty()) {
        if (Settings::releaseClips(context()))
            qDeleteAll(elements);
        return;
    }

    QObject* root = elements.first();
    auto* record = qobject_cast<VLXmlElement*>(root->children().first());
    copyRecord(record, element);
    delete record;
    delete root;
}

void VLIndex::warnInTip(const VLXmlElement* tip, const QString& reason)
{
    const QString location = tip->attribute(locationAttribute());
    QString key = tip->attribute(keyAttribute());
    const auto placeOfTip = [this, &location, &key] {
        QList<XmlPosition> positions;
        // A tip of the host's own making has no file.
        if (!location.isEmpty())
            d->guard.parse(location, kControlFileTag, matchKeyElement, &key, positions);
        return positions.value(1);
    };
    d->guard.warn(location, placeOfTip, reason);
}

void VLIndex::loadKeyDataGuarded(const QString& path, const QString& key, VLXmlElement* element)
{
    QList<XmlPosition> positions;
    const std::unique_ptr<VLXmlElement> root = d->guard.parse(
        path, kKeyDataFileTag, matchKeyDataElement, const_cast<QString*>(&key), positions);
    if (!root || root->children().isEmpty())
        return;
    if (root->children().size() > 1) {
        d->guard.warn(path, positions.at(2), standsTwice(key));
        return;
    }
    copyRecord(qobject_cast<VLXmlElement*>(root->children().constFirst()), element);
}

void VLIndex::mapControlFile(const QString& /*file*/, const QString& root)
{
    // A root in no package goes in under the null name.
    QList<QString>& roots = d->packages[packageNameForLocation(root)];
    if (roots.contains(root))
        return;
    roots.append(root);
    d->areContentRootsStale = true;
}

QString VLIndex::packageNameForLocation(const QString& location) const
{
    const QString extension = Settings::packageExtension(context());
    for (QFileInfo info(location); !info.isRoot(); info = QFileInfo(info.dir().absolutePath())) {
        if (info.suffix() == extension && info.isDir())
            return info.completeBaseName();
    }
    return QString();
}

QList<QString> VLIndex::componentPathsForPackageNamed(const QString& name) const
{
    QList<QString> paths = d->packages.value(name);
    const QString extraPath = Settings::extraComponentPath(context());
    if (!extraPath.isEmpty())
        paths.append(extraPath);
    return paths;
}

QList<QString> VLIndex::componentPathsForElement(const VLXmlElement* element,
                                                 const QString& category) const
{
    if (!element)
        return {};

    QList<QString> paths =
        componentPathsForPackageNamed(element->attribute(packageNameAttribute()));
    if (const auto* parent = qobject_cast<VLXmlElement*>(element->parent())) {
        const QString search = parent->attribute(searchAttribute());
        // Empty parts are kept: they name the roots that lie in no package.
        const QStringList names = search.isEmpty() ? QStringList() : search.split(d->keySeparators);
        for (const QString& name : names)
            paths.append(d->packages.value(name));
    }
    if (category.isEmpty())
        return paths;

    QList<QString> componentPaths(paths.size());
    std::transform(
        paths.cbegin(), paths.cend(), componentPaths.begin(),
        [&category](const QString& path) { return QDir(path).absoluteFilePath(category); });
    return componentPaths;
}

int VLIndex::indexDataShouldGenerateElement(const QString& tag,
                                            const QXmlStreamAttributes& /*attributes*/,
                                            void* /*userData*/)
{
    return tag == kTipTag || tag == kControlFileTag ? FilterChildren : NoElement;
}

QList<QString> VLIndex::packageRoots() const
{
    QList<QString> paths;
    for (auto it = d->packages.cbegin(); it != d->packages.cend(); ++it) {
        // Those under the null name lie in no package, and may be a whole data path.
        if (!it.key().isEmpty())
            paths.append(it.value());
    }
    return paths;
}

const VLContentRoots& VLIndex::contentRoots(const QString& path)
{
    const QString extraPath = Settings::extraComponentPath(context());
    if (d->areContentRootsStale || extraPath != d->extraPath) {
        QStringList paths = packageRoots();
        if (!extraPath.isEmpty())
            paths.append(extraPath);
        d->contentRoots = VLContentRoots(paths);
        d->extraPath = extraPath;
        d->areContentRootsStale = false;
    } else if (!path.isNull() && !d->contentRoots.isComplete() && !d->contentRoots.contains(path)) {
        d->contentRoots.lookAgain();
    }
    return d->contentRoots;
}

bool VLIndex::isInUpdate() const
{
    return d->inUpdate;
}

} // namespace Vidlets

#include "moc_VLIndex.cpp"
