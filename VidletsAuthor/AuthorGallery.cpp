// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorGallery.h"

#include "AuthorCheck.h"
#include "AuthorClipStrip.h"
#include "AuthorFiles.h"
#include "AuthorPackages.h"
#include "AuthorReport.h"
#include "AuthorTipPainter.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSaveFile>
#include <QUrl>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

QString digestOf(const QByteArray& bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

QString lookName(const AuthorLook& look)
{
    QString name = look.isDark ? u"dark"_s : u"light"_s;
    const bool isNatural =
        look.isRightToLeft == (QLocale(look.locale).textDirection() == Qt::RightToLeft);
    if (!isNatural)
        name += u", mirrored"_s;
    if (look.scale != 1.0)
        name += u", × %1"_s.arg(look.scale);
    return name;
}

QString fileName(const QString& package, const QString& key, const AuthorLook& look)
{
    QString name = u"%1/%2/%3-%4"_s.arg(
        AuthorGalleryPage::safeName(package), AuthorGalleryPage::safeName(key),
        AuthorGalleryPage::safeName(look.locale), look.isDark ? u"dark"_s : u"light"_s);
    if (look.isRightToLeft)
        name += u"-rtl"_s;
    if (look.scale != 1.0)
        name += u"-x%1"_s.arg(look.scale);
    return u"pictures/%1.png"_s.arg(name);
}

std::optional<AuthorGalleryData> readList(const QString& directory)
{
    QString unused;
    const auto bytes =
        AuthorFiles::read(QDir(directory).filePath(AuthorGalleryPage::listName()), unused);
    return bytes ? AuthorGalleryPage::readList(*bytes) : std::nullopt;
}

constexpr QByteArrayView kNotesHead = "vidlets gallery, not finished";

/// The file that stands beside the pictures until all are drawn.
QString notesName()
{
    return u"gallery.unfinished"_s;
}

/// The pictures that a gallery had written when it was ended.
std::optional<QStringList> readNotes(const QString& directory)
{
    QString unused;
    const auto bytes = AuthorFiles::read(QDir(directory).filePath(notesName()), unused);
    if (!bytes || !bytes->startsWith(kNotesHead))
        return std::nullopt;
    return QString::fromUtf8(*bytes).split(u'\n', Qt::SkipEmptyParts).mid(1);
}

bool write(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

QStringList filesOf(const AuthorGalleryData& data)
{
    QStringList result;
    for (const AuthorGalleryTip& tip : data.tips) {
        for (const AuthorGalleryPicture& picture : tip.pictures)
            result.append(picture.file);
        for (const AuthorGalleryClip& clip : tip.clips)
            result.append(clip.file);
    }
    return result;
}

/// Whether the list of a gallery, which anybody may have written, names a picture of a gallery.
bool isPicture(const QString& file)
{
    return file.startsWith("pictures/"_L1) && file.endsWith(".png"_L1)
        && QDir::cleanPath(file) == file && !file.contains(".."_L1);
}

const AuthorGalleryTip* find(const AuthorGalleryData& data, const AuthorGalleryTip& wanted)
{
    const auto found =
        std::find_if(data.tips.cbegin(), data.tips.cend(), [&wanted](const AuthorGalleryTip& tip) {
            return tip.key == wanted.key && tip.package == wanted.package;
        });
    return found == data.tips.cend() ? nullptr : &*found;
}

} // namespace

AuthorGallery::AuthorGallery(AuthorGalleryOptions options)
    : m_options(std::move(options))
{
    if (m_options.scales.isEmpty())
        m_options.scales.append(1.0);
}

bool AuthorGallery::prepare(QString& reason)
{
    const auto list = AuthorTipList::read(m_options.path, reason);
    if (!list)
        return false;
    m_list = *list;
    if (m_list.packages.isEmpty()) {
        reason = AuthorPackages::noneIn(m_options.path);
        return false;
    }
    const QFileInfo directory(m_options.directory);
    if (directory.exists() && !directory.isDir()) {
        reason = u"\"%1\" is no directory."_s.arg(m_options.directory);
        return false;
    }
    const auto before = readList(m_options.directory);
    const auto notes = readNotes(m_options.directory);
    if (!before && !notes && directory.isDir() && !QDir(m_options.directory).isEmpty()) {
        reason = u"\"%1\" is not empty, and no gallery."_s.arg(m_options.directory);
        return false;
    }
    m_before = filesOf(before.value_or(AuthorGalleryData())) + notes.value_or(QStringList());
    if (m_options.oldDirectory.isEmpty())
        return true;
    const auto old = readList(m_options.oldDirectory);
    if (!old)
        reason = u"\"%1\" is no gallery to compare with."_s.arg(m_options.oldDirectory);
    m_old = old.value_or(AuthorGalleryData());
    return old.has_value();
}

bool AuthorGallery::run(AuthorGalleryResult& result, QString& reason)
{
    collectPrefixes();
    makeTips();
    addFindings();
    bool isWritten = beginNotes();
    const QList<AuthorLook> all = looks();
    m_data.locales = m_options.locales;
    for (const AuthorLook& look : all) {
        if (!m_data.looks.contains(lookName(look)))
            m_data.looks.append(lookName(look));
        isWritten = isWritten && drawAll(look);
    }
    compare(result);
    const QDir directory(m_options.directory);
    isWritten = isWritten
        && write(directory.filePath(AuthorGalleryPage::fileName()), AuthorGalleryPage::page(m_data))
        && write(directory.filePath(AuthorGalleryPage::listName()),
                 AuthorGalleryPage::list(m_data));
    if (!isWritten) {
        reason = u"\"%1\" cannot be written to."_s.arg(m_options.directory);
        return false;
    }
    removeOld();
    m_notes.remove();
    result.tips = static_cast<int>(m_data.tips.size());
    result.failed =
        static_cast<int>(std::count_if(m_data.tips.cbegin(), m_data.tips.cend(),
                                       [](const AuthorGalleryTip& tip) { return tip.isFailed(); }));
    result.hasFaults = m_hasFaults;
    return true;
}

/// The beginnings of paths as the author has spelled them, and as they are.
void AuthorGallery::collectPrefixes()
{
    QStringList directories = m_list.places.dataPaths;
    for (const AuthorListedPackage& package : std::as_const(m_list.packages)) {
        directories.append(QFileInfo(package.path).path());
        directories.append(QFileInfo(QFileInfo(package.path).absoluteFilePath()).path());
    }
    directories.removeDuplicates();
    // The longest first, since one may be the end of another.
    std::sort(directories.begin(), directories.end(),
              [](const QString& left, const QString& right) {
                  return left.size() != right.size() ? left.size() > right.size() : left < right;
              });
    for (const QString& directory : std::as_const(directories)) {
        if (directory == u'.' || directory == u'/')
            continue;
        m_prefixes.append(QUrl::fromLocalFile(directory).toString() + u'/');
        m_prefixes.append(directory + u'/');
    }
}

void AuthorGallery::makeTips()
{
    for (const AuthorListedPackage& package : std::as_const(m_list.packages)) {
        m_data.packages.append({package.name, {}});
        for (const AuthorListedTip& tip : package.tips) {
            AuthorGalleryTip entry;
            entry.package = package.name;
            entry.key = tip.key;
            m_data.tips.append(entry);
        }
    }
}

/// Each goes to its tip, else to its package, else to the first one.
void AuthorGallery::addFindings()
{
    AuthorCheck check;
    QString unused;
    check.add(m_options.path, unused);
    check.setLocales(m_options.locales);
    const QList<AuthorFinding> findings = check.run();
    m_hasFaults = AuthorReport::isFailed(findings);
    for (AuthorFinding finding : findings) {
        QList<AuthorFinding>* place = nullptr;
        qsizetype number = 0;
        for (qsizetype i = 0; i < m_list.packages.size(); ++i) {
            const AuthorListedPackage& package = m_list.packages.at(i);
            const bool isOfPackage = AuthorFiles::isBelow(package.path, finding.file);
            if (!place && (isOfPackage || i + 1 == m_list.packages.size()))
                place = &m_data.packages[i].findings;
            for (const AuthorListedTip& tip : package.tips) {
                if (isOfPackage && isIn(tip, finding))
                    place = &m_data.tips[number].findings;
                ++number;
            }
        }
        if (!place)
            continue;
        finding.file = relative(finding.file);
        finding.message = relative(finding.message);
        finding.help = relative(finding.help);
        place->append(finding);
    }
}

QList<AuthorLook> AuthorGallery::looks() const
{
    const QStringList locales = m_options.locales.isEmpty() ? m_list.locales() : m_options.locales;
    QList<AuthorLook> result;
    for (const QString& locale : locales) {
        const bool isNaturallyMirrored = QLocale(locale).textDirection() == Qt::RightToLeft;
        for (const double scale : m_options.scales) {
            for (const bool isDark : {false, true}) {
                for (const bool isMirrored : {false, true}) {
                    const bool isWanted = (!isDark || m_options.isDark)
                        && (!isMirrored || (m_options.isRightToLeft && !isNaturallyMirrored));
                    if (!isWanted)
                        continue;
                    AuthorLook look;
                    look.locale = locale;
                    look.isDark = isDark;
                    look.isRightToLeft = isMirrored || isNaturallyMirrored;
                    look.scale = scale;
                    result.append(look);
                }
            }
        }
    }
    return result;
}

bool AuthorGallery::drawAll(const AuthorLook& look)
{
    AuthorTipPainter painter(m_list.places, look);
    qsizetype number = 0;
    for (qsizetype i = 0; i < m_list.packages.size(); ++i) {
        const AuthorListedPackage& package = m_list.packages.at(i);
        // A language that only another package has is not missing here.
        const bool isSpoken = !m_options.locales.isEmpty() || package.locales.contains(look.locale);
        for (qsizetype j = 0; j < package.tips.size(); ++j) {
            AuthorGalleryTip& entry = m_data.tips[number++];
            if (isSpoken && !drawTip(painter, look, i, j, entry))
                return false;
        }
    }
    return true;
}

bool AuthorGallery::drawTip(AuthorTipPainter& painter, const AuthorLook& look, qsizetype package,
                            qsizetype tip, AuthorGalleryTip& entry)
{
    const AuthorListedPackage& listed = m_list.packages.at(package);
    AuthorGalleryPicture picture;
    picture.locale = look.locale;
    picture.look = lookName(look);
    picture.isMissing = !hasLocale(listed.tips.at(tip), look.locale);
    if (picture.isMissing) {
        entry.pictures.append(picture);
        return true;
    }
    const AuthorTipPicture drawn = painter.draw(listed.canonicalPath, listed.tips.at(tip).key);
    picture.failure = relative(drawn.failure);
    for (const QString& warning : drawn.warnings)
        picture.warnings.append(relative(warning));
    if (entry.title.isEmpty())
        entry.title = drawn.title.simplified();
    bool isWritten = true;
    if (!drawn.image.isNull()) {
        const QByteArray bytes = AuthorGalleryPage::png(drawn.image);
        picture.file = fileName(listed.name, entry.key, look);
        picture.size = drawn.image.size();
        picture.digest = digestOf(bytes);
        isWritten = save(picture.file, bytes);
    } else if (picture.failure.isEmpty()) {
        picture.failure = u"The scene cannot be drawn."_s;
    }
    entry.pictures.append(picture);
    for (const QString& path : drawn.clips)
        isWritten = isWritten && addClip(path, entry);
    return isWritten;
}

bool AuthorGallery::addClip(const QString& path, AuthorGalleryTip& entry)
{
    const QString name = relative(path);
    const bool isKnown =
        std::any_of(entry.clips.cbegin(), entry.clips.cend(),
                    [&name](const AuthorGalleryClip& clip) { return clip.name == name; });
    if (isKnown)
        return true;
    const auto found = m_clips.constFind(path);
    if (found != m_clips.cend()) {
        entry.clips.append(*found);
        return true;
    }
    const AuthorClipStrip strip = AuthorClipStrip::of(path);
    AuthorGalleryClip clip;
    clip.name = name;
    clip.frames = strip.frames;
    clip.frameRate = strip.frameRate;
    clip.frameSize = strip.frameSize;
    bool isWritten = true;
    if (!strip.image.isNull()) {
        const QByteArray bytes = AuthorGalleryPage::png(strip.image);
        clip.file = u"pictures/clips/%1.png"_s.arg(AuthorGalleryPage::safeName(name));
        clip.size = strip.image.size();
        clip.digest = digestOf(bytes);
        isWritten = save(clip.file, bytes);
    }
    m_clips.insert(path, clip);
    entry.clips.append(clip);
    return isWritten;
}

bool AuthorGallery::save(const QString& name, const QByteArray& bytes)
{
    m_written.insert(name);
    m_notes.write(name.toUtf8() + '\n');
    return m_notes.flush() && write(QDir(m_options.directory).filePath(name), bytes);
}

/// Without them nobody could tell the pictures of a gallery that was ended from those of a user.
bool AuthorGallery::beginNotes()
{
    QDir().mkpath(m_options.directory);
    m_notes.setFileName(QDir(m_options.directory).filePath(notesName()));
    // Whatever it is: what a link leads to stays as it is.
    m_notes.remove();
    QByteArray text = kNotesHead.toByteArray() + '\n';
    for (const QString& file : std::as_const(m_before))
        text += file.toUtf8() + '\n';
    return m_notes.open(QIODevice::WriteOnly) && m_notes.write(text) == text.size()
        && m_notes.flush();
}

/// Whether tips need the names of their packages in either gallery.
bool AuthorGallery::areSeveral() const
{
    QSet<QString> names;
    for (const AuthorGalleryPackage& package : m_data.packages)
        names.insert(package.name);
    for (const AuthorGalleryTip& tip : m_old.tips)
        names.insert(tip.package);
    return names.size() > 1;
}

void AuthorGallery::compare(AuthorGalleryResult& result)
{
    if (m_options.oldDirectory.isEmpty())
        return;
    const bool isNamed = areSeveral();
    for (AuthorGalleryTip& tip : m_data.tips) {
        const AuthorGalleryTip* old = find(m_old, tip);
        if (!old) {
            tip.change = AuthorGalleryChange::Added;
            result.added.append(AuthorGalleryPage::nameOf(tip, isNamed));
        } else if (AuthorGalleryPage::isDifferent(m_old, *old, m_data, tip)) {
            tip.change = AuthorGalleryChange::Changed;
            result.changed.append(AuthorGalleryPage::nameOf(tip, isNamed));
        }
    }
    for (const AuthorGalleryTip& tip : std::as_const(m_old.tips)) {
        if (!find(m_data, tip))
            m_data.gone.append(AuthorGalleryPage::nameOf(tip, isNamed));
    }
    result.gone = m_data.gone;
}

void AuthorGallery::removeOld() const
{
    const QDir directory(m_options.directory);
    for (const QString& file : m_before) {
        if (!isPicture(file) || m_written.contains(file))
            continue;
        QFile::remove(directory.filePath(file));
        directory.rmdir(QFileInfo(file).path());
    }
}

/// Without what only says where the packages lie on this machine.
QString AuthorGallery::relative(const QString& text) const
{
    QString result = text;
    for (const QString& prefix : m_prefixes) {
        qsizetype at = result.indexOf(prefix);
        while (at >= 0) {
            const QChar before = at > 0 ? result.at(at - 1) : QChar(u' ');
            const bool isPart = before.isLetterOrNumber() || u"/._-"_s.contains(before);
            if (!isPart)
                result.remove(at, prefix.size());
            at = result.indexOf(prefix, isPart ? at + 1 : at);
        }
    }
    return result;
}

} // namespace Vidlets
