// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLSafeguards.h>

#include <QDesktopServices>
#include <QLoggingCategory>
#include <QSignalSpy>

#include <memory>

#include <VidletsHost/VLAccess.h>
#include <VidletsHost/VLHostInterface.h>
#include <VidletsHost/VLPreferences.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

/// Takes the URLs of one scheme in place of the desktop.
class UrlCatcher : public QObject
{
    Q_OBJECT

public:
    explicit UrlCatcher(const QString& scheme)
        : m_scheme(scheme)
    {
        QDesktopServices::setUrlHandler(scheme, this, "take");
    }
    ~UrlCatcher() override
    {
        QDesktopServices::unsetUrlHandler(m_scheme);
    }

    QList<QUrl> urls;

public Q_SLOTS:
    void take(const QUrl& url)
    {
        urls.append(url);
    }

private:
    Q_DISABLE_COPY_MOVE(UrlCatcher)

    QString m_scheme;
};

/// Counts how often it is asked for the access to its tips.
class CountingInterface : public VLHostInterface
{
public:
    using VLHostInterface::VLHostInterface;

    int accessesMade = 0;
    bool makesNone = false;

protected:
    VLAccess* createAccess() override
    {
        ++accessesMade;
        return makesNone ? nullptr : VLHostInterface::createAccess();
    }
};

/// Writes down what its handler is given.
class ListeningInterface : public VLHostInterface
{
public:
    using VLHostInterface::VLHostInterface;

    void handleMessage(VLMessageType type, const QString& message) override
    {
        heard.append(message);
        VLHostInterface::handleMessage(type, message);
    }

    QStringList heard;
};

/// Has logging rules in force during its life.
class Rules
{
public:
    explicit Rules(const QString& rules)
    {
        QLoggingCategory::setFilterRules(rules);
    }
    ~Rules()
    {
        QLoggingCategory::setFilterRules(QString());
    }

private:
    Q_DISABLE_COPY_MOVE(Rules)
};

/// Takes Qt's log during its life. Only one can exist at a time.
class LogCatcher
{
public:
    struct Entry
    {
        QtMsgType level;
        QByteArray category;
        QString text;
    };

    LogCatcher()
        : m_before(qInstallMessageHandler(&LogCatcher::take))
    {
        s_entries.clear();
    }
    ~LogCatcher()
    {
        qInstallMessageHandler(m_before);
    }

    static QList<Entry> entries()
    {
        return s_entries;
    }
    static QStringList lines()
    {
        QStringList result;
        for (const Entry& entry : std::as_const(s_entries))
            result += entry.text;
        return result;
    }

private:
    Q_DISABLE_COPY_MOVE(LogCatcher)

    static void take(QtMsgType level, const QMessageLogContext& context, const QString& text)
    {
        if (qstrcmp(context.category, "vidlets") == 0)
            s_entries.append({level, context.category, text});
    }

    static inline QList<Entry> s_entries;
    QtMessageHandler m_before;
};

} // namespace

class TestVLHostInterface : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    void constructor_turnsSafeguardsOn();
    void constructor_keepsWhatHostHasSet();
    void constructor_leavesFilterOfManagerOff();
    void constructor_leavesContextOfHostAlone();
    void manager_isThatOfInterface();
    void createAccess_isCalledOnce_byAccess();
    void createAccess_isCalledOnce_byEventLoop();
    void createAccess_mayMakeNone();
    void documentation_opensBelowBase_data();
    void documentation_opensBelowBase();
    void documentation_isNotOpened_withoutBase();
    void documentationBase_tellsScenesOfDocumentation();
    void preferences_keepTextScaleWithinLimits();

    void message_isLoggedAtItsLevel_data();
    void message_isLoggedAtItsLevel();
    void message_isRaised_whateverTheRules();
    void rules_raiseMessageLevel_data();
    void rules_raiseMessageLevel();
    void rules_leaveMessageLevelOfHost();
    void rulesOfEnvironment_bringMessagesOfScan();
    void messagesOfScan_areLoggedAtOnce_andRaisedByEventLoop();
    void messagesOfScan_reachHandlerOfHost();
    void warningOfScan_isSaidOnce();
    void translateString_givesTextForEmptyAnswer();
};

void TestVLHostInterface::constructor_turnsSafeguardsOn()
{
    VLContext expected;
    useSafeguards(expected);
    VLContext context;
    VLHostInterface interface(context, {});
    const QList<int> keys = expected.keys();
    for (const int key : keys)
        QCOMPARE(interface.context().get(key, QVariant()), expected.get(key, QVariant()));
}

void TestVLHostInterface::constructor_keepsWhatHostHasSet()
{
    VLContext context;
    context.set(ckGuardContent, false);
    context.set(ckClipMemoryLimit, 1000);
    context.set(ckStayDuration, 17);
    VLHostInterface interface(context, {});
    QCOMPARE(interface.context().get(ckGuardContent, true).toBool(), false);
    QCOMPARE(interface.context().get(ckClipMemoryLimit, 0).toInt(), 1000);
    QCOMPARE(interface.context().get(ckStayDuration, 0).toInt(), 17);
    QCOMPARE(interface.context().get(ckSteadyHover, false).toBool(), true);
}

void TestVLHostInterface::constructor_leavesFilterOfManagerOff()
{
    VLContext context;
    context.set(ckInstallEventFilter, true);
    VLHostInterface interface(context, {});
    QCOMPARE(interface.context().get(ckInstallEventFilter, true).toBool(), false);
}

void TestVLHostInterface::constructor_leavesContextOfHostAlone()
{
    VLContext context;
    context.set(ckStayDuration, 17);
    const VLHostInterface interface(context, {});
    QCOMPARE(context.keys(), QList<int>{ckStayDuration});
}

void TestVLHostInterface::manager_isThatOfInterface()
{
    VLContext context;
    VLHostInterface interface(context, {});
    QVERIFY(interface.manager());
    QCOMPARE(interface.manager()->interface(), &interface);
    QCOMPARE(&interface.manager()->context(), &interface.context());
}

void TestVLHostInterface::createAccess_isCalledOnce_byAccess()
{
    VLContext context;
    CountingInterface interface(context, {});
    QCOMPARE(interface.accessesMade, 0);
    VLAccess* access = interface.access();
    QVERIFY(access);
    QCoreApplication::processEvents();
    QCOMPARE(interface.access(), access);
    QCOMPARE(interface.accessesMade, 1);
}

void TestVLHostInterface::createAccess_isCalledOnce_byEventLoop()
{
    VLContext context;
    CountingInterface interface(context, {});
    QTRY_COMPARE(interface.accessesMade, 1);
    QVERIFY(interface.access());
    QCOMPARE(interface.accessesMade, 1);
}

void TestVLHostInterface::createAccess_mayMakeNone()
{
    VLContext context;
    CountingInterface interface(context, {});
    interface.makesNone = true;
    QVERIFY(!interface.access());
    QVERIFY(!interface.access());
    QCoreApplication::processEvents();
    QCOMPARE(interface.accessesMade, 1);
}

void TestVLHostInterface::documentation_opensBelowBase_data()
{
    QTest::addColumn<QUrl>("base");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QUrl>("expected");
    const QUrl base(u"caught://docs/guide/"_s);
    QTest::newRow("name") << base << u"brush"_s << QUrl(u"caught://docs/guide/brush"_s);
    QTest::newRow("name with place in it")
        << base << u"brush.html#size"_s << QUrl(u"caught://docs/guide/brush.html#size"_s);
    QTest::newRow("base without slash")
        << QUrl(u"caught://docs/guide"_s) << u"brush"_s << QUrl(u"caught://docs/guide/brush"_s);
    QTest::newRow("way out") << base << u".."_s << QUrl();
}

void TestVLHostInterface::documentation_opensBelowBase()
{
    QFETCH(const QUrl, base);
    QFETCH(const QString, name);
    QFETCH(const QUrl, expected);
    UrlCatcher catcher(u"caught"_s);
    VLContext context;
    VLHostInterface interface(context, {});
    interface.setDocumentationBase(base);
    QCOMPARE(interface.manager()->openExternalResource(name), expected.isValid());
    QCOMPARE(catcher.urls, expected.isValid() ? QList<QUrl>{expected} : QList<QUrl>{});
}

void TestVLHostInterface::documentation_isNotOpened_withoutBase()
{
    VLContext context;
    VLHostInterface interface(context, {});
    QVERIFY(!interface.manager()->openExternalResource(u"brush"_s));
}

void TestVLHostInterface::documentationBase_tellsScenesOfDocumentation()
{
    VLContext context;
    VLHostInterface interface(context, {});
    QVERIFY(!interface.context().contains(ckDocumentationEnabled));
    interface.setDocumentationBase(QUrl(u"https://docs.example.com"_s));
    QCOMPARE(interface.context().get(ckDocumentationEnabled, false).toBool(), true);

    interface.setDocumentationBase(QUrl());
    QCOMPARE(interface.context().get(ckDocumentationEnabled, true).toBool(), false);
    interface.setDocumentationBase(QUrl(u"https://docs.example.com"_s));
    QCOMPARE(interface.context().get(ckDocumentationEnabled, false).toBool(), true);

    interface.context().set(ckDocumentationEnabled, false);
    interface.setDocumentationBase(QUrl(u"https://docs.example.com/2"_s));
    QCOMPARE(interface.context().get(ckDocumentationEnabled, true).toBool(), false);
}

void TestVLHostInterface::preferences_keepTextScaleWithinLimits()
{
    VLContext context;
    VLHostInterface interface(context, {});
    VLPreferences* preferences = interface.preferences();
    QSignalSpy spy(preferences, &VLPreferences::textScaleChanged);
    preferences->setTextScale(2.0);
    QCOMPARE(preferences->textScale(), 2.0);
    QCOMPARE(spy.count(), 1);
    preferences->setTextScale(100.0);
    QCOMPARE(preferences->textScale(), 4.0);
    preferences->setTextScale(0.0);
    QCOMPARE(preferences->textScale(), 0.5);
}

void TestVLHostInterface::message_isLoggedAtItsLevel_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QtMsgType>("level");
    QTest::newRow("error") << int(VLMessageError) << QtCriticalMsg;
    QTest::newRow("warning") << int(VLMessageWarning) << QtWarningMsg;
    QTest::newRow("between") << 250 << QtInfoMsg;
    QTest::newRow("information") << int(VLMessageInformation) << QtInfoMsg;
    QTest::newRow("debug") << int(VLMessageDebug) << QtDebugMsg;
}

void TestVLHostInterface::message_isLoggedAtItsLevel()
{
    QFETCH(const int, type);
    QFETCH(const QtMsgType, level);
    const Rules rules(u"vidlets.debug=true\nvidlets.info=true"_s);
    VLContext context;
    VLHostInterface interface(context, {});
    const LogCatcher log;
    interface.manager()->handleMessage(static_cast<VLMessageType>(type), u"hello \"you\""_s);
    QCOMPARE(log.lines(), QStringList{u"hello \"you\""_s});
    QCOMPARE(log.entries().constFirst().level, level);
    QCOMPARE(log.entries().constFirst().category, "vidlets"_ba);
}

void TestVLHostInterface::message_isRaised_whateverTheRules()
{
    const Rules rules(u"vidlets=false"_s);
    VLContext context;
    context.set(ckMessageLevel, int(VLMessageInformation));
    VLHostInterface interface(context, {});
    QCoreApplication::processEvents();
    QSignalSpy spy(&interface, &VLHostInterface::messageRaised);
    const LogCatcher log;
    interface.manager()->handleMessage(VLMessageWarning, u"first"_s);
    interface.manager()->handleMessage(VLMessageInformation, u"second"_s);
    interface.manager()->handleMessage(VLMessageDebug, u"third"_s);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy.at(0).at(0).value<VLMessageType>(), VLMessageWarning);
    QCOMPARE(spy.at(0).at(1).toString(), u"first"_s);
    QCOMPARE(spy.at(1).at(0).value<VLMessageType>(), VLMessageInformation);
}

void TestVLHostInterface::rules_raiseMessageLevel_data()
{
    QTest::addColumn<QString>("rules");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("none") << QString() << QVariant();
    QTest::newRow("info") << u"vidlets.info=true"_s << QVariant(int(VLMessageInformation));
    QTest::newRow("debug") << u"vidlets.debug=true"_s << QVariant(int(VLMessageDebug));
    QTest::newRow("quiet") << u"vidlets.warning=false"_s << QVariant();
}

void TestVLHostInterface::rules_raiseMessageLevel()
{
    QFETCH(const QString, rules);
    QFETCH(const QVariant, expected);
    const Rules active(rules);
    VLContext context;
    const VLHostInterface interface(context, {});
    QCOMPARE(interface.context().get(ckMessageLevel, QVariant()), expected);
}

void TestVLHostInterface::rules_leaveMessageLevelOfHost()
{
    const Rules rules(u"vidlets.debug=true"_s);
    VLContext context;
    context.set(ckMessageLevel, int(VLMessageError));
    const VLHostInterface interface(context, {});
    QCOMPARE(interface.context().get(ckMessageLevel, QVariant()).toInt(), int(VLMessageError));
}

void TestVLHostInterface::rulesOfEnvironment_bringMessagesOfScan()
{
    qputenv("QT_LOGGING_RULES", "vidlets.info=true");
    const ChildResult loud = runInChildProcess(u"scan"_s);
    qunsetenv("QT_LOGGING_RULES");
    const ChildResult quiet = runInChildProcess(u"scan"_s);
    QCOMPARE(loud.exitCode, 0);
    QCOMPARE(quiet.exitCode, 0);
    QVERIFY2(loud.standardError.contains("vidlets: Indexed packages in "),
             loud.standardError.constData());
    QVERIFY2(!quiet.standardError.contains("vidlets: "), quiet.standardError.constData());
}

void TestVLHostInterface::messagesOfScan_areLoggedAtOnce_andRaisedByEventLoop()
{
    const Rules rules(u"vidlets.info=true"_s);
    const PackageBuilder packages;
    VLContext context;
    LogCatcher log;
    VLHostInterface interface(context, {packages.dataPath()});
    const QStringList logged = log.lines();
    QVERIFY(logged.constLast().startsWith(u"Indexed packages in "_s));
    QSignalSpy spy(&interface, &VLHostInterface::messageRaised);
    QTRY_COMPARE(spy.count(), logged.size());
    for (qsizetype i = 0; i < logged.size(); ++i)
        QCOMPARE(spy.at(i).at(1).toString(), logged.at(i));
    // Not once more.
    QCOMPARE(log.lines(), logged);
}

void TestVLHostInterface::messagesOfScan_reachHandlerOfHost()
{
    VLContext context;
    context.set(ckMessageLevel, int(VLMessageInformation));
    ListeningInterface interface(context, {});
    QTRY_VERIFY(!interface.heard.isEmpty());
    QVERIFY(interface.heard.constLast().startsWith(u"Indexed packages in "_s));
}

void TestVLHostInterface::warningOfScan_isSaidOnce()
{
    const Rules rules(u"vidlets.warning=true"_s);
    const PackageBuilder packages;
    VLContext context;
    const LogCatcher log;
    ListeningInterface interface(context, {packages.path(u"missing"_s)});
    QTRY_COMPARE(interface.heard.size(), 1);
    // The event loop has nothing more to say.
    QCoreApplication::processEvents();
    QCOMPARE(interface.heard.size(), 1);
    QVERIFY(interface.heard.constFirst().contains(u"not a directory"_s));
    QCOMPARE(log.lines(), interface.heard);
}

void TestVLHostInterface::translateString_givesTextForEmptyAnswer()
{
    VLContext context;
    VLHostInterface interface(context, {});
    const PackageBuilder packages;
    // Without content on show there is no file to be loaded, and the answer is empty.
    VLManager* manager = interface.manager();
    QVERIFY(!manager->show(u"nothing"_s, QPoint(), nullptr));
    QVERIFY(manager->widget());
    QCOMPARE(manager->translateString(u"Brush"_s, u"Tools"_s), QString());
    QCOMPARE(interface.translateString(u"Brush"_s, u"Tools"_s), u"Brush"_s);
}

int TestVLHostInterface::runChild(const QString& name)
{
    if (name != "scan"_L1)
        return VidletsTest::runChild(name);
    PackageBuilder packages;
    packages.packageRoot(u"tips.vidlets"_s);
    VLContext context;
    const VLHostInterface interface(context, {packages.dataPath()});
    return EXIT_SUCCESS;
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLHostInterface>(argc, argv);
}

#include "tst_vlhostinterface.moc"
