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

/// A watch of one package, and of those beside it.
class Watch
{
public:
    Watch(const PackageBuilder& files, const QString& package)
        : m_root(files.dataPath() + u'/')
        , m_spy(&m_watcher, &AuthorWatcher::changed)
    {
        m_watcher.watch({m_root + package}, {files.dataPath()});
    }

    /// All that was told of since the last call of forget(), below the data path.
    QStringList told() const
    {
        QStringList paths;
        for (const QList<QVariant>& arguments : m_spy)
            paths += arguments.constFirst().toStringList();
        paths.replaceInStrings(m_root, QString());
        paths.sort();
        paths.removeDuplicates();
        return paths;
    }

    void forget()
    {
        m_spy.clear();
    }

private:
    QString m_root;
    AuthorWatcher m_watcher;
    QSignalSpy m_spy;
};

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
    Watch watch(files, u"A.vidlets"_s);

    saved(files, u"A.vidlets/a"_s);
    QTRY_COMPARE(watch.told(), QStringList{u"A.vidlets/a"_s});

    watch.forget();
    saved(files, u"A.vidlets/new"_s);
    QVERIFY(QFile::remove(files.path(u"A.vidlets/a"_s)));
    QVERIFY(QFile::rename(files.path(u"A.vidlets/new"_s), files.path(u"A.vidlets/a"_s)));
    QTRY_VERIFY(watch.told().contains(u"A.vidlets/a"_s));

    watch.forget();
    QVERIFY(QFile::remove(files.path(u"A.vidlets/a"_s)));
    QTRY_COMPARE(watch.told(), QStringList{u"A.vidlets/a"_s});
}

void TestAuthorWatcher::changed_isTold_ofFolderThatComes()
{
    PackageBuilder files;
    saved(files, u"A.vidlets/a"_s);
    Watch watch(files, u"A.vidlets"_s);

    saved(files, u"A.vidlets/l10n/b"_s);
    QTRY_COMPARE(watch.told(), QStringList{u"A.vidlets/l10n/b"_s});

    watch.forget();
    saved(files, u"A.vidlets/l10n/b"_s);
    QTRY_COMPARE(watch.told(), QStringList{u"A.vidlets/l10n/b"_s});
}

void TestAuthorWatcher::changed_isTold_ofPackagesBeside()
{
    PackageBuilder files;
    saved(files, u"A.vidlets/a"_s);
    saved(files, u"B.vidlets/b"_s);
    Watch watch(files, u"A.vidlets"_s);

    saved(files, u"B.vidlets/b"_s);
    QTRY_COMPARE(watch.told(), QStringList{u"B.vidlets/b"_s});

    watch.forget();
    saved(files, u"C.vidlets/c"_s);
    QTRY_COMPARE(watch.told(), QStringList{u"C.vidlets/c"_s});
}

void TestAuthorWatcher::changed_isNotTold_ofWhatIsNoPackage()
{
    PackageBuilder files;
    saved(files, u"A.vidlets/a"_s);
    saved(files, u"A.vidlets/.git/index"_s);
    saved(files, u"cache/c"_s);
    Watch watch(files, u"A.vidlets"_s);

    saved(files, u"cache/c"_s);
    saved(files, u"cache/d"_s);
    saved(files, u"e"_s);
    saved(files, u"A.vidlets/.git/index"_s);
    saved(files, u"A.vidlets/a"_s);
    QTRY_COMPARE(watch.told(), QStringList{u"A.vidlets/a"_s});

    watch.forget();
    saved(files, u"A.vidlets/a"_s);
    QTRY_COMPARE(watch.told(), QStringList{u"A.vidlets/a"_s});
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
    Watch watch(files, u"B.vidlets"_s);

    saved(files, u"B.vidlets/b"_s);
    QTRY_COMPARE(watch.told(), QStringList{u"B.vidlets/b"_s});
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorWatcher>(argc, argv);
}

#include "tst_authorwatcher.moc"
