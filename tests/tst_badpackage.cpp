// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// Packages that are broken in another place than their control file: in the directories, the
/// scene, the translations, the key data.

#include "BadContentTest.h"

using namespace Qt::StringLiterals;

using namespace Vidlets;
using namespace Content;
using namespace Steps;

namespace {

constexpr int kMebibyte = 1024 * 1024;
constexpr auto kSceneWarning = "VidletUI\\.qml";

QString scenePath()
{
    return u"ui/VidletUI.qml"_s;
}

QString controlPath()
{
    return u"Control/bad.xml"_s;
}

QString translationPath()
{
    return u"l10n/Vidlets_en_US.qm"_s;
}

/// A case that is named as a file of tests/data/broken is.
BadCase named(const char* fileName)
{
    return BadCase(QString::fromLatin1(fileName).replace(u'-', u' '));
}

BadCase scene(const char* fileName)
{
    const QString path = u"scene/%1.qml.txt"_s.arg(QLatin1String(fileName));
    return named(fileName).has(goodControlFile()).has(file(scenePath(), brokenFile(path)));
}

BadCase translation(const char* fileName)
{
    const QString path = u"translation/%1.qm"_s.arg(QLatin1String(fileName));
    return named(fileName).has(goodControlFile()).has(file(translationPath(), brokenFile(path)));
}

BadCase keyData(const char* fileName)
{
    const QString path = u"keydata/%1.xml"_s.arg(QLatin1String(fileName));
    return named(fileName).has(keyDataFile(brokenFile(path)));
}

Examination titleIs(const QString& value)
{
    return [value](BadPackage& package) {
        const QString given = package.stage.view()->content()->attribute(u"title"_s);
        return given == value ? QString() : u"title is "_s + given;
    };
}

Examination textIsNotTranslated()
{
    return [](BadPackage& package) {
        const QString given = package.stage.manager->translateString(u"text"_s, u"context"_s);
        return given == u"text"_s ? QString() : u"translation is "_s + given;
    };
}

BadCases wrongFiles()
{
    const QByteArray good = goodFile();
    return {
        bad("dangling link").has(link(u"none"_s, controlPath())).isNotFound(),
        bad("link to a good file")
            .has(file(u"good.txt"_s, good))
            .has(link(u"good.txt"_s, controlPath()))
            .isNotFound(),
        bad("dangling link for a package").has(link(u"none"_s, u"../gone.vidlets"_s)).isNotFound(),
        bad("link to itself").has(link(controlPath(), controlPath())).isNotFound(),
        bad("directory named like a control file").has(directory(controlPath())).isNotFound(),
        bad("file named like a package").has(file(u"../gone.vidlets"_s, good)).isNotFound(),
        bad("file named like the control directory")
            .has(removed(u"Control"_s))
            .has(file(u"Control"_s, good))
            .isNotFound(),
        bad("no control directory").has(removed(u"Control"_s)).isNotFound(),
        bad("good file of another ending").has(file(u"Control/bad.xml.orig"_s, good)).isNotFound(),
    };
}

BadCases filesChangedSinceTheScan()
{
    const QString control = controlPath();
    return {
        bad("gone").has(goodControlFile()).afterTheScan(removed(control)).isNotFound(),
        bad("gone with its package")
            .has(goodControlFile())
            .afterTheScan(removed(QString()))
            .isNotFound(),
        bad("replaced by a dangling link")
            .has(goodControlFile())
            .afterTheScan(removed(control))
            .afterTheScan(link(u"none"_s, control))
            .isNotFound(),
        bad("replaced by a directory")
            .has(goodControlFile())
            .afterTheScan(removed(control))
            .afterTheScan(directory(control))
            .isNotFound(),
        bad("permission taken")
            .has(goodControlFile())
            .afterTheScan(locked(control))
            .forAnOrdinaryUser()
            .isNotFound(),
    };
}

BadCases filesWithoutPermission()
{
    return {
        bad("no permission for the control file")
            .has(goodControlFile())
            .has(locked(controlPath()))
            .forAnOrdinaryUser()
            .isNotFound(),
        bad("no permission for the control directory")
            .has(goodControlFile())
            .has(locked(u"Control"_s))
            .forAnOrdinaryUser()
            .isNotFound(),
        bad("no permission for the package")
            .has(goodControlFile())
            .has(locked(QString()))
            .forAnOrdinaryUser()
            .isNotFound(),
        bad("no permission for the scene")
            .has(goodControlFile())
            .has(locked(scenePath()))
            .forAnOrdinaryUser()
            .isShownEmpty()
            .warns(kSceneWarning),
    };
}

BadCases brokenScenes()
{
    return {
        scene("empty").isShownEmpty().warns(kSceneWarning),
        scene("broken").isShownEmpty().warns(kSceneWarning),
        scene("binary").isShownEmpty().warns(kSceneWarning),
        scene("with-an-unknown-module").isShownEmpty().warns(kSceneWarning),
        scene("with-an-unknown-type").isShownEmpty().warns(kSceneWarning),
        scene("that-is-no-item").isShownEmpty().warns("QQuickView only supports"),
        scene("that-throws").isShown().tellsTheHost("^QML Warning 5:").warns(kSceneWarning),
        scene("without-a-size").isShown(),
    };
}

BadCases missingScenes()
{
    return {
        bad("no scene")
            .has(goodControlFile())
            .afterTheScan(removed(scenePath()))
            .isShownEmpty()
            .tellsTheHost("^Can't find :.*ui/VidletUI\\.qml$"),
        bad("a scene that the tip names and that is missing")
            .has(controlFile(fileWith("<vidlet key=\"bad\" ui=\"ui/None.qml\"/>")))
            .isShownEmpty()
            .tellsTheHost("^Can't find :.*ui/None\\.qml$"),
        bad("a scene that is a directory")
            .has(goodControlFile())
            .afterTheScan(removed(scenePath()))
            .afterTheScan(directory(scenePath()))
            .isShownEmpty()
            .warns(kSceneWarning),
    };
}

BadCases brokenTranslations()
{
    const Examination untranslated = textIsNotTranslated();
    return {
        bad("none").has(goodControlFile()).isShown().where(untranslated),
        translation("empty").isShown().where(untranslated),
        translation("text").isShown().where(untranslated),
        translation("binary").isShown().where(untranslated),
        translation("cut-off-behind-its-head").isShown().where(untranslated),
        translation("binary-behind-its-head").isShown().where(untranslated),
        bad("directory")
            .has(goodControlFile())
            .has(directory(translationPath()))
            .isShown()
            .where(untranslated),
    };
}

BadCases brokenKeyData()
{
    const Examination oldTitle = titleIs(u"t"_s);
    const Examination newTitle = titleIs(u"new"_s);
    const QByteArray large(kMebibyte, 'x');
    const QString path = u"keys.xml"_s;
    return {
        bad("none").has(keyDataFile("")).afterTheScan(removed(path)).isShown().where(oldTitle),
        bad("directory")
            .has(keyDataFile(""))
            .afterTheScan(removed(path))
            .afterTheScan(directory(path))
            .isShown()
            .where(oldTitle),
        keyData("empty").endsTheLookup(),
        keyData("text").endsTheLookup(),
        keyData("binary").endsTheLookup(),
        keyData("of-another-root").isShown().where(oldTitle),
        keyData("without-the-key").isShown().where(oldTitle),
        keyData("cut-off-before-the-record").isShown().where(oldTitle),
        keyData("cut-off-in-the-record").isShown().where(newTitle),
        keyData("cut-off-behind-the-record").isShown().where(newTitle),
        keyData("with-the-key-twice").isShown().where(newTitle),
        bad("with another attribute of 1 MB")
            .has(keyDataFile("<vidletkeys><key name=\"bad\" title=\"new\" a=\"" + large
                             + "\"/></vidletkeys>"))
            .isShown()
            .where(newTitle),
    };
}

} // namespace

class TestBadPackage : public BadContentTest
{
    Q_OBJECT

private Q_SLOTS:
    void scan_passesOver_whenFileIsNotWhatItSeems_data();
    void scan_passesOver_whenFileIsNotWhatItSeems();
    void lookup_findsNothing_whenFileIsGoneSinceTheScan_data();
    void lookup_findsNothing_whenFileIsGoneSinceTheScan();
    void lookup_copes_whenPermissionIsMissing_data();
    void lookup_copes_whenPermissionIsMissing();
    void show_tellsOfFault_whenSceneIsBroken_data();
    void show_tellsOfFault_whenSceneIsBroken();
    void show_tellsOfFault_whenSceneIsMissing_data();
    void show_tellsOfFault_whenSceneIsMissing();
    void translation_givesText_whenFileIsBroken_data();
    void translation_givesText_whenFileIsBroken();
    void keyData_goesByWhatWasBuilt_whenFileIsBroken_data();
    void keyData_goesByWhatWasBuilt_whenFileIsBroken();
    void brokenFiles_haveACaseEach_data();
    void brokenFiles_haveACaseEach();

protected:
    BadCases allCases() const override;
};

/// Those that end the process are of the key data alone.
BadCases TestBadPackage::allCases() const
{
    return brokenKeyData();
}

void TestBadPackage::scan_passesOver_whenFileIsNotWhatItSeems_data()
{
    addRows(wrongFiles());
}

void TestBadPackage::scan_passesOver_whenFileIsNotWhatItSeems()
{
    runRow(wrongFiles());
}

void TestBadPackage::lookup_findsNothing_whenFileIsGoneSinceTheScan_data()
{
    addRows(filesChangedSinceTheScan());
}

void TestBadPackage::lookup_findsNothing_whenFileIsGoneSinceTheScan()
{
    runRow(filesChangedSinceTheScan());
}

void TestBadPackage::lookup_copes_whenPermissionIsMissing_data()
{
    addRows(filesWithoutPermission());
}

void TestBadPackage::lookup_copes_whenPermissionIsMissing()
{
    runRow(filesWithoutPermission());
}

void TestBadPackage::show_tellsOfFault_whenSceneIsBroken_data()
{
    addRows(brokenScenes());
}

void TestBadPackage::show_tellsOfFault_whenSceneIsBroken()
{
    runRow(brokenScenes());
}

void TestBadPackage::show_tellsOfFault_whenSceneIsMissing_data()
{
    addRows(missingScenes());
}

void TestBadPackage::show_tellsOfFault_whenSceneIsMissing()
{
    runRow(missingScenes());
}

void TestBadPackage::translation_givesText_whenFileIsBroken_data()
{
    addRows(brokenTranslations());
}

void TestBadPackage::translation_givesText_whenFileIsBroken()
{
    runRow(brokenTranslations());
}

void TestBadPackage::keyData_goesByWhatWasBuilt_whenFileIsBroken_data()
{
    addRows(brokenKeyData());
}

void TestBadPackage::keyData_goesByWhatWasBuilt_whenFileIsBroken()
{
    runRow(brokenKeyData());
}

void TestBadPackage::brokenFiles_haveACaseEach_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QStringList>("left");
    const auto row = [](const QString& folder, const BadCases& cases) {
        QTest::addRow("%s", qPrintable(folder)) << folder << filesWithoutCase(folder, cases);
    };
    row(u"scene"_s, brokenScenes());
    row(u"translation"_s, brokenTranslations());
    row(u"keydata"_s, brokenKeyData());
}

void TestBadPackage::brokenFiles_haveACaseEach()
{
    QFETCH(QString, folder);
    QFETCH(QStringList, left);
    QVERIFY(!brokenFileNames(folder).isEmpty());
    QCOMPARE(left, QStringList());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestBadPackage>(argc, argv);
}

#include "tst_badpackage.moc"
