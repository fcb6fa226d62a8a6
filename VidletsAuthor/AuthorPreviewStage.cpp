// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorPreviewStage.h"

#include <Vidlets/VLHostHooks.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoSource.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QQmlEngine>
#include <QQmlError>
#include <QQuickItem>
#include <QRegularExpression>
#include <QScrollArea>
#include <QToolButton>

#include <algorithm>
#include <chrono>
#include <utility>

#include <VidletsHost/VLPreferences.h>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr double kNsPerMs = 1e6;
constexpr qint64 kBytesPerPixel = 4;
constexpr int kProblemLines = 5;
constexpr std::chrono::milliseconds kBreathInterval(500);

QList<QQuickItem*> allBelow(QQuickItem* item)
{
    QList<QQuickItem*> result;
    if (item)
        result.append(item);
    for (qsizetype i = 0; i < result.size(); ++i)
        result += result.at(i)->childItems();
    return result;
}

void addNames(const QString& text, QStringList& names)
{
    static const QRegularExpression pattern(u"%\\(([-_a-zA-Z0-9]+)\\)s"_s);
    QRegularExpressionMatchIterator matches = pattern.globalMatch(text);
    while (matches.hasNext())
        names.append(matches.next().captured(1));
}

} // namespace

AuthorPreviewStage::AuthorPreviewStage(QWidget* parent)
    : QWidget(parent)
    , m_control(new QToolButton(this))
    , m_title(new QLabel(this))
    , m_problems(new QListWidget(this))
    , m_area(new QScrollArea(this))
{
    m_control->setText(u"Rest the pointer here"_s);
    m_control->setObjectName(u"control"_s);
    m_title->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_problems->setObjectName(u"problems"_s);
    m_problems->setWordWrap(true);
    m_problems->setToolTip(u"Click to open the place in your editor"_s);
    m_problems->hide();
    m_area->setObjectName(u"area"_s);
    m_area->setAlignment(Qt::AlignCenter);
    // Another colour than that of tips, whose edges are to be seen.
    m_area->setBackgroundRole(QPalette::Mid);
    m_area->setMinimumSize(320, 240);
    auto* top = new QHBoxLayout;
    top->addWidget(m_title, 1);
    top->addWidget(m_control);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addWidget(m_problems);
    layout->addWidget(m_area, 1);
    connect(&m_breath, &QTimer::timeout, this, &AuthorPreviewStage::breathe);
    m_breath.start(kBreathInterval);
    connect(m_problems, &QListWidget::itemClicked, this, [this](const QListWidgetItem* item) {
        const AuthorPlace place = AuthorEditor::placeIn(item->text());
        if (!place.file.isEmpty())
            Q_EMIT placeActivated(place);
    });
}

AuthorPreviewStage::~AuthorPreviewStage()
{
    forget();
}

void AuthorPreviewStage::setPlaces(const AuthorTipPlaces& places)
{
    m_places = places;
    forget();
}

void AuthorPreviewStage::setTip(const QString& root, const QString& key)
{
    if (m_root == root && m_key == key)
        return;
    m_root = root;
    m_key = key;
    // What was scrolled was in another tip.
    m_scrollPositions.clear();
    dropScenes();
}

void AuthorPreviewStage::setLook(const AuthorLook& look)
{
    m_look = look;
}

void AuthorPreviewStage::setShortcut(const QString& shortcut)
{
    m_shortcut = shortcut;
}

void AuthorPreviewStage::setVariable(const QString& name, const QString& value)
{
    m_variables.insert(name, value);
}

void AuthorPreviewStage::forget()
{
    m_scrollPositions = scrollPositions();
    delete m_room;
    m_session.reset();
}

void AuthorPreviewStage::renew()
{
    const bool isNew =
        !m_session || m_sessionLook.locale != m_look.locale || m_sessionLook.scale != m_look.scale;
    if (isNew)
        forget();
    else if (scene())
        m_scrollPositions = scrollPositions();
    m_problems->clear();
    m_cost = AuthorTipCost();
    m_look.applyToApplication();
    m_area->setLayoutDirection(m_look.isRightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    m_title->setText(m_key);
    if (m_key.isEmpty())
        return;
    if (isNew)
        begin();
    AuthorTipHost& host = m_session->host();
    host.context().set(ckSimpleTooltips, m_look.isSimple);
    host.preferences()->setTextScale(m_look.textScale);
    host.setShortcut(m_shortcut);
    for (auto variable = m_variables.cbegin(); variable != m_variables.cend(); ++variable)
        host.setGlobalProperty(variable.key(), variable.value());
    m_session->index().setTip(m_root, m_key);
    m_watchdog.setFile(m_root);
    m_watchdog.begin();
    dropScenes();
    m_session->index().startLookup();
    m_sinceRequest.start();
    if (m_popup)
        showAgain();
    else
        showFirst();
    m_cost.lookupMs = m_session->index().lookupMs();
    m_cost.loadMs = static_cast<double>(m_sinceRequest.nsecsElapsed()) / kNsPerMs - m_cost.lookupMs;
    restoreScrollPositions();
    collectProblems();
    Q_EMIT costChanged();
}

void AuthorPreviewStage::begin()
{
    VLContext settings;
    m_look.applyToContext(settings);
    m_session = std::make_unique<AuthorTipSession>(m_places, settings, m_control);
    m_session->host().setDrafting(true);
    m_sessionLook = m_look;
    watchEngines();
}

void AuthorPreviewStage::showFirst()
{
    auto* room = new QWidget;
    room->setAttribute(Qt::WA_DontShowOnScreen);
    auto* layout = new QVBoxLayout(room);
    layout->setContentsMargins(0, 0, 0, 0);
    m_popup = m_session->host().showTipIn(room);
    if (!m_popup) {
        delete room;
        return;
    }
    adoptRoom(room);
    QQmlEngine* engine = m_popup->view()->engine();
    engine->setOutputWarningsToStandardError(false);
    connect(engine, &QQmlEngine::warnings, this, &AuthorPreviewStage::addErrors);
    watchEngines();
    connect(m_popup->view(), &QQuickWindow::frameSwapped, this, &AuthorPreviewStage::pictureShown,
            Qt::QueuedConnection);
}

/// The next popup is made ahead of the tip, so that its engine is known before a scene runs in it.
void AuthorPreviewStage::watchEngines()
{
    VLManager* manager = m_session->host().manager();
    if (!manager->widget())
        VLHostHooks::warmUp(manager);
    if (manager->widget())
        m_watchdog.watch(manager->widget()->view()->engine());
}

/// A scene whose script was interrupted would go on with the next, so it leaves the stage.
void AuthorPreviewStage::breathe()
{
    const bool wasInterrupted = m_watchdog.end();
    if (m_session && wasInterrupted) {
        const QString file = view() ? view()->source().toLocalFile() : m_root;
        dropScenes();
        addProblem(u"%1:1:1: A script of the scene does not come to an end."_s.arg(file));
    }
    if (m_session)
        watchEngines();
    m_watchdog.begin();
}

/// A room of its own was all that the popup could be shown in; from now on it is as large as the
/// tip and a part of the stage.
void AuthorPreviewStage::adoptRoom(QWidget* room)
{
    room->hide();
    room->setAttribute(Qt::WA_DontShowOnScreen, false);
    room->setMinimumSize(0, 0);
    room->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    room->layout()->setSizeConstraint(QLayout::SetFixedSize);
    m_room = room;
    m_area->setWidget(room);
    room->show();
}

/// In the same popup, so that nothing flickers.
void AuthorPreviewStage::showAgain()
{
    VLHostHooks::showAnew(m_session->host().manager());
    m_room->setVisible(m_session->index().wasFound());
}

/// Engines keep what they have loaded, and so does the application with pictures.
void AuthorPreviewStage::dropScenes()
{
    if (!m_session)
        return;
    m_session->host().hideTip();
    dropScene(m_session->host().manager()->widget());
    dropScene(m_popup);
}

void AuthorPreviewStage::dropScene(VLWidget* popup)
{
    if (!popup || !popup->view())
        return;
    popup->view()->setSource(QUrl());
    popup->view()->engine()->clearComponentCache();
    popup->view()->releaseResources();
}

void AuthorPreviewStage::collectProblems()
{
    const bool wasFound = m_session->index().wasFound();
    if (!wasFound)
        addProblem(u"There is no tip \"%1\" in %2 here, or its file is broken."_s.arg(
            m_key, m_look.locale));
    else if (view())
        addErrors(view()->errors());
    const QStringList warnings = m_session->host().takeWarnings();
    for (const QString& warning : warnings)
        addProblem(warning);
    const QString failure = wasFound && view() ? failureOf(view()) : QString();
    if (!failure.isEmpty() && m_problems->count() == 0)
        addProblem(failure);
    m_problems->setVisible(m_problems->count() > 0);
    // What was said once about a file is not said again by the same host.
    if (!wasFound)
        forget();
}

void AuthorPreviewStage::addErrors(const QList<QQmlError>& errors)
{
    for (const QQmlError& error : errors)
        addProblem(describe(error));
}

void AuthorPreviewStage::addProblem(const QString& text)
{
    if (!m_problems->findItems(text, Qt::MatchExactly).isEmpty())
        return;
    m_problems->addItem(text);
    const int lines = qMin(kProblemLines, m_problems->count() + 1);
    m_problems->setFixedHeight(lines * m_problems->fontMetrics().lineSpacing() * 3 / 2);
    m_problems->show();
}

/// What grows while the window comes up is not always told of.
void AuthorPreviewStage::fitToScene()
{
    const QSize wanted(static_cast<int>(scene()->width()), static_cast<int>(scene()->height()));
    if (m_popup->size() != wanted)
        m_popup->contentResized();
}

void AuthorPreviewStage::pictureShown()
{
    if (scene())
        fitToScene();
    if (m_cost.firstPictureMs >= 0.0 || !scene())
        return;
    m_cost.firstPictureMs = static_cast<double>(m_sinceRequest.nsecsElapsed()) / kNsPerMs;
    // Only now all is laid out, and what is longer than the view known to be so.
    restoreScrollPositions();
    m_scrollPositions.clear();
    Q_EMIT costChanged();
}

AuthorTipCost AuthorPreviewStage::cost() const
{
    AuthorTipCost result = m_cost;
    const QList<QQuickItem*> items = allBelow(scene());
    for (const QQuickItem* item : items) {
        const auto* clip = qobject_cast<const VLVideoComponent*>(item);
        auto* source = clip ? clip->findChild<VLVideoSource*>() : nullptr;
        if (!source)
            continue;
        result.clipBytes += static_cast<qint64>(source->loadedFrameCount()) * kBytesPerPixel
            * static_cast<qint64>(source->frameWidth())
            * static_cast<qint64>(source->frameHeight());
    }
    return result;
}

QStringList AuthorPreviewStage::problems() const
{
    QStringList result;
    for (int i = 0; i < m_problems->count(); ++i)
        result.append(m_problems->item(i)->text());
    return result;
}

QStringList AuthorPreviewStage::variables() const
{
    QStringList names;
    const VLXmlElement* content = view() ? view()->content() : nullptr;
    if (!content)
        return names;
    QList<const VLXmlElement*> elements{content};
    const QList<QObject*> below = content->childElementList(QString());
    for (const QObject* object : below)
        elements.append(qobject_cast<const VLXmlElement*>(object));
    for (const VLXmlElement* element : std::as_const(elements)) {
        addNames(element->content(), names);
        const QStringList attributes = element->attributeNames();
        for (const QString& attribute : attributes)
            addNames(element->attribute(attribute), names);
    }
    names.removeDuplicates();
    return names;
}

VLView* AuthorPreviewStage::view() const
{
    return m_popup ? m_popup->view() : nullptr;
}

QQuickItem* AuthorPreviewStage::scene() const
{
    return view() ? view()->rootObject() : nullptr;
}

QList<QQuickItem*> AuthorPreviewStage::flickables() const
{
    QList<QQuickItem*> result = allBelow(scene());
    result.removeIf([](const QQuickItem* item) { return !item->inherits("QQuickFlickable"); });
    return result;
}

QList<QPointF> AuthorPreviewStage::scrollPositions() const
{
    QList<QPointF> result;
    const QList<QQuickItem*> items = flickables();
    for (const QQuickItem* item : items)
        result.append({item->property("contentX").toReal(), item->property("contentY").toReal()});
    return result;
}

void AuthorPreviewStage::restoreScrollPositions() const
{
    const QList<QQuickItem*> items = flickables();
    const qsizetype count = qMin(items.size(), m_scrollPositions.size());
    for (qsizetype i = 0; i < count; ++i) {
        items.at(i)->setProperty("contentX", m_scrollPositions.at(i).x());
        items.at(i)->setProperty("contentY", m_scrollPositions.at(i).y());
    }
}

} // namespace Vidlets

#include "moc_AuthorPreviewStage.cpp"
