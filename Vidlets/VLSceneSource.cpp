// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSceneSource.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets::SceneSource {

namespace {

// Far above what any program needs, and below what a host can spare for a moment.
constexpr qint64 kMaxFileBytes = 16 * 1024 * 1024;

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
/// backslash before it: the text may be that of a program.
const QList<QRegularExpression>& documentPatterns()
{
    static const QList<QRegularExpression> patterns = {
        pattern(
            u"<img\\b(?:\"[^\"]*\"|'[^']*'|[^>])*?\\bsrc\\s*=\\s*\\\\?[\"']?([^\\s\"'>\\\\]+)"_s),
        pattern(u"<link\\b[^>]*?\\bhref\\s*=\\s*\\\\?[\"']?([^\\s\"'>\\\\]+)"_s),
        pattern(u"\\bbackground\\s*=\\s*\\\\?[\"']?([^\\s\"'>\\\\]+)"_s),
        pattern(u"\\burl\\(\\s*\\\\?[\"']?([^\\s\"')\\\\]+)"_s),
        pattern(u"@import\\s*\\\\?[\"']([^\\s\"'\\\\]+)"_s),
        pattern(u"!\\[[^\\]]*\\]\\(\\s*<?([^\\s)>]+)"_s),
        pattern(u"^\\s*\\[[^\\]]+\\]:\\s*<?([^\\s>]+)"_s)};
    return patterns;
}

bool isStray(const QString& address, const QUrl& base, const VLContentRoots& roots)
{
    if (address.contains("&#"_L1))
        return true;
    const QUrl url = base.resolved(QUrl(address));
    return url.isLocalFile() && !roots.contains(url.toLocalFile());
}

void collect(const QRegularExpression& from, const QString& text, const QUrl& base,
             const VLContentRoots& roots, QStringList& strays)
{
    QRegularExpressionMatchIterator matches = from.globalMatch(text);
    while (matches.hasNext()) {
        const QString address = matches.next().captured(1);
        if (!strays.contains(address) && isStray(address, base, roots))
            strays.append(address);
    }
}

} // namespace

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
    const QString text = contentOf(path);
    const QUrl base = QUrl::fromLocalFile(path);
    QStringList strays = strayAddresses(text, base, roots);
    collect(files, text, base, roots, strays);
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
    static const QStringList harmlessTrees = {u"QtQuick/Controls/"_s, u"QtQuick/Timeline/"_s,
                                              u"QtQuick/Shapes/"_s,
                                              u"Qt5Compat/GraphicalEffects/"_s};
    // Some directories have the version in their name.
    static const QRegularExpression version(u"\\.[0-9.]+/"_s);
    QString directory = modulePath.left(modulePath.lastIndexOf(u'/') + 1);
    directory.replace(version, u"/"_s);
    return !harmless.contains(directory)
        && std::none_of(harmlessTrees.cbegin(), harmlessTrees.cend(),
                        [&directory](const QString& tree) { return directory.startsWith(tree); });
}

} // namespace Vidlets::SceneSource
