// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableWriter.h"

#include "VLKeyTableStore.h"

#include <QDeadlineTimer>

#include <utility>

namespace Vidlets {

namespace {

// Each time the table is written most of it is touched; up to then the rows are in memory.
constexpr qsizetype kMaxWaitingRows = 131'072;
// Others may be at a first build of their own.
constexpr int kPatienceMs = 5000;

} // namespace

VLKeyTableWriter::VLKeyTableWriter(const QString& path, const std::atomic<bool>& isCancelled)
    : m_path(path)
    , m_isCancelled(isCancelled)
    , m_isGivenUp(path.isEmpty())
{
}

VLKeyTableWriter::~VLKeyTableWriter()
{
    if (m_store && m_isChanged)
        m_store->tidy();
}

bool VLKeyTableWriter::knows(const QString& path, VLKeyTableFile& content)
{
    if (!isOpen())
        return false;
    const auto found = m_known.constFind(path);
    if (found == m_known.cend() || !found->isSettled || found->stamp != VLIndexHooks::stampAt(path))
        return false;
    content = *found;
    return true;
}

std::optional<VLKeyTableFile> VLKeyTableWriter::contentOf(const QString& path)
{
    VLKeyTableFile content;
    if (!isOpen())
        return std::nullopt;
    if (m_store->get(path, content))
        return content;
    if (!m_store->lastError().isNull())
        loseTable();
    return std::nullopt;
}

void VLKeyTableWriter::add(Content&& content)
{
    if (m_isGivenUp)
        return;
    m_waitingRows += content.content.rows.size();
    m_waiting.append(std::move(content));
}

bool VLKeyTableWriter::isFull() const
{
    return m_waitingRows > kMaxWaitingRows;
}

QList<VLKeyTableWriter::Content> VLKeyTableWriter::flush()
{
    QList<Content> written;
    if (!m_waiting.isEmpty() && isOpen() && !writeAll(written)) {
        written.clear();
        // What waits goes into the new table, together with all else that is read again then.
        loseTable();
        if (isOpen() && !writeAll(written)) {
            written.clear();
            giveUp();
        }
    }
    m_waiting.clear();
    m_waitingRows = 0;
    return written;
}

bool VLKeyTableWriter::findGone(const std::function<bool()>& mustEnd, QStringList& gone)
{
    // What was not opened for a file has not grown.
    if (!m_store || m_isGivenUp)
        return false;
    for (auto it = m_known.cbegin(); it != m_known.cend(); ++it) {
        if (m_isCancelled || mustEnd())
            return false;
        if (VLIndexHooks::stampAt(it.key()) == VLFileStamp())
            gone.append(it.key());
    }
    return true;
}

void VLKeyTableWriter::forget(const QStringList& paths)
{
    if (!paths.isEmpty() && m_store && !m_isGivenUp && !forgetAll(paths))
        loseTable();
}

bool VLKeyTableWriter::forgetAll(const QStringList& paths)
{
    if (!retried([this] { return m_store->begin(); }))
        return false;
    for (const QString& path : paths) {
        // Others that share the table may have it again by now.
        if (VLIndexHooks::stampAt(path) == VLFileStamp() && !m_store->forget(path)) {
            m_store->rollBack();
            return false;
        }
    }
    m_isChanged = true;
    return m_store->commit();
}

QByteArray VLKeyTableWriter::token() const
{
    return m_store ? m_store->token() : QByteArray();
}

bool VLKeyTableWriter::takeIncident(Incident& incident)
{
    if (!m_incident)
        return false;
    incident = *std::exchange(m_incident, std::nullopt);
    return true;
}

/// Opens the table if it is not. Returns whether it is open.
bool VLKeyTableWriter::isOpen()
{
    if (m_isGivenUp || m_store)
        return !m_isGivenUp;
    m_store = std::make_unique<VLKeyTableStore>(m_path, VLKeyTableStore::Access::Write);
    if (!retried([this] { return m_store->open(); })) {
        giveUp();
        return false;
    }
    if (!m_store->lastError().isNull()) {
        m_incident = {m_store->lastError(), true, false};
        m_isReplaced = true;
    }
    // What is wrong with them would stay, and cost each start the table.
    if (m_store->files(m_known))
        return true;
    loseTable();
    return isOpen();
}

/// Tries it again as long as others are in the way. Returns whether it was possible.
template <typename Operation> bool VLKeyTableWriter::retried(Operation operation)
{
    const QDeadlineTimer deadline(kPatienceMs);
    while (!operation()) {
        if (!m_store->isLocked() || m_isCancelled || deadline.hasExpired())
            return false;
    }
    return true;
}

bool VLKeyTableWriter::writeAll(QList<Content>& written)
{
    if (!retried([this] { return m_store->begin(); }))
        return false;
    for (const Content& content : std::as_const(m_waiting)) {
        bool isWritten = false;
        if (!write(content, isWritten)) {
            m_store->rollBack();
            return false;
        }
        if (isWritten)
            written.append({content.file, content.generation, content.path, {}});
    }
    m_isChanged = true;
    return m_store->commit();
}

bool VLKeyTableWriter::write(const Content& content, bool& isWritten)
{
    // Nobody else writes now: whoever has read a later state of the file writes after this, so that
    // the last one stays.
    if (VLIndexHooks::stampAt(content.path) != content.content.stamp)
        return true;
    if (content.content.state == VLKeyTableState::Absent)
        return m_store->forget(content.path);
    isWritten = true;
    return m_store->put(content.path, content.content);
}

/// Does without the table from now on. What is in it stays good.
void VLKeyTableWriter::giveUp()
{
    const bool isReplaced = m_incident && m_incident->isReplaced;
    m_incident = {isReplaced ? m_incident->reason : m_store->lastError(), isReplaced, true};
    m_store.reset();
    m_isGivenUp = true;
}

/// Puts the table aside if it is of no use, for the next one to take its place; gives it up if it
/// is another's, or cannot be written.
void VLKeyTableWriter::loseTable()
{
    if (!m_store->isDamaged() || std::exchange(m_isReplaced, true)) {
        giveUp();
        return;
    }
    const QString reason = m_store->lastError();
    m_store.reset();
    m_known.clear();
    VLKeyTableStore::putAside(m_path);
    m_incident = {reason, true, false};
}

} // namespace Vidlets
