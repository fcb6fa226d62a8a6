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

/// The patterns of addresses, each with the address in its only group.
const QList<QRegularExpression>& addressPatterns()
{
    static const QList<QRegularExpression> patterns = {
        // A step over a backslash: the text may be that of a program, where quotes are escaped.
        QRegularExpression(u"(file:[^\\s\"'`<>)\\\\]+)"_s,
                           QRegularExpression::CaseInsensitiveOption),
        QRegularExpression(u"<img\\b[^>]*?\\bsrc\\s*=\\s*\\\\?[\"']?([^\\s\"'>\\\\]+)"_s,
                           QRegularExpression::CaseInsensitiveOption),
        QRegularExpression(u"!\\[[^\\]]*\\]\\(\\s*<?([^\\s)>]+)"_s)};
    return patterns;
}

bool isStray(const QString& address, const QUrl& base, const VLContentRoots& roots)
{
    const QUrl url = base.resolved(QUrl(address));
    return url.isLocalFile() && !roots.contains(url.toLocalFile());
}

} // namespace

QString strayAddress(const QString& text, const QUrl& base, const VLContentRoots& roots)
{
    for (const QRegularExpression& pattern : addressPatterns()) {
        QRegularExpressionMatchIterator matches = pattern.globalMatch(text);
        while (matches.hasNext()) {
            const QString address = matches.next().captured(1);
            if (isStray(address, base, roots))
                return address;
        }
    }
    return QString();
}

QString strayAddressInFile(const QString& path, const VLContentRoots& roots)
{
    return strayAddress(contentOf(path), QUrl::fromLocalFile(path), roots);
}

bool namesPlugin(const QString& path)
{
    static const QRegularExpression pattern(u"^\\s*(optional\\s+)?plugin\\b"_s,
                                            QRegularExpression::MultilineOption);
    return pattern.match(contentOf(path)).hasMatch();
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
