// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PopupStage.h"

#include <QCoreApplication>
#include <QCursor>
#include <QEvent>
#include <QQuickItem>
#include <QTest>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr auto kScene = R"(import QtQuick

Rectangle {
    property string shownKey: vidlet ? vidlet.attribute("key") : ""
    property string shownShortcut: vidlet ? vidlet.attribute("shortcut") : ""
    property string shownLocation: dataLocation
    property int resets: 0

    width: 120
    height: 80
    color: "steelblue"
    state: "open"
    onStateChanged: if (state === "") ++resets
}
)";

VLContext& storeWith(VLContext& context, const QMap<int, QVariant>& settings)
{
    for (auto it = settings.cbegin(); it != settings.cend(); ++it)
        context.set(it.key(), it.value());
    return context;
}

VLContext& emptyStore()
{
    static VLContext context;
    return context;
}

} // namespace

bool bringUp(QWidget* window)
{
    constexpr int kTries = 3;
    for (int i = 0; i < kTries; ++i) {
        window->show();
        if (QTest::qWaitForWindowExposed(window))
            return true;
        window->hide();
    }
    return false;
}

RecordingIndex::RecordingIndex(VLContext* context)
    : VLIndex(context, {})
{
}

RecordingIndex::~RecordingIndex()
{
    for (const QPointer<VLXmlElement>& tree : std::as_const(m_trees))
        delete tree;
}

VLXmlElement* RecordingIndex::retrieve(const QString& key, const QLocale& locale, QString& path,
                                       int& depth, VLXmlElement*& root)
{
    requests += key + u'@' + locale.name();
    if (!answer) {
        VLXmlElement* element = VLIndex::retrieve(key, locale, path, depth, root);
        if (element)
            m_trees += root;
        return element;
    }

    const IndexAnswer given = answer(key);
    if (!given.element)
        return nullptr;
    m_trees += {given.root, given.element};
    path = given.path;
    depth = given.depth;
    root = given.root;
    return given.element;
}

PopupStage::PopupStage(const QMap<int, QVariant>& settings)
    : packageRoot(packages.packageRoot(u"tips.vidlets"_s))
    , index(&storeWith(context, settings))
    // The interface brings a manager of its own, which must not react to anything.
    , interface(emptyStore(), {}, &index)
{
    writeScene(kScene);
    packages.writeControlFile(u"tips.vidlets"_s, u"tips.xml"_s,
                              "<vidlets>\n"
                              "  <vidlet key=\"open\" shortcut=\"Ctrl+O\"/>\n"
                              "  <vidlet key=\"save\"/>\n"
                              "</vidlets>\n");
    manager = std::make_unique<OpenManager>(&interface, context, QStringList{packages.dataPath()},
                                            &index);

    QCursor::setPos(farAway());
    control.setWindowFlag(Qt::FramelessWindowHint);
    control.setObjectName(u"open"_s);
    control.setGeometry(100, 100, 150, 60);
    if (!bringUp(&control))
        qFatal("The control did not come up");
}

PopupStage::~PopupStage()
{
    // Detached popups belong to nobody, and use the manager to their end.
    for (const QPointer<VLWidget>& popup : std::as_const(m_shown)) {
        if (!manager || popup != manager->widget())
            delete popup;
    }
    // The trees of the index are cleared away last, so the popup has to be gone by then.
    manager.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void PopupStage::set(int key, const QVariant& value)
{
    manager->context().set(key, value);
}

void PopupStage::rescan()
{
    manager->loadDataPath({packages.dataPath()});
}

void PopupStage::writeScene(const char* qml)
{
    packages.write(u"tips.vidlets/ui/VidletUI.qml"_s, qml);
}

VLXmlElement* PopupStage::newContent(const QString& key)
{
    auto* element = new VLXmlElement;
    element->setTagName(u"vidlet"_s);
    element->setAttribute(u"key"_s, key);
    element->setAttribute(u"VLPackagName"_s, u"tips"_s);
    return element;
}

VLXmlElement* PopupStage::showContent()
{
    VLXmlElement* content = newContent(u"open"_s);
    popup()->showWithContent(&control, QPoint(300, 300), content, packageRoot);
    return content;
}

VLWidget* PopupStage::showTip(const QString& key, QObject* reference)
{
    if (!manager->show(key, pointer(), reference))
        qFatal("The tip did not come up");
    m_shown += manager->widget();
    return manager->widget();
}

VLWidget* PopupStage::showTip(const QString& key)
{
    return showTip(key, &control);
}

VLWidget* PopupStage::bringUpTip(const QString& key, QObject* reference)
{
    VLWidget* tip = showTip(key, reference);
    if (!QTest::qWaitForWindowExposed(tip))
        qFatal("The tip is not on the screen");
    return tip;
}

VLWidget* PopupStage::bringUpTip(const QString& key)
{
    return bringUpTip(key, &control);
}

VLWidget* PopupStage::detach(const QString& key, QObject* reference)
{
    VLWidget* tip = bringUpTip(key, reference);
    tip->view()->setReserved(true);
    return tip;
}

VLWidget* PopupStage::detach(const QString& key)
{
    return detach(key, &control);
}

VLWidget* PopupStage::popup()
{
    manager->initializeTooltipWindow();
    return manager->widget();
}

VLView* PopupStage::view()
{
    return popup()->view();
}

QObject* PopupStage::scene()
{
    return view()->rootObject();
}

QTimer* PopupStage::timer()
{
    return popup()->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
}

QPropertyAnimation* PopupStage::animation()
{
    return popup()->findChild<QPropertyAnimation*>(QString(), Qt::FindDirectChildrenOnly);
}

void PopupStage::finishFade()
{
    animation()->setCurrentTime(animation()->duration());
}

QPoint PopupStage::farAway()
{
    return {900, 700};
}

QPoint PopupStage::pointer()
{
    return {400, 300};
}
