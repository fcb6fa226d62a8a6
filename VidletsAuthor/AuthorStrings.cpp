// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorStrings.h"

#include "AuthorControlReader.h"
#include "AuthorFiles.h"
#include "AuthorSceneOutline.h"
#include "AuthorScenes.h"
#include "AuthorStringSources.h"
#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLSettings.h>

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

using namespace ContentNames;

namespace {

using Member = AuthorSceneOutline::Member;
using State = AuthorTsMessage::State;

constexpr qint64 kMaxSceneBytes = qint64(4) * 1024 * 1024;
/// In all contexts together, since each text of a tip goes into each of them.
constexpr qsizetype kMaxCharacters = qsizetype(64) * 1024 * 1024;

QString usualContext()
{
    return u"VidletUI"_s;
}

QString keyOf(const AuthorTsMessage& message)
{
    return message.context + QChar(0) + message.source + QChar(0) + message.comment;
}

bool isCallOf(const AuthorSceneOutline& scene, qsizetype token, QStringView name)
{
    return scene.at(token) == name && scene.at(token + 1) == "("_L1
        && scene.at(token - 1) != "function"_L1;
}

QString absolute(const QString& path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

/// The package that a file lies in, null for none.
QString packageAround(const QString& path)
{
    QString place = absolute(path);
    while (!place.endsWith(packageSuffix())) {
        const QString above = QFileInfo(place).path();
        if (above == place)
            return QString();
        place = above;
    }
    return place;
}

QString relativeTo(const QString& root, const QString& path)
{
    return AuthorFiles::isBelow(root, path) ? AuthorFiles::below(root, path)
                                            : QDir(absolute(root)).relativeFilePath(path);
}

/// What leads from a directory of a package to the package.
QString stepsFrom(const QString& directory)
{
    return u"../"_s.repeated(directory.count(u'/') + 1);
}

/// What stays as it is in all languages.
const QRegularExpression& keptParts()
{
    static const QRegularExpression kept(
        u"<[^<>]{0,1000}>|&\\w{1,32};|%\\([^()]{0,200}\\)s|%L?\\d{1,2}|\\$\\{[^{}]{0,1000}\\}"_s);
    return kept;
}

/// Whether a text has words; one such as "LAYOUT_DIRECTION" is a name that nobody reads.
bool hasWords(const QString& text)
{
    const QString words = QString(text).remove(keptParts());
    const bool isName = words.contains(u'_') && words == words.toUpper() && !words.contains(u' ');
    return !isName && std::any_of(words.cbegin(), words.cend(), [](QChar character) {
        return character.isLetter();
    });
}

/// Whether a line for translators says where a text comes from, now or at an earlier time.
bool isNote(const QString& line, const QSet<QString>& notes)
{
    static const QRegularExpression place(u"^(?:.*, Control/.+\\.xml|\\S+\\.(?:qml|js|mjs))$"_s,
                                          QRegularExpression::CaseInsensitiveOption
                                              | QRegularExpression::DotMatchesEverythingOption);
    return notes.contains(line) || place.match(line).hasMatch();
}

/// The @p notes between the lines that an author has written above and below earlier ones.
QString withOwnLines(const QString& before, const QString& notes)
{
    if (before == notes || before.isEmpty())
        return notes;
    const QStringList present = notes.split(u'\n');
    const QSet<QString> known(present.cbegin(), present.cend());
    QStringList above;
    QStringList below;
    bool isNoteSeen = false;
    const QStringList lines = before.split(u'\n');
    for (const QString& line : lines) {
        if (isNote(line, known))
            isNoteSeen = true;
        else
            (isNoteSeen ? below : above).append(line);
    }
    return (above + present + below).join(u'\n');
}

} // namespace

AuthorStrings::AuthorStrings(const AuthorPackage& package, const QString& directory)
    : m_root(package.path)
    , m_directory(directoryFor(directory))
    , m_scenePackages{package.path}
{
    for (const QString& path : package.candidates)
        readControlFile(path);
    collect();
}

AuthorStrings::AuthorStrings(const AuthorPackage& package, const QString& directory,
                             const QList<AuthorControlFile>& files)
    : m_root(package.path)
    , m_directory(directoryFor(directory))
    , m_scenePackages{package.path}
    , m_isBrief(true)
{
    for (const AuthorControlFile& file : files) {
        QString reason;
        const auto bytes = file.isInUse ? AuthorFiles::read(file.path, reason) : std::nullopt;
        if (bytes)
            readUsed(file, *bytes);
    }
    collect();
}

/// Collects the texts of what has been read.
void AuthorStrings::collect()
{
    if (m_directories.isEmpty())
        m_directories.append(directoryFor(QString()));
    readScenes();
    m_sceneMessages = m_messages.size();
    m_isTranslatingTips = !m_contexts.isEmpty();
    if (m_contexts.isEmpty())
        m_contexts.insert(usualContext());
    sortContexts();
    addTips();
    if (m_characters > kMaxCharacters)
        m_faults.append(
            u"%1: The texts are too many: in %2 contexts they have more than %3 characters"_s.arg(
                m_root, QString::number(m_sortedContexts.size()), QString::number(kMaxCharacters)));
}

QString AuthorStrings::directoryFor(const QString& name)
{
    return QDir::cleanPath(name.isEmpty() ? Settings::translationDirectoryDefault() : name);
}

void AuthorStrings::sortContexts()
{
    m_sortedContexts = QStringList(m_contexts.cbegin(), m_contexts.cend());
    m_sortedContexts.sort();
}

/// Finds the packages that the scenes of a control file lie in, as the library does.
void AuthorStrings::findScenes(const AuthorControlFile& file)
{
    const QString root = absolute(m_root);
    QStringList places{root};
    for (const QString& name : file.search) {
        const QString place = AuthorFiles::join(QFileInfo(root).path(), name + packageSuffix());
        if (QFileInfo(place).isDir())
            places.append(place);
    }
    QSet<QString> known;
    for (const AuthorSceneName& scene : file.scenes) {
        if (known.contains(scene.name))
            continue;
        known.insert(scene.name);
        const auto place =
            std::find_if(places.cbegin(), places.cend(), [&scene](const QString& path) {
                return QFileInfo(AuthorFiles::join(path, scene.name)).isFile();
            });
        const QString package =
            place == places.cend() ? root : packageAround(AuthorFiles::join(*place, scene.name));
        if (!package.isNull() && package != root && !m_scenePackages.contains(package))
            m_scenePackages.append(package);
    }
}

void AuthorStrings::readScenes()
{
    QStringList paths;
    for (const QString& package : std::as_const(m_scenePackages))
        paths += AuthorScenes::filesOf(package);
    QList<std::pair<QString, QString>> texts;
    for (const QString& path : paths) {
        QString reason;
        const auto content = AuthorFiles::read(path, reason, kMaxSceneBytes);
        if (content)
            texts.append({path, QString::fromUtf8(*content)});
        else
            m_faults.append(u"%1: %2"_s.arg(path, reason));
    }
    for (const auto& [path, text] : std::as_const(texts))
        readWrappers(AuthorSceneOutline(text));
    sortContexts();
    for (const auto& [path, text] : std::as_const(texts))
        readCalls(path, AuthorSceneOutline(text));
}

/// Functions that hand on to translate() what they are given.
void AuthorStrings::readWrappers(const AuthorSceneOutline& scene)
{
    for (const Member& member : scene.members()) {
        for (qsizetype token = member.first; token < member.end; ++token) {
            if (!isCallOf(scene, token, u"translate")
                || AuthorStringSources::ofCall(scene, token + 1).isWhole)
                continue;
            const QString context = AuthorStringSources::contextOfCall(scene, token + 1);
            if (context.isNull())
                continue;
            m_contexts.insert(context);
            if (member.kind == Member::Kind::Function)
                m_wrappers.insert(member.name, context);
        }
    }
}

void AuthorStrings::readCalls(const QString& path, const AuthorSceneOutline& scene)
{
    for (qsizetype token = 0; token < scene.tokens().size(); ++token) {
        const QString name = scene.at(token).toString();
        const bool isTranslate = name == "translate"_L1;
        if ((!isTranslate && !m_wrappers.contains(name)) || !isCallOf(scene, token, name))
            continue;
        const AuthorStringSources sources = AuthorStringSources::ofCall(scene, token + 1);
        QString context = isTranslate ? AuthorStringSources::contextOfCall(scene, token + 1)
                                      : m_wrappers.value(name);
        // One that is put together cannot be told.
        if (context.isNull())
            m_guessed.unite(QSet<QString>(sources.texts.cbegin(), sources.texts.cend()));
        if (context.isNull())
            context = m_sortedContexts.value(0, usualContext());
        for (const QString& text : sources.texts) {
            if (!text.isEmpty())
                add(context, text, path, sources.line, relativeTo(m_root, path));
        }
    }
}

void AuthorStrings::readControlFile(const QString& path)
{
    QString reason;
    const auto bytes = AuthorFiles::read(path, reason);
    if (!bytes) {
        m_faults.append(u"%1: %2"_s.arg(path, reason));
        return;
    }
    AuthorFindings findings;
    const AuthorControlFile file =
        AuthorControlReader(AuthorControlReader::Kind::ControlFile, path, *bytes, findings).read();
    for (const AuthorFinding& finding : findings.all()) {
        if (finding.rule.startsWith("xml-"_L1) && finding.rule != "xml-depth"_L1) {
            m_faults.append(
                u"%1:%2: %3"_s.arg(path, QString::number(finding.position.line), finding.message));
            return;
        }
    }
    if (file.isInUse)
        readUsed(file, *bytes);
}

void AuthorStrings::readUsed(const AuthorControlFile& file, const QByteArray& bytes)
{
    findScenes(file);
    readTips(file, bytes);
}

void AuthorStrings::readTips(const AuthorControlFile& file, const QByteArray& bytes)
{
    struct Open
    {
        QString text;
        qint64 line = 0;
    };
    QXmlStreamReader reader(bytes);
    QList<Open> open;
    QString key;
    QString usualDirectory;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isCharacters() && !open.isEmpty()) {
            open.last().text += reader.text();
        } else if (reader.isStartElement()) {
            const QXmlStreamAttributes attributes = reader.attributes();
            if (open.isEmpty())
                usualDirectory = attributes.value(translationsAttribute()).toString();
            const bool isTip = open.size() == 1;
            if (isTip && isPassedOver(file, reader, usualDirectory)) {
                reader.skipCurrentElement();
                continue;
            }
            if (isTip)
                key = attributes.value(keyAttribute()).toString();
            if (isTip)
                addTip(file.path, key, reader.lineNumber(),
                       attributes.value(titleAttribute()).toString());
            open.append({QString(), reader.lineNumber()});
        } else if (reader.isEndElement() && !open.isEmpty()) {
            const Open element = open.takeLast();
            if (!open.isEmpty())
                addTip(file.path, key, element.line, element.text);
        }
    }
}

/// Whether an element below the root is no tip, or one with nothing for the files to be written.
bool AuthorStrings::isPassedOver(const AuthorControlFile& file, const QXmlStreamReader& reader,
                                 const QString& usualDirectory)
{
    if (reader.qualifiedName() != kTipTag)
        return true;
    const QXmlStreamAttributes attributes = reader.attributes();
    const QString name = attributes.hasAttribute(translationsAttribute())
        ? attributes.value(translationsAttribute()).toString()
        : usualDirectory;
    const QString directory = directoryFor(name);
    if (!m_knownDirectories.contains(directory)) {
        m_knownDirectories.insert(directory);
        m_directories.append(directory);
    }
    // Those for one language are translated as they are.
    return directory != m_directory || !file.locale.isEmpty();
}

void AuthorStrings::addTip(const QString& path, const QString& key, qint64 line,
                           const QString& text)
{
    const QString source = text.simplified();
    m_characters += source.size();
    if (!source.isEmpty() && m_characters <= kMaxCharacters)
        m_tipTexts.append({path, key, line, source});
}

void AuthorStrings::addTips()
{
    for (const TipText& text : std::as_const(m_tipTexts)) {
        // The note is one line, whatever the key has in it.
        const QString note = u"%1, %2"_s.arg(text.key.simplified(), relativeTo(m_root, text.path));
        for (const QString& context : std::as_const(m_sortedContexts))
            add(context, text.source, text.path, text.line, note);
    }
    m_tipTexts.clear();
}

void AuthorStrings::add(const QString& context, const QString& source, const QString& path,
                        qint64 line, const QString& note)
{
    m_characters += context.size() + source.size() + note.size();
    if (m_characters > kMaxCharacters)
        return;
    AuthorTsMessage message;
    message.context = context;
    message.source = source;
    const QString key = keyOf(message);
    const qsizetype number = m_numbers.value(key, m_messages.size());
    const bool isNew = number == m_messages.size();
    if (isNew) {
        m_numbers.insert(key, number);
        m_messages.append(message);
    }
    if (!isNew && m_isBrief)
        return;
    AuthorTsMessage& known = m_messages[number];
    known.locations.append({stepsFrom(m_directory) + relativeTo(m_root, path), line});
    if (!m_isBrief && m_notes.contains({number, note}))
        return;
    if (!m_isBrief)
        m_notes.insert({number, note});
    known.extraComment += (known.extraComment.isEmpty() ? QString() : u"\n"_s) + note;
}

AuthorStrings::Change AuthorStrings::update(AuthorTsFile& file) const
{
    Change change;
    QSet<QString> known;
    for (AuthorTsMessage& message : file.messages) {
        if (message.isContextComment())
            continue;
        const auto found = m_numbers.constFind(keyOf(message));
        known.insert(keyOf(message));
        message.locations.clear();
        if (found == m_numbers.cend()) {
            change.gone += message.isGone() ? 0 : 1;
            if (!message.isGone())
                message.state = message.state == State::Finished && message.isTranslated()
                    ? State::Vanished
                    : State::Obsolete;
            continue;
        }
        const AuthorTsMessage& present = m_messages.at(*found);
        message.locations = present.locations;
        message.extraComment = withOwnLines(message.extraComment, present.extraComment);
        if (message.isGone())
            message.state = message.state == State::Vanished ? State::Finished : State::Unfinished;
    }
    for (const AuthorTsMessage& message : m_messages) {
        if (known.contains(keyOf(message)))
            continue;
        file.messages.append(message);
        ++change.added;
    }
    change.unfinished =
        std::count_if(file.messages.cbegin(), file.messages.cend(), [](const auto& message) {
            return message.state == State::Unfinished && !message.isContextComment();
        });
    return change;
}

AuthorStrings::Lack AuthorStrings::lackOf(const AuthorTsFile& file, bool areTipsWanted) const
{
    QSet<QString> present;
    QSet<QString> inContexts;
    for (const AuthorTsMessage& message : file.messages) {
        if (message.isGone())
            continue;
        present.insert(keyOf(message));
        if (m_contexts.contains(message.context))
            inContexts.insert(message.source);
    }
    const auto isLacking = [&](qsizetype i) {
        const AuthorTsMessage& message = m_messages.at(i);
        if (present.contains(keyOf(message)) || !hasWords(message.source))
            return false;
        // The words of another package's scene may be those of a part that is not shown here.
        if (i < m_sceneMessages)
            return !m_guessed.contains(message.source)
                && !message.extraComment.startsWith("../"_L1);
        return areTipsWanted && m_isTranslatingTips && !inContexts.contains(message.source);
    };
    Lack lack;
    QSet<QString> sources;
    for (qsizetype i = 0; i < m_messages.size(); ++i) {
        const AuthorTsMessage& message = m_messages.at(i);
        if (!isLacking(i) || sources.contains(message.source))
            continue;
        sources.insert(message.source);
        if (++lack.count > 1)
            continue;
        const AuthorTsLocation& first = message.locations.constFirst();
        lack.source = message.source;
        lack.place = u"%1:%2"_s.arg(first.file.mid(stepsFrom(m_directory).size()),
                                    QString::number(first.line));
    }
    return lack;
}

AuthorTsFile AuthorStrings::pseudo() const
{
    AuthorTsFile file;
    file.language = pseudoLocale();
    file.messages = m_messages;
    for (AuthorTsMessage& message : file.messages) {
        message.state = State::Finished;
        message.translations = {pseudoText(message.source)};
    }
    return file;
}

// A language that Qt knows, so that it leaves the name as it is, and that no host speaks.
QString AuthorStrings::pseudoLocale()
{
    return u"vo_001"_s;
}

QString AuthorStrings::pseudoText(const QString& text)
{
    static const QString plain = u"aceginosuyzACEGINOSUYZ"_s;
    static const QString accented = u"àçéĝîñöşûýžÀÇÉĜÎÑÖŞÛÝŽ"_s;
    QString result = u"["_s;
    qsizetype letters = 0;
    const auto append = [&](QStringView part) {
        for (const QChar character : part) {
            const qsizetype at = plain.indexOf(character);
            result += at < 0 ? character : accented.at(at);
            letters += character.isLetter() ? 1 : 0;
        }
    };
    qsizetype end = 0;
    QRegularExpressionMatchIterator it = keptParts().globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        append(QStringView(text).sliced(end, match.capturedStart() - end));
        result += match.captured();
        end = match.capturedEnd();
    }
    append(QStringView(text).sliced(end));
    // Words of other languages are longer by a third.
    static const QString filler = u" öñé ţŵö ţĥŕéé"_s;
    const qsizetype wanted = std::max<qsizetype>(4, letters * 2 / 5);
    return result + filler.repeated(wanted / filler.size() + 1).left(wanted) + u']';
}

} // namespace Vidlets
