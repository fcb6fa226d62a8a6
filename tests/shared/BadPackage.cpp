// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "BadPackage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <algorithm>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

QString dataPath(const QString& relativePath)
{
    const QString path = u"data/broken/"_s + relativePath;
    return QTest::qFindTestData(path, __FILE__, __LINE__, QT_TESTCASE_BUILDDIR,
                                QT_TESTCASE_SOURCEDIR);
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Could not read %s", qPrintable(path));
    return file.readAll();
}

} // namespace

QString badKey()
{
    return u"bad"_s;
}

QByteArray brokenFile(const QString& relativePath)
{
    return contentOf(dataPath(relativePath));
}

QStringList brokenFileNames(const QString& folder)
{
    QStringList names = QDir(dataPath(folder)).entryList(QDir::Files, QDir::Name);
    std::transform(names.cbegin(), names.cend(), names.begin(),
                   [](const QString& name) { return name.section(u'.', 0, 0); });
    return names;
}

BadPackage::BadPackage(bool isGuarded)
    : stage({{ckMessageLevel, VLMessageDebug}, {ckGuardContent, isGuarded}, {ckLocale, u"en_US"_s}})
{
    stage.packages.packageRoot(u"bad.vidlets/Control"_s);
    write(u"ui/VidletUI.qml"_s, contentOf(stage.packages.path(u"tips.vidlets/ui/VidletUI.qml"_s)));
}

BadPackage::~BadPackage()
{
    for (const QString& path : std::as_const(m_locked))
        chmod(QFile::encodeName(path).constData(), S_IRWXU);
}

QString BadPackage::path(const QString& relativePath) const
{
    return stage.packages.path(u"bad.vidlets/"_s + relativePath);
}

QString BadPackage::controlFile() const
{
    return path(u"Control/bad.xml"_s);
}

void BadPackage::write(const QString& relativePath, const QByteArray& content)
{
    stage.packages.write(u"bad.vidlets/"_s + relativePath, content);
}

void BadPackage::lock(const QString& relativePath)
{
    const QString lockedPath = path(relativePath);
    if (chmod(QFile::encodeName(lockedPath).constData(), 0) != 0)
        qFatal("Could not lock %s", qPrintable(lockedPath));
    m_locked.prepend(lockedPath);
}

bool BadPackage::show(const QString& key)
{
    const QPoint pointer(400, 300);
    return stage.manager->show(key, pointer, &stage.control);
}

Step Steps::inTurn(const Step& first, const Step& second)
{
    return [first, second](BadPackage& package) {
        first(package);
        second(package);
    };
}

Step Steps::file(const QString& path, const QByteArray& content)
{
    return [path, content](BadPackage& package) { package.write(path, content); };
}

Step Steps::controlFile(const QByteArray& content)
{
    return file(u"Control/bad.xml"_s, content);
}

Step Steps::goodControlFile()
{
    return controlFile(Content::goodFile());
}

Step Steps::directory(const QString& path)
{
    return [path](BadPackage& package) { QDir().mkpath(package.path(path)); };
}

Step Steps::link(const QString& target, const QString& path)
{
    return [target, path](BadPackage& package) {
        QFile::link(package.path(target), package.path(path));
    };
}

Step Steps::removed(const QString& path)
{
    return [path](BadPackage& package) {
        const QFileInfo info(package.path(path));
        if (info.isDir())
            QDir(info.filePath()).removeRecursively();
        else
            QFile::remove(info.filePath());
    };
}

Step Steps::locked(const QString& path)
{
    return [path](BadPackage& package) { package.lock(path); };
}

Step Steps::keyDataFile(const QByteArray& content)
{
    return inTurn(inTurn(goodControlFile(), file(u"keys.xml"_s, content)), [](BadPackage& package) {
        // The store of the index, which is not the one of the manager.
        package.stage.index.context().set(ckKeyDataFile, package.path(u"keys.xml"_s));
    });
}

QByteArray Content::goodTip()
{
    return "<vidlet key=\"bad\" title=\"t\"><p>text <b>more</b></p></vidlet>";
}

QByteArray Content::goodFile()
{
    return fileWith(goodTip());
}

QByteArray Content::fileWith(const QByteArray& tips)
{
    return "<vidlets>\n" + tips + "\n</vidlets>\n";
}
