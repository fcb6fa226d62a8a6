// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSceneSource.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets::SceneSource {

namespace {

QString contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
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

bool namesPlugin(const QString& path)
{
    static const QRegularExpression line(u"^\\s*(optional\\s+)?plugin\\b"_s,
                                         QRegularExpression::MultilineOption);
    return line.match(contentOf(path)).hasMatch();
}

bool reachesOut(const QString& modulePath)
{
    static const QStringList modules = {u"Qt/labs/folderlistmodel/"_s,
                                        u"Qt/labs/platform/"_s,
                                        u"Qt/labs/settings/"_s,
                                        u"Qt/labs/sharedimage/"_s,
                                        u"QtCore/"_s,
                                        u"QtLocation/"_s,
                                        u"QtMultimedia/"_s,
                                        u"QtQuick/Dialogs/"_s,
                                        u"QtQuick/LocalStorage/"_s,
                                        u"QtQuick/Pdf/"_s,
                                        u"QtQuick3D/"_s,
                                        u"QtRemoteObjects/"_s,
                                        u"QtTextToSpeech/"_s,
                                        u"QtWebChannel/"_s,
                                        u"QtWebEngine/"_s,
                                        u"QtWebSockets/"_s,
                                        u"QtWebView/"_s};
    return std::any_of(modules.cbegin(), modules.cend(), [&modulePath](const QString& module) {
        return modulePath.startsWith(module);
    });
}

} // namespace Vidlets::SceneSource
