// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSceneSource.h"

#include "VLVectorPicture.h"

#include <QFile>
#include <QFileInfo>
#include <QQmlFile>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets::SceneSource {

namespace {

// Far above what any program needs, and below what a host can spare for a moment.
constexpr qint64 kMaxFileBytes = qint64(16) * 1024 * 1024;

QString contentOf(const QString& path)
{
    QFile file(path);
    if (!isReadable(path) || !file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.read(kMaxFileBytes));
}

/// Whether the engine would take @p line of a qmldir file for one that names a plugin. It parts
/// words at each blank of Unicode, and lines at line feeds alone.
bool namesPluginInLine(QStringView line)
{
    qsizetype end = 0;
    for (qsizetype begin = 0; begin < line.size(); begin = end + 1) {
        end = begin;
        while (end < line.size() && !line.at(end).isSpace())
            ++end;
        const QStringView word = line.mid(begin, end - begin);
        if (word.startsWith(u'#'))
            return false;
        if (word == "plugin"_L1)
            return true;
    }
    return false;
}

QRegularExpression pattern(const QString& text)
{
    return QRegularExpression(
        text, QRegularExpression::CaseInsensitiveOption | QRegularExpression::MultilineOption);
}

/// What documents load by themselves, each with the address in the only group. A quote may have a
/// backslash before it. Each pattern looks at a bounded stretch from where it begins, so that no
/// text takes long; what it misses is found again where the text is shown.
const QList<QRegularExpression>& documentPatterns()
{
    static const QList<QRegularExpression> patterns = {
        pattern(u"\\bsrc\\s{0,8}=\\s{0,8}\\\\?[\"']([^\"'<>\\\\]{1,4096})"_s),
        pattern(u"<img\\b[^<>]{0,1000}?\\bsrc\\s{0,8}=\\s{0,8}([^\\s\"'>\\\\]{1,4096})"_s),
        pattern(
            u"<link\\b[^<>]{0,1000}?\\bhref\\s{0,8}=\\s{0,8}\\\\?[\"']?([^\"'<>\\\\]{1,4096})"_s),
        pattern(u"\\bbackground\\s{0,8}=\\s{0,8}\\\\?[\"']?([^\\s\"'>\\\\]{1,4096})"_s),
        pattern(u"\\burl\\(\\s{0,8}\\\\?[\"']?([^\\s\"')\\\\]{1,4096})"_s),
        pattern(u"@import\\s{0,8}\\\\?[\"']([^\\s\"'\\\\]{1,4096})"_s),
        pattern(u"!\\[[^\\]]{0,1000}\\]\\(\\s{0,8}<?([^\\s)>]{1,4096})"_s),
        pattern(u"^\\s{0,8}\\[[^\\]]{1,1000}\\]:\\s{0,8}<?([^\\s>]{1,4096})"_s)};
    return patterns;
}

/// Without the lines that are comments as a whole: those do nothing.
QString withoutCommentLines(const QString& program)
{
    static const QRegularExpression comment(u"^[ \\t]{0,1000}//[^\\n]*"_s,
                                            QRegularExpression::MultilineOption);
    QString code = program;
    return code.remove(comment);
}

/// The text between each @p quote and the next in @p program. Some of it is what lies between two
/// literals, which is no address that leads out.
void collectLiterals(const QString& program, QChar quote, QStringList& literals)
{
    constexpr qsizetype kMostLength = 4096;
    qsizetype begin = program.indexOf(quote) + 1;
    while (begin > 0) {
        const qsizetype end = program.indexOf(quote, begin);
        if (end < 0)
            return;
        const QStringView literal = QStringView(program).mid(begin, end - begin);
        if (!literal.isEmpty() && literal.size() < kMostLength && !literal.front().isSpace())
            literals.append(literal.toString().remove(u'\\'));
        begin = end + 1;
    }
}

void collect(const QRegularExpression& from, const QString& text, const QUrl& base,
             const VLContentRoots& roots, QStringList& strays)
{
    QRegularExpressionMatchIterator matches = from.globalMatch(text);
    while (matches.hasNext()) {
        const QString address = matches.next().captured(1);
        if (!strays.contains(address) && leadsOut(address, base, roots))
            strays.append(address);
    }
}

/// A Canvas asks nobody before it loads a picture. So a program that has one load pictures may not
/// spell any outer address.
void collectOfCanvas(const QString& program, const QUrl& base, const VLContentRoots& roots,
                     QStringList& strays)
{
    static const QRegularExpression loading =
        pattern(u"\\b(loadImage|drawImage|createPattern|createImageData)\\b"_s);
    if (!program.contains(loading))
        return;
    QStringList literals;
    for (const QChar quote : {u'"', u'\'', u'`'})
        collectLiterals(program, quote, literals);
    for (const QString& literal : std::as_const(literals)) {
        // A directory is no picture, but may begin the address of one.
        const bool isDirectory = QFileInfo(base.resolved(QUrl(literal)).toLocalFile()).isDir();
        if (!isDirectory && !strays.contains(literal) && leadsOut(literal, base, roots))
            strays.append(literal);
    }
}

/// Whether @p program lets addresses reach the desktop unseen. They pass by the fence where a scene
/// calls the function itself, but not where a module script does, nor the engine on its behalf.
bool handsOnDesktop(const QString& program, bool isModule)
{
    static const QRegularExpression name(u"\\bopenUrlExternally\\b"_s);
    static const QRegularExpression handedOn(
        u"\\bopenUrlExternally\\b(?!\\s{0,100}\\()|\\bFunction\\s{0,100}\\(|\\bconstructor\\b"_s);
    return program.contains(name) && (isModule || program.contains(handedOn));
}

} // namespace

bool leadsOut(const QString& address, const QUrl& base, const VLContentRoots& roots)
{
    if (address.isEmpty())
        return false;
    if (address.contains("&#"_L1))
        return true;
    const QUrl url = base.resolved(QUrl(address));
    const QString path = QQmlFile::urlToLocalFileOrQrc(url);
    if (url.scheme() == "data"_L1)
        return VectorPicture::dataReachesOut(url);
    if (path.isEmpty() || path.startsWith(u':'))
        return false;
    const QFileInfo info(path);
    const bool isHazard = info.exists() && !info.isFile() && !info.isDir();
    return isHazard || !roots.contains(path) || VectorPicture::fileReachesOut(path);
}

QStringList strayAddresses(const QString& text, const QUrl& base, const VLContentRoots& roots)
{
    QStringList strays;
    // Most texts hold none of it.
    static const QRegularExpression hint = pattern(u"[<\\[]|url\\("_s);
    if (!text.contains(hint))
        return strays;
    for (const QRegularExpression& from : documentPatterns())
        collect(from, text, base, roots, strays);
    return strays;
}

QStringList strayAddressesInFile(const QString& path, const VLContentRoots& roots)
{
    static const QRegularExpression files =
        pattern(u"(file:/*[^/\\s\"'`<>)\\\\][^\\s\"'`<>)\\\\]+)"_s);
    // There is nothing to read in it, and the engine says so.
    if (QFileInfo(path).isDir())
        return {};
    if (!isReadable(path))
        return {path};
    const QString text = withoutCommentLines(contentOf(path));
    const QUrl base = QUrl::fromLocalFile(path);
    QStringList strays = strayAddresses(text, base, roots);
    collect(files, text, base, roots, strays);
    collectOfCanvas(text, base, roots, strays);
    if (handsOnDesktop(text, path.endsWith(".mjs"_L1)))
        strays.append(u"Qt.openUrlExternally"_s);
    return strays;
}

bool isReadable(const QString& path)
{
    const QFileInfo info(path);
    return !info.exists() || (info.isFile() && info.size() <= kMaxFileBytes);
}

bool namesPlugin(const QString& path)
{
    if (!isReadable(path))
        return true;
    const QString content = contentOf(path);
    const QList<QStringView> lines = QStringView(content).split(u'\n');
    return std::any_of(lines.cbegin(), lines.cend(), namesPluginInLine);
}

bool reachesOut(const QString& modulePath)
{
    static const QStringList harmless = {u"QML/"_s,
                                         u"QtQml/"_s,
                                         u"QtQml/Base/"_s,
                                         u"QtQml/Models/"_s,
                                         u"QtQml/StateMachine/"_s,
                                         u"QtQml/WorkerScript/"_s,
                                         u"QtQml/XmlListModel/"_s,
                                         u"QtQuick/"_s,
                                         u"QtQuick/Effects/"_s,
                                         u"QtQuick/Layouts/"_s,
                                         u"QtQuick/NativeStyle/"_s,
                                         u"QtQuick/Particles/"_s,
                                         u"QtQuick/Shapes/"_s,
                                         u"QtQuick/Templates/"_s,
                                         u"QtQuick/Window/"_s,
                                         u"Qt/labs/animation/"_s,
                                         u"Qt/labs/qmlmodels/"_s};
    // The last is the libraries' own, described there for tools.
    static const QStringList harmlessTrees = {
        u"QtQuick/Controls/"_s, u"QtQuick/Timeline/"_s, u"QtQuick/Shapes/"_s,
        u"Qt5Compat/GraphicalEffects/"_s, u"com/larkspan/vidlets/"_s};
    // Some directories have the version in their name.
    static const QRegularExpression version(u"\\.[0-9.]+/"_s);
    QString directory = modulePath.left(modulePath.lastIndexOf(u'/') + 1);
    directory.replace(version, u"/"_s);
    return !harmless.contains(directory)
        && std::none_of(harmlessTrees.cbegin(), harmlessTrees.cend(),
                        [&directory](const QString& tree) { return directory.startsWith(tree); });
}

} // namespace Vidlets::SceneSource
