// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ObjectCensus.h"
#include "PopupStage.h"
#include "VidletsTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QQuickItem>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTranslator>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

using Settings = QMap<int, QVariant>;

QString openKey()
{
    return u"open"_s;
}

QString saveKey()
{
    return u"save"_s;
}

QString shortcutName()
{
    return u"shortcut"_s;
}

QString defaultText()
{
    return u"default"_s;
}

QString tipsPackage()
{
    return u"tips.vidlets"_s;
}

QString germanFile()
{
    return u"Vidlets_de_DE.qm"_s;
}

/// One entry of a translation file.
struct Entry
{
    QString context;
    QString source;
    QString translation;
};

QString asXml(const Entry& entry)
{
    return u"<context><name>%1</name><message><source>%2</source>"
           "<translation>%3</translation></message></context>\n"_s.arg(
               entry.context.toHtmlEscaped(), entry.source.toHtmlEscaped(),
               entry.translation.toHtmlEscaped());
}

/// Compiles @p entries with the tool that translators use, and puts the result in place of what
/// stands at @p filePath, as an installer would. What is loaded stays mapped: it must not be cut.
void compile(const QList<Entry>& entries, const QString& filePath, const QStringList& options = {},
             const QString& dependency = QString())
{
    const QTemporaryDir directory;
    QFile source(directory.filePath(u"source.ts"_s));
    QString text = u"<!DOCTYPE TS>\n<TS version=\"2.1\" language=\"de_DE\">\n"_s;
    if (!dependency.isEmpty())
        text += u"<dependencies><dependency catalog=\"%1\"/></dependencies>\n"_s.arg(dependency);
    for (const Entry& entry : entries)
        text += asXml(entry);
    text += u"</TS>\n"_s;
    if (!source.open(QIODevice::WriteOnly) || source.write(text.toUtf8()) < 0)
        qFatal("Could not write %s", qPrintable(source.fileName()));
    source.close();

    QDir().mkpath(QFileInfo(filePath).path());
    const QString compiled = filePath + u".new"_s;
    QProcess process;
    process.start(QStringLiteral(LRELEASE),
                  QStringList{u"-silent"_s} + options
                      + QStringList{source.fileName(), u"-qm"_s, compiled});
    if (!process.waitForFinished() || process.exitCode() != 0)
        qFatal("lrelease: %s", process.readAllStandardError().constData());
    if (std::rename(QFile::encodeName(compiled).constData(),
                    QFile::encodeName(filePath).constData()))
        qFatal("Could not replace %s", qPrintable(filePath));
}

/// Settings to translate into German.
Settings german()
{
    return {{ckLocale, u"de_DE"_s}};
}

/// Writes a translation file that has @p translation for "Open" in the context "Tip".
QString writeFile(const PopupStage& stage, const QString& relativePath, const QString& translation)
{
    const QString filePath = stage.packages.path(relativePath);
    compile({{u"Tip"_s, u"Open"_s, translation}}, filePath);
    return filePath;
}

QString germanPath()
{
    return tipsPackage() + u"/l10n/"_s + germanFile();
}

/// Writes the one that belongs to the package "tips".
QString writeFile(const PopupStage& stage, const QString& translation)
{
    return writeFile(stage, germanPath(), translation);
}

QString translated(const PopupStage& stage)
{
    return stage.manager->translateString(u"Open"_s, u"Tip"_s);
}

/// A host that brings all to life by itself, with its translations left to the library.
template <typename Interface> class WholeHost
{
public:
    WholeHost()
        : index(&context)
    {
        packages.write(tipsPackage() + u"/ui/VidletUI.qml"_s,
                       "import QtQuick\n"
                       "Item {\n"
                       "    property string text: vidletView.translate(\"Open\", \"Tip\")\n"
                       "    width: 120\n"
                       "    height: 80\n"
                       "}\n");
        packages.writeTip(tipsPackage(), u"tips.xml"_s, openKey());
        compile({{u"Tip"_s, u"Open"_s, u"Öffnen"_s}}, packages.path(germanPath()));
        context.set(ckLocale, u"de_DE"_s);
        interface = std::make_unique<Interface>(context, QStringList{packages.dataPath()}, &index);
    }
    ~WholeHost()
    {
        interface.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// Shows the tip. Gives its view, or null.
    VLView* showTip()
    {
        if (!interface->show(openKey(), PopupStage::pointer(), nullptr))
            return nullptr;
        const QWidgetList widgets = QApplication::topLevelWidgets();
        for (QWidget* widget : widgets) {
            if (auto* popup = qobject_cast<VLWidget*>(widget))
                return popup->view();
        }
        return nullptr;
    }

    PackageBuilder packages;
    VLContext context;
    RecordingIndex index;
    std::unique_ptr<Interface> interface;

private:
    Q_DISABLE_COPY_MOVE(WholeHost)
};

/// Entries in contexts enough for one to share its place in the table with another.
QList<Entry> manyEntries()
{
    constexpr int kContexts = 40;
    QList<Entry> entries{{u"Tip"_s, u"Open"_s, u"Auf"_s}};
    for (int i = 0; i < kContexts; ++i) {
        entries.append({u"Context%1"_s.arg(i), u"Open"_s, u"Auf %1"_s.arg(i)});
        entries.append({u"Context%1"_s.arg(i), u"Save"_s, u"Sichern %1"_s.arg(i)});
    }
    return entries;
}

Settings guardedGerman()
{
    return {{ckLocale, u"de_DE"_s}, {ckGuardContent, true}};
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Could not read %s", qPrintable(path));
    return file.readAll();
}

/// Has the manager translate by a file with @p content, and forget it again.
void translateBy(PopupStage& stage, const QByteArray& content)
{
    stage.packages.write(germanPath(), content);
    const QList<Entry> entries = manyEntries();
    for (const Entry& entry : entries)
        stage.manager->translateString(entry.source, entry.context);
    stage.manager->translateString(u"Close"_s, u"None"_s);
    QFile::remove(stage.packages.path(germanPath()));
    QCOMPARE(translated(stage), u"Open"_s);
}

/// A host that translates by itself.
class TranslatingInterface : public VLInterface
{
public:
    using VLInterface::VLInterface;

    QString translateString(const QString& text, const QString& context) override
    {
        return context + u'/' + text;
    }
};

/// Shows the tip for @p key with @p shortcut as the host's.
void showTip(PopupStage& stage, const QString& key, const QString& shortcut = QString())
{
    stage.interface.shortcutToGive = shortcut;
    stage.showTip(key, nullptr);
}

/// The same in a window that is detached.
VLWidget* detachTip(PopupStage& stage, const QString& key, const QString& shortcut = QString())
{
    stage.interface.shortcutToGive = shortcut;
    VLWidget* detached = stage.detach(key, nullptr);
    stage.index.requests.clear();
    return detached;
}

QString shortcutOf(const PopupStage& stage, const QString& key)
{
    return stage.manager->vidletAttribute(key, shortcutName(), defaultText());
}

} // namespace

class TestTranslation : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    // Where there is nothing to look at
    void translateString_returnsText_withoutPopup();
    void translateString_returnsText_withoutView();
    void translateString_isEmpty_withoutContentAndFile();
    void translateString_returnsTextOnce_whenContentWentAfterLoad();
    void translateString_isEmpty_whenContentWentAfterFailedLoad();

    // The file
    void translateString_findsFileByStemAndLocale_data();
    void translateString_findsFileByStemAndLocale();
    void translateString_findsFileInCategory_data();
    void translateString_findsFileInCategory();
    void translateString_readsSettingsAnew();

    // The text
    void translateString_looksInContext();
    void translateString_isEmpty_whenFileLacksText_data();
    void translateString_isEmpty_whenFileLacksText();
    void translateString_handsTextsOverInUtf8();

    // The cache
    void translateString_loadsAnew_whenPackageChanges();
    void translateString_loadsAnew_whenLocaleChanges();
    void translateString_returnsText_whenFileIsMissing();
    void translateString_returnsText_whenFileIsNoTranslation();
    void translateString_triesAgain_whenLoadFailed();
    void translateString_keepsLoadedFile_whenItIsReplaced();
    void translateString_keepsOneFileOnly();
    void translateString_forgetsLoadedFile_whenItIsRemoved();
    void translator_belongsToManagerAlone();

    // Guarded files
    void guardedFile_givesWhatAnyGives_data();
    void guardedFile_givesWhatAnyGives();
    void guardedFile_loadsNoDependencies();
    void guardedFile_isKept_whenItIsCutWhileLoaded();
    void guardedFile_isReadFromMemory_whenGuardIsTurnedOnLater();
    void guardedFile_neverEndsTheProcess_whenCutOff();
    void guardedFile_neverEndsTheProcess_whenGarbled();

    // On the way from the scene
    void translate_looksIntoPackage_byDefault();
    void translate_isLeftToHost_whenOverridden();
    void translate_looksIntoOwnPackage_whenPinnedTipsAreTended_data();
    void translate_looksIntoOwnPackage_whenPinnedTipsAreTended();

    // Attributes on show
    void vidletAttribute_readsElementOnShow_withoutRetrieval();
    void vidletAttribute_readsElementOfHiddenPopup();
    void vidletAttribute_returnsDefault_whenAttributeIsAbsent();
    void vidletAttribute_returnsEmptyValue_whenAttributeIsEmpty();
    void vidletAttribute_readsReservedWindow();
    void vidletAttribute_prefersPopupToReservedWindow();
    void vidletAttribute_endsAtFirstReservedWindowWithKey();
    void vidletAttribute_passesOverReservedWindowWithOtherKey();
    void vidletAttribute_skipsDeadEntry();
    void vidletAttribute_retrieves_whenOnlyEntryIsDead();

    // Attributes from disk
    void vidletAttribute_retrieves_whenKeyIsNotOnShow();
    void vidletAttribute_retrieves_withoutPopup();
    void vidletAttribute_retrievesInFallbackLocale();
    void vidletAttribute_returnsDefault_whenKeyIsUnknown();
    void vidletAttribute_deletesElementAlone_data();
    void vidletAttribute_deletesElementAlone();
    void vidletAttribute_leavesNoElementBehind();
};

void TestTranslation::translateString_returnsText_withoutPopup()
{
    PopupStage stage(german());
    writeFile(stage, u"Auf"_s);
    QCOMPARE(translated(stage), u"Open"_s);
    QVERIFY(!stage.manager->widget());
}

void TestTranslation::translateString_returnsText_withoutView()
{
    PopupStage stage(german());
    stage.popup()->setView(nullptr);
    QCOMPARE(translated(stage), u"Open"_s);
}

void TestTranslation::translateString_isEmpty_withoutContentAndFile()
{
    PopupStage stage(german());
    writeFile(stage, u"Auf"_s);
    QVERIFY(stage.popup());
    // No name of a file equals the name of no file, so the empty translator is asked.
    QCOMPARE(translated(stage), QString());
}

void TestTranslation::translateString_returnsTextOnce_whenContentWentAfterLoad()
{
    PopupStage stage(german());
    writeFile(stage, u"Auf"_s);
    stage.showTip();
    QCOMPARE(translated(stage), u"Auf"_s);
    stage.view()->setContent(nullptr);
    QCOMPARE(translated(stage), u"Open"_s);
    QCOMPARE(translated(stage), QString());
}

void TestTranslation::translateString_isEmpty_whenContentWentAfterFailedLoad()
{
    PopupStage stage(german());
    stage.showTip();
    QCOMPARE(translated(stage), u"Open"_s);
    stage.view()->setContent(nullptr);
    QCOMPARE(translated(stage), QString());
}

void TestTranslation::translateString_findsFileByStemAndLocale_data()
{
    QTest::addColumn<Settings>("settings");
    QTest::addColumn<QString>("fileName");
    const QString system = u"Vidlets_%1.qm"_s.arg(QLocale::system().name());
    QTest::newRow("locale") << Settings{{ckLocale, u"fr_CA"_s}} << u"Vidlets_fr_CA.qm"_s;
    QTest::newRow("language alone") << Settings{{ckLocale, u"fr"_s}} << u"Vidlets_fr_FR.qm"_s;
    QTest::newRow("locale before fallback")
        << Settings{{ckLocale, u"fr_CA"_s}, {ckFallbackLocale, u"it_IT"_s}}
        << u"Vidlets_fr_CA.qm"_s;
    QTest::newRow("fallback") << Settings{{ckFallbackLocale, u"it_IT"_s}} << u"Vidlets_it_IT.qm"_s;
    QTest::newRow("empty locale") << Settings{{ckLocale, u""_s}, {ckFallbackLocale, u"it_IT"_s}}
                                  << u"Vidlets_it_IT.qm"_s;
    QTest::newRow("system") << Settings() << system;
    QTest::newRow("stem") << Settings{{ckLocale, u"fr_CA"_s}, {ckTranslationStem, u"Tips"_s}}
                          << u"Tips_fr_CA.qm"_s;
    QTest::newRow("empty stem") << Settings{{ckLocale, u"fr_CA"_s}, {ckTranslationStem, u""_s}}
                                << u"_fr_CA.qm"_s;
}

void TestTranslation::translateString_findsFileByStemAndLocale()
{
    QFETCH(Settings, settings);
    QFETCH(QString, fileName);
    PopupStage stage(settings);
    const QString directory = tipsPackage() + u"/l10n/"_s;
    const QStringList fileNames{
        u"Vidlets_fr_CA.qm"_s, u"Vidlets_fr_FR.qm"_s, u"Vidlets_fr.qm"_s, u"Vidlets_it_IT.qm"_s,
        u"Vidlets.qm"_s,       u"Tips_fr_CA.qm"_s,    u"_fr_CA.qm"_s,     fileName};
    for (const QString& name : fileNames)
        writeFile(stage, directory + name, name);
    stage.showTip();
    QCOMPARE(translated(stage), fileName);
}

void TestTranslation::translateString_findsFileInCategory_data()
{
    QTest::addColumn<QByteArray>("ofRoot");
    QTest::addColumn<QByteArray>("ofTip");
    QTest::addColumn<QVariant>("setting");
    QTest::addColumn<QString>("directory");
    const QByteArray inRoot = "l10n_name=\"of-root\"";
    const QByteArray inTip = "l10n_name=\"of-tip\"";
    const QVariant setting(u"of-setting"_s);
    QTest::newRow("tip") << inRoot << inTip << setting << u"of-tip"_s;
    QTest::newRow("parent") << inRoot << QByteArray() << setting << u"of-root"_s;
    QTest::newRow("empty in the tip")
        << inRoot << QByteArray("l10n_name=\"\"") << setting << u"of-setting"_s;
    QTest::newRow("setting") << QByteArray() << QByteArray() << setting << u"of-setting"_s;
    QTest::newRow("default") << QByteArray() << QByteArray() << QVariant(u"l10n"_s) << u"l10n"_s;
}

void TestTranslation::translateString_findsFileInCategory()
{
    QFETCH(QByteArray, ofRoot);
    QFETCH(QByteArray, ofTip);
    QFETCH(QVariant, setting);
    QFETCH(QString, directory);
    PopupStage stage(german());
    if (directory != u"l10n"_s)
        stage.set(ckTranslationDirectory, setting);
    stage.packages.writeControlFile(tipsPackage(), u"more.xml"_s,
                                    "<vidlets " + ofRoot + ">\n<vidlet key=\"more\" " + ofTip
                                        + "/>\n</vidlets>\n");
    stage.rescan();
    const QStringList directories{u"of-tip"_s, u"of-root"_s, u"of-setting"_s, u"l10n"_s};
    for (const QString& name : directories)
        writeFile(stage, tipsPackage() + u'/' + name + u'/' + germanFile(), name);
    stage.showTip(u"more"_s);
    QCOMPARE(translated(stage), directory);
}

void TestTranslation::translateString_readsSettingsAnew()
{
    PopupStage stage(german());
    writeFile(stage, u"Auf"_s);
    writeFile(stage, tipsPackage() + u"/l10n/Tips_de_DE.qm"_s, u"Los"_s);
    writeFile(stage, tipsPackage() + u"/texts/Tips_de_DE.qm"_s, u"Ja"_s);
    stage.showTip();
    QCOMPARE(translated(stage), u"Auf"_s);
    stage.set(ckTranslationStem, u"Tips"_s);
    QCOMPARE(translated(stage), u"Los"_s);
    stage.set(ckTranslationDirectory, u"texts"_s);
    QCOMPARE(translated(stage), u"Ja"_s);
}

void TestTranslation::translateString_looksInContext()
{
    PopupStage stage(german());
    const QString filePath = stage.packages.path(germanPath());
    compile({{u"Tip"_s, u"Open"_s, u"Öffnen"_s}, {u"State"_s, u"Open"_s, u"Offen"_s}}, filePath);
    stage.showTip();
    const auto translate = [&](const QString& context) {
        return stage.manager->translateString(u"Open"_s, context);
    };
    QCOMPARE(translate(u"Tip"_s), u"Öffnen"_s);
    QCOMPARE(translate(u"State"_s), u"Offen"_s);
}

void TestTranslation::translateString_isEmpty_whenFileLacksText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("context");
    QTest::newRow("another text") << u"Close"_s << u"Tip"_s;
    QTest::newRow("another context") << u"Open"_s << u"State"_s;
    QTest::newRow("another case") << u"open"_s << u"Tip"_s;
}

void TestTranslation::translateString_isEmpty_whenFileLacksText()
{
    QFETCH(QString, text);
    QFETCH(QString, context);
    PopupStage stage(german());
    writeFile(stage, u"Auf"_s);
    stage.showTip();
    QCOMPARE(stage.manager->translateString(text, context), QString());
    QCOMPARE(translated(stage), u"Auf"_s);
}

void TestTranslation::translateString_handsTextsOverInUtf8()
{
    PopupStage stage(german());
    const QString filePath = stage.packages.path(germanPath());
    const QString context = u"Größe"_s;
    const QString text = u"Über 5 € – 大きい"_s;
    const QString translation = u"More than 5 € – big 😀"_s;
    compile({{context, text, translation}}, filePath);
    stage.showTip();
    QCOMPARE(stage.manager->translateString(text, context), translation);
}

void TestTranslation::translateString_loadsAnew_whenPackageChanges()
{
    PopupStage stage(german());
    const QString other = u"other.vidlets"_s;
    stage.packages.writeTip(other, u"tips.xml"_s, u"elsewhere"_s);
    stage.rescan();
    writeFile(stage, u"Auf"_s);
    writeFile(stage, other + u"/l10n/"_s + germanFile(), u"Los"_s);

    stage.showTip();
    QCOMPARE(translated(stage), u"Auf"_s);
    stage.showTip(u"elsewhere"_s);
    QCOMPARE(translated(stage), u"Los"_s);
    stage.showTip(saveKey());
    QCOMPARE(translated(stage), u"Auf"_s);
}

void TestTranslation::translateString_loadsAnew_whenLocaleChanges()
{
    PopupStage stage(german());
    writeFile(stage, u"Auf"_s);
    writeFile(stage, tipsPackage() + u"/l10n/Vidlets_fr_FR.qm"_s, u"Ouvrir"_s);
    stage.showTip();
    QCOMPARE(translated(stage), u"Auf"_s);
    stage.set(ckLocale, u"fr_FR"_s);
    QCOMPARE(translated(stage), u"Ouvrir"_s);
    stage.set(ckLocale, u"it_IT"_s);
    QCOMPARE(translated(stage), u"Open"_s);
    stage.set(ckLocale, u"de_DE"_s);
    QCOMPARE(translated(stage), u"Auf"_s);
}

void TestTranslation::translateString_returnsText_whenFileIsMissing()
{
    PopupStage stage(german());
    stage.showTip();
    QCOMPARE(translated(stage), u"Open"_s);
    QCOMPARE(translated(stage), u"Open"_s);
}

void TestTranslation::translateString_returnsText_whenFileIsNoTranslation()
{
    PopupStage stage(german());
    stage.packages.write(tipsPackage() + u"/l10n/"_s + germanFile(), "no translation");
    stage.showTip();
    QCOMPARE(translated(stage), u"Open"_s);
    writeFile(stage, u"Auf"_s);
    QCOMPARE(translated(stage), u"Auf"_s);
}

void TestTranslation::translateString_triesAgain_whenLoadFailed()
{
    PopupStage stage(german());
    stage.showTip();
    QCOMPARE(translated(stage), u"Open"_s);
    writeFile(stage, u"Auf"_s);
    QCOMPARE(translated(stage), u"Auf"_s);
}

void TestTranslation::translateString_keepsLoadedFile_whenItIsReplaced()
{
    PopupStage stage(german());
    writeFile(stage, u"Auf"_s);
    stage.showTip();
    QCOMPARE(translated(stage), u"Auf"_s);
    writeFile(stage, u"Los"_s);
    QCOMPARE(translated(stage), u"Auf"_s);
}

void TestTranslation::translateString_keepsOneFileOnly()
{
    PopupStage stage(german());
    writeFile(stage, u"Auf"_s);
    writeFile(stage, tipsPackage() + u"/l10n/Vidlets_fr_FR.qm"_s, u"Ouvrir"_s);
    stage.showTip();
    QCOMPARE(translated(stage), u"Auf"_s);
    stage.set(ckLocale, u"fr_FR"_s);
    QCOMPARE(translated(stage), u"Ouvrir"_s);
    writeFile(stage, u"Los"_s);
    stage.set(ckLocale, u"de_DE"_s);
    QCOMPARE(translated(stage), u"Los"_s);
}

void TestTranslation::translateString_forgetsLoadedFile_whenItIsRemoved()
{
    PopupStage stage(german());
    const QString filePath = writeFile(stage, u"Auf"_s);
    stage.showTip();
    QCOMPARE(translated(stage), u"Auf"_s);
    // The search for the file comes first, so what is loaded no longer counts.
    QVERIFY(QFile::remove(filePath));
    QCOMPARE(translated(stage), u"Open"_s);
    writeFile(stage, u"Los"_s);
    QCOMPARE(translated(stage), u"Los"_s);
}

void TestTranslation::translator_belongsToManagerAlone()
{
    PopupStage stage(german());
    const auto translators = [&] { return stage.manager->findChildren<QTranslator*>(); };
    writeFile(stage, u"Auf"_s);
    translated(stage);
    QVERIFY(translators().isEmpty());
    stage.showTip();
    translated(stage);
    QCOMPARE(translators().size(), 1);
    const QPointer<QTranslator> translator = translators().first();
    QCOMPARE(translator->parent(), stage.manager.get());

    stage.set(ckLocale, u"fr_FR"_s);
    translated(stage);
    QCOMPARE(translators(), QList<QTranslator*>{translator});
    // The host's own texts are not its business.
    stage.set(ckLocale, u"de_DE"_s);
    QCOMPARE(translated(stage), u"Auf"_s);
    QCOMPARE(QCoreApplication::translate("Tip", "Open"), u"Open"_s);

    stage.manager.reset();
    QVERIFY(!translator);
}

void TestTranslation::guardedFile_givesWhatAnyGives_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("plain") << QStringList();
    QTest::newRow("compressed") << QStringList{u"-compress"_s};
}

void TestTranslation::guardedFile_givesWhatAnyGives()
{
    QFETCH(QStringList, options);
    PopupStage stage(guardedGerman());
    compile(manyEntries(), stage.packages.path(germanPath()), options);
    stage.showTip();
    const QList<Entry> entries = manyEntries();
    for (const Entry& entry : entries)
        QCOMPARE(stage.manager->translateString(entry.source, entry.context), entry.translation);
    QCOMPARE(stage.manager->translateString(u"Save"_s, u"Tip"_s), QString());
    QVERIFY(stage.interface.messages(VLMessageWarning).isEmpty());
}

void TestTranslation::guardedFile_loadsNoDependencies()
{
    for (const bool isGuarded : {false, true}) {
        Settings settings = guardedGerman();
        settings.insert(ckGuardContent, isGuarded);
        PopupStage stage(settings);
        writeFile(stage, tipsPackage() + u"/l10n/other.qm"_s, u"Auf"_s);
        compile({{u"Tip"_s, u"Save"_s, u"Sichern"_s}}, stage.packages.path(germanPath()), {},
                stage.packages.path(tipsPackage() + u"/l10n/other"_s));
        stage.showTip();
        for (int i = 0; i < 2; ++i)
            QCOMPARE(translated(stage), isGuarded ? QString() : u"Auf"_s);
        QCOMPARE(stage.manager->translateString(u"Save"_s, u"Tip"_s), u"Sichern"_s);
        QCOMPARE(stage.interface.messages(VLMessageWarning).size(), isGuarded ? 1 : 0);
    }
}

void TestTranslation::guardedFile_isKept_whenItIsCutWhileLoaded()
{
    PopupStage stage(guardedGerman());
    writeFile(stage, u"Auf"_s);
    stage.showTip();
    QCOMPARE(translated(stage), u"Auf"_s);
    // A mapped one would end the process here.
    QVERIFY(QFile::resize(stage.packages.path(germanPath()), 0));
    QCOMPARE(translated(stage), u"Auf"_s);
}

void TestTranslation::guardedFile_isReadFromMemory_whenGuardIsTurnedOnLater()
{
    PopupStage stage({{ckLocale, u"de_DE"_s}, {ckGuardContent, false}});
    writeFile(stage, u"Auf"_s);
    stage.showTip();
    QCOMPARE(translated(stage), u"Auf"_s);
    stage.set(ckGuardContent, true);
    QCOMPARE(translated(stage), u"Auf"_s);
    QVERIFY(QFile::resize(stage.packages.path(germanPath()), 0));
    QCOMPARE(translated(stage), u"Auf"_s);
}

void TestTranslation::guardedFile_neverEndsTheProcess_whenCutOff()
{
    PopupStage stage(guardedGerman());
    compile(manyEntries(), stage.packages.path(germanPath()), {u"-compress"_s});
    const QByteArray good = contentOf(stage.packages.path(germanPath()));
    stage.showTip();
    constexpr qsizetype kStep = 29;
    for (qsizetype size = 0; size < good.size(); size += kStep) {
        translateBy(stage, good.left(size));
        if (QTest::currentTestFailed())
            return;
    }
}

void TestTranslation::guardedFile_neverEndsTheProcess_whenGarbled()
{
    PopupStage stage(guardedGerman());
    compile(manyEntries(), stage.packages.path(germanPath()), {u"-compress"_s});
    const QByteArray good = contentOf(stage.packages.path(germanPath()));
    stage.showTip();
    // The same bytes in each run.
    QRandomGenerator random(1);
    constexpr int kFiles = 120;
    constexpr int kMaxBytes = 6;
    for (int i = 0; i < kFiles; ++i) {
        QByteArray garbled = good;
        for (int count = random.bounded(1, kMaxBytes); count > 0; --count) {
            const auto place =
                static_cast<qsizetype>(random.bounded(static_cast<int>(good.size())));
            garbled[place] = static_cast<char>(random.bounded(256));
        }
        translateBy(stage, garbled);
        if (QTest::currentTestFailed())
            return;
    }
}

void TestTranslation::translate_looksIntoPackage_byDefault()
{
    WholeHost<VLInterface> host;
    VLView* view = host.showTip();
    QVERIFY(view);
    QVERIFY(view->rootObject());
    QCOMPARE(view->rootObject()->property("text").toString(), u"Öffnen"_s);
    QCOMPARE(view->translate(u"Open"_s, u"Tip"_s), u"Öffnen"_s);
    // As it comes, all the way.
    QCOMPARE(view->translate(u"Close"_s, u"Tip"_s), QString());
}

void TestTranslation::translate_looksIntoOwnPackage_whenPinnedTipsAreTended_data()
{
    QTest::addColumn<bool>("tended");
    QTest::addColumn<QString>("ofPinned");
    QTest::newRow("by default") << false << u"Los"_s;
    QTest::newRow("tended") << true << u"Öffnen"_s;
}

void TestTranslation::translate_looksIntoOwnPackage_whenPinnedTipsAreTended()
{
    QFETCH(const bool, tended);
    QFETCH(const QString, ofPinned);
    WholeHost<VLInterface> host;
    const QString other = u"other.vidlets"_s;
    host.packages.writeTip(other, u"tips.xml"_s, saveKey());
    compile({{u"Tip"_s, u"Open"_s, u"Los"_s}},
            host.packages.path(other + u"/l10n/"_s + germanFile()));
    VLView* pinned = host.showTip();
    QVERIFY(pinned);
    VLManager* manager = pinned->manager();
    manager->context().set(ckTendPinned, tended);
    manager->loadDataPath({host.packages.dataPath()});
    const std::unique_ptr<VLWidget> window(manager->widget());
    pinned->setReserved(true);

    QVERIFY(host.interface->show(saveKey(), PopupStage::pointer(), nullptr));

    QCOMPARE(pinned->translate(u"Open"_s, u"Tip"_s), ofPinned);
    // The tip on show has its own, and so has a question from elsewhere.
    QCOMPARE(manager->widget()->view()->translate(u"Open"_s, u"Tip"_s), u"Los"_s);
    QCOMPARE(manager->translateString(u"Open"_s, u"Tip"_s), u"Los"_s);
}

void TestTranslation::translate_isLeftToHost_whenOverridden()
{
    WholeHost<TranslatingInterface> host;
    VLView* view = host.showTip();
    QVERIFY(view);
    QVERIFY(view->rootObject());
    QCOMPARE(view->rootObject()->property("text").toString(), u"Tip/Open"_s);
    QCOMPARE(view->translate(u"Close"_s, u"Tip"_s), u"Tip/Close"_s);
    // The library is not asked in between.
    QVERIFY(view->manager()->findChildren<QTranslator*>().isEmpty());
    // Asked directly it answers itself.
    QCOMPARE(view->manager()->translateString(u"Open"_s, u"Tip"_s), u"Öffnen"_s);
}

void TestTranslation::vidletAttribute_readsElementOnShow_withoutRetrieval()
{
    PopupStage stage;
    showTip(stage, openKey(), u"F3"_s);
    stage.index.requests.clear();
    QCOMPARE(shortcutOf(stage, openKey()), u"F3"_s);
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_readsElementOfHiddenPopup()
{
    PopupStage stage;
    showTip(stage, openKey(), u"F3"_s);
    stage.popup()->hide();
    stage.index.requests.clear();
    QCOMPARE(shortcutOf(stage, openKey()), u"F3"_s);
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_returnsDefault_whenAttributeIsAbsent()
{
    PopupStage stage;
    showTip(stage, openKey());
    stage.index.requests.clear();
    QCOMPARE(stage.manager->vidletAttribute(openKey(), u"none"_s, defaultText()), defaultText());
    QVERIFY(stage.index.requests.isEmpty());
    QCOMPARE(stage.manager->vidletAttribute(saveKey(), u"none"_s, defaultText()), defaultText());
}

void TestTranslation::vidletAttribute_returnsEmptyValue_whenAttributeIsEmpty()
{
    PopupStage stage;
    showTip(stage, openKey());
    stage.view()->content()->setAttribute(shortcutName(), QString());
    QCOMPARE(shortcutOf(stage, openKey()), QString());
}

void TestTranslation::vidletAttribute_readsReservedWindow()
{
    PopupStage stage;
    detachTip(stage, openKey(), u"F3"_s);
    QCOMPARE(shortcutOf(stage, openKey()), u"F3"_s);
    QVERIFY(stage.index.requests.isEmpty());

    detachTip(stage, saveKey());
    QCOMPARE(shortcutOf(stage, saveKey()), defaultText());
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_prefersPopupToReservedWindow()
{
    PopupStage stage;
    detachTip(stage, openKey(), u"F3"_s);
    showTip(stage, openKey(), u"F4"_s);
    QCOMPARE(shortcutOf(stage, openKey()), u"F4"_s);

    // It ends the search also where it has no such attribute.
    detachTip(stage, saveKey(), u"F5"_s);
    showTip(stage, saveKey());
    QCOMPARE(shortcutOf(stage, saveKey()), defaultText());
}

void TestTranslation::vidletAttribute_endsAtFirstReservedWindowWithKey()
{
    PopupStage stage;
    detachTip(stage, openKey(), u"F3"_s);
    detachTip(stage, openKey(), u"F4"_s);
    QCOMPARE(shortcutOf(stage, openKey()), u"F3"_s);

    detachTip(stage, saveKey());
    detachTip(stage, saveKey(), u"F5"_s);
    QCOMPARE(shortcutOf(stage, saveKey()), defaultText());
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_passesOverReservedWindowWithOtherKey()
{
    PopupStage stage;
    detachTip(stage, saveKey(), u"F2"_s);
    detachTip(stage, openKey(), u"F3"_s);
    QCOMPARE(shortcutOf(stage, openKey()), u"F3"_s);
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_skipsDeadEntry()
{
    PopupStage stage;
    VLWidget* first = detachTip(stage, openKey(), u"F3"_s);
    detachTip(stage, openKey(), u"F4"_s);
    VLWidget* last = detachTip(stage, saveKey(), u"F5"_s);
    delete first;
    delete last;
    QCOMPARE(shortcutOf(stage, openKey()), u"F4"_s);
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_retrieves_whenOnlyEntryIsDead()
{
    PopupStage stage;
    delete detachTip(stage, openKey(), u"F3"_s);
    QCOMPARE(shortcutOf(stage, openKey()), u"Ctrl+O"_s);
    QCOMPARE(stage.index.requests, QStringList{u"open@en_US"_s});
}

void TestTranslation::vidletAttribute_retrieves_whenKeyIsNotOnShow()
{
    PopupStage stage;
    showTip(stage, saveKey(), u"F3"_s);
    const QPointer<VLXmlElement> content = stage.view()->content();
    stage.index.requests.clear();
    QCOMPARE(shortcutOf(stage, openKey()), u"Ctrl+O"_s);
    QCOMPARE(stage.index.requests, QStringList{u"open@en_US"_s});
    QCOMPARE(stage.view()->content(), content.data());
    QVERIFY(stage.popup()->isVisible());
}

void TestTranslation::vidletAttribute_retrieves_withoutPopup()
{
    PopupStage stage;
    QCOMPARE(shortcutOf(stage, openKey()), u"Ctrl+O"_s);
    QVERIFY(!stage.manager->widget());
    // The host is asked for its shortcut by a show alone.
    QVERIFY(stage.interface.shortcutRequests.isEmpty());
}

void TestTranslation::vidletAttribute_retrievesInFallbackLocale()
{
    PopupStage stage({{ckLocale, u"de_DE"_s}, {ckFallbackLocale, u"fr_FR"_s}});
    stage.packages.writeControlFile(tipsPackage(), u"french.xml"_s,
                                    "<vidlets locale=\"fr_FR\">\n"
                                    "<vidlet key=\"french\" shortcut=\"Ctrl+F\"/>\n"
                                    "</vidlets>\n");
    stage.rescan();
    QCOMPARE(shortcutOf(stage, u"french"_s), u"Ctrl+F"_s);
    QCOMPARE(stage.index.requests, (QStringList{u"french@de_DE"_s, u"french@fr_FR"_s}));
}

void TestTranslation::vidletAttribute_returnsDefault_whenKeyIsUnknown()
{
    PopupStage stage;
    stage.set(ckFallbackKey, openKey());
    QCOMPARE(shortcutOf(stage, u"unknown"_s), defaultText());
    // The fallback's content is for showing alone.
    QCOMPARE(stage.index.requests, (QStringList{u"unknown@en_US"_s, u"unknown@en_US"_s}));
}

void TestTranslation::vidletAttribute_deletesElementAlone_data()
{
    QTest::addColumn<bool>("hasAttribute");
    QTest::addColumn<QString>("value");
    QTest::newRow("with the attribute") << true << u"F3"_s;
    QTest::newRow("without it") << false << defaultText();
}

void TestTranslation::vidletAttribute_deletesElementAlone()
{
    QFETCH(bool, hasAttribute);
    PopupStage stage;
    const QPointer<VLXmlElement> root = new VLXmlElement;
    const QPointer<VLXmlElement> sibling = new VLXmlElement(root);
    const QPointer<VLXmlElement> element = PopupStage::newContent(openKey());
    element->setParent(root);
    if (hasAttribute)
        element->setAttribute(shortcutName(), u"F3"_s);
    stage.index.answer = [&](const QString& /*key*/) {
        return IndexAnswer{element, root, u"/"_s, 1};
    };

    QTEST(shortcutOf(stage, openKey()), "value");

    QVERIFY(!element);
    QVERIFY(root);
    QVERIFY(sibling);
}

void TestTranslation::vidletAttribute_leavesNoElementBehind()
{
    PopupStage stage;
    const ObjectCensus census;
    QCOMPARE(shortcutOf(stage, openKey()), u"Ctrl+O"_s);
    const QList<VLXmlElement*> rest = census.living<VLXmlElement>();
    QCOMPARE(rest.size(), 1);
    QCOMPARE(rest.first()->getTagName(), u"vidlets"_s);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestTranslation>(argc, argv);
}

#include "tst_translation.moc"
