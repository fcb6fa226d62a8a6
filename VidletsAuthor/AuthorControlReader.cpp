// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorControlReader.h"

#include "AuthorEncoding.h"
#include "AuthorRules.h"
#include "AuthorXmlFault.h"
#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLFirstTag.h>
#include <Vidlets/VLSettings.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QLocale>
#include <QRegularExpression>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Vidlets {

using namespace ContentNames;

namespace {

constexpr qsizetype kMaxDepth = 100;
constexpr qsizetype kMaxTitleLength = 120;
constexpr qsizetype kMaxTextLength = 1500;

XmlPosition positionIn(const QXmlStreamReader& reader)
{
    return {reader.lineNumber(), reader.columnNumber()};
}

/// Where the token behind the present one begins.
XmlPosition startOfNext(const QXmlStreamReader& reader)
{
    XmlPosition position = positionIn(reader);
    // Text ends where the reader meets the "<" behind it, which then counts as read.
    const bool hasReadBracket = reader.isCharacters() && !reader.isCDATA();
    if (!hasReadBracket)
        ++position.column;
    return position;
}

/// How many characters people count in a text; any number up to @p limit where it is no more.
qsizetype lengthOf(QStringView text, qsizetype limit)
{
    if (text.size() <= limit)
        return text.size();
    const QString simple = text.toString().simplified();
    return std::count_if(simple.cbegin(), simple.cend(),
                         [](QChar part) { return !part.isLowSurrogate(); });
}

bool isNameCharacter(QChar character)
{
    const char16_t code = character.unicode();
    return (code >= u'a' && code <= u'z') || (code >= u'A' && code <= u'Z')
        || (code >= u'0' && code <= u'9') || code == u'-' || code == u'_';
}

/// Where a reference from @p from on begins that is no variable; -1 where all are.
qsizetype wrongVariable(QStringView text, qsizetype from)
{
    for (qsizetype at = text.indexOf("%("_L1, from); at >= 0; at = text.indexOf("%("_L1, at + 2)) {
        const QStringView rest = text.sliced(at + 2);
        const auto end = std::find_if_not(rest.cbegin(), rest.cend(), isNameCharacter);
        const qsizetype length = end - rest.cbegin();
        if (length == 0 || !rest.sliced(length).startsWith(")s"_L1))
            return at;
    }
    return -1;
}

/// The territory in the name of a locale; empty where it names none.
QString territoryIn(const QString& locale)
{
    static const QRegularExpression separators(u"[-_]"_s);
    static const QRegularExpression suffixes(u"[.@]"_s);
    constexpr qsizetype kScriptLength = 4;
    const QStringList parts = locale.section(suffixes, 0, 0).split(separators);
    const auto isTerritory = [](const QString& part) { return part.size() != kScriptLength; };
    const auto found = std::find_if(parts.cbegin() + 1, parts.cend(), isTerritory);
    return found == parts.cend() ? QString() : *found;
}

bool isOf(const QString& fault, const char* readersWords)
{
    return fault == QCoreApplication::translate("QXmlStream", readersWords);
}

/// What a reader says of a fault, for people: readers do not always end it, and quote the file as
/// it is.
QString sentence(const QString& fault)
{
    const QString text = printable(fault);
    return text.endsWith(u'.') ? text : text + u'.';
}

bool isEncodingFault(const QString& fault)
{
    return isOf(fault, "Encountered incorrectly encoded content.")
        || fault.startsWith(QCoreApplication::translate("QXmlStream", "Encoding %1 is unsupported")
                                .section(u'%', 0, 0))
        || fault.contains("encoding name"_L1);
}

} // namespace

bool looksLikeResource(QStringView value)
{
    static constexpr std::array suffixes{"png"_L1,  "jpg"_L1, "jpeg"_L1, "gif"_L1, "bmp"_L1,
                                         "webp"_L1, "svg"_L1, "mp4"_L1,  "m4v"_L1, "mov"_L1,
                                         "webm"_L1, "mkv"_L1, "avi"_L1,  "ogv"_L1};
    const qsizetype dot = value.lastIndexOf(u'.');
    if (dot < 1 || value.contains(u'\n'))
        return false;
    const QStringView suffix = value.sliced(dot + 1);
    return std::any_of(suffixes.cbegin(), suffixes.cend(), [suffix](QLatin1StringView known) {
        return suffix.compare(known, Qt::CaseInsensitive) == 0;
    });
}

bool isOfOtherTerritory(const QString& locale)
{
    const QString territory = territoryIn(locale);
    const QString meant = QLocale(locale).name().section(u'_', -1);
    return !territory.isEmpty() && meant.compare(territory, Qt::CaseInsensitive) != 0;
}

AuthorControlReader::AuthorControlReader(Kind kind, const QString& path, const QByteArray& bytes,
                                         AuthorFindings& findings)
    : m_kind(kind)
    , m_rootTag(kind == Kind::ControlFile ? kControlFileTag : kKeyDataFileTag)
    , m_tipTag(kind == Kind::ControlFile ? kTipTag : kKeyDataTag)
    , m_bytes(bytes)
    , m_findings(findings)
    , m_reader(bytes)
{
    m_file.path = path;
    if (kind == Kind::ControlFile) {
        QBuffer buffer;
        buffer.setData(bytes);
        buffer.open(QIODevice::ReadOnly);
        m_isRecognised = FirstTag::in(buffer) == kControlFileTag;
    }
}

AuthorControlFile AuthorControlReader::read()
{
    while (!m_reader.atEnd()) {
        m_start = startOfNext(m_reader);
        readToken();
    }
    checkFault();
    for (const AuthorSuppression& suppression : std::as_const(m_suppressions))
        m_findings.suppress(m_file.path, suppression);
    for (const AuthorSuppression& suppression : std::as_const(m_pending))
        m_findings.suppress(m_file.path, suppression);
    for (AuthorTip& tip : m_file.tips)
        tip.isFound = m_kind == Kind::KeyData || !m_keysTwice.contains(tip.key);
    m_file.isRecognised = m_isRecognised;
    m_file.isInUse = m_isRecognised && m_isRootSeen && !m_isRootForeign && !m_reader.hasError();
    return std::move(m_file);
}

void AuthorControlReader::readToken()
{
    switch (m_reader.readNext()) {
    case QXmlStreamReader::StartElement:
        startElement();
        break;
    case QXmlStreamReader::EndElement:
        endElement();
        break;
    case QXmlStreamReader::Characters:
        if (!m_open.isEmpty())
            m_open.last().pieces.append({m_open.last().text.size(), m_start});
        if (!m_open.isEmpty())
            m_open.last().text += m_reader.text();
        break;
    case QXmlStreamReader::Comment:
        comment();
        break;
    default:
        break;
    }
}

void AuthorControlReader::startElement()
{
    const bool isRoot = !m_isRootSeen;
    if (isRoot)
        readRoot();
    OpenElement element;
    element.position = m_start;
    for (AuthorSuppression& suppression : m_pending) {
        suppression.begin = m_start;
        m_openSuppressions.append(m_suppressions.size());
        m_suppressions.append(suppression);
        ++element.suppressions;
    }
    m_pending.clear();

    const bool isTipTag = m_reader.qualifiedName() == m_tipTag;
    const bool isTip = isTipTag && m_open.size() == 1;
    if (m_open.size() == 1)
        m_isInTip = isTip;
    // What stands in a tip is searched for where the tip says.
    if (m_open.size() <= 1)
        m_directory = m_rootDirectory;
    if (isTip)
        readTip();
    else if (isTipTag && !isRoot && !m_isRootForeign && !(m_kind == Kind::KeyData && m_isInTip))
        add(placeOfTag(), u"tip-nested", u"This is not found: it is no child of the root."_s);
    if (!m_isRootForeign)
        checkAttributes(isTip);
    m_open.append(element);
    if (m_open.size() > kMaxDepth && !m_isTooDeep) {
        m_isTooDeep = true;
        add(m_start, u"xml-depth", u"The elements are nested deeper than %1."_s.arg(kMaxDepth));
    }
}

void AuthorControlReader::endElement()
{
    // What stands behind the last element of its parent has none to switch off.
    for (const AuthorSuppression& suppression : std::as_const(m_pending))
        m_suppressions.append(suppression);
    m_pending.clear();
    const OpenElement element = m_open.takeLast();
    if (!m_isRootForeign)
        checkText(element);
    for (int i = 0; i < element.suppressions; ++i)
        m_suppressions[m_openSuppressions.takeLast()].end = positionIn(m_reader);
}

void AuthorControlReader::comment()
{
    AuthorSuppression suppression;
    suppression.rules = suppressedRules(m_reader.text().toString());
    if (suppression.rules.isEmpty())
        return;
    suppression.lastLine = m_reader.lineNumber();
    suppression.firstLine = suppression.lastLine - m_reader.text().count(u'\n');
    const XmlPosition position{suppression.firstLine, 1};
    for (const QString& rule : std::as_const(suppression.rules)) {
        if (!AuthorRules::find(rule))
            add(position, u"settings-broken", u"There is no rule \"%1\"."_s.arg(rule));
    }
    m_pending.append(suppression);
}

/// The reader passes over the white space before the root without a word.
void AuthorControlReader::readRoot()
{
    m_isRootSeen = true;
    m_rootName = m_reader.qualifiedName().toString();
    const XmlPosition end = positionIn(m_reader);
    m_start = end;
    for (qint64 number = end.line; number > 0; --number) {
        const QString text = QString::fromUtf8(line(number));
        const qsizetype from = number == end.line ? qMin(end.column, text.size()) : text.size();
        const qsizetype at = QStringView(text).left(from).lastIndexOf(u'<' + m_rootName);
        if (at >= 0) {
            m_start = {number, at + 1};
            break;
        }
    }
    m_file.rootPosition = m_start;
    checkRoot();
}

void AuthorControlReader::checkRoot()
{
    const bool isRight = m_rootName == m_rootTag;
    const bool isPrefixed = !isRight && m_reader.name() == m_rootTag;
    m_isRootForeign = !isRight && !(isPrefixed && m_kind == Kind::ControlFile);
    if (m_isRootForeign) {
        reportForeignRoot();
        return;
    }
    if (!isPrefixed && !m_reader.namespaceUri().isEmpty())
        add(placeOfTag(), u"xml-namespace",
            u"The root is in the namespace \"%1\", which the library knows nothing of."_s.arg(
                m_reader.namespaceUri()));
    if (isPrefixed || !m_isRecognised) {
        m_isRecognised = false;
        add(isPrefixed ? placeOfTag() : m_start, u"file-ignored",
            u"The library does not recognise the file: %1."_s.arg(unrecognised()),
            u"Begin the file with <%1 and an attribute or the bracket on the same line."_s.arg(
                m_rootTag));
    }
    if (m_kind != Kind::ControlFile)
        return;
    static const QRegularExpression separators(u"[,;\\s]+"_s);
    const QXmlStreamAttributes attributes = m_reader.attributes();
    m_file.locale = attributes.value(localeAttribute()).toString();
    m_file.search =
        attributes.value(searchAttribute()).toString().split(separators, Qt::SkipEmptyParts);
    m_file.searchPosition = placeOf(searchAttribute());
    readDirectory();
    m_rootDirectory = m_directory;
    checkLocale();
}

/// Why the library does not recognise the file, though its root is the right one.
QString AuthorControlReader::unrecognised() const
{
    if (m_rootName.contains(u':'))
        return u"its root has a prefix"_s;
    QBuffer buffer;
    buffer.setData(m_bytes);
    buffer.open(QIODevice::ReadOnly);
    if (AuthorEncoding::isWide(m_bytes))
        return u"it is not looked for in UTF-16 or UTF-32"_s;
    const QByteArray ownLine = line(m_start.line);
    const QString behind = QString::fromUtf8(ownLine).mid(m_start.column + m_rootName.size());
    if (behind.trimmed().isEmpty())
        return u"the root's tag is broken over lines directly behind its name"_s;
    const bool isAnywhere = !FirstTag::in(buffer).isNull();
    buffer.seek(0);
    const XmlPosition first = FirstTag::placeIn(buffer);
    // Lines are read in pieces, and a tag is looked for in each.
    if (!isAnywhere || (first.line == m_start.line && first.column == m_start.column))
        return u"the root stands too far behind in its line"_s;
    return u"another tag stands before the root, in line %1"_s.arg(first.line);
}

void AuthorControlReader::reportForeignRoot()
{
    if (m_kind == Kind::KeyData && m_rootName == kControlFileTag)
        add(placeOfTag(), u"root-foreign", u"This is a control file, and no key data."_s,
            u"Check the package that it belongs to."_s);
    else
        add(placeOfTag(), u"root-foreign",
            u"The root is <%1>, not <%2>, so that nothing in the file is found."_s.arg(m_rootName,
                                                                                       m_rootTag));
}

void AuthorControlReader::checkLocale()
{
    const QString name = m_file.locale;
    if (name.isEmpty() || name == "C"_L1)
        return;
    const QLocale locale(name);
    const XmlPosition position = placeOf(localeAttribute());
    if (locale.language() == QLocale::C) {
        add(position, u"locale-unknown", u"There is no locale \"%1\"."_s.arg(name));
        return;
    }
    if (isOfOtherTerritory(name))
        add(position, u"locale-unknown",
            u"\"%1\" is taken for \"%2\": there is no such territory for the language."_s.arg(
                name, locale.name()));
}

void AuthorControlReader::readTip()
{
    if (m_isRootForeign)
        return;
    if (m_kind == Kind::KeyData) {
        readKey("name"_L1);
        return;
    }
    readKey("key"_L1);
    const QXmlStreamAttributes attributes = m_reader.attributes();
    if (attributes.hasAttribute(resourcesAttribute()))
        readDirectory();
    const QStringView title = attributes.value(titleAttribute());
    const qsizetype length = lengthOf(title, kMaxTitleLength);
    if (length > kMaxTitleLength)
        add(placeOf(titleAttribute()), u"text-overlong",
            u"The title has %1 characters, more than %2."_s.arg(length).arg(kMaxTitleLength));
}

void AuthorControlReader::readDirectory()
{
    m_directory = m_reader.attributes().value(resourcesAttribute()).toString();
    if (!m_directory.isEmpty())
        m_file.resourceDirectories.insert(m_directory);
}

void AuthorControlReader::readKey(QLatin1StringView attribute)
{
    const QXmlStreamAttributes attributes = m_reader.attributes();
    if (!attributes.hasAttribute(attribute)) {
        add(placeOfTag(), u"key-missing",
            u"There is no attribute \"%1\" in <%2>."_s.arg(attribute, m_tipTag));
        return;
    }
    const QString key = attributes.value(attribute).toString();
    if (key.trimmed() != key || key.isEmpty())
        add(placeOf(attribute), u"key-blank",
            key.trimmed().isEmpty() ? u"The key is empty."_s
                                    : u"The key \"%1\" has white space around it."_s.arg(key));
    qint64& line = m_lineOfKey[key];
    if (line > 0) {
        reportTwice(key, line);
        return;
    }
    line = m_start.line;
    m_file.tips.append({key, m_start});
}

void AuthorControlReader::reportTwice(const QString& key, qint64 line)
{
    m_keysTwice.insert(key);
    const QString number = QString::number(line);
    if (m_kind == Kind::KeyData)
        add(placeOfTag(), u"key-twice",
            u"The key \"%1\" stands in line %2 too, and only that record counts."_s.arg(key,
                                                                                        number),
            u"Keep one."_s);
    else
        add(placeOfTag(), u"key-twice",
            u"The key \"%1\" stands in line %2 too, so that neither is found."_s.arg(key, number));
}

void AuthorControlReader::checkAttributes(bool isTip)
{
    const QXmlStreamAttributes attributes = m_reader.attributes();
    for (const QXmlStreamAttribute& attribute : attributes)
        checkAttribute(attribute, isTip);
    const bool namesScenes = m_kind == Kind::ControlFile && (isTip || m_open.isEmpty());
    if (!namesScenes)
        return;
    const QString translations = attributes.value(translationsAttribute()).toString();
    if (!translations.isEmpty())
        m_file.translationDirectories.insert(translations);
    for (const QString& name : {uiAttribute(), simpleUiAttribute()}) {
        const QStringView scene = attributes.value(name);
        if (!scene.isEmpty())
            m_file.scenes.append({scene.toString(), placeOf(name)});
        if (!scene.isEmpty() && !isTip)
            m_rootScenes.append(name);
        const bool isUsual = isTip && scene.isEmpty()
            && (attributes.hasAttribute(name) || !m_rootScenes.contains(name));
        if (isUsual && !m_usualScenes.contains(name)) {
            m_usualScenes.append(name);
            const QString usual =
                name == uiAttribute() ? Settings::uiFileDefault() : Settings::simpleUiFileDefault();
            m_file.scenes.append({usual, m_start, true});
        }
    }
}

void AuthorControlReader::checkAttribute(const QXmlStreamAttribute& attribute, bool isTip)
{
    const QStringView name = attribute.qualifiedName();
    const QStringView value = attribute.value();
    if (isTip && (name == locationAttribute() || name == packageNameAttribute()))
        add(placeOf(name.toString()), u"attribute-reserved",
            u"The library writes \"%1\" itself, over what stands here."_s.arg(name));
    const bool isKey = isTip && (name == keyAttribute() || name == nameAttribute());
    if (!isKey && wrongVariable(value, 0) >= 0)
        add(placeOf(name.toString()), u"variable-syntax",
            u"In \"%1\" a \"%(\" begins no variable."_s.arg(name));
    if (!isKey && looksLikeResource(value))
        m_file.references.append({value.toString(), placeOf(name.toString()), m_directory});
}

void AuthorControlReader::checkText(const OpenElement& element)
{
    const QString& text = element.text;
    const qsizetype length = lengthOf(text, kMaxTextLength);
    if (length > kMaxTextLength)
        add(element.position, u"text-overlong",
            u"The text has %1 characters, more than %2."_s.arg(length).arg(kMaxTextLength));
    // More of them in one text are no slips.
    constexpr int kMostWrong = 20;
    qsizetype at = wrongVariable(text, 0);
    for (int i = 0; i < kMostWrong && at >= 0; ++i) {
        add(placeIn(element, at), u"variable-syntax", u"A \"%(\" begins no variable."_s);
        at = wrongVariable(text, at + 2);
    }
}

/// Where the "%(" at @p at of an element's text stands. It is the same one of those in its piece of
/// text, since hardly anybody writes one by an entity.
XmlPosition AuthorControlReader::placeIn(const OpenElement& element, qsizetype at) const
{
    const auto behind =
        std::upper_bound(element.pieces.cbegin(), element.pieces.cend(), at,
                         [](qsizetype wanted, const Piece& piece) { return wanted < piece.at; });
    if (behind == element.pieces.cbegin())
        return element.position;
    const Piece& piece = *(behind - 1);
    qsizetype before = QStringView(element.text).sliced(piece.at, at - piece.at).count(u"%(");
    for (qint64 number = piece.position.line; number <= m_reader.lineNumber(); ++number) {
        const QString text = QString::fromUtf8(line(number));
        const qsizetype from = number == piece.position.line ? piece.position.column - 1 : 0;
        for (qsizetype found = text.indexOf("%("_L1, from); found >= 0;
             found = text.indexOf("%("_L1, found + 2)) {
            if (before-- == 0)
                return {number, found + 1};
        }
    }
    return piece.position;
}

/// By two readers: what the library's own one takes, and what xmllint and editors do.
void AuthorControlReader::checkFault()
{
    checkWrongByte();
    const QList<AuthorXmlFault> faults = AuthorXmlFaults::in(m_bytes);
    const qint64 ownLine = m_reader.hasError() ? m_reader.lineNumber() : 0;
    // Where both have met the same one, its place is mostly told better by one that is earlier.
    const bool isOwnEarlier = faults.isEmpty() || ownLine <= faults.constLast().position.line;
    // It takes what does not fit the encoding for a character.
    const bool isOwnRight = isEncodingFault(m_reader.errorString()) || faults.isEmpty()
        || faults.constLast().kind != AuthorXmlFault::Kind::Encoding;
    if (ownLine > 0 && isOwnEarlier && isOwnRight && m_faultyLines.isEmpty())
        checkOwnFault();
    for (const AuthorXmlFault& fault : faults) {
        if (!m_faultyLines.contains(fault.position.line))
            addFault(fault);
    }
}

void AuthorControlReader::checkWrongByte()
{
    QString encoding;
    const XmlPosition wrongByte = AuthorEncoding::firstWrongByte(m_bytes, encoding);
    if (wrongByte.line == 0)
        return;
    m_faultyLines.insert(wrongByte.line);
    add(wrongByte, u"xml-encoding",
        u"A byte does not fit the encoding %1."_s.arg(printable(encoding)));
}

void AuthorControlReader::addFault(const AuthorXmlFault& fault)
{
    m_faultyLines.insert(fault.position.line);
    switch (fault.kind) {
    case AuthorXmlFault::Kind::Encoding:
        add(fault.position, u"xml-encoding", sentence(fault.message));
        break;
    case AuthorXmlFault::Kind::AfterRoot:
        add(fault.position, u"xml-after-root", sentence(fault.message));
        break;
    case AuthorXmlFault::Kind::Broken:
        add(fault.position, u"xml-broken", sentence(fault.message));
        break;
    }
}

void AuthorControlReader::checkOwnFault()
{
    const QString fault = m_reader.errorString();
    XmlPosition position = positionIn(m_reader);
    position.column = qMax<qint64>(position.column, 1);
    m_faultyLines.insert(position.line);
    if (isEncodingFault(fault)) {
        add(position, u"xml-encoding", sentence(fault));
        return;
    }
    if (m_isRootSeen && m_open.isEmpty()) {
        const XmlPosition behind = firstContentBehindRoot();
        m_faultyLines.insert(behind.line);
        add(behind, u"xml-after-root", u"The file goes on behind the end of its root."_s);
        return;
    }
    const QString text = QString::fromUtf8(line(position.line));
    const bool isAmpersand = text.mid(position.column - 2, 1) == "&"_L1;
    add(position, u"xml-broken", sentence(fault),
        isAmpersand ? u"\"&\" is written \"&amp;\"."_s : QString());
}

/// The reader tells the end of what it has met there, and the token before ends with the root.
XmlPosition AuthorControlReader::firstContentBehindRoot() const
{
    for (qint64 number = m_start.line; number <= m_reader.lineNumber(); ++number) {
        const QString text = QString::fromUtf8(line(number));
        for (qsizetype at = number == m_start.line ? m_start.column - 1 : 0; at < text.size();
             ++at) {
            if (!text.at(at).isSpace())
                return {number, at + 1};
        }
    }
    return m_start;
}

/// Where the present tag begins; where it ends, if that is another line: there validators of XML
/// see it, and there an attribute is added.
XmlPosition AuthorControlReader::placeOfTag() const
{
    const XmlPosition end = positionIn(m_reader);
    return end.line == m_start.line ? m_start : XmlPosition{end.line, qMax<qint64>(end.column, 1)};
}

/// Where an attribute of the present tag stands; where the tag does, if that cannot be told.
XmlPosition AuthorControlReader::placeOf(const QString& attribute) const
{
    // A tag of more lines than that is not written by hand.
    constexpr qint64 kMaxLines = 200;
    const qint64 last = qMin(m_reader.lineNumber(), m_start.line + kMaxLines);
    for (qint64 number = m_start.line; number <= last; ++number) {
        const QString text = QString::fromUtf8(line(number));
        const qsizetype from = number == m_start.line ? m_start.column : 0;
        for (qsizetype at = text.indexOf(attribute, from); at >= 0;
             at = text.indexOf(attribute, at + 1)) {
            const bool beginsWord = at == 0 || text.at(at - 1).isSpace();
            const QString behind = text.mid(at + attribute.size()).trimmed();
            if (beginsWord && (behind.startsWith(u'=') || behind.isEmpty()))
                return {number, at + 1};
        }
    }
    return m_start;
}

QByteArray AuthorControlReader::line(qint64 number) const
{
    if (m_lineStarts.isEmpty()) {
        m_lineStarts.append(0);
        for (qsizetype at = m_bytes.indexOf('\n'); at >= 0; at = m_bytes.indexOf('\n', at + 1))
            m_lineStarts.append(at + 1);
    }
    if (number < 1 || number > m_lineStarts.size())
        return QByteArray();
    const qsizetype begin = m_lineStarts.at(number - 1);
    const qsizetype end =
        number < m_lineStarts.size() ? m_lineStarts.at(number) - 1 : m_bytes.size();
    // A line without end is not looked through as a whole.
    constexpr qsizetype kMaxLength = 4096;
    return m_bytes.mid(begin, qMin(end - begin, kMaxLength));
}

void AuthorControlReader::add(XmlPosition position, const char16_t* rule, const QString& message,
                              const QString& help)
{
    m_findings.add(m_file.path, position, QString::fromUtf16(rule), message, help);
}

} // namespace Vidlets
