// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <VidletsAuthor/AuthorEditor.h>
#include <VidletsAuthor/AuthorGalleryPage.h>
#include <VidletsAuthor/AuthorTipList.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

AuthorGalleryTip tip(const QString& digest)
{
    AuthorGalleryTip result;
    result.package = u"A"_s;
    result.key = u"pen \"1\""_s;
    result.title = u"Pen"_s;
    AuthorGalleryPicture picture;
    picture.locale = u"en_US"_s;
    picture.look = u"light"_s;
    picture.file = u"pictures/a.png"_s;
    picture.digest = digest;
    result.pictures.append(picture);
    return result;
}

} // namespace

class TestAuthorGalleryPage : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void safeName_isPlain_andDifferentForDifferentNames();
    void readList_givesWhatWasWritten();
    void readList_givesNothing_whenItIsNoList();
    void isDifferent_looksAtPicturesThatBothCouldHave();
    void isDifferent_looksAtLanguages();
    void tipList_knowsLocales();
    void commandLine_fillsInPlace();
    void placeIn_readsPlace();
};

void TestAuthorGalleryPage::safeName_isPlain_andDifferentForDifferentNames()
{
    using AuthorGalleryPage::safeName;

    QCOMPARE(safeName(u"tool.pen"_s), u"tool.pen"_s);
    QCOMPARE(safeName(u"a/b c"_s), u"a_2fb_20c"_s);
    QCOMPARE(safeName(u".."_s), u"_2e."_s);
    QVERIFY(safeName(u"a_2fb"_s) != safeName(u"a/b"_s));
    QVERIFY(!safeName(QString()).isEmpty());
    const QString longName(500, u'x');
    QVERIFY(safeName(longName).size() < 200);
    QVERIFY(safeName(longName) != safeName(longName + u'y'));
}

void TestAuthorGalleryPage::readList_givesWhatWasWritten()
{
    AuthorGalleryData data;
    data.tips.append(tip(u"1"_s));
    data.looks = QStringList{u"light"_s, u"dark, × 2"_s};
    data.locales = QStringList{u"en_US"_s};

    const auto read = AuthorGalleryPage::readList(AuthorGalleryPage::list(data));

    QVERIFY(read);
    QCOMPARE(read->tips.size(), 1);
    QCOMPARE(read->tips.constFirst().key, u"pen \"1\""_s);
    QCOMPARE(read->tips.constFirst().pictures.constFirst().file, u"pictures/a.png"_s);
    QCOMPARE(read->looks, data.looks);
    QCOMPARE(read->locales, data.locales);
    QVERIFY(!AuthorGalleryPage::isDifferent(*read, read->tips.constFirst(), data,
                                            data.tips.constFirst()));
}

void TestAuthorGalleryPage::readList_givesNothing_whenItIsNoList()
{
    QVERIFY(!AuthorGalleryPage::readList("{\"tips\": []}"));
    QVERIFY(!AuthorGalleryPage::readList("nonsense"));
}

void TestAuthorGalleryPage::isDifferent_looksAtPicturesThatBothCouldHave()
{
    const AuthorGalleryTip one = tip(u"1"_s);
    AuthorGalleryTip other = tip(u"2"_s);
    AuthorGalleryData light;
    light.looks = QStringList{u"light"_s};
    AuthorGalleryData dark;
    dark.looks = QStringList{u"dark"_s};
    QVERIFY(AuthorGalleryPage::isDifferent(light, one, light, other));

    other.pictures[0].look = u"dark"_s;
    QVERIFY(!AuthorGalleryPage::isDifferent(light, one, dark, other));

    other.title = u"Quill"_s;
    QVERIFY(AuthorGalleryPage::isDifferent(light, one, dark, other));
}

/// One that is gone, or new, as a whole.
void TestAuthorGalleryPage::isDifferent_looksAtLanguages()
{
    AuthorGalleryData all;
    all.looks = QStringList{u"light"_s};
    AuthorGalleryData some = all;
    some.locales = QStringList{u"en_US"_s};
    const AuthorGalleryTip one = tip(u"1"_s);
    AuthorGalleryTip more = one;
    more.pictures.append(one.pictures);
    more.pictures[1].locale = u"de_DE"_s;
    QVERIFY(AuthorGalleryPage::isDifferent(all, more, all, one));
    QVERIFY(AuthorGalleryPage::isDifferent(all, one, all, more));
    // The other one was not asked for it.
    QVERIFY(!AuthorGalleryPage::isDifferent(all, more, some, one));
    QVERIFY(!AuthorGalleryPage::isDifferent(some, one, all, more));

    // There is no tip in this language, which is no news.
    more.pictures[1].digest.clear();
    QVERIFY(!AuthorGalleryPage::isDifferent(all, one, all, more));
}

void TestAuthorGalleryPage::tipList_knowsLocales()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets locale=\"de\"><vidlet key=\"pen\"/></vidlets>\n");
    files.writeTip(u"B.vidlets"_s, u"b.xml"_s, u"line"_s);
    files.write(u"B.vidlets/l10n/Vidlets_fr_FR.qm"_s, "");
    files.write(u"B.vidlets/l10n/Vidlets_fr.qm"_s, "");
    QString reason;

    const auto list = AuthorTipList::read(files.dataPath(), reason);

    QVERIFY(list);
    QCOMPARE(list->locales(), QStringList({u"de_DE"_s, u"en_US"_s, u"fr_FR"_s}));
    const AuthorListedTip& pen = list->packages.constFirst().tips.constFirst();
    QVERIFY(hasLocale(pen, u"de_DE"_s));
    QVERIFY(!hasLocale(pen, u"fr_FR"_s));
    QVERIFY(!AuthorTipList::read(u"/nowhere"_s, reason));
}

void TestAuthorGalleryPage::commandLine_fillsInPlace()
{
    const AuthorPlace place{u"/a b/%l.qml"_s, 7, 3};

    QCOMPARE(AuthorEditor::commandLine(u"code -g %f:%l:%c"_s, place),
             QStringList({u"code"_s, u"-g"_s, u"/a b/%l.qml:7:3"_s}));
    QCOMPARE(AuthorEditor::commandLine(u"kate -l %l"_s, place),
             QStringList({u"kate"_s, u"-l"_s, u"7"_s, u"/a b/%l.qml"_s}));
    QVERIFY(AuthorEditor::commandLine(QString(), place).isEmpty());
}

void TestAuthorGalleryPage::placeIn_readsPlace()
{
    const AuthorPlace place = AuthorEditor::placeIn(u"/a b/c.qml:12:5: what: it is"_s);
    QCOMPARE(place.file, u"/a b/c.qml"_s);
    QCOMPARE(place.line, 12);
    QCOMPARE(place.column, 5);

    QCOMPARE(AuthorEditor::placeIn(u"/a/c.qml: not a regular file"_s).file, u"/a/c.qml"_s);
    QVERIFY(AuthorEditor::placeIn(u"There is no tip"_s).file.isEmpty());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorGalleryPage>(argc, argv);
}

#include "tst_authorgallerypage.moc"
