// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLContentGuard.h"

#include "VLTranslationData.h"
#include "VLXmlElement.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <utility>

#ifdef Q_OS_UNIX
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr qint64 kNsPerMs = 1'000'000;
// Some file systems count whole seconds, and clocks of file servers differ a little.
constexpr qint64 kSettledAfterNs = 3'000 * kNsPerMs;
// A scene may find ever new things to complain of.
constexpr int kMaxWarningsPerState = 100;
// Holds the first tag of nearly all control files, and takes one step to read.
constexpr qint64 kHeadBytes = qint64(16) * 1024;
// Far above what any translation needs, and far below what a host can spare.
constexpr qint64 kMaxTranslationBytes = qint64(64) * 1024 * 1024;

QString withPosition(const QString& path, XmlPosition position, const QString& reason)
{
    return u"%1:%2:%3: %4"_s.arg(path, QString::number(position.line),
                                 QString::number(position.column), reason);
}

QString withoutPosition(const QString& path, const QString& reason)
{
    return u"%1: %2"_s.arg(path, reason);
}

QString notRegular()
{
    return u"not a regular file"_s;
}

/// The path for the system, or one into Qt's resources, which begins with a colon.
QString resolved(const QString& path)
{
    return path.startsWith(u'/') ? path : QFileInfo(path).absoluteFilePath();
}

VLContentGuard::Stamp portableStamp(const QFileInfo& info)
{
    VLContentGuard::Stamp stamp;
    if (!info.exists())
        return stamp;
    stamp.size = info.size();
    stamp.modifiedNs = info.lastModified().toMSecsSinceEpoch() * kNsPerMs;
    stamp.changedNs = info.metadataChangeTime().toMSecsSinceEpoch() * kNsPerMs;
    return stamp;
}

bool openPortably(QFile& file, VLContentGuard::Stamp& stamp, QString& reason)
{
    const QFileInfo info(file.fileName());
    stamp = portableStamp(info);
    if (info.exists() && !info.isFile()) {
        reason = notRegular();
        return false;
    }
    if (file.open(QIODevice::ReadOnly))
        return true;
    reason = file.errorString();
    return false;
}

#ifdef Q_OS_UNIX
constexpr qint64 kNsPerSecond = 1'000'000'000;

qint64 nanoseconds(const timespec& time)
{
    return static_cast<qint64>(time.tv_sec) * kNsPerSecond + time.tv_nsec;
}

VLContentGuard::Stamp stampOf(const struct stat& status)
{
    VLContentGuard::Stamp stamp;
    stamp.size = status.st_size;
    stamp.device = status.st_dev;
    stamp.inode = status.st_ino;
#ifdef Q_OS_DARWIN
    stamp.modifiedNs = nanoseconds(status.st_mtimespec);
    stamp.changedNs = nanoseconds(status.st_ctimespec);
#else
    stamp.modifiedNs = nanoseconds(status.st_mtim);
    stamp.changedNs = nanoseconds(status.st_ctim);
#endif
    return stamp;
}

/// Looked at before the open, since to open a device can have effects, and after it, since the file
/// may be another by then; a FIFO in its place does not keep the open waiting.
int openRegular(const QByteArray& path, bool isListed, VLContentGuard::Stamp& stamp,
                QString& reason)
{
    struct stat status = {};
    const bool isReached = isListed || stat(path.constData(), &status) == 0;
    const bool isWanted = isListed || S_ISREG(status.st_mode);
    int handle = -1;
    if (isReached && isWanted)
        handle = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const bool isOpen = handle >= 0 && fstat(handle, &status) == 0;
    if (!isOpen)
        reason = isReached && !isWanted ? notRegular() : qt_error_string(errno);
    if (isReached)
        stamp = stampOf(status);
    if (isOpen && S_ISREG(status.st_mode))
        return handle;
    if (isOpen)
        reason = notRegular();
    if (handle >= 0)
        ::close(handle);
    return -1;
}

/// Reads a file without the steps by which QFile finds out what it has been given: they would take
/// longer than to read a small file.
bool readNatively(const QString& path, bool isListed, qint64 limit, QByteArray& content,
                  VLContentGuard::Stamp& stamp, QString& reason)
{
    const int handle = openRegular(QFile::encodeName(path), isListed, stamp, reason);
    if (handle < 0)
        return false;
    content.resize(qMin(stamp.size, limit));
    qsizetype length = 0;
    while (length < content.size()) {
        const ssize_t count = ::read(handle, content.data() + length, content.size() - length);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        length += count;
    }
    ::close(handle);
    content.resize(length);
    return true;
}

bool openNatively(QFile& file, const QString& path, VLContentGuard::Stamp& stamp, QString& reason)
{
    const int handle = openRegular(QFile::encodeName(path), false, stamp, reason);
    if (handle < 0)
        return false;
    if (file.open(handle, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return true;
    reason = file.errorString();
    ::close(handle);
    return false;
}
#endif

/// The place of the first byte that is no UTF-8, or a line of 0 where there is none.
XmlPosition firstInvalidByte(const QByteArray& document)
{
    XmlPosition position;
    qint64 number = 0;
    const QList<QByteArray> lines = document.split('\n');
    for (const QByteArray& line : lines) {
        ++number;
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString text = decoder(line);
        if (!decoder.hasError())
            continue;
        position.line = number;
        position.column = text.indexOf(QChar::ReplacementCharacter) + 1;
        return position;
    }
    return position;
}

/// The reader decodes ahead of what it reads, so that it is still far in front of a byte that it
/// cannot decode.
void correctPosition(const QByteArray& document, XmlReport& report)
{
    const QString wronglyEncoded =
        QCoreApplication::translate("QXmlStream", "Encountered incorrectly encoded content.");
    if (report.fault != wronglyEncoded)
        return;
    const XmlPosition position = firstInvalidByte(document);
    if (position.line > 0)
        report.faultPosition = position;
}

/// The reader's words for the commonest slip of all name neither it nor what to do.
void explainAmpersand(const QByteArray& document, XmlReport& report)
{
    const QByteArray line = document.split('\n').value(report.faultPosition.line - 1);
    if (QString::fromUtf8(line).mid(report.faultPosition.column - 2, 1) == "&"_L1)
        report.fault += u" \"&\" is written \"&amp;\"."_s;
}

} // namespace

bool VLContentGuard::Stamp::operator==(const Stamp& other) const
{
    return size == other.size && device == other.device && inode == other.inode
        && modifiedNs == other.modifiedNs && changedNs == other.changedNs;
}

VLContentGuard::Stamp VLContentGuard::stampAt(const QString& path)
{
#ifdef Q_OS_UNIX
    const QString native = resolved(path);
    if (native.startsWith(u'/')) {
        struct stat status = {};
        const bool exists = stat(QFile::encodeName(native).constData(), &status) == 0;
        return exists ? stampOf(status) : Stamp();
    }
#endif
    return portableStamp(QFileInfo(path));
}

void VLContentGuard::explain(const QByteArray& document, XmlReport& report)
{
    correctPosition(document, report);
    if (!report.fault.isNull())
        explainAmpersand(document, report);
}

void VLContentGuard::setListener(Listener listener)
{
    m_listener = std::move(listener);
}

bool VLContentGuard::open(QFile& file)
{
    Stamp stamp;
    QString reason;
    return open(file, stamp, reason);
}

bool VLContentGuard::open(QFile& file, Stamp& stamp, QString& reason)
{
#ifdef Q_OS_UNIX
    const QString path = resolved(file.fileName());
    if (path.startsWith(u'/'))
        return openNatively(file, path, stamp, reason);
#endif
    return openPortably(file, stamp, reason);
}

bool VLContentGuard::read(const QString& path, qint64 limit, QByteArray& content, Stamp& stamp,
                          QString& reason)
{
#ifdef Q_OS_UNIX
    const QString native = resolved(path);
    if (native.startsWith(u'/'))
        return readNatively(native, false, limit, content, stamp, reason);
#endif
    QFile file(path);
    if (!openPortably(file, stamp, reason))
        return false;
    content = file.read(limit);
    return true;
}

QByteArray VLContentGuard::readHead(const QString& path, bool isListed, bool& isWhole)
{
    QByteArray content;
    Stamp stamp;
    QString reason;
#ifdef Q_OS_UNIX
    if (isListed && path.startsWith(u'/'))
        readNatively(path, true, kHeadBytes, content, stamp, reason);
    else
#endif
        read(path, kHeadBytes, content, stamp, reason);
    isWhole = content.size() >= stamp.size;
    return content;
}

std::unique_ptr<VLXmlElement> VLContentGuard::parse(const QString& path, QLatin1StringView rootTag,
                                                    ShouldGenerateElementFunction filter,
                                                    void* userData, QList<XmlPosition>& positions)
{
    QByteArray document;
    Stamp stamp;
    QString reason;
    if (!m_records.isEmpty() && isKnownBroken(path, stampAt(path)))
        return nullptr;
    if (!read(path, kMaxDocumentBytes, document, stamp, reason)) {
        tell(recordOf(path, stamp), withoutPosition(path, reason));
        return nullptr;
    }

    VLXmlParser parser(filter, userData);
    XmlReport report;
    std::unique_ptr<VLXmlElement> root(parser.parseGuarded(document, report));
    explain(document, report);
    if (report.fault.isNull() && report.rootTag != rootTag) {
        report.fault = u"the root is <%1>, not <%2>"_s.arg(report.rootTag, rootTag);
        report.faultPosition = report.rootPosition;
    }
    if (!report.fault.isNull()) {
        refuse(path, stamp, withPosition(path, report.faultPosition, report.fault));
        return nullptr;
    }
    accept(path);
    positions = report.positions;
    return root;
}

QByteArray VLContentGuard::readTranslations(const QString& path)
{
    QByteArray content;
    Stamp stamp;
    QString reason;
    if (isKnownBroken(path, stampAt(path)))
        return QByteArray();
    if (!read(path, kMaxTranslationBytes, content, stamp, reason)) {
        tell(recordOf(path, stamp), withoutPosition(path, reason));
        return QByteArray();
    }

    QByteArray translations = TranslationData::checked(content);
    if (translations.isNull() || stamp.size > content.size()) {
        refuse(path, stamp, withoutPosition(path, u"no translation file, or a broken one"_s));
        return QByteArray();
    }
    accept(path);
    if (TranslationData::hasDependencies(content))
        warn(path, u"the translation files that it depends on are not loaded"_s);
    return translations;
}

void VLContentGuard::warn(const QString& path, const QString& reason)
{
    tell(recordOf(path, stampAt(path)), withoutPosition(path, reason));
}

void VLContentGuard::warn(const QString& path, XmlPosition position, const QString& reason)
{
    tell(recordOf(path, stampAt(path)), withPosition(path, position, reason));
}

void VLContentGuard::warn(const QString& path, const std::function<XmlPosition()>& place,
                          const QString& reason)
{
    const QSet<QString> told = recordOf(path, stampAt(path)).told;
    if (told.contains(reason) || told.size() >= kMaxWarningsPerState)
        return;
    // Looks into the file, so that the record may be another one after it.
    const XmlPosition position = place();
    Record& record = recordOf(path, stampAt(path));
    record.told.insert(reason);
    tell(record,
         position.line > 0 ? withPosition(path, position, reason) : withoutPosition(path, reason));
}

VLContentGuard::Record& VLContentGuard::recordOf(const QString& path, const Stamp& stamp)
{
    Record& record = m_records[path];
    if (record.stamp != stamp) {
        record = Record();
        record.stamp = stamp;
    }
    return record;
}

bool VLContentGuard::isKnownBroken(const QString& path, const Stamp& stamp) const
{
    const auto found = m_records.constFind(path);
    return found != m_records.cend() && found->isBroken && found->isSettled
        && found->stamp == stamp;
}

void VLContentGuard::refuse(const QString& path, const Stamp& stamp, const QString& warning)
{
    Record& record = recordOf(path, stamp);
    const qint64 currentNs = QDateTime::currentMSecsSinceEpoch() * kNsPerMs;
    record.isBroken = true;
    record.isSettled = currentNs - qMax(stamp.modifiedNs, stamp.changedNs) > kSettledAfterNs;
    tell(record, warning);
}

void VLContentGuard::accept(const QString& path)
{
    if (m_records.isEmpty())
        return;
    const auto found = m_records.find(path);
    if (found != m_records.end())
        found->isBroken = false;
}

void VLContentGuard::tell(Record& record, const QString& warning)
{
    if (record.told.contains(warning) || record.told.size() >= kMaxWarningsPerState)
        return;
    record.told.insert(warning);
    if (m_listener)
        m_listener(warning);
}

} // namespace Vidlets
