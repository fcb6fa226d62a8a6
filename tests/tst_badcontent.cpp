// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// Control files that are broken, each from the scan to the popup.

#include "BadContentTest.h"

using namespace Qt::StringLiterals;

using namespace Vidlets;
using namespace Content;
using namespace Steps;

namespace {

constexpr int kMebibyte = 1024 * 1024;
constexpr int kManyTips = 10'000;
constexpr int kDeepTags = 10'000;
constexpr int kVeryDeepTags = 200'000;

/// A case with a control file from tests/data/broken/controlfile, named as its file is.
BadCase broken(const char* fileName)
{
    const QString name = QString::fromLatin1(fileName);
    return BadCase(QString(name).replace(u'-', u' '))
        .has(controlFile(brokenFile(u"controlfile/%1.xml"_s.arg(name))));
}

/// A case with a control file that is too large to lie in a folder.
BadCase made(const char* name, const QByteArray& content)
{
    return bad(name).has(controlFile(content));
}

QByteArray deepTags(int depth, const QByteArray& innermost = QByteArray())
{
    return QByteArray("<a>").repeated(depth) + innermost + QByteArray("</a>").repeated(depth);
}

QByteArray tipWith(const QByteArray& content)
{
    return "<vidlet key=\"bad\">" + content + "</vidlet>";
}

Examination noteIs(const QString& value)
{
    return [value](BadPackage& package) {
        const QString given = package.stage.view()->content()->attribute(u"note"_s);
        return given == value ? QString() : u"note is "_s + given.left(100);
    };
}

Examination contentIs(const QString& value)
{
    return [value](BadPackage& package) {
        const QString given = package.stage.view()->content()->content();
        return given == value ? QString() : u"content is "_s + given.left(100);
    };
}

/// How many tags lie below each other under the tip.
Examination depthIs(int depth)
{
    return [depth](BadPackage& package) {
        int found = 0;
        const QObject* element = package.stage.view()->content();
        while (!element->children().isEmpty()) {
            element = element->children().constFirst();
            ++found;
        }
        return found == depth ? QString() : u"depth is %1"_s.arg(found);
    };
}

BadCases malformedFiles()
{
    return {
        broken("not-xml").isNotFound().isWarnedOf(
            "bad\\.xml:1:1: no control file: it holds no tag"),
        broken("another-kind-of-xml")
            .isNotFound()
            .isWarnedOf("bad\\.xml:1:1: no control file: its first tag"),
        broken("empty").isNotFound().isWarnedOf("bad\\.xml:1:1: no control file: it holds no tag"),
        broken("white-space-alone")
            .isNotFound()
            .isWarnedOf("bad\\.xml:1:1: no control file: it holds no tag"),
        broken("comment-alone")
            .isNotFound()
            .isWarnedOf("bad\\.xml:1:1: no control file: it holds no tag"),
        broken("binary").isNotFound().isWarnedOf("bad\\.xml:1:1: no control file: it holds no tag"),
        broken("binary-behind-the-first-tag").endsTheLookup().isRefusedAt(2),
        broken("control-characters-behind-the-first-tag").isNotFound().isRefusedAt(2),
        broken("binary-in-the-tip").isStale().isRefusedAt(1),
        broken("binary-behind-the-tip").isShown().isRefusedAt(1),
        broken("text-behind-the-root").endsTheLookup().isRefusedAt(4),
        broken("second-root").endsTheLookup().isRefusedAt(4),
        broken("text-before-the-root").endsTheLookup().isRefusedAt(1),
        broken("end-tags-crossed-in-the-tip").isStale().isRefusedAt(2),
        broken("end-tags-crossed-behind-the-tip").isStale().isRefusedAt(2),
        broken("end-tags-crossed-before-the-tip").isNotFound().isRefusedAt(2),
        broken("attribute-without-quotes").isNotFound().isRefusedAt(2),
        broken("attribute-twice").isNotFound().isRefusedAt(2),
        broken("prefix-without-declaration").isNotFound().isRefusedAt(2),
        broken("prefix-without-declaration-in-the-tip").isStale().isRefusedAt(2),
        broken("entity-without-declaration").isStale().isRefusedAt(2),
        broken("entity-that-grows-without-bound").isStale().isRefusedAt(8),
    };
}

BadCases cutOffFiles()
{
    return {
        broken("cut-off-in-the-declaration")
            .isNotFound()
            .isWarnedOf("bad\\.xml:1:1: no control file: it holds no tag"),
        broken("cut-off-in-the-name-of-the-root")
            .isNotFound()
            .isWarnedOf("bad\\.xml:1:1: no control file: its first tag"),
        broken("cut-off-in-the-roots-attributes").endsTheLookup().isRefusedAt(1),
        broken("cut-off-behind-the-roots-start-tag").isNotFound().isRefusedAt(1),
        broken("cut-off-in-a-tip-before").isNotFound().isRefusedAt(1),
        broken("cut-off-in-the-name-of-the-tip").isNotFound().isRefusedAt(1),
        broken("cut-off-in-the-tips-attributes").isNotFound().isRefusedAt(1),
        broken("cut-off-behind-the-tips-start-tag").isStale().isRefusedAt(1),
        broken("cut-off-in-the-tips-text").isStale().isRefusedAt(1),
        broken("cut-off-one-tag-below-the-tip").isStale().isRefusedAt(1),
        broken("cut-off-two-tags-below-the-tip").isStale().isRefusedAt(1),
        broken("cut-off-in-the-tips-end-tag").isStale().isRefusedAt(1),
        broken("cut-off-behind-the-tip").isShown().isRefusedAt(1),
        broken("cut-off-in-a-comment-behind-the-tip").isShown().isRefusedAt(1),
        broken("cut-off-in-the-attributes-of-the-next-tip").isShown().isRefusedAt(1),
        broken("cut-off-in-the-next-tip").isStale().isRefusedAt(1),
        broken("cut-off-one-tag-below-the-next-tip").isStale().isRefusedAt(1),
        broken("cut-off-in-the-roots-end-tag").isShown().isRefusedAt(1),
        broken("cut-off-in-a-comment-behind-the-root").endsTheLookup().isRefusedAt(4),
    };
}

BadCases wronglyEncodedFiles()
{
    const QByteArray farBehind = "<!--" + QByteArray(kMebibyte, 'x') + "\xE9-->";
    return {
        broken("byte-order-mark").isShown(),
        broken("utf-16-in-which-no-tag-is-seen")
            .isNotFound()
            .isWarnedOf("bad\\.xml:1:1: no control file: it holds no tag"),
        broken("latin-1-that-says-so").isShown().where(contentIs(QString(QChar(0xE9)))),
        // The reader refuses the first piece of the file as a whole, before any tag.
        broken("latin-1-that-does-not-say-so").endsTheLookup().isRefusedAt(2),
        broken("latin-1-that-says-utf-8").endsTheLookup().isRefusedAt(3),
        broken("utf-8-that-says-utf-16").endsTheLookup().isRefusedAt(1),
        made("latin 1 far behind the tip", fileWith(goodTip() + farBehind))
            .isShown()
            .isRefusedAt(2),
        broken("encoding-that-does-not-exist").endsTheLookup().isRefusedAt(1),
    };
}

BadCases largeFiles()
{
    const QByteArray large(kMebibyte, 'x');
    const auto largeText = QString::fromLatin1(large);
    const QByteArray manyTips = QByteArray("<vidlet key=\"other\"/>").repeated(kManyTips);
    return {
        made("attribute of 1 MB", fileWith("<vidlet key=\"bad\" note=\"" + large + "\"/>"))
            .isShown()
            .where(noteIs(largeText)),
        made("attribute of 1 MB on the root",
             "<vidlets note=\"" + large + "\">" + goodTip() + "</vidlets>")
            .isShown(),
        made("key of 1 MB", fileWith("<vidlet key=\"" + large + "\"/>" + goodTip())).isShown(),
        made("line of 1 MB before the root", "<!--" + large + "-->\n" + goodFile()).isShown(),
        made("text of 1 MB", fileWith(tipWith(large))).isShown().where(contentIs(largeText)),
        made("10,000 tips", fileWith(manyTips + goodTip()))
            .isShown()
            .isWarnedOf("bad\\.xml:2:22: .*\"other\""),
    };
}

BadCases deepFiles()
{
    const QByteArray veryDeepTip = tipWith(deepTags(kVeryDeepTags));
    return {
        made("10,000 nested tags", fileWith(tipWith(deepTags(kDeepTags))))
            .isShown()
            .where(depthIs(kDeepTags)),
        made("200,000 nested tags", fileWith(veryDeepTip)).isShown().where(depthIs(kVeryDeepTags)),
        made("200,000 nested tags in a tip of another locale",
             "<vidlets locale=\"de\">" + veryDeepTip + "</vidlets>")
            .isNotFound(),
        made("10,000 nested tags in another tip",
             fileWith("<vidlet key=\"other\">" + deepTags(kDeepTags) + "</vidlet>" + goodTip()))
            .isShown(),
        made("10,000 nested tags, broken at the innermost",
             fileWith(tipWith(deepTags(kDeepTags, "<"))))
            .isStale()
            .isRefusedAt(2),
        made("10,000 nested tags around the tip", fileWith(deepTags(kDeepTags, goodTip())))
            .isNotFound(),
    };
}

BadCases filesOfAnotherMeaning()
{
    return {
        broken("key-twice").isNotFound().isWarnedOf("bad\\.xml:2:61: .*\"bad\" stands twice"),
        broken("key-in-another-case").isNotFound(),
        broken("tip-below-another-tag").isNotFound(),
        broken("no-tip").isNotFound(),
        broken("tip-without-a-key").isNotFound(),
        broken("locale-that-does-not-exist").isNotFound(),
        broken("root-with-a-prefix")
            .isNotFound()
            .isWarnedOf("bad\\.xml:1:28: no control file: its first tag"),
        broken("root-split-behind-its-name")
            .isNotFound()
            .isWarnedOf("bad\\.xml:1:1: no control file: its first tag"),
        broken("tag-in-a-comment-before-the-root")
            .isNotFound()
            .isWarnedOf("bad\\.xml:1:6: no control file: its first tag"),
    };
}

BadCases filesChangedSinceTheScan()
{
    const Step otherRoot = controlFile(brokenFile(u"controlfile/another-root.xml"_s));
    return {
        bad("emptied")
            .has(goodControlFile())
            .afterTheScan(controlFile(""))
            .endsTheLookup()
            .isRefusedAt(1),
        bad("another root")
            .has(goodControlFile())
            .afterTheScan(otherRoot)
            .isNotFound()
            .isRefusedAt(1),
        bad("another root, with the keys listed")
            .has(goodControlFile())
            .afterTheScan(otherRoot)
            .endsTheListOfKeys()
            .isRefusedAt(1),
    };
}

} // namespace

class TestBadContent : public BadContentTest
{
    Q_OBJECT

private Q_SLOTS:
    void lookup_goesByWhatWasBuilt_whenFileIsMalformed_data();
    void lookup_goesByWhatWasBuilt_whenFileIsMalformed();
    void lookup_goesByWhatWasBuilt_whenFileIsCutOff_data();
    void lookup_goesByWhatWasBuilt_whenFileIsCutOff();
    void lookup_goesByWhatWasBuilt_whenEncodingIsWrong_data();
    void lookup_goesByWhatWasBuilt_whenEncodingIsWrong();
    void lookup_copes_whenFileIsLarge_data();
    void lookup_copes_whenFileIsLarge();
    void lookup_copes_whenTagsNestDeep_data();
    void lookup_copes_whenTagsNestDeep();
    void lookup_findsNothing_whenFileMeansAnotherThing_data();
    void lookup_findsNothing_whenFileMeansAnotherThing();
    void lookup_readsAnew_whenFileChangedSinceTheScan_data();
    void lookup_readsAnew_whenFileChangedSinceTheScan();
    void guardedContent_doesNoHarm_data();
    void guardedContent_doesNoHarm();
    void brokenControlFiles_haveACaseEach();

protected:
    BadCases allCases() const override;
};

BadCases TestBadContent::allCases() const
{
    return malformedFiles() + cutOffFiles() + wronglyEncodedFiles() + largeFiles() + deepFiles()
        + filesOfAnotherMeaning() + filesChangedSinceTheScan();
}

void TestBadContent::lookup_goesByWhatWasBuilt_whenFileIsMalformed_data()
{
    addRows(malformedFiles());
}

void TestBadContent::lookup_goesByWhatWasBuilt_whenFileIsMalformed()
{
    runRow(malformedFiles());
}

void TestBadContent::lookup_goesByWhatWasBuilt_whenFileIsCutOff_data()
{
    addRows(cutOffFiles());
}

void TestBadContent::lookup_goesByWhatWasBuilt_whenFileIsCutOff()
{
    runRow(cutOffFiles());
}

void TestBadContent::lookup_goesByWhatWasBuilt_whenEncodingIsWrong_data()
{
    addRows(wronglyEncodedFiles());
}

void TestBadContent::lookup_goesByWhatWasBuilt_whenEncodingIsWrong()
{
    runRow(wronglyEncodedFiles());
}

void TestBadContent::lookup_copes_whenFileIsLarge_data()
{
    addRows(largeFiles());
}

void TestBadContent::lookup_copes_whenFileIsLarge()
{
    runRow(largeFiles());
}

void TestBadContent::lookup_copes_whenTagsNestDeep_data()
{
    addRows(deepFiles());
}

void TestBadContent::lookup_copes_whenTagsNestDeep()
{
    runRow(deepFiles());
}

void TestBadContent::lookup_findsNothing_whenFileMeansAnotherThing_data()
{
    addRows(filesOfAnotherMeaning());
}

void TestBadContent::lookup_findsNothing_whenFileMeansAnotherThing()
{
    runRow(filesOfAnotherMeaning());
}

void TestBadContent::lookup_readsAnew_whenFileChangedSinceTheScan_data()
{
    addRows(filesChangedSinceTheScan());
}

void TestBadContent::lookup_readsAnew_whenFileChangedSinceTheScan()
{
    runRow(filesChangedSinceTheScan());
}

void TestBadContent::guardedContent_doesNoHarm_data()
{
    addRows(allCases());
}

void TestBadContent::guardedContent_doesNoHarm()
{
    runGuardedRow(allCases());
}

void TestBadContent::brokenControlFiles_haveACaseEach()
{
    QCOMPARE(filesWithoutCase(u"controlfile"_s, allCases()), QStringList());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestBadContent>(argc, argv);
}

#include "tst_badcontent.moc"
