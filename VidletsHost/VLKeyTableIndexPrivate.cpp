// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableIndexPrivate.h"

#include "VLKeyTableIndex.h"
#include "VLKeyTableReader.h"
#include "VLKeyTableStore.h"
#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLSettings.h>
#include <Vidlets/VLXmlElement.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

// A turn of the event loop is over at the first file that ends behind this.
constexpr qint64 kTurnMs = 2;
// Between two turns, for all else that there is to do.
constexpr int kPauseMs = 1;
// A file that changes faster than it is read has no answer.
constexpr int kMaxReadsInLookup = 3;

/// Whether two rows give the same tip, wherever it stands.
bool isSameTip(const VLKeyTableRow& left, const VLKeyTableRow& right)
{
    return left.kind == right.kind && left.length == right.length && left.length > 0
        && left.checksum == right.checksum;
}

} // namespace

VLKeyTableIndexPrivate::VLKeyTableIndexPrivate(VLKeyTableIndex* owner)
    : m_owner(owner)
    , m_search(owner, *this)
    , m_live(owner, *this)
    , m_builder([owner] {
        QMetaObject::invokeMethod(
            owner,
            [owner] {
                owner->d->takeResults();
                owner->d->tell();
            },
            Qt::QueuedConnection);
    })
{
}

bool VLKeyTableIndexPrivate::isGuarded() const
{
    return Settings::guardContent(m_owner->context());
}

bool VLKeyTableIndexPrivate::leadsUpTo(const QString& file, const QString& root)
{
    if (file.size() > root.size() && file.at(root.size()) == u'/' && !file.contains("/../"_L1))
        return true;
    const QString rootPath = QDir(root).canonicalPath();
    QDir dir(QFileInfo(file).absoluteFilePath());
    while (dir.canonicalPath() != rootPath) {
        if (dir.isRoot() || !dir.cdUp())
            return false;
    }
    return true;
}

const VLKeyTableFile* VLKeyTableIndexPrivate::knownFile(const QString& path)
{
    // One that has come later is compared with nothing, whatever the table on disk has of it.
    if (m_live.isApplying())
        return nullptr;
    return m_cache.mayKnow(path) ? m_cache.known(path, VLIndexHooks::stampAt(path)) : nullptr;
}

void VLKeyTableIndexPrivate::recordNew(qsizetype count, bool isFirst, const VLKeyTableFile* known)
{
    const QList<IndexedLocation>& locations = VLIndexHooks::locations(*m_owner);
    if (locations.size() == count)
        return;
    File file;
    file.location = isFirst ? locations.constFirst() : locations.constLast();
    file.order = isFirst ? --m_firstOrder : ++m_lastOrder;
    file.isIndexed = isFirst;
    const int number = addFile(file);
    m_live.noteRecorded(number);
    if (!known) {
        await(number);
        return;
    }
    applyKnown(number, *known);
    m_mustTellProgress = true;
    m_areNewOnesKnown = true;
    scheduleBuilding();
}

/// Gives the number that the file goes by.
int VLKeyTableIndexPrivate::addFile(const File& file)
{
    if (m_free.isEmpty()) {
        m_files.push_back(file);
        return int(m_files.size()) - 1;
    }
    const int number = m_free.takeLast();
    // What is on its way for the one that had the number before is for that one only.
    const quint32 generation = m_files[number].generation;
    m_files[number] = file;
    m_files[number].generation = generation + 1;
    m_filesByNumber.clear();
    return number;
}

/// Forgets a file that has gone, and is in the table no more.
void VLKeyTableIndexPrivate::forget(int file)
{
    File& record = m_files[file];
    VLIndexHooks::forgetLocation(*m_owner, record.location);
    m_table.replace(file, {});
    m_faults.remove(file);
    m_warned.remove(file);
    m_given.removeIf([file](const QPair<int, QString>& given) { return given.first == file; });
    record.location.location.clear();
    ++record.generation;
    record.isStored = false;
    record.isDoubted = false;
    record.isFree = true;
    m_free.append(file);
}

void VLKeyTableIndexPrivate::setCacheFile(const QString& path)
{
    if (path == m_cache.path())
        return;
    dropStored();
    m_cache.setPath(path);
    m_builder.setCacheFile(path);
    m_isCacheAnnounced = true;
    m_isCacheProblemNoted = false;
    m_search.setCacheFile(path);
    // What the builder had, or had in mind to put where it does no more.
    for (size_t i = 0; i < m_files.size(); ++i)
        await(int(i));
}

void VLKeyTableIndexPrivate::dropTable()
{
    m_builder.clear();
    m_table.clear();
    m_unsubmitted.clear();
    for (size_t i = 0; i < m_files.size(); ++i) {
        m_files[i].isKnown = false;
        m_files[i].isStored = false;
        m_files[i].mustRead = true;
        await(int(i));
    }
}

/// Takes the file out of the table until it has been read.
void VLKeyTableIndexPrivate::await(int file)
{
    File& record = m_files[file];
    if (record.isFree)
        return;
    ++record.generation;
    record.isWaiting = true;
    m_waiting.insert(record.order, file);
    m_unsubmitted.append(file);
    scheduleBuilding();
}

/// Has the file read anew, which most likely gives what it gave before.
void VLKeyTableIndexPrivate::doubt(int file)
{
    ++m_files[file].generation;
    m_files[file].isDoubted = true;
    m_unsubmitted.append(file);
    scheduleBuilding();
}

void VLKeyTableIndexPrivate::scheduleBuilding()
{
    if (std::exchange(m_isBuildingScheduled, true))
        return;
    // Not before the host is through with its scan, which the thread would get in the way of.
    QMetaObject::invokeMethod(
        m_owner,
        [this] {
            startBuilding();
            tell();
        },
        Qt::QueuedConnection);
}

void VLKeyTableIndexPrivate::startBuilding()
{
    m_isBuildingScheduled = false;
    m_cache.dropKnown();
    m_files.shrink_to_fit();
    announceCache();
    if (std::exchange(m_areNewOnesKnown, false) && m_waiting.isEmpty())
        m_mustTellBuilt = true;
    QList<int> files = std::exchange(m_unsubmitted, {});
    const auto isSearchedBefore = [this](int left, int right) {
        return m_files[left].order < m_files[right].order;
    };
    std::sort(files.begin(), files.end(), isSearchedBefore);
    QList<VLKeyTableBuilder::Job> jobs;
    jobs.reserve(files.size());
    for (const int file : std::as_const(files)) {
        File& record = m_files[file];
        const bool isDoubted = std::exchange(record.isDoubted, false);
        if (record.isWaiting || isDoubted)
            jobs.append({file, record.generation, record.location.location,
                         record.isKnown || record.mustRead, record.isStored, record.isIndexed,
                         std::nullopt});
    }
    m_builder.add(jobs);
}

/// Tells the builder of the table on disk, if it has not been told yet.
void VLKeyTableIndexPrivate::announceCache()
{
    if (std::exchange(m_isCacheAnnounced, true))
        return;
    m_builder.setCacheFile(m_cache.path());
    m_search.setCacheFile(m_cache.path());
}

bool VLKeyTableIndexPrivate::takeResults()
{
    QElapsedTimer timer;
    timer.start();
    VLKeyTableBuilder::Result result;
    int count = 0;
    while (!timer.hasExpired(kTurnMs)) {
        if (!m_builder.take(result))
            return count > 0;
        ++count;
        takeResult(result);
    }
    // The builder announces nothing more while some are left.
    if (std::exchange(m_isTakingScheduled, true))
        return true;
    // What is posted while events are sent is sent in the same turn.
    QTimer::singleShot(kPauseMs, m_owner, [this] {
        m_isTakingScheduled = false;
        takeResults();
        tell();
    });
    return true;
}

void VLKeyTableIndexPrivate::takeResult(const VLKeyTableBuilder::Result& result)
{
    if (result.kind == VLKeyTableBuilder::Kind::Incident) {
        takeIncident(result.incident);
        return;
    }
    // Others have come in between.
    if (result.generation != m_files[result.file].generation) {
        keepBefore(result);
        return;
    }
    if (result.kind != VLKeyTableBuilder::Kind::Read) {
        takeStored(result);
        return;
    }
    apply(result.file, result.content,
          m_files[result.file].isStored ? result.before : std::nullopt);
    // It will be told of once more, when it is on disk, unless it is to be read again already.
    if (!m_files[result.file].isWaiting)
        m_files[result.file].generation = result.generation;
}

/// Saves what the file is to be compared with, which the table on disk has no more when the next
/// result comes.
void VLKeyTableIndexPrivate::keepBefore(const VLKeyTableBuilder::Result& result)
{
    File& record = m_files[result.file];
    if (!record.isStored || !result.before || result.before->stamp != record.stamp)
        return;
    m_table.replace(result.file, result.before->rows);
    record.isStored = false;
}

/// Goes by the table on disk from now on, for one file.
void VLKeyTableIndexPrivate::takeStored(const VLKeyTableBuilder::Result& result)
{
    const bool isKnown = result.kind == VLKeyTableBuilder::Kind::Known;
    if (!isCacheOf(result.token)) {
        if (isKnown) {
            m_files[result.file].mustRead = true;
            await(result.file);
        }
        return;
    }
    m_cache.dropFound();
    if (isKnown) {
        applyKnown(result.file, result.content);
        return;
    }
    // What is on disk may be something else when its turn comes, and nothing to compare it with.
    if (m_files[result.file].isWaiting)
        return;
    m_table.keepNested(result.file);
    m_files[result.file].isStored = true;
}

/// Whether lookups see the table of this name, and none that another process has put there since.
bool VLKeyTableIndexPrivate::isCacheOf(const QByteArray& token)
{
    if (m_cache.isOpen() && m_cache.token() != token)
        dropStored();
    return m_cache.open() && m_cache.token() == token;
}

void VLKeyTableIndexPrivate::takeIncident(const VLKeyTableWriter::Incident& incident)
{
    noteCacheProblem(incident.reason);
    if (incident.isReplaced)
        dropStored();
}

/// Whatever is wrong with the table on disk leads to more of it.
void VLKeyTableIndexPrivate::noteCacheProblem(const QString& reason)
{
    if (!std::exchange(m_isCacheProblemNoted, true))
        noteProblem(m_cache.path(), {{}, reason}, true);
}

/// Does without what is in the table on disk: what is there counts for nothing any more.
void VLKeyTableIndexPrivate::dropStored()
{
    m_cache.close();
    for (size_t i = 0; i < m_files.size(); ++i) {
        if (!std::exchange(m_files[i].isStored, false))
            continue;
        m_files[i].isKnown = false;
        await(int(i));
    }
}

/// As dropStored(), and for good.
void VLKeyTableIndexPrivate::abandonCache()
{
    const QString path = m_cache.path();
    const bool isDamaged = m_cache.store()->isDamaged();
    noteCacheProblem(m_cache.lastError());
    dropStored();
    m_cache.setPath(QString());
    m_builder.setCacheFile(QString());
    if (isDamaged)
        VLKeyTableStore::putAside(path);
    for (size_t i = 0; i < m_files.size(); ++i) {
        if (m_files[i].isWaiting)
            await(int(i));
    }
}

bool VLKeyTableIndexPrivate::waitUntilBuilt(const QDeadlineTimer& deadline)
{
    const QPointer<VLKeyTableIndex> owner(m_owner);
    m_live.settle(deadline);
    startBuilding();
    while (!isBuilt() || m_builder.isBusy()) {
        if (!takeResults()) {
            if (m_builder.isStopped())
                readNow(m_waiting.first());
            else if (!m_builder.waitForResults(deadline))
                break;
        }
        tell();
        if (!owner)
            return false;
        // What was in the table on disk may be lost.
        if (!m_unsubmitted.isEmpty())
            startBuilding();
    }
    tell();
    return owner && isBuilt();
}

void VLKeyTableIndexPrivate::stop()
{
    m_live.stop();
    m_builder.stop();
    m_search.stop();
}

void VLKeyTableIndexPrivate::goOnAlone()
{
    stop();
    dropStored();
    m_cache.setPath(QString());
}

std::unique_ptr<VLXmlElement> VLKeyTableIndexPrivate::lookUp(const QString& key,
                                                             const QLocale& locale, int& file)
{
    m_readInLookup.clear();
    std::unique_ptr<VLXmlElement> root = lookUpOnce(key, locale, Pass::Exact, file);
    if (root || !hasLocaleChain || locale.language() == QLocale::C)
        return root;
    root = lookUpOnce(key, locale, Pass::Language, file);
    return root ? std::move(root) : lookUpOnce(key, locale, Pass::Territory, file);
}

std::unique_ptr<VLXmlElement>
VLKeyTableIndexPrivate::lookUpOnce(const QString& key, const QLocale& locale, Pass pass, int& file)
{
    for (;;) {
        bool mustLookAgain = false;
        const QList<VLKeyTable::Hit> hits = candidates(key);
        for (const VLKeyTable::Hit& hit : hits) {
            const File& record = m_files[hit.file];
            if (!m_waiting.isEmpty() && m_waiting.firstKey() < record.order)
                break;
            if (!serves(record, locale, pass))
                continue;
            if (hit.row.kind == VLKeyTableRowKind::Hidden) {
                letBaseWarn(hit.file, key, u'k');
                continue;
            }
            std::unique_ptr<VLXmlElement> root = readHit(hit, key, mustLookAgain);
            if (mustLookAgain)
                break;
            if (!root)
                continue;
            file = hit.file;
            if (root->hasAttribute(ContentNames::searchAttribute()))
                letBaseWarn(hit.file, key, u's');
            return root;
        }
        if (mustLookAgain)
            continue;
        if (m_waiting.isEmpty())
            return nullptr;
        if (!takeResults())
            readNow(m_waiting.first());
    }
}

/// The rows that the table has for the key, in search order.
QList<VLKeyTable::Hit> VLKeyTableIndexPrivate::candidates(const QString& key)
{
    QList<VLKeyTable::Hit> hits = m_table.find(key);
    if (m_cache.isOpen())
        addStored(key, hits);
    const auto isOutOfTable = [this](const VLKeyTable::Hit& hit) {
        return m_files[hit.file].isWaiting;
    };
    hits.removeIf(isOutOfTable);
    std::sort(hits.begin(), hits.end(), [this](const auto& left, const auto& right) {
        return m_files[left.file].order < m_files[right.file].order;
    });
    return hits;
}

/// Adds what the table on disk has for the key.
void VLKeyTableIndexPrivate::addStored(const QString& key, QList<VLKeyTable::Hit>& hits)
{
    QList<KeyTableBlobs::Entry> entries;
    if (!m_cache.find(key, entries)) {
        abandonCache();
        return;
    }
    for (const KeyTableBlobs::Entry& entry : std::as_const(entries)) {
        const QList<QPair<quint64, int>>& files = filesByNumber();
        auto found = std::lower_bound(files.cbegin(), files.cend(), qMakePair(entry.file, 0));
        for (; found != files.cend() && found->first == entry.file; ++found) {
            const int file = found->second;
            if (!m_files[file].isStored)
                continue;
            // A nested root serves those keys only that have no tip of their own.
            const auto isOfFile = [file](const VLKeyTable::Hit& hit) { return hit.file == file; };
            hits.removeIf(isOfFile);
            hits.append({file, entry.row});
        }
    }
}

const QList<QPair<quint64, int>>& VLKeyTableIndexPrivate::filesByNumber()
{
    if (m_filesByNumber.size() == qsizetype(m_files.size()))
        return m_filesByNumber;
    m_filesByNumber.clear();
    m_filesByNumber.reserve(qsizetype(m_files.size()));
    for (size_t i = 0; i < m_files.size(); ++i)
        m_filesByNumber.append({KeyTableBlobs::numberOf(m_files[i].location.location), int(i)});
    std::sort(m_filesByNumber.begin(), m_filesByNumber.end());
    return m_filesByNumber;
}

std::unique_ptr<VLXmlElement>
VLKeyTableIndexPrivate::readHit(const VLKeyTable::Hit& hit, const QString& key, bool& mustLookAgain)
{
    using KeyTableRange::Outcome;
    const KeyTableRange::Source source = sourceOf(m_files[hit.file]);
    KeyTableRange::Result result = KeyTableRange::read(source, hit.row, key);
    if (result.outcome == Outcome::Found)
        return std::move(result.root);
    if (result.outcome == Outcome::Absent) {
        mustLookAgain = true;
        applyNow(hit.file, VLKeyTableFile());
        return nullptr;
    }
    const int reads = m_readInLookup.value(hit.file);
    if (reads == 0 || (result.outcome == Outcome::Changed && reads < kMaxReadsInLookup)) {
        mustLookAgain = true;
        readNow(hit.file);
        return nullptr;
    }
    // The row is as it should be, and its bytes do not stand for themselves.
    return std::move(KeyTableRange::readWhole(source, key).root);
}

bool VLKeyTableIndexPrivate::serves(const File& file, const QLocale& locale, Pass pass) const
{
    const bool isUsable = file.state == VLKeyTableState::Whole
        || (!isGuarded()
            && (file.state == VLKeyTableState::Survived || file.state == VLKeyTableState::Foreign));
    if (!isUsable)
        return false;
    const QLocale& own = m_locales.at(file.locale);
    switch (pass) {
    case Pass::Exact:
        return file.locale == 0 || own == locale;
    case Pass::Language:
        return file.locale != 0
            && own == QLocale(locale.language(), locale.script(), QLocale::AnyTerritory);
    default:
        return file.locale != 0 && own.language() == locale.language()
            && own.script() == locale.script();
    }
}

KeyTableRange::Source VLKeyTableIndexPrivate::sourceOf(const File& file) const
{
    const bool isForeign = file.isForeign;
    return {file.location.location, file.stamp, file.unit, file.headLength,
            isForeign ? QString(ContentNames::kTipTag) : QString(ContentNames::kControlFileTag)};
}

/// Where content is guarded, the base class warns of what lookups come across: it gets its chance
/// once in each state of a file.
void VLKeyTableIndexPrivate::letBaseWarn(int file, const QString& key, QChar reason)
{
    if (!isGuarded())
        return;
    QSet<QString>& warned = m_warned[file];
    // What is wrong with the root is told at any of its tips.
    const QString mark = reason == u'k' ? reason + key : QString(reason);
    if (warned.contains(mark))
        return;
    warned.insert(mark);
    VLXmlElement* root = nullptr;
    const File& record = m_files[file];
    m_owner->load(key, record.location.location, m_locales.at(record.locale), root);
    delete root;
}

void VLKeyTableIndexPrivate::addKeyData(const QString& key, VLXmlElement* element)
{
    const QString path = Settings::keyDataFile(m_owner->context());
    if (path.isEmpty())
        return;
    noteProblem(path, m_keyData.check(path), false);
    if (isGuarded()) {
        m_owner->loadKeyData(key, element);
        return;
    }
    const VLKeyTableKeyData::Attributes attributes = m_keyData.attributesFor(key);
    for (const auto& [name, value] : attributes)
        element->setAttribute(name, value);
}

QStringList VLKeyTableIndexPrivate::keys()
{
    std::vector<int> files;
    files.reserve(m_files.size());
    for (size_t i = 0; i < m_files.size(); ++i) {
        if (!m_files[i].isFree)
            files.push_back(int(i));
    }
    std::sort(files.begin(), files.end(),
              [this](int left, int right) { return m_files[left].order < m_files[right].order; });
    QStringList keys;
    for (const int file : files) {
        const QString& path = m_files[file].location.location;
        const VLKeyTableFile content = VLKeyTableReader(path, VLKeyTableReader::Keys::List).read();
        const File& record = m_files[file];
        if (record.isWaiting || !record.isSettled || record.stamp != content.stamp)
            applyNow(file, content);
        if (content.state == VLKeyTableState::Whole || !isGuarded())
            keys += content.listedKeys;
    }
    return keys;
}

void VLKeyTableIndexPrivate::readNow(int file)
{
    ++m_readInLookup[file];
    applyNow(file, VLKeyTableReader(m_files[file].location.location).read());
}

/// Takes over what was read on this thread, and has it put into the table on disk.
void VLKeyTableIndexPrivate::applyNow(int file, const VLKeyTableFile& content)
{
    apply(file, content);
    if (m_cache.path().isEmpty())
        return;
    announceCache();
    const File& record = m_files[file];
    VLKeyTableBuilder::Job job;
    job.file = file;
    job.generation = record.generation;
    job.path = record.location.location;
    job.content = content;
    job.content->isIndexed = record.isIndexed;
    m_builder.add({job});
}

void VLKeyTableIndexPrivate::apply(int file, const VLKeyTableFile& content,
                                   const std::optional<VLKeyTableFile>& before)
{
    noteFault(file, content);
    const bool areTipsSame =
        m_files[file].isKnown && noteChanges(file, content, before ? *before : contentBefore(file));
    m_table.replace(file, content.rows);
    takeOver(file, content, areTipsSame);
    m_files[file].isStored = false;
}

/// Takes over what the table on disk says of the file.
void VLKeyTableIndexPrivate::applyKnown(int file, const VLKeyTableFile& content)
{
    noteFault(file, content);
    m_table.replace(file, content.rows);
    takeOver(file, content, m_files[file].isKnown);
    m_files[file].isStored = true;
}

/// @p areTipsSame tells whether the tips are known to be those of before.
void VLKeyTableIndexPrivate::takeOver(int file, const VLKeyTableFile& content, bool areTipsSame)
{
    File& record = m_files[file];
    const bool areWordsSame = areTipsSame && record.stamp == content.stamp;
    if (record.stamp != content.stamp)
        m_warned.remove(file);
    record.stamp = content.stamp;
    record.headLength = content.headLength;
    record.locale = localeNumber(content.locale);
    record.state = content.state;
    record.unit = content.unit;
    record.isForeign = content.rootTag == ContentNames::kTipTag;
    record.isSettled = content.isSettled || content.state == VLKeyTableState::Absent;
    record.isKnown = true;
    record.mustRead = false;
    record.isDoubted = false;
    ++record.generation;
    if (!areWordsSame)
        m_search.noteRead(file);
    if (std::exchange(record.isWaiting, false)) {
        m_waiting.remove(record.order);
        m_mustTellProgress = true;
        m_mustTellBuilt = m_waiting.isEmpty();
    }
    // The file may be to be read once more.
    m_live.noteRead(file);
}

/// What lookups went by before the file was read anew.
VLKeyTableFile VLKeyTableIndexPrivate::contentBefore(int file)
{
    const File& record = m_files[file];
    VLKeyTableFile before;
    before.stamp = record.stamp;
    if (!record.isStored)
        before.rows = m_table.rowsOf(file);
    else if (!m_cache.get(record.location.location, before))
        before = VLKeyTableFile();
    return before;
}

int VLKeyTableIndexPrivate::localeNumber(const QString& name)
{
    const auto found = m_localeNumbers.constFind(name);
    if (found != m_localeNumbers.cend())
        return *found;
    m_locales.append(QLocale(name));
    const int number = int(m_locales.size()) - 1;
    m_localeNumbers.insert(name, number);
    return number;
}

void VLKeyTableIndexPrivate::noteFault(int file, const VLKeyTableFile& content)
{
    if (content.problem.text.isNull()) {
        m_faults.remove(file);
        return;
    }
    Fault& fault = m_faults[file];
    if (fault.stamp == content.stamp && fault.text == content.problem.text)
        return;
    fault = {content.stamp, content.problem.text};
    noteProblem(m_files[file].location.location, content.problem, true);
}

void VLKeyTableIndexPrivate::noteProblem(const QString& path, const VLKeyTableProblem& problem,
                                         bool isForGuard)
{
    if (!problem.text.isNull())
        m_problems.append({path, problem, isForGuard});
}

/// Gathers the keys whose lookups the file may answer otherwise from now on. Returns whether there
/// are none.
bool VLKeyTableIndexPrivate::noteChanges(int file, const VLKeyTableFile& content,
                                         const VLKeyTableFile& before)
{
    const File& record = m_files[file];
    // Tips that do not stand for themselves in the file cannot be told apart.
    const bool isSameFile = record.stamp == content.stamp;
    // Another process may have been first to put a newer state into the table on disk.
    const bool isBefore = before.stamp == record.stamp;
    const bool isSameState = record.state == content.state && isBefore;
    QHash<QString, VLKeyTableRow> gone;
    for (const VLKeyTableRow& row : before.rows) {
        if (row.kind != VLKeyTableRowKind::Nested)
            gone.insert(row.key, row);
    }
    QSet<QString> changed;
    for (const VLKeyTableRow& row : content.rows) {
        if (row.kind == VLKeyTableRowKind::Nested)
            continue;
        const auto old = gone.constFind(row.key);
        const bool isSame = old != gone.cend() && isSameState
            && (isSameTip(*old, row) || (isSameFile && row.length == 0));
        if (old != gone.cend())
            gone.erase(old);
        if (!isSame)
            changed.insert(row.key);
    }
    for (auto it = gone.cbegin(); it != gone.cend(); ++it)
        changed.insert(it.key());
    // Those that went are not known then, but for those that somebody may have.
    for (const auto& [from, key] : std::as_const(m_given)) {
        if (!isBefore && from == file)
            changed.insert(key);
    }
    noteChangedKeys(changed);
    return changed.isEmpty();
}

void VLKeyTableIndexPrivate::noteChangedKeys(const QSet<QString>& keys)
{
    if (keys.isEmpty())
        return;
    m_changedKeys.unite(keys);
    tellOfChanges();
}

void VLKeyTableIndexPrivate::tellOfChanges()
{
    if (m_changedKeys.isEmpty() || std::exchange(m_areChangesScheduled, true))
        return;
    QMetaObject::invokeMethod(
        m_owner, [this] { emitChanges(); }, Qt::QueuedConnection);
}

void VLKeyTableIndexPrivate::emitChanges()
{
    m_areChangesScheduled = false;
    // Else lookups would be as before, of a file that was moved for instance.
    if (m_live.isBehind() || m_changedKeys.isEmpty())
        return;
    const QSet<QString> changed = std::exchange(m_changedKeys, {});
    QStringList keys(changed.cbegin(), changed.cend());
    keys.sort();
    Q_EMIT m_owner->changed(keys);
}

void VLKeyTableIndexPrivate::tell()
{
    // Who is told may look something up, and then the rest is told here.
    if (m_isTelling || m_live.isApplying())
        return;
    m_isTelling = true;
    const QPointer<VLKeyTableIndex> owner(m_owner);
    while (tellOne()) {
        if (!owner)
            return;
    }
    m_isTelling = false;
}

/// Emits one signal. Returns whether there was one; the object may be gone then.
bool VLKeyTableIndexPrivate::tellOne()
{
    if (!m_problems.isEmpty()) {
        const auto [path, problem, isForGuard] = m_problems.takeFirst();
        const XmlPosition position = problem.position;
        const QPointer<VLKeyTableIndex> owner(m_owner);
        if (isForGuard && isGuarded())
            VLIndexHooks::warn(*m_owner, path, position, problem.text);
        // The host may have deleted it.
        if (!owner)
            return true;
        Q_EMIT m_owner->problemFound(path, int(position.line), int(position.column), problem.text);
        return true;
    }
    if (std::exchange(m_mustTellProgress, false)) {
        const int total = int(m_files.size()) - int(m_free.size());
        Q_EMIT m_owner->progressChanged(total - int(m_waiting.size()), total);
        return true;
    }
    if (std::exchange(m_mustTellBuilt, false)) {
        Q_EMIT m_owner->built();
        return true;
    }
    if (m_search.takeNews()) {
        Q_EMIT m_owner->searchBuilt();
        return true;
    }
    return false;
}

} // namespace Vidlets
