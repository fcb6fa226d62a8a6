// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>

#include <VidletsAuthor/AuthorWatcher.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

/// All that the watcher has told of, without the path of @p files.
QStringList told(const QSignalSpy& spy, const PackageBuilder& files)
{
    QStringList paths;
    for (const QList<QVariant>& arguments : spy)
        paths += arguments.constFirst().toStringList();
    paths.replaceInStrings(files.dataPath() + u'/', QString());
    paths.sort();
    paths.removeDuplicates();
    return paths;
}

QString saved(PackageBuilder& files, const QString& path)
{
    static int count = 0;
    files.write(path, QByteArray(++count, 'x'));
    return path;
}

} // namespace

class TestAuthorWatcher : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void changed_isTold_howeverFileIsSaved();
    void changed_isTold_ofFolderThatComes();
    void changed_isTold_ofPackagesBeside();
    void changed_isNotTold_ofWhatIsNoPackage();
    void changed_isTold_howeverCrowdedDataPathIs();
};

void TestAuthorWatcher::changed_isTold_howeverFileIsSaved()
{
    PackageBuilder files;
    saved(files, u"A.vidlets/a"_s);
    AuthorWatcher watcher;
    QSignalSpy spy(&watcher, &AuthorWatcher::changed);
    watcher.watch({files.path(u"A.vidlets"_s)}, {files.dataPath()});

    saved(files, u"A.vidlets/a"_s);
    QTRY_COMPARE(told(spy, files), QStringList{u"A.vidlets/a"_s});

    spy.clear();
    saved(files, u"A.vidlets/new"_s);
    QVERIFY(QFile::remove(files.path(u"A.vidlets/a"_s)));
    QVERIFY(QFile::rename(files.path(u"A.vidlets/new"_s), files.path(u"A.vidlets/a"_s)));
    QTRY_VERIFY(told(spy, files).contains(u"A.vidlets/a"_s));

    spy.clear();
    QVERIFY(QFile::remove(files.path(u"A.vidlets/a"_s)));
    QTRY_COMPARE(told(spy, files), QStringList{u"A.vidlets/a"_s});
}

void TestAuthorWatcher::changed_isTold_ofFolderThatComes()
{
    PackageBuilder files;
    saved(files, u"A.vidlets/a"_s);
    AuthorWatcher watcher;
    QSignalSpy spy(&watcher, &AuthorWatcher::changed);
    watcher.watch({files.path(u"A.vidlets"_s)}, {files.dataPath()});

    saved(files, u"A.vidlets/l10n/b"_s);
    QTRY_COMPARE(told(spy, files), QStringList{u"A.vidlets/l10n/b"_s});

    spy.clear();
    saved(files, u"A.vidlets/l10n/b"_s);
    QTRY_COMPARE(told(spy, files), QStringList{u"A.vidlets/l10n/b"_s});
}

void TestAuthorWatcher::changed_isTold_ofPackagesBeside()
{
    PackageBuilder files;
    saved(files, u"A.vidlets/a"_s);
    saved(files, u"B.vidlets/b"_s);
    AuthorWatcher watcher;
    QSignalSpy spy(&watcher, &AuthorWatcher::changed);
    watcher.watch({files.path(u"A.vidlets"_s)}, {files.dataPath()});

    saved(files, u"B.vidlets/b"_s);
    QTRY_COMPARE(told(spy, files), QStringList{u"B.vidlets/b"_s});

    spy.clear();
    saved(files, u"C.vidlets/c"_s);
    QTRY_COMPARE(told(spy, files), QStringList{u"C.vidlets/c"_s});
}

void TestAuthorWatcher::changed_isNotTold_ofWhatIsNoPackage()
{
    PackageBuilder files;
    saved(files, u"A.vidlets/a"_s);
    saved(files, u"A.vidlets/.git/index"_s);
    saved(files, u"cache/c"_s);
    AuthorWatcher watcher;
    QSignalSpy spy(&watcher, &AuthorWatcher::changed);
    watcher.watch({files.path(u"A.vidlets"_s)}, {files.dataPath()});

    saved(files, u"cache/c"_s);
    saved(files, u"cache/d"_s);
    saved(files, u"e"_s);
    saved(files, u"A.vidlets/.git/index"_s);
    saved(files, u"A.vidlets/a"_s);
    QTRY_COMPARE(told(spy, files), QStringList{u"A.vidlets/a"_s});

    spy.clear();
    saved(files, u"A.vidlets/a"_s);
    QTRY_COMPARE(told(spy, files), QStringList{u"A.vidlets/a"_s});
}

/// There is an end to what is watched, which what comes before in the alphabet must not use up.
void TestAuthorWatcher::changed_isTold_howeverCrowdedDataPathIs()
{
    PackageBuilder files;
    saved(files, u"B.vidlets/b"_s);
    saved(files, u"A.vidlets/0"_s);
    for (int i = 0; i <= 20'000; ++i) {
        QFile file(files.path(u"A.vidlets/%1"_s.arg(i)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    AuthorWatcher watcher;
    QSignalSpy spy(&watcher, &AuthorWatcher::changed);
    watcher.watch({files.path(u"B.vidlets"_s)}, {files.dataPath()});

    saved(files, u"B.vidlets/b"_s);
    QTRY_COMPARE(told(spy, files), QStringList{u"B.vidlets/b"_s});
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorWatcher>(argc, argv);
}

#include "tst_authorwatcher.moc"
