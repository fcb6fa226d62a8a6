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
// Far above what any translation needs, and far below what a host can spare.
constexpr qint64 kMaxTranslationBytes = 64 * 1024 * 1024;

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
int openRegular(const QByteArray& path, VLContentGuard::Stamp& stamp, QString& reason)
{
    struct stat status = {};
    int handle = -1;
    if (stat(path.constData(), &status) != 0) {
        reason = qt_error_string(errno);
        return -1;
    }
    stamp = stampOf(status);
    if (S_ISREG(status.st_mode)) {
        handle = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        if (handle < 0 || fstat(handle, &status) != 0) {
            reason = qt_error_string(errno);
            if (handle >= 0)
                ::close(handle);
            return -1;
        }
        stamp = stampOf(status);
    }
    if (S_ISREG(status.st_mode))
        return handle;
    reason = notRegular();
    if (handle >= 0)
        ::close(handle);
    return -1;
}

bool openNatively(QFile& file, const QString& path, VLContentGuard::Stamp& stamp, QString& reason)
{
    const int handle = openRegular(QFile::encodeName(path), stamp, reason);
    if (handle < 0)
        return false;
    if (file.open(handle, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return true;
    reason = file.errorString();
    ::close(handle);
    return false;
}
#endif

VLContentGuard::Stamp stampAt(const QString& path)
{
#ifdef Q_OS_UNIX
    const QString native = resolved(path);
    if (native.startsWith(u'/')) {
        struct stat status = {};
        const bool exists = stat(QFile::encodeName(native).constData(), &status) == 0;
        return exists ? stampOf(status) : VLContentGuard::Stamp();
    }
#endif
    return portableStamp(QFileInfo(path));
}

/// The place of the first byte that is no UTF-8, or a line of 0 where there is none.
XmlPosition firstInvalidByte(QFile& file)
{
    XmlPosition position;
    if (!file.seek(0))
        return position;
    qint64 number = 0;
    while (!file.atEnd()) {
        ++number;
        const QByteArray line = file.readLine();
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
void correctPosition(QFile& file, XmlReport& report)
{
    const QString wronglyEncoded =
        QCoreApplication::translate("QXmlStream", "Encountered incorrectly encoded content.");
    if (report.fault != wronglyEncoded)
        return;
    const XmlPosition position = firstInvalidByte(file);
    if (position.line > 0)
        report.faultPosition = position;
}

} // namespace

bool VLContentGuard::Stamp::operator==(const Stamp& other) const
{
    return size == other.size && device == other.device && inode == other.inode
        && modifiedNs == other.modifiedNs && changedNs == other.changedNs;
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

std::unique_ptr<VLXmlElement> VLContentGuard::parse(const QString& path, QLatin1StringView rootTag,
                                                    ShouldGenerateElementFunction filter,
                                                    void* userData, QList<XmlPosition>& positions)
{
    QFile file(path);
    Stamp stamp;
    QString reason;
    if (!open(file, stamp, reason)) {
        tell(recordOf(path, stamp), withoutPosition(path, reason));
        return nullptr;
    }
    if (isKnownBroken(path, stamp))
        return nullptr;

    VLXmlParser parser(filter, userData);
    XmlReport report;
    std::unique_ptr<VLXmlElement> root(parser.parseGuarded(file, report));
    correctPosition(file, report);
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
    QFile file(path);
    Stamp stamp;
    QString reason;
    if (!open(file, stamp, reason)) {
        tell(recordOf(path, stamp), withoutPosition(path, reason));
        return QByteArray();
    }
    if (isKnownBroken(path, stamp))
        return QByteArray();

    const QByteArray content = file.read(kMaxTranslationBytes);
    QByteArray translations = TranslationData::checked(content);
    if (translations.isNull() || !file.atEnd()) {
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
    const qint64 nowNs = QDateTime::currentMSecsSinceEpoch() * kNsPerMs;
    record.isBroken = true;
    record.isSettled = nowNs - qMax(stamp.modifiedNs, stamp.changedNs) > kSettledAfterNs;
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
