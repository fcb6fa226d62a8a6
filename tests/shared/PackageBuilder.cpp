// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

PackageBuilder::PackageBuilder()
    : m_root(QFileInfo(m_directory.path()).canonicalFilePath() + u"/data"_s)
{
    QDir().mkpath(m_root);
}

QString PackageBuilder::dataPath() const
{
    return m_root;
}

QString PackageBuilder::path(const QString& relativePath) const
{
    return QDir(m_root).absoluteFilePath(relativePath);
}

QString PackageBuilder::packageRoot(const QString& package)
{
    const QString root = path(package);
    QDir().mkpath(root);
    return root;
}

QString PackageBuilder::write(const QString& relativePath, const QByteArray& content)
{
    const QString filePath = path(relativePath);
    QDir().mkpath(QFileInfo(filePath).path());
    QFile file(filePath);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("Could not write %s", qPrintable(filePath));
    return filePath;
}

QString PackageBuilder::writeControlFile(const QString& package, const QString& fileName,
                                         const QByteArray& content)
{
    return write(package + u"/Control/"_s + fileName, content);
}

QString PackageBuilder::writeTip(const QString& package, const QString& fileName,
                                 const QString& key, const QByteArray& tipXml)
{
    return writeControlFile(package, fileName,
                            "<vidlets>\n  <vidlet key=\"" + key.toHtmlEscaped().toUtf8() + "\">"
                                + tipXml + "</vidlet>\n</vidlets>\n");
}

QString PackageBuilder::writeScene(const QString& package, int width, int height)
{
    const QByteArray scene =
        "import QtQuick\n\nRectangle {\n    width: " + QByteArray::number(width)
        + "\n    height: " + QByteArray::number(height) + "\n    color: \"steelblue\"\n}\n";
    return write(package + u"/ui/VidletUI.qml"_s, scene);
}
