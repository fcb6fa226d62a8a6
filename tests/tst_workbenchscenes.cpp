// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "HostStage.h"
#include "PopupStage.h"
#include "VidletsTest.h"
#include <Vidlets/VLManager.h>

#include <QAccessible>
#include <QDir>
#include <QImage>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <memory>

#include <VidletsHost/VLPreferences.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 15000;
/// A clip's own word for playing.
constexpr int kPlaying = 2;
/// WCAG 2.2 asks for this much between text and ground at its highest level.
constexpr double kHighContrast = 7.0;

class OpeningInterface final : public VLHostInterface
{
public:
    using VLHostInterface::VLHostInterface;

    bool openExternalResource(VLExternalResourceType /*type*/, const QString& resource) override
    {
        opened += resource;
        return true;
    }

    QStringList opened;
};

/// A host with the package of the workbench.
class SceneStage
{
public:
    explicit SceneStage(const QString& locale = u"en_US"_s, bool isSimple = false)
    {
        context.set(ckDocumentationEnabled, true);
        context.set(ckLocale, locale);
        context.set(ckSimpleTooltips, isSimple);
        // Wherever the pointer is.
        context.set(ckStayDuration, 600000);
        context.set(ckShowDuration, 0);
        context.set(ckHideDuration, 0);
        interface = std::make_unique<OpeningInterface>(
            context, QStringList{QStringLiteral(WORKBENCH_PACKAGES)});
        interface->setGlobalProperty(u"brushColor"_s, u"#1f4e8c"_s);
        button.setGeometry(100, 60, 100, 40);
        if (!bringUp(&button))
            qFatal("The window did not come up");
    }

    ~SceneStage()
    {
        interface.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    Q_DISABLE_COPY_MOVE(SceneStage)

    QQuickItem* show(const QString& key)
    {
        if (!interface->show(key, QPoint(150, 80), &button))
            qFatal("There is no tip for %s", qPrintable(key));
        // The popup around it may be said to be covered, which the scene inside knows better.
        if (!QTest::qWaitForWindowExposed(view()))
            qFatal("The tip for %s did not come up", qPrintable(key));
        QCoreApplication::processEvents();
        return view()->rootObject();
    }

    /// Gives the keyboard to the tip.
    bool activate()
    {
        // A request that comes while the window manager is busy with another window gets lost.
        bool isActive = false;
        for (int i = 0; i < 20 && !isActive; ++i) {
            view()->requestActivate();
            isActive =
                QTest::qWaitFor([this] { return QGuiApplication::focusWindow() == view(); }, 500);
        }
        return isActive;
    }

    VLWidget* tip()
    {
        return interface->manager()->widget();
    }

    VLView* view()
    {
        return tip()->view();
    }

    VLContext context;
    std::unique_ptr<OpeningInterface> interface;
    QPushButton button;
};

void collect(QQuickItem* parent, QList<QQuickItem*>& items)
{
    const QList<QQuickItem*> children = parent->childItems();
    for (QQuickItem* child : children) {
        if (!child->isVisible())
            continue;
        items += child;
        collect(child, items);
    }
}

/// All that can be seen of @p scene.
QList<QQuickItem*> itemsOf(QQuickItem* scene)
{
    QList<QQuickItem*> result;
    collect(scene, result);
    return result;
}

/// The item that plays, which no scene has for a child of its own.
QQuickItem* clipIn(QQuickItem* scene)
{
    const QList<QQuickItem*> items = itemsOf(scene);
    for (QQuickItem* item : items) {
        if (item->objectName() == "clip"_L1)
            return item;
    }
    qFatal("There is no clip");
}

/// Whether the player around @p clip knows all of it.
bool isDecoded(const QQuickItem* clip)
{
    return clip->parentItem()->parentItem()->property("isDecoded").toBool();
}

bool isText(const QQuickItem* item)
{
    return item->inherits("QQuickText");
}

QList<QQuickItem*> tabStopsOf(QQuickItem* scene)
{
    QList<QQuickItem*> result = itemsOf(scene);
    result.removeIf([](const QQuickItem* item) { return !item->activeFocusOnTab(); });
    return result;
}

/// Whether @p item takes clicks.
bool isClickable(const QQuickItem* item)
{
    if (item->inherits("QQuickMouseArea"))
        return true;
    const QObjectList& parts = item->children();
    return std::any_of(parts.cbegin(), parts.cend(),
                       [](const QObject* part) { return part->inherits("QQuickTapHandler"); });
}

QQuickItem* scrolledPageAround(QQuickItem* item)
{
    QQuickItem* above = item;
    while (above && !above->inherits("QQuickFlickable"))
        above = above->parentItem();
    return above;
}

/// The item over the link in the text of the tip for an ellipse, which is its fourth stop of Tab.
QQuickItem* linkInTextOf(QQuickItem* scene)
{
    return tabStopsOf(scene).at(3);
}

/// The link that the text around @p anchor has at a point of it.
QString linkAt(const QQuickItem* anchor, const QPointF& point)
{
    QString link;
    QMetaObject::invokeMethod(anchor->parentItem(), "linkAt", Q_RETURN_ARG(QString, link),
                              Q_ARG(qreal, point.x()), Q_ARG(qreal, point.y()));
    return link;
}

bool isOverItsLink(const QQuickItem* anchor)
{
    const QRectF place(anchor->position(), anchor->size());
    const auto isLink = [anchor](const QPointF& point) {
        return linkAt(anchor, point) == "shapes"_L1;
    };
    const QPointF middle = place.center();
    constexpr qreal kInside = 1.0;
    return isLink({place.left() + kInside, middle.y()})
        && isLink({place.right() - kInside, middle.y()})
        && isLink({middle.x(), place.top() + kInside})
        && isLink({middle.x(), place.bottom() - kInside})
        && !isLink({place.left() - kInside, middle.y()})
        && !isLink({place.right() + kInside, middle.y()})
        && !isLink({middle.x(), place.top() - kInside})
        && !isLink({middle.x(), place.bottom() + kInside});
}

bool isSearched(const QQuickItem* anchor)
{
    return anchor->parentItem()->property("isSearched").toBool();
}

/// What of the text in @p item is lost; empty where all can be read.
QString lossIn(QQuickItem* item, QQuickItem* scene)
{
    const QString text = item->property("text").toString();
    if (item->property("truncated").toBool())
        return text + u" is cut off"_s;
    if (item->property("contentWidth").toReal() > item->width() + 1.0)
        return text + u" is too wide"_s;
    if (item->property("contentHeight").toReal() > item->height() + 1.0)
        return text + u" is too high"_s;
    // What scrolls has room for all of its content.
    QQuickItem* page = scrolledPageAround(item);
    QQuickItem* frame = page ? page->property("contentItem").value<QQuickItem*>() : scene;
    const QRectF bounds(0, 0, frame->width() > 0 ? frame->width() : scene->width(),
                        page ? page->property("contentHeight").toReal() : scene->height());
    const QRectF place = item->mapRectToItem(frame, QRectF(0, 0, item->width(), item->height()));
    if (!bounds.adjusted(-1, -1, 1, 1).contains(place))
        return text + u" lies outside"_s;
    return QString();
}

double linear(double value)
{
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
        + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other)
{
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

void keepPicture(const QImage& picture, const QString& name)
{
    QDir().mkpath(QStringLiteral(PICTURES));
    picture.save(QStringLiteral(PICTURES) + u'/' + name + u".png"_s);
}

} // namespace

/// The scenes of the workbench obey what the user prefers, and are all there for the keyboard and
/// for screen readers.
class TestWorkbenchScenes : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void module_isThere();
    void textScale_losesNoText_data();
    void textScale_losesNoText();
    void textScale_makesTextLarger();
    void textScale_acts_whileTipIsUp();
    void reducedMotion_letsNoClipPlayByItself();
    void reducedMotion_stopsClip_whileTipIsUp();
    void highContrast_partsTextFromGround();
    void interactiveItems_haveRoleAndName_data();
    void interactiveItems_haveRoleAndName();
    void clickableItems_haveRoleAndName();
    void clip_hasTitleForName_withoutCaption();
    void linkInText_liesWhereTextHasIt_data();
    void linkInText_liesWhereTextHasIt();
    void linkInText_isNotSearched_beforeTipIsUp();
    void linkInText_isSearched_atFocus();
    void interactiveItems_showFocus();
    void tab_reachesAllInteractiveItems();
    void returnKey_opensLinks();
    void keys_playAndMoveClip();
    void returnKey_pins();
    void focus_scrollsToWhatHasIt();
};

/// Without it the scenes work as well, and would pass for ones whose user prefers nothing.
void TestWorkbenchScenes::module_isThere()
{
    QQmlEngine engine;
    QQmlComponent reader(&engine);
    reader.setData("import QtQml; import com.larkspan.vidlets.host 1.0;"
                   " QtObject { property real textScale: VidletPreferences.textScale }",
                   QUrl());
    const std::unique_ptr<QObject> object(reader.create());
    QVERIFY2(object, qPrintable(reader.errorString()));
    // Those of the first interface.
    const SceneStage stage;
    stage.interface->preferences()->setTextScale(1.5);
    QTRY_COMPARE(object->property("textScale").toReal(), 1.5);
}

void TestWorkbenchScenes::textScale_losesNoText_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<bool>("isSimple");
    QTest::addColumn<qreal>("scale");
    for (const auto& locale : {u"en_US"_s, u"de_DE"_s, u"ar_EG"_s}) {
        for (const bool isSimple : {false, true}) {
            for (const qreal scale : {1.0, 2.0})
                QTest::addRow("%s %s %.1f", qPrintable(locale), isSimple ? "simple" : "rich", scale)
                    << locale << isSimple << scale;
        }
    }
}

void TestWorkbenchScenes::textScale_losesNoText()
{
    QFETCH(const QString, locale);
    QFETCH(const bool, isSimple);
    QFETCH(const qreal, scale);
    SceneStage stage(locale, isSimple);
    stage.interface->preferences()->setTextScale(scale);
    const QStringList keys = stage.interface->manager()->keys();
    QVERIFY(keys.size() > 5);
    for (const QString& key : keys) {
        QQuickItem* scene = stage.show(key);
        QTRY_COMPARE(stage.tip()->width(), int(scene->width()) + 1);
        int texts = 0;
        const QList<QQuickItem*> items = itemsOf(scene);
        for (QQuickItem* item : items) {
            if (!isText(item) || item->property("text").toString().isEmpty())
                continue;
            ++texts;
            const QString loss = lossIn(item, scene);
            QVERIFY2(loss.isEmpty(), qPrintable(key + u": "_s + loss));
        }
        QVERIFY(texts > 0);
        // Nothing reaches beyond the screen.
        QVERIFY(scene->width() <= stage.tip()->screen()->availableSize().width());
        QVERIFY(scene->height() <= stage.tip()->screen()->availableSize().height());
        keepPicture(
            stage.view()->grabWindow(),
            u"%1-%2-%3-%4"_s.arg(key, locale, isSimple ? u"simple"_s : u"rich"_s).arg(scale));
        stage.interface->hideTip();
    }
}

void TestWorkbenchScenes::textScale_makesTextLarger()
{
    QList<QImage> pictures;
    QList<int> sizes;
    for (const qreal scale : {1.0, 2.0}) {
        SceneStage stage;
        stage.interface->preferences()->setTextScale(scale);
        QQuickItem* scene = stage.show(u"tool.line"_s);
        int largest = 0;
        const QList<QQuickItem*> items = itemsOf(scene);
        for (const QQuickItem* item : items) {
            if (isText(item))
                largest = std::max(largest, item->property("font").value<QFont>().pixelSize());
        }
        sizes += largest;
        pictures += stage.view()->grabWindow();
    }
    QVERIFY(sizes.at(0) > 0);
    QVERIFY(sizes.at(1) >= 2 * sizes.at(0) - 1);
    QVERIFY(pictures.at(1).width() > pictures.at(0).width());
    QVERIFY(pictures.at(1).height() > pictures.at(0).height());
}

void TestWorkbenchScenes::textScale_acts_whileTipIsUp()
{
    SceneStage stage;
    const QQuickItem* scene = stage.show(u"tool.line"_s);
    const qreal before = scene->height();
    stage.interface->preferences()->setTextScale(2.0);
    QTRY_VERIFY(scene->height() > before);
    QTRY_COMPARE(stage.tip()->height(), int(scene->height()) + 1);
}

void TestWorkbenchScenes::reducedMotion_letsNoClipPlayByItself()
{
    SceneStage stage;
    stage.interface->preferences()->setReducedMotion(true);
    QQuickItem* scene = stage.show(u"tool.pen"_s);
    QQuickItem* clip = clipIn(scene);
    QTRY_VERIFY_WITH_TIMEOUT(isDecoded(clip), kPatienceMs);
    QVERIFY(clip->property("state").toInt() != kPlaying);
    QCOMPARE(clip->property("progress").toReal(), 0.0);
    // Again, in the scene that stays alive.
    stage.interface->hideTip();
    clip = clipIn(stage.show(u"tool.pen"_s));
    QTRY_VERIFY_WITH_TIMEOUT(isDecoded(clip), kPatienceMs);
    QVERIFY(clip->property("state").toInt() != kPlaying);
    keepPicture(stage.view()->grabWindow(), u"still"_s);
}

void TestWorkbenchScenes::reducedMotion_stopsClip_whileTipIsUp()
{
    SceneStage stage;
    QQuickItem* scene = stage.show(u"tool.pen"_s);
    QQuickItem* clip = clipIn(scene);
    QTRY_COMPARE_WITH_TIMEOUT(clip->property("state").toInt(), kPlaying, kPatienceMs);
    stage.interface->preferences()->setReducedMotion(true);
    QTRY_VERIFY(clip->property("state").toInt() != kPlaying);
}

void TestWorkbenchScenes::highContrast_partsTextFromGround()
{
    SceneStage stage;
    stage.interface->preferences()->setHighContrast(true);
    QQuickItem* scene = stage.show(u"tool.ellipse"_s);
    const QImage picture = stage.view()->grabWindow();
    const QColor ground = picture.pixelColor(picture.width() / 2, 3);
    QVERIFY(ground == Qt::white || ground == Qt::black);
    keepPicture(picture, u"contrast"_s);
    const QList<QQuickItem*> items = itemsOf(scene);
    int texts = 0;
    for (const QQuickItem* item : items) {
        if (!isText(item))
            continue;
        ++texts;
        QVERIFY(contrast(item->property("color").value<QColor>(), ground) >= kHighContrast);
        QVERIFY(contrast(item->property("linkColor").value<QColor>(), ground) >= kHighContrast);
    }
    QVERIFY(texts > 3);
}

void TestWorkbenchScenes::interactiveItems_haveRoleAndName_data()
{
    QTest::addColumn<bool>("isSimple");
    QTest::newRow("rich") << false;
    QTest::newRow("simple") << true;
}

void TestWorkbenchScenes::interactiveItems_haveRoleAndName()
{
    QFETCH(const bool, isSimple);
    SceneStage stage(u"en_US"_s, isSimple);
    const QStringList keys = stage.interface->manager()->keys();
    for (const QString& key : keys) {
        QQuickItem* scene = stage.show(key);
        const QList<QQuickItem*> items = tabStopsOf(scene);
        QCOMPARE(items.isEmpty(), isSimple);
        for (QQuickItem* item : items) {
            const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(item);
            QVERIFY(accessible);
            QVERIFY(accessible->role() == QAccessible::Link
                    || accessible->role() == QAccessible::Button
                    || accessible->role() == QAccessible::Slider);
            QVERIFY(!accessible->text(QAccessible::Name).isEmpty());
            QVERIFY(accessible->state().focusable);
            QVERIFY(item->width() > 0 && item->height() > 0);
        }
    }
}

/// Not all of them stop Tab: one that does the same as another need not.
void TestWorkbenchScenes::clickableItems_haveRoleAndName()
{
    SceneStage stage;
    int clips = 0;
    const QStringList keys = stage.interface->manager()->keys();
    for (const QString& key : keys) {
        const QList<QQuickItem*> items = itemsOf(stage.show(key));
        for (QQuickItem* item : items) {
            if (!isClickable(item))
                continue;
            const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(item);
            QVERIFY(accessible);
            const bool isClip = accessible->role() == QAccessible::Animation;
            QVERIFY(isClip || item->activeFocusOnTab());
            const QString name = accessible->text(QAccessible::Name);
            QVERIFY2(!name.isEmpty() && !name.contains(u'<'), qPrintable(key));
            clips += isClip ? 1 : 0;
        }
    }
    QVERIFY(clips > 3);
}

void TestWorkbenchScenes::clip_hasTitleForName_withoutCaption()
{
    SceneStage stage;
    const QList<QPair<QString, QString>> names = {
        {u"tool.pen"_s, u"Pen"_s},
        {u"edit.undo"_s, u"Three strokes are taken back, the last one first."_s},
    };
    for (const auto& [key, name] : names) {
        QQuickItem* frame = clipIn(stage.show(key))->parentItem();
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(frame);
        QCOMPARE(accessible->text(QAccessible::Name), name);
        QVERIFY(accessible->actionInterface()->actionNames().contains(
            QAccessibleActionInterface::pressAction()));
    }
}

void TestWorkbenchScenes::linkInText_liesWhereTextHasIt_data()
{
    QTest::addColumn<QString>("locale");
    for (const char* locale : {"en_US", "de_DE", "ar_EG"})
        QTest::newRow(locale) << QString::fromLatin1(locale);
}

void TestWorkbenchScenes::linkInText_liesWhereTextHasIt()
{
    QFETCH(const QString, locale);
    SceneStage stage(locale);
    const QQuickItem* anchor = linkInTextOf(stage.show(u"tool.ellipse"_s));
    QTRY_VERIFY(isOverItsLink(anchor));
    const QPointF before = anchor->position();
    const QSizeF sizeBefore = anchor->size();
    stage.interface->preferences()->setTextScale(2.0);
    QTRY_VERIFY(anchor->position() != before && anchor->size() != sizeBefore);
    QTRY_VERIFY(isSearched(anchor) && isOverItsLink(anchor));
}

/// The search takes its time, which the tip must not take to come up.
void TestWorkbenchScenes::linkInText_isNotSearched_beforeTipIsUp()
{
    SceneStage stage;
    QVERIFY(stage.interface->show(u"tool.ellipse"_s, QPoint(150, 80), &stage.button));
    const QQuickItem* anchor = linkInTextOf(stage.view()->rootObject());
    QVERIFY(!isSearched(anchor));
    QCOMPARE(anchor->size(), anchor->parentItem()->size());
    QTRY_VERIFY(isSearched(anchor));
}

void TestWorkbenchScenes::linkInText_isSearched_atFocus()
{
    SceneStage stage;
    QQuickItem* anchor = linkInTextOf(stage.show(u"tool.ellipse"_s));
    QVERIFY(stage.activate());
    QTRY_VERIFY(isSearched(anchor));
    anchor->parentItem()->setProperty("isSearched", false);
    anchor->parentItem()->setProperty("places", QVariantMap());
    QCOMPARE(anchor->size(), anchor->parentItem()->size());
    anchor->forceActiveFocus();
    QVERIFY(isSearched(anchor));
    QVERIFY(isOverItsLink(anchor));
}

void TestWorkbenchScenes::interactiveItems_showFocus()
{
    SceneStage stage;
    stage.interface->preferences()->setReducedMotion(true);
    QQuickItem* scene = stage.show(u"tool.ellipse"_s);
    QQuickItem* clip = clipIn(scene);
    QTRY_VERIFY_WITH_TIMEOUT(isDecoded(clip), kPatienceMs);
    QVERIFY(stage.activate());
    const QImage before = stage.view()->grabWindow();
    const QList<QQuickItem*> items = tabStopsOf(scene);
    QCOMPARE(items.size(), 5);
    QList<QImage> seen{before};
    for (QQuickItem* item : items) {
        item->forceActiveFocus(Qt::TabFocusReason);
        QVERIFY(item->hasActiveFocus());
        const QImage picture = stage.view()->grabWindow();
        keepPicture(picture, u"focus-%1"_s.arg(seen.size()));
        QVERIFY(!seen.contains(picture));
        seen += picture;
    }
}

void TestWorkbenchScenes::tab_reachesAllInteractiveItems()
{
    SceneStage stage;
    QQuickItem* scene = stage.show(u"tool.ellipse"_s);
    QVERIFY(stage.activate());
    QList<QQuickItem*> expected = tabStopsOf(scene);
    QList<QQuickItem*> reached;
    for (qsizetype i = 0; i < expected.size(); ++i) {
        QTest::keyClick(stage.view(), Qt::Key_Tab);
        reached += stage.view()->activeFocusItem();
    }
    QCOMPARE(reached, expected);
    QTest::keyClick(stage.view(), Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(stage.view()->activeFocusItem(), expected.at(expected.size() - 2));
}

void TestWorkbenchScenes::returnKey_opensLinks()
{
    SceneStage stage;
    QQuickItem* scene = stage.show(u"tool.ellipse"_s);
    QVERIFY(stage.activate());
    const QList<QQuickItem*> items = tabStopsOf(scene);
    for (QQuickItem* item : items) {
        if (QAccessible::queryAccessibleInterface(item)->role() != QAccessible::Link)
            continue;
        item->forceActiveFocus();
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
            stage.interface->opened.clear();
            QTest::keyClick(stage.view(), key);
            QCOMPARE(stage.interface->opened, QStringList(u"shapes"_s));
        }
    }
}

void TestWorkbenchScenes::keys_playAndMoveClip()
{
    SceneStage stage;
    stage.interface->preferences()->setReducedMotion(true);
    QQuickItem* scene = stage.show(u"tool.ellipse"_s);
    QQuickItem* clip = clipIn(scene);
    QTRY_VERIFY_WITH_TIMEOUT(isDecoded(clip), kPatienceMs);
    QVERIFY(stage.activate());
    const QList<QQuickItem*> items = tabStopsOf(scene);
    QQuickItem* play = items.at(1);
    QQuickItem* slider = items.at(2);
    QAccessibleInterface* place = QAccessible::queryAccessibleInterface(slider);
    QVERIFY(place->valueInterface());
    QCOMPARE(place->valueInterface()->currentValue().toReal(), 0.0);
    slider->forceActiveFocus();
    QTest::keyClick(stage.view(), Qt::Key_Right);
    QTRY_VERIFY(place->valueInterface()->currentValue().toReal() > 0.03);
    QTest::keyClick(stage.view(), Qt::Key_Left);
    QTRY_VERIFY(place->valueInterface()->currentValue().toReal() < 0.03);
    QVERIFY(clip->property("state").toInt() != kPlaying);
    play->forceActiveFocus();
    QTest::keyClick(stage.view(), Qt::Key_Space);
    QTRY_COMPARE(clip->property("state").toInt(), kPlaying);
    QTest::keyClick(stage.view(), Qt::Key_Return);
    QTRY_VERIFY(clip->property("state").toInt() != kPlaying);
}

void TestWorkbenchScenes::returnKey_pins()
{
    SceneStage stage;
    QQuickItem* scene = stage.show(u"tool.line"_s);
    QVERIFY(stage.activate());
    tabStopsOf(scene).at(0)->forceActiveFocus();
    QTest::keyClick(stage.view(), Qt::Key_Return);
    QTRY_COMPARE(stage.interface->pinnedTips().size(), 1);
    stage.interface->closePinnedTips();
}

void TestWorkbenchScenes::focus_scrollsToWhatHasIt()
{
    SceneStage stage;
    stage.interface->preferences()->setTextScale(4.0);
    stage.interface->preferences()->setReducedMotion(true);
    QQuickItem* scene = stage.show(u"tool.ellipse"_s);
    QVERIFY(stage.activate());
    const QList<QQuickItem*> items = tabStopsOf(scene);
    QQuickItem* page = scrolledPageAround(items.at(0));
    QVERIFY(page);
    QVERIFY(page->property("interactive").toBool());
    QTest::keyClick(stage.view(), Qt::Key_End);
    QVERIFY(page->property("contentY").toReal() > 0.0);
    for (QQuickItem* item : items) {
        item->forceActiveFocus();
        if (scrolledPageAround(item) != page)
            continue;
        const QRectF place = item->mapRectToItem(page, QRectF(0, 0, item->width(), item->height()));
        QVERIFY(place.top() >= 0.0);
        QVERIFY(place.bottom() <= page->height());
    }
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestWorkbenchScenes>(argc, argv);
}

#include "tst_workbenchscenes.moc"
