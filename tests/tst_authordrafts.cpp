// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QDateTime>
#include <QFile>

#include <VidletsAuthor/AuthorDrafts.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

QByteArray draft(const QByteArray& translation)
{
    return "<?xml version=\"1.0\"?><!DOCTYPE TS><TS version=\"2.1\" language=\"de_DE\"><context>"
           "<name>C</name><message><source>pen</source><translation>"
        + translation + "</translation></message></context></TS>\n";
}

void setAge(const QString& path, int seconds)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-seconds),
                             QFileDevice::FileModificationTime));
}

} // namespace

class TestAuthorDrafts : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void translation_isOfDraft_whenNothingIsReleased();
    void translation_isNull_whenReleasedOneIsNewer();
    void translation_isRead_whenFileHasChanged();
    void translation_isNull_whenFileIsNone_data();
    void translation_isNull_whenFileIsNone();
};

void TestAuthorDrafts::translation_isOfDraft_whenNothingIsReleased()
{
    PackageBuilder files;
    const QString path = files.write(u"V_de_DE.ts"_s, draft("Stift"));
    AuthorDrafts drafts;

    QCOMPARE(drafts.translation(path, u"pen"_s, u"C"_s), u"Stift"_s);
    QCOMPARE(drafts.translation(path, u"pen"_s, u"D"_s), u"pen"_s);
    QCOMPARE(drafts.translation(path, u"line"_s, u"C"_s), u"line"_s);
}

void TestAuthorDrafts::translation_isNull_whenReleasedOneIsNewer()
{
    PackageBuilder files;
    const QString path = files.write(u"V_de_DE.ts"_s, draft("Stift"));
    const QString released = files.write(u"V_de_DE.qm"_s, "");
    AuthorDrafts drafts;

    setAge(path, 100);
    QVERIFY(drafts.translation(path, u"pen"_s, u"C"_s).isNull());
    setAge(released, 200);
    QCOMPARE(drafts.translation(path, u"pen"_s, u"C"_s), u"Stift"_s);
}

void TestAuthorDrafts::translation_isRead_whenFileHasChanged()
{
    PackageBuilder files;
    const QString path = files.write(u"V_de_DE.ts"_s, draft("Stift"));
    setAge(path, 100);
    AuthorDrafts drafts;
    QCOMPARE(drafts.translation(path, u"pen"_s, u"C"_s), u"Stift"_s);

    files.write(u"V_de_DE.ts"_s, draft("Feder"));
    setAge(path, 50);
    QCOMPARE(drafts.translation(path, u"pen"_s, u"C"_s), u"Feder"_s);
    files.write(u"V_de_DE.ts"_s, draft(""));
    QCOMPARE(drafts.translation(path, u"pen"_s, u"C"_s), u"pen"_s);
}

void TestAuthorDrafts::translation_isNull_whenFileIsNone_data()
{
    QTest::addColumn<QByteArray>("content");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("broken") << draft("Stift").chopped(8);
    QTest::newRow("another one") << QByteArray("<vidlets/>");
}

void TestAuthorDrafts::translation_isNull_whenFileIsNone()
{
    QFETCH(const QByteArray, content);
    PackageBuilder files;
    AuthorDrafts drafts;

    QVERIFY(drafts.translation(files.write(u"V_de_DE.ts"_s, content), u"pen"_s, u"C"_s).isNull());
    QVERIFY(drafts.translation(files.path(u"none.ts"_s), u"pen"_s, u"C"_s).isNull());
    QVERIFY(drafts.translation(QString(), u"pen"_s, u"C"_s).isNull());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorDrafts>(argc, argv);
}

#include "tst_authordrafts.moc"
