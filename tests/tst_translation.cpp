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
#include <QTemporaryDir>
#include <QTranslator>

#include <cstdio>
#include <memory>

using namespace Vidlets;

namespace {

using Settings = QMap<int, QVariant>;

const QPoint kPointer(400, 300);

QString openKey()
{
    return QStringLiteral("open");
}

QString saveKey()
{
    return QStringLiteral("save");
}

QString shortcutName()
{
    return QStringLiteral("shortcut");
}

QString defaultText()
{
    return QStringLiteral("default");
}

QString tipsPackage()
{
    return QStringLiteral("tips.vidlets");
}

QString germanFile()
{
    return QStringLiteral("Vidlets_de_DE.qm");
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
    return QStringLiteral("<context><name>%1</name><message><source>%2</source>"
                          "<translation>%3</translation></message></context>\n")
        .arg(entry.context.toHtmlEscaped(), entry.source.toHtmlEscaped(),
             entry.translation.toHtmlEscaped());
}

/// Compiles @p entries with the tool that translators use, and puts the result in place of what
/// stands at @p filePath, as an installer would. What is loaded stays mapped: it must not be cut.
void compile(const QList<Entry>& entries, const QString& filePath)
{
    const QTemporaryDir directory;
    QFile source(directory.filePath(QStringLiteral("source.ts")));
    QString text = QStringLiteral("<!DOCTYPE TS>\n<TS version=\"2.1\" language=\"de_DE\">\n");
    for (const Entry& entry : entries)
        text += asXml(entry);
    text += QStringLiteral("</TS>\n");
    if (!source.open(QIODevice::WriteOnly) || source.write(text.toUtf8()) < 0)
        qFatal("Could not write %s", qPrintable(source.fileName()));
    source.close();

    QDir().mkpath(QFileInfo(filePath).path());
    const QString compiled = filePath + QStringLiteral(".new");
    QProcess process;
    process.start(QStringLiteral(LRELEASE),
                  {QStringLiteral("-silent"), source.fileName(), QStringLiteral("-qm"), compiled});
    if (!process.waitForFinished() || process.exitCode() != 0)
        qFatal("lrelease: %s", process.readAllStandardError().constData());
    if (std::rename(QFile::encodeName(compiled).constData(),
                    QFile::encodeName(filePath).constData()))
        qFatal("Could not replace %s", qPrintable(filePath));
}

/// A stage that translates into German unless it is told otherwise.
class TranslationStage : public PopupStage
{
public:
    explicit TranslationStage(const Settings& settings = {{ckLocale, QStringLiteral("de_DE")}})
        : PopupStage(settings)
    {
    }

    /// Writes a translation file that has @p translation for "Open" in the context "Tip".
    QString writeFile(const QString& relativePath, const QString& translation)
    {
        const QString filePath = packages.path(relativePath);
        compile({{QStringLiteral("Tip"), QStringLiteral("Open"), translation}}, filePath);
        return filePath;
    }

    /// Writes the one that belongs to the package "tips".
    QString writeFile(const QString& translation)
    {
        return writeFile(germanPath(), translation);
    }
    QString germanPath() const
    {
        return packages.path(tipsPackage() + QStringLiteral("/l10n/") + germanFile());
    }

    void showTip(const QString& key = openKey())
    {
        if (!manager->show(key, kPointer, &control))
            qFatal("The tip did not come up");
    }

    QString translated()
    {
        return manager->translateString(QStringLiteral("Open"), QStringLiteral("Tip"));
    }
};

/// A host that brings all to life by itself, with its translations left to the library.
template <typename Interface> class WholeHost
{
public:
    WholeHost()
        : index(&context)
    {
        packages.write(tipsPackage() + QStringLiteral("/ui/VidletUI.qml"),
                       "import QtQuick\n"
                       "Item {\n"
                       "    property string text: vidletView.translate(\"Open\", \"Tip\")\n"
                       "    width: 120\n"
                       "    height: 80\n"
                       "}\n");
        packages.writeTip(tipsPackage(), QStringLiteral("tips.xml"), openKey());
        compile({{QStringLiteral("Tip"), QStringLiteral("Open"), QStringLiteral("Öffnen")}},
                packages.path(tipsPackage() + QStringLiteral("/l10n/") + germanFile()));
        context.set(ckLocale, QStringLiteral("de_DE"));
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
        if (!interface->show(openKey(), kPointer, nullptr))
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

/// A host that translates by itself.
class TranslatingInterface : public VLInterface
{
public:
    using VLInterface::VLInterface;

    QString translateString(const QString& text, const QString& context) override
    {
        return context + QLatin1Char('/') + text;
    }
};

/// A stage whose popups can be detached; they are gone before the stage goes.
class AttributeStage : public PopupStage
{
public:
    using PopupStage::PopupStage;
    ~AttributeStage()
    {
        for (const QPointer<VLWidget>& popup : std::as_const(m_detached))
            delete popup;
    }

    /// Shows the tip for @p key with @p shortcut as the host's.
    void showTip(const QString& key, const QString& shortcut = QString())
    {
        interface.shortcutToGive = shortcut;
        if (!manager->show(key, kPointer, nullptr))
            qFatal("The tip did not come up");
    }

    /// The same in a window that is detached.
    VLWidget* detachTip(const QString& key, const QString& shortcut = QString())
    {
        showTip(key, shortcut);
        VLWidget* detached = popup();
        detached->view()->setReserved(true);
        m_detached += detached;
        index.requests.clear();
        return detached;
    }

    QString shortcutOf(const QString& key)
    {
        return manager->vidletAttribute(key, shortcutName(), defaultText());
    }

private:
    Q_DISABLE_COPY_MOVE(AttributeStage)

    QList<QPointer<VLWidget>> m_detached;
};

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

    // On the way from the scene
    void translate_looksIntoPackage_byDefault();
    void translate_isLeftToHost_whenOverridden();

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
    TranslationStage stage;
    stage.writeFile(QStringLiteral("Auf"));
    QCOMPARE(stage.translated(), QStringLiteral("Open"));
    QVERIFY(!stage.manager->widget());
}

void TestTranslation::translateString_returnsText_withoutView()
{
    TranslationStage stage;
    stage.popup()->setView(nullptr);
    QCOMPARE(stage.translated(), QStringLiteral("Open"));
}

void TestTranslation::translateString_isEmpty_withoutContentAndFile()
{
    TranslationStage stage;
    stage.writeFile(QStringLiteral("Auf"));
    QVERIFY(stage.popup());
    // No name of a file equals the name of no file, so the empty translator is asked.
    QCOMPARE(stage.translated(), QString());
}

void TestTranslation::translateString_returnsTextOnce_whenContentWentAfterLoad()
{
    TranslationStage stage;
    stage.writeFile(QStringLiteral("Auf"));
    stage.showTip();
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
    stage.view()->setContent(nullptr);
    QCOMPARE(stage.translated(), QStringLiteral("Open"));
    QCOMPARE(stage.translated(), QString());
}

void TestTranslation::translateString_isEmpty_whenContentWentAfterFailedLoad()
{
    TranslationStage stage;
    stage.showTip();
    QCOMPARE(stage.translated(), QStringLiteral("Open"));
    stage.view()->setContent(nullptr);
    QCOMPARE(stage.translated(), QString());
}

void TestTranslation::translateString_findsFileByStemAndLocale_data()
{
    QTest::addColumn<Settings>("settings");
    QTest::addColumn<QString>("fileName");
    const QString system = QStringLiteral("Vidlets_%1.qm").arg(QLocale::system().name());
    QTest::newRow("locale") << Settings{{ckLocale, QStringLiteral("fr_CA")}}
                            << QStringLiteral("Vidlets_fr_CA.qm");
    QTest::newRow("language alone")
        << Settings{{ckLocale, QStringLiteral("fr")}} << QStringLiteral("Vidlets_fr_FR.qm");
    QTest::newRow("locale before fallback") << Settings{{ckLocale, QStringLiteral("fr_CA")},
                                                        {ckFallbackLocale, QStringLiteral("it_IT")}}
                                            << QStringLiteral("Vidlets_fr_CA.qm");
    QTest::newRow("fallback") << Settings{{ckFallbackLocale, QStringLiteral("it_IT")}}
                              << QStringLiteral("Vidlets_it_IT.qm");
    QTest::newRow("empty locale") << Settings{{ckLocale, QStringLiteral("")},
                                              {ckFallbackLocale, QStringLiteral("it_IT")}}
                                  << QStringLiteral("Vidlets_it_IT.qm");
    QTest::newRow("system") << Settings() << system;
    QTest::newRow("stem") << Settings{{ckLocale, QStringLiteral("fr_CA")},
                                      {ckTranslationStem, QStringLiteral("Tips")}}
                          << QStringLiteral("Tips_fr_CA.qm");
    QTest::newRow("empty stem") << Settings{{ckLocale, QStringLiteral("fr_CA")},
                                            {ckTranslationStem, QStringLiteral("")}}
                                << QStringLiteral("_fr_CA.qm");
}

void TestTranslation::translateString_findsFileByStemAndLocale()
{
    QFETCH(Settings, settings);
    QFETCH(QString, fileName);
    TranslationStage stage(settings);
    const QString directory = tipsPackage() + QStringLiteral("/l10n/");
    const QStringList fileNames{
        QStringLiteral("Vidlets_fr_CA.qm"), QStringLiteral("Vidlets_fr_FR.qm"),
        QStringLiteral("Vidlets_fr.qm"),    QStringLiteral("Vidlets_it_IT.qm"),
        QStringLiteral("Vidlets.qm"),       QStringLiteral("Tips_fr_CA.qm"),
        QStringLiteral("_fr_CA.qm"),        fileName};
    for (const QString& name : fileNames)
        stage.writeFile(directory + name, name);
    stage.showTip();
    QCOMPARE(stage.translated(), fileName);
}

void TestTranslation::translateString_findsFileInCategory_data()
{
    QTest::addColumn<QByteArray>("ofRoot");
    QTest::addColumn<QByteArray>("ofTip");
    QTest::addColumn<QVariant>("setting");
    QTest::addColumn<QString>("directory");
    const QByteArray inRoot = "l10n_name=\"of-root\"";
    const QByteArray inTip = "l10n_name=\"of-tip\"";
    const QVariant setting(QStringLiteral("of-setting"));
    QTest::newRow("tip") << inRoot << inTip << setting << QStringLiteral("of-tip");
    QTest::newRow("parent") << inRoot << QByteArray() << setting << QStringLiteral("of-root");
    QTest::newRow("empty in the tip")
        << inRoot << QByteArray("l10n_name=\"\"") << setting << QStringLiteral("of-setting");
    QTest::newRow("setting") << QByteArray() << QByteArray() << setting
                             << QStringLiteral("of-setting");
    QTest::newRow("default") << QByteArray() << QByteArray() << QVariant(QStringLiteral("l10n"))
                             << QStringLiteral("l10n");
}

void TestTranslation::translateString_findsFileInCategory()
{
    QFETCH(QByteArray, ofRoot);
    QFETCH(QByteArray, ofTip);
    QFETCH(QVariant, setting);
    QFETCH(QString, directory);
    TranslationStage stage;
    if (directory != QStringLiteral("l10n"))
        stage.set(ckTranslationDirectory, setting);
    stage.packages.writeControlFile(tipsPackage(), QStringLiteral("more.xml"),
                                    "<vidlets " + ofRoot + ">\n<vidlet key=\"more\" " + ofTip
                                        + "/>\n</vidlets>\n");
    stage.rescan();
    const QStringList directories{QStringLiteral("of-tip"), QStringLiteral("of-root"),
                                  QStringLiteral("of-setting"), QStringLiteral("l10n")};
    for (const QString& name : directories)
        stage.writeFile(tipsPackage() + QLatin1Char('/') + name + QLatin1Char('/') + germanFile(),
                        name);
    stage.showTip(QStringLiteral("more"));
    QCOMPARE(stage.translated(), directory);
}

void TestTranslation::translateString_readsSettingsAnew()
{
    TranslationStage stage;
    stage.writeFile(QStringLiteral("Auf"));
    stage.writeFile(tipsPackage() + QStringLiteral("/l10n/Tips_de_DE.qm"), QStringLiteral("Los"));
    stage.writeFile(tipsPackage() + QStringLiteral("/texts/Tips_de_DE.qm"), QStringLiteral("Ja"));
    stage.showTip();
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
    stage.set(ckTranslationStem, QStringLiteral("Tips"));
    QCOMPARE(stage.translated(), QStringLiteral("Los"));
    stage.set(ckTranslationDirectory, QStringLiteral("texts"));
    QCOMPARE(stage.translated(), QStringLiteral("Ja"));
}

void TestTranslation::translateString_looksInContext()
{
    TranslationStage stage;
    const QString filePath = stage.germanPath();
    compile({{QStringLiteral("Tip"), QStringLiteral("Open"), QStringLiteral("Öffnen")},
             {QStringLiteral("State"), QStringLiteral("Open"), QStringLiteral("Offen")}},
            filePath);
    stage.showTip();
    const auto translate = [&](const QString& context) {
        return stage.manager->translateString(QStringLiteral("Open"), context);
    };
    QCOMPARE(translate(QStringLiteral("Tip")), QStringLiteral("Öffnen"));
    QCOMPARE(translate(QStringLiteral("State")), QStringLiteral("Offen"));
}

void TestTranslation::translateString_isEmpty_whenFileLacksText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("context");
    QTest::newRow("another text") << QStringLiteral("Close") << QStringLiteral("Tip");
    QTest::newRow("another context") << QStringLiteral("Open") << QStringLiteral("State");
    QTest::newRow("another case") << QStringLiteral("open") << QStringLiteral("Tip");
}

void TestTranslation::translateString_isEmpty_whenFileLacksText()
{
    QFETCH(QString, text);
    QFETCH(QString, context);
    TranslationStage stage;
    stage.writeFile(QStringLiteral("Auf"));
    stage.showTip();
    QCOMPARE(stage.manager->translateString(text, context), QString());
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
}

void TestTranslation::translateString_handsTextsOverInUtf8()
{
    TranslationStage stage;
    const QString filePath = stage.germanPath();
    const QString context = QStringLiteral("Größe");
    const QString text = QStringLiteral("Über 5 € – 大きい");
    const QString translation = QStringLiteral("More than 5 € – big 😀");
    compile({{context, text, translation}}, filePath);
    stage.showTip();
    QCOMPARE(stage.manager->translateString(text, context), translation);
}

void TestTranslation::translateString_loadsAnew_whenPackageChanges()
{
    TranslationStage stage;
    const QString other = QStringLiteral("other.vidlets");
    stage.packages.writeTip(other, QStringLiteral("tips.xml"), QStringLiteral("elsewhere"));
    stage.rescan();
    stage.writeFile(QStringLiteral("Auf"));
    stage.writeFile(other + QStringLiteral("/l10n/") + germanFile(), QStringLiteral("Los"));

    stage.showTip();
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
    stage.showTip(QStringLiteral("elsewhere"));
    QCOMPARE(stage.translated(), QStringLiteral("Los"));
    stage.showTip(saveKey());
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
}

void TestTranslation::translateString_loadsAnew_whenLocaleChanges()
{
    TranslationStage stage;
    stage.writeFile(QStringLiteral("Auf"));
    stage.writeFile(tipsPackage() + QStringLiteral("/l10n/Vidlets_fr_FR.qm"),
                    QStringLiteral("Ouvrir"));
    stage.showTip();
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
    stage.set(ckLocale, QStringLiteral("fr_FR"));
    QCOMPARE(stage.translated(), QStringLiteral("Ouvrir"));
    stage.set(ckLocale, QStringLiteral("it_IT"));
    QCOMPARE(stage.translated(), QStringLiteral("Open"));
    stage.set(ckLocale, QStringLiteral("de_DE"));
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
}

void TestTranslation::translateString_returnsText_whenFileIsMissing()
{
    TranslationStage stage;
    stage.showTip();
    QCOMPARE(stage.translated(), QStringLiteral("Open"));
    QCOMPARE(stage.translated(), QStringLiteral("Open"));
}

void TestTranslation::translateString_returnsText_whenFileIsNoTranslation()
{
    TranslationStage stage;
    stage.packages.write(tipsPackage() + QStringLiteral("/l10n/") + germanFile(), "no translation");
    stage.showTip();
    QCOMPARE(stage.translated(), QStringLiteral("Open"));
    stage.writeFile(QStringLiteral("Auf"));
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
}

void TestTranslation::translateString_triesAgain_whenLoadFailed()
{
    TranslationStage stage;
    stage.showTip();
    QCOMPARE(stage.translated(), QStringLiteral("Open"));
    stage.writeFile(QStringLiteral("Auf"));
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
}

void TestTranslation::translateString_keepsLoadedFile_whenItIsReplaced()
{
    TranslationStage stage;
    stage.writeFile(QStringLiteral("Auf"));
    stage.showTip();
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
    stage.writeFile(QStringLiteral("Los"));
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
}

void TestTranslation::translateString_keepsOneFileOnly()
{
    TranslationStage stage;
    stage.writeFile(QStringLiteral("Auf"));
    stage.writeFile(tipsPackage() + QStringLiteral("/l10n/Vidlets_fr_FR.qm"),
                    QStringLiteral("Ouvrir"));
    stage.showTip();
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
    stage.set(ckLocale, QStringLiteral("fr_FR"));
    QCOMPARE(stage.translated(), QStringLiteral("Ouvrir"));
    stage.writeFile(QStringLiteral("Los"));
    stage.set(ckLocale, QStringLiteral("de_DE"));
    QCOMPARE(stage.translated(), QStringLiteral("Los"));
}

void TestTranslation::translateString_forgetsLoadedFile_whenItIsRemoved()
{
    TranslationStage stage;
    const QString filePath = stage.writeFile(QStringLiteral("Auf"));
    stage.showTip();
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
    // The search for the file comes first, so what is loaded no longer counts.
    QVERIFY(QFile::remove(filePath));
    QCOMPARE(stage.translated(), QStringLiteral("Open"));
    stage.writeFile(QStringLiteral("Los"));
    QCOMPARE(stage.translated(), QStringLiteral("Los"));
}

void TestTranslation::translator_belongsToManagerAlone()
{
    TranslationStage stage;
    const auto translators = [&] { return stage.manager->findChildren<QTranslator*>(); };
    stage.writeFile(QStringLiteral("Auf"));
    stage.translated();
    QVERIFY(translators().isEmpty());
    stage.showTip();
    stage.translated();
    QCOMPARE(translators().size(), 1);
    const QPointer<QTranslator> translator = translators().first();
    QCOMPARE(translator->parent(), stage.manager.get());

    stage.set(ckLocale, QStringLiteral("fr_FR"));
    stage.translated();
    QCOMPARE(translators(), QList<QTranslator*>{translator});
    // The host's own texts are not its business.
    stage.set(ckLocale, QStringLiteral("de_DE"));
    QCOMPARE(stage.translated(), QStringLiteral("Auf"));
    QCOMPARE(QCoreApplication::translate("Tip", "Open"), QStringLiteral("Open"));

    stage.manager.reset();
    QVERIFY(!translator);
}

void TestTranslation::translate_looksIntoPackage_byDefault()
{
    WholeHost<VLInterface> host;
    VLView* view = host.showTip();
    QVERIFY(view);
    QVERIFY(view->rootObject());
    QCOMPARE(view->rootObject()->property("text").toString(), QStringLiteral("Öffnen"));
    QCOMPARE(view->translate(QStringLiteral("Open"), QStringLiteral("Tip")),
             QStringLiteral("Öffnen"));
    // As it comes, all the way.
    QCOMPARE(view->translate(QStringLiteral("Close"), QStringLiteral("Tip")), QString());
}

void TestTranslation::translate_isLeftToHost_whenOverridden()
{
    WholeHost<TranslatingInterface> host;
    VLView* view = host.showTip();
    QVERIFY(view);
    QVERIFY(view->rootObject());
    QCOMPARE(view->rootObject()->property("text").toString(), QStringLiteral("Tip/Open"));
    QCOMPARE(view->translate(QStringLiteral("Close"), QStringLiteral("Tip")),
             QStringLiteral("Tip/Close"));
    // The library is not asked in between.
    QVERIFY(view->manager()->findChildren<QTranslator*>().isEmpty());
    // Asked directly it answers itself.
    QCOMPARE(view->manager()->translateString(QStringLiteral("Open"), QStringLiteral("Tip")),
             QStringLiteral("Öffnen"));
}

void TestTranslation::vidletAttribute_readsElementOnShow_withoutRetrieval()
{
    AttributeStage stage;
    stage.showTip(openKey(), QStringLiteral("F3"));
    stage.index.requests.clear();
    QCOMPARE(stage.shortcutOf(openKey()), QStringLiteral("F3"));
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_readsElementOfHiddenPopup()
{
    AttributeStage stage;
    stage.showTip(openKey(), QStringLiteral("F3"));
    stage.popup()->hide();
    stage.index.requests.clear();
    QCOMPARE(stage.shortcutOf(openKey()), QStringLiteral("F3"));
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_returnsDefault_whenAttributeIsAbsent()
{
    AttributeStage stage;
    stage.showTip(openKey());
    stage.index.requests.clear();
    QCOMPARE(stage.manager->vidletAttribute(openKey(), QStringLiteral("none"), defaultText()),
             defaultText());
    QVERIFY(stage.index.requests.isEmpty());
    QCOMPARE(stage.manager->vidletAttribute(saveKey(), QStringLiteral("none"), defaultText()),
             defaultText());
}

void TestTranslation::vidletAttribute_returnsEmptyValue_whenAttributeIsEmpty()
{
    AttributeStage stage;
    stage.showTip(openKey());
    stage.view()->content()->setAttribute(shortcutName(), QString());
    QCOMPARE(stage.shortcutOf(openKey()), QString());
}

void TestTranslation::vidletAttribute_readsReservedWindow()
{
    AttributeStage stage;
    stage.detachTip(openKey(), QStringLiteral("F3"));
    QCOMPARE(stage.shortcutOf(openKey()), QStringLiteral("F3"));
    QVERIFY(stage.index.requests.isEmpty());

    stage.detachTip(saveKey());
    QCOMPARE(stage.shortcutOf(saveKey()), defaultText());
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_prefersPopupToReservedWindow()
{
    AttributeStage stage;
    stage.detachTip(openKey(), QStringLiteral("F3"));
    stage.showTip(openKey(), QStringLiteral("F4"));
    QCOMPARE(stage.shortcutOf(openKey()), QStringLiteral("F4"));

    // It ends the search also where it has no such attribute.
    stage.detachTip(saveKey(), QStringLiteral("F5"));
    stage.showTip(saveKey());
    QCOMPARE(stage.shortcutOf(saveKey()), defaultText());
}

void TestTranslation::vidletAttribute_endsAtFirstReservedWindowWithKey()
{
    AttributeStage stage;
    stage.detachTip(openKey(), QStringLiteral("F3"));
    stage.detachTip(openKey(), QStringLiteral("F4"));
    QCOMPARE(stage.shortcutOf(openKey()), QStringLiteral("F3"));

    stage.detachTip(saveKey());
    stage.detachTip(saveKey(), QStringLiteral("F5"));
    QCOMPARE(stage.shortcutOf(saveKey()), defaultText());
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_passesOverReservedWindowWithOtherKey()
{
    AttributeStage stage;
    stage.detachTip(saveKey(), QStringLiteral("F2"));
    stage.detachTip(openKey(), QStringLiteral("F3"));
    QCOMPARE(stage.shortcutOf(openKey()), QStringLiteral("F3"));
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_skipsDeadEntry()
{
    AttributeStage stage;
    VLWidget* first = stage.detachTip(openKey(), QStringLiteral("F3"));
    stage.detachTip(openKey(), QStringLiteral("F4"));
    VLWidget* last = stage.detachTip(saveKey(), QStringLiteral("F5"));
    delete first;
    delete last;
    QCOMPARE(stage.shortcutOf(openKey()), QStringLiteral("F4"));
    QVERIFY(stage.index.requests.isEmpty());
}

void TestTranslation::vidletAttribute_retrieves_whenOnlyEntryIsDead()
{
    AttributeStage stage;
    delete stage.detachTip(openKey(), QStringLiteral("F3"));
    QCOMPARE(stage.shortcutOf(openKey()), QStringLiteral("Ctrl+O"));
    QCOMPARE(stage.index.requests, QStringList{QStringLiteral("open@en_US")});
}

void TestTranslation::vidletAttribute_retrieves_whenKeyIsNotOnShow()
{
    AttributeStage stage;
    stage.showTip(saveKey(), QStringLiteral("F3"));
    const QPointer<VLXmlElement> content = stage.view()->content();
    stage.index.requests.clear();
    QCOMPARE(stage.shortcutOf(openKey()), QStringLiteral("Ctrl+O"));
    QCOMPARE(stage.index.requests, QStringList{QStringLiteral("open@en_US")});
    QCOMPARE(stage.view()->content(), content.data());
    QVERIFY(stage.popup()->isVisible());
}

void TestTranslation::vidletAttribute_retrieves_withoutPopup()
{
    AttributeStage stage;
    QCOMPARE(stage.shortcutOf(openKey()), QStringLiteral("Ctrl+O"));
    QVERIFY(!stage.manager->widget());
    // The host is asked for its shortcut by a show alone.
    QVERIFY(stage.interface.shortcutRequests.isEmpty());
}

void TestTranslation::vidletAttribute_retrievesInFallbackLocale()
{
    AttributeStage stage(
        {{ckLocale, QStringLiteral("de_DE")}, {ckFallbackLocale, QStringLiteral("fr_FR")}});
    stage.packages.writeControlFile(tipsPackage(), QStringLiteral("french.xml"),
                                    "<vidlets locale=\"fr_FR\">\n"
                                    "<vidlet key=\"french\" shortcut=\"Ctrl+F\"/>\n"
                                    "</vidlets>\n");
    stage.rescan();
    QCOMPARE(stage.shortcutOf(QStringLiteral("french")), QStringLiteral("Ctrl+F"));
    QCOMPARE(stage.index.requests,
             (QStringList{QStringLiteral("french@de_DE"), QStringLiteral("french@fr_FR")}));
}

void TestTranslation::vidletAttribute_returnsDefault_whenKeyIsUnknown()
{
    AttributeStage stage;
    stage.set(ckFallbackKey, openKey());
    QCOMPARE(stage.shortcutOf(QStringLiteral("unknown")), defaultText());
    // The fallback's content is for showing alone.
    QCOMPARE(stage.index.requests,
             (QStringList{QStringLiteral("unknown@en_US"), QStringLiteral("unknown@en_US")}));
}

void TestTranslation::vidletAttribute_deletesElementAlone_data()
{
    QTest::addColumn<bool>("hasAttribute");
    QTest::addColumn<QString>("value");
    QTest::newRow("with the attribute") << true << QStringLiteral("F3");
    QTest::newRow("without it") << false << defaultText();
}

void TestTranslation::vidletAttribute_deletesElementAlone()
{
    QFETCH(bool, hasAttribute);
    AttributeStage stage;
    const QPointer<VLXmlElement> root = new VLXmlElement;
    const QPointer<VLXmlElement> sibling = new VLXmlElement(root);
    const QPointer<VLXmlElement> element = PopupStage::newContent(openKey());
    element->setParent(root);
    if (hasAttribute)
        element->setAttribute(shortcutName(), QStringLiteral("F3"));
    stage.index.answer = [&](const QString& /*key*/) {
        return IndexAnswer{element, root, QStringLiteral("/"), 1};
    };

    QTEST(stage.shortcutOf(openKey()), "value");

    QVERIFY(!element);
    QVERIFY(root);
    QVERIFY(sibling);
}

void TestTranslation::vidletAttribute_leavesNoElementBehind()
{
    AttributeStage stage;
    const ObjectCensus census;
    QCOMPARE(stage.shortcutOf(openKey()), QStringLiteral("Ctrl+O"));
    const QList<VLXmlElement*> rest = census.living<VLXmlElement>();
    QCOMPARE(rest.size(), 1);
    QCOMPARE(rest.first()->getTagName(), QStringLiteral("vidlets"));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestTranslation>(argc, argv);
}

#include "tst_translation.moc"
