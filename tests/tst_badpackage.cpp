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

Examination translationIs(const QString& value)
{
    return [value](BadPackage& package) {
        const QString given = package.stage.manager->translateString(u"text"_s, u"context"_s);
        return given == value ? QString() : u"translation is \"%1\""_s.arg(given);
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
        bad("gone")
            .has(goodControlFile())
            .afterTheScan(removed(control))
            .isNotFound()
            .isWarnedOf("bad\\.xml: No such file"),
        bad("gone with its package")
            .has(goodControlFile())
            .afterTheScan(removed(QString()))
            .isNotFound()
            .isWarnedOf("bad\\.xml: No such file"),
        bad("replaced by a dangling link")
            .has(goodControlFile())
            .afterTheScan(removed(control))
            .afterTheScan(link(u"none"_s, control))
            .isNotFound()
            .isWarnedOf("bad\\.xml: No such file"),
        bad("replaced by a directory")
            .has(goodControlFile())
            .afterTheScan(removed(control))
            .afterTheScan(directory(control))
            .isNotFound()
            .isWarnedOf("bad\\.xml: not a regular file$"),
        bad("permission taken")
            .has(goodControlFile())
            .afterTheScan(locked(control))
            .forAnOrdinaryUser()
            .isNotFound()
            .isWarnedOf("bad\\.xml: Permission denied$"),
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
            .warns(kSceneWarning)
            .isWarnedOf("VidletUI\\.qml:1:1: Permission denied"),
    };
}

BadCases brokenScenes()
{
    return {
        scene("empty").isShownEmpty().warns(kSceneWarning).isWarnedOf("VidletUI\\.qml:1:1: "),
        scene("broken").isShownEmpty().warns(kSceneWarning).isWarnedOf("VidletUI\\.qml:4:1: "),
        scene("binary").isShownEmpty().warns(kSceneWarning).isWarnedOf("VidletUI\\.qml:1:1: "),
        scene("with-an-unknown-module")
            .isShownEmpty()
            .warns(kSceneWarning)
            .isWarnedOf("VidletUI\\.qml:1:1: "),
        scene("with-an-unknown-type")
            .isShownEmpty()
            .warns(kSceneWarning)
            .isWarnedOf("VidletUI\\.qml:2:1: "),
        scene("that-is-no-item")
            .isShownEmpty()
            .warns("QQuickView only supports")
            .isWarnedOf("VidletUI\\.qml:1:1: "),
        scene("that-throws")
            .isShown()
            .tellsTheHost("^QML Warning 5:")
            .warns(kSceneWarning)
            .isWarnedOf("VidletUI\\.qml:5:"),
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
            .tellsTheHost("^Can't find :.*ui/VidletUI\\.qml$")
            .isWarnedOf("/bad\\.xml:2:1: the scene \"ui/VidletUI\\.qml\" is not found$"),
        bad("a scene that the tip names and that is missing")
            .has(controlFile(fileWith("<vidlet key=\"bad\" ui=\"ui/None.qml\"/>")))
            .isShownEmpty()
            .tellsTheHost("^Can't find :.*ui/None\\.qml$")
            .isWarnedOf("/bad\\.xml:2:1: the scene \"ui/None\\.qml\" is not found$"),
        bad("a scene that is a directory")
            .has(goodControlFile())
            .afterTheScan(removed(scenePath()))
            .afterTheScan(directory(scenePath()))
            .isShownEmpty()
            .warns(kSceneWarning)
            .isWarnedOf("VidletUI\\.qml:1:1: "),
    };
}

BadCases brokenTranslations()
{
    const Examination untranslated = translationIs(u"text"_s);
    return {
        bad("none").has(goodControlFile()).isShown().where(untranslated),
        translation("empty")
            .isShown()
            .where(untranslated)
            .isWarnedOf("en_US\\.qm: no translation file"),
        translation("text")
            .isShown()
            .where(untranslated)
            .isWarnedOf("en_US\\.qm: no translation file"),
        translation("binary")
            .isShown()
            .where(untranslated)
            .isWarnedOf("en_US\\.qm: no translation file"),
        translation("cut-off-behind-its-head")
            .isShown()
            .where(translationIs(QString()))
            .whereGuarded(untranslated)
            .isWarnedOf("en_US\\.qm: no translation file"),
        translation("binary-behind-its-head")
            .isShown()
            .where(untranslated)
            .isWarnedOf("en_US\\.qm: no translation file"),
        bad("directory")
            .has(goodControlFile())
            .has(directory(translationPath()))
            .isShown()
            .where(untranslated)
            .isWarnedOf("en_US\\.qm: not a regular file"),
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
            .where(oldTitle)
            .isWarnedOf("keys\\.xml: not a regular file"),
        keyData("empty").endsTheLookup().isGuardedShown().whereGuarded(oldTitle).isWarnedOf(
            "keys\\.xml:1:"),
        keyData("text").endsTheLookup().isGuardedShown().whereGuarded(oldTitle).isWarnedOf(
            "keys\\.xml:1:"),
        keyData("binary").endsTheLookup().isGuardedShown().whereGuarded(oldTitle).isWarnedOf(
            "keys\\.xml:1:"),
        keyData("of-another-root").isShown().where(oldTitle).isWarnedOf("keys\\.xml:1:"),
        keyData("without-the-key").isShown().where(oldTitle),
        keyData("cut-off-before-the-record").isShown().where(oldTitle).isWarnedOf("keys\\.xml:1:"),
        keyData("cut-off-in-the-record")
            .isShown()
            .where(newTitle)
            .whereGuarded(oldTitle)
            .isWarnedOf("keys\\.xml:1:"),
        keyData("cut-off-behind-the-record")
            .isShown()
            .where(newTitle)
            .whereGuarded(oldTitle)
            .isWarnedOf("keys\\.xml:1:"),
        keyData("with-the-key-twice")
            .isShown()
            .where(newTitle)
            .whereGuarded(oldTitle)
            .isWarnedOf("keys\\.xml:1:"),
        bad("with another attribute of 1 MB")
            .has(keyDataFile("<vidletkeys><key name=\"bad\" title=\"new\" a=\"" + large
                             + "\"/></vidletkeys>"))
            .isShown()
            .where(newTitle),
    };
}

using Groups = QMap<QString, BadCases>;

Groups allGroups()
{
    return {
        {u"wrong file"_s, wrongFiles()},
        {u"changed since the scan"_s, filesChangedSinceTheScan()},
        {u"without permission"_s, filesWithoutPermission()},
        {u"broken scene"_s, brokenScenes()},
        {u"missing scene"_s, missingScenes()},
        {u"translation"_s, brokenTranslations()},
        {u"key data"_s, brokenKeyData()},
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
    void guardedContent_doesNoHarm_data();
    void guardedContent_doesNoHarm();
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

void TestBadPackage::guardedContent_doesNoHarm_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("name");
    const Groups groups = allGroups();
    for (auto it = groups.cbegin(); it != groups.cend(); ++it) {
        for (const BadCase& badCase : it.value())
            QTest::addRow("%s: %s", qPrintable(it.key()), qPrintable(badCase.name))
                << it.key() << badCase.name;
    }
}

void TestBadPackage::guardedContent_doesNoHarm()
{
    QFETCH(QString, group);
    runGuardedRow(allGroups().value(group));
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
