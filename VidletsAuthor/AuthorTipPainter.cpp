// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorTipPainter.h"

#include "AuthorControlFile.h"
#include <Vidlets/VLManager.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoController.h>
#include <Vidlets/VLVideoSource.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QImageReader>
#include <QLocale>
#include <QQmlEngine>
#include <QQuickItem>
#include <QSignalBlocker>
#include <QThread>

#include <VidletsHost/VLPreferences.h>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

/// As long as players wait for a clip that cannot be opened, and longer than any fade.
constexpr int kShownMs = 4000;
constexpr int kStepMs = 100;
/// What is not there after that is left out.
constexpr int kLoadTimeoutMs = 15000;
/// By then a thread that has been told of a clip has opened it.
constexpr int kBeginningMs = 400;
/// How often nothing has to happen before nothing more is expected.
constexpr int kQuietPasses = 3;
/// A scene whose size never comes to rest is drawn all the same.
constexpr int kMaxLayouts = 10;
constexpr QPoint kControlPlace(10, 10);
constexpr QSize kControlSize(40, 20);
/// Of the types Image and Loader alike.
constexpr int kLoadingStatus = 2;

void runEvents()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

bool isUnfinished(const QQuickItem* item)
{
    const bool isLoader = item->inherits("QQuickLoader") || item->inherits("QQuickImageBase");
    return isLoader && item->property("status").toInt() == kLoadingStatus;
}

} // namespace

AuthorTipPainter::AuthorTipPainter(const AuthorTipPlaces& places, const AuthorLook& look)
{
    look.applyToApplication();
    QLocale::setDefault(QLocale(look.locale));
    VLContext settings;
    look.applyToContext(settings);
    // A tip that is not there in this language is to be seen as missing.
    settings.set(ckFallbackLocale, look.locale);
    settings.set(ckStayDuration, 0.0F);
    settings.set(ckHideDuration, 0);
    settings.set(ckSteadyHover, false);
    m_control.setGeometry(QRect(kControlPlace, kControlSize));
    m_control.show();
    m_session = std::make_unique<AuthorTipSession>(places, settings, &m_control);
    m_session->host().preferences()->setTextScale(look.textScale);
    runEvents();
    // Asked for a tip that is not there the host makes its popup, with the engine.
    m_session->host().showTip(kControlPlace);
    QQmlEngine* engine = view()->engine();
    engine->setOutputWarningsToStandardError(false);
    QObject::connect(engine, &QQmlEngine::warnings, engine,
                     [this](const QList<QQmlError>& errors) { m_errors += errors; });
    m_watchdog = std::make_unique<AuthorWatchdog>();
    m_watchdog->watch(engine);
}

AuthorTipPainter::~AuthorTipPainter()
{
    m_watchdog.reset();
    view()->engine()->disconnect(view()->engine());
    m_session.reset();
    runEvents();
}

VLView* AuthorTipPainter::view() const
{
    VLWidget* popup = m_session->host().manager()->widget();
    return popup ? popup->view() : nullptr;
}

AuthorTipPicture AuthorTipPainter::draw(const QString& root, const QString& key)
{
    AuthorTipHost& host = m_session->host();
    m_session->index().setTip(root, key);
    host.hideTip();
    host.takeWarnings();
    m_errors.clear();
    m_idleClips.clear();

    AuthorTipPicture picture;
    m_watchdog->setFile(root);
    m_watchdog->begin();
    const bool isShown = host.showTip(m_control.mapToGlobal(m_control.rect().center()));
    if (!isShown || !view()->content()) {
        m_watchdog->end();
        picture.warnings = host.takeWarnings();
        picture.failure = u"There is no such tip."_s;
        return picture;
    }
    settle();
    picture.title = view()->content()->attribute(u"title"_s);
    picture.failure = failureOf(view());
    if (m_watchdog->end() && picture.failure.isNull())
        picture.failure = u"A script of the scene does not come to an end."_s;
    picture.clips = clips(view()->rootObject());
    picture.warnings = host.takeWarnings();
    if (picture.failure.isNull())
        picture.image = drawWhole();
    for (const QQmlError& error : std::as_const(m_errors)) {
        const QString text = describe(error);
        if (!picture.warnings.contains(text))
            picture.warnings.append(text);
    }
    picture.warnings.removeIf(
        [&picture](const QString& warning) { return picture.failure.contains(warning); });
    return picture;
}

/// Until the scene is as it is to be seen.
void AuthorTipPainter::settle()
{
    waitUntilLoaded();
    layOut();
    for (int passed = 0; passed < kShownMs; passed += kStepMs) {
        m_watchdog->begin();
        m_time.pass(kStepMs);
        runEvents();
    }
    waitUntilLoaded();
    showFirstPictures(view()->contentItem());
    layOut();
}

/// Items are laid out as they are drawn, which may give the scene another size, and the window gets
/// that when the event loop runs.
void AuthorTipPainter::layOut()
{
    int quiet = 0;
    for (int pass = 0; pass < kMaxLayouts && quiet < kQuietPasses; ++pass) {
        const QSize before = view()->size();
        m_watchdog->begin();
        view()->grabWindow();
        runEvents();
        quiet = before == view()->size() ? quiet + 1 : 0;
    }
}

/// The renderer draws only what has changed since the last time, and edges that were drawn twice
/// look otherwise.
QImage AuthorTipPainter::drawWhole()
{
    QQuickItem* all = view()->contentItem();
    all->setOpacity(0.0);
    view()->grabWindow();
    all->setOpacity(1.0);
    return view()->grabWindow().convertToFormat(QImage::Format_RGB32);
}

void AuthorTipPainter::waitUntilLoaded()
{
    const QDeadlineTimer deadline(kLoadTimeoutMs);
    int quiet = 0;
    while (quiet < kQuietPasses && !deadline.hasExpired()) {
        m_watchdog->begin();
        const bool isBusy = isLoading(view()->contentItem());
        runEvents();
        quiet = isBusy ? 0 : quiet + 1;
        if (isBusy)
            QThread::msleep(1);
    }
}

/// Stops the clips that it meets on the way.
bool AuthorTipPainter::isLoading(QQuickItem* item)
{
    bool isBusy = isUnfinished(item);
    if (auto* clip = qobject_cast<VLVideoComponent*>(item)) {
        stopClip(clip);
        isBusy = isClipLoading(clip) || isBusy;
    }
    const QList<QQuickItem*> children = item->childItems();
    for (QQuickItem* child : children)
        isBusy = isLoading(child) || isBusy;
    return isBusy;
}

bool AuthorTipPainter::isClipLoading(VLVideoComponent* clip)
{
    auto* source = clip->findChild<VLVideoSource*>();
    const QString path =
        clip->source().isEmpty() ? QString() : view()->findResource(clip->source());
    if (!source || !QFileInfo(path).isFile())
        return false;
    if (source->source() != QUrl::fromLocalFile(path)
        || source->action() != VLVideoSource::ActionIdle)
        return true;
    // It has the address before it begins, and no pictures where it has failed.
    if (source->loadedFrameCount() > 0)
        return false;
    const auto found = m_idleClips.constFind(clip);
    if (found != m_idleClips.cend())
        return !found->hasExpired();
    m_idleClips.insert(clip, QDeadlineTimer(kBeginningMs));
    return true;
}

/// The scene may have the clip play, and believes that it does; the clip stays at its beginning.
void AuthorTipPainter::stopClip(VLVideoComponent* clip)
{
    auto* controller = clip->findChild<VLVideoController*>();
    if (!controller || !controller->property("stopped").isNull())
        return;
    controller->setProperty("stopped", true);
    const auto stop = [controller] {
        if (controller->state() != VLVideoController::StatePlaying)
            return;
        const QSignalBlocker blocker(controller);
        controller->setState(VLVideoController::StatePaused);
        controller->setPosition(0);
    };
    // Behind what the scene does at the same signal.
    QObject::connect(controller, &VLVideoController::stateChanged, controller, stop,
                     Qt::DirectConnection);
    stop();
}

void AuthorTipPainter::showFirstPictures(QQuickItem* item)
{
    if (auto* clip = qobject_cast<VLVideoComponent*>(item)) {
        auto* source = clip->findChild<VLVideoSource*>();
        auto* controller = clip->findChild<VLVideoController*>();
        // A source without a clip has no frame to ask for.
        if (controller && source && !source->source().isEmpty() && source->loadedFrameCount() > 0) {
            {
                const QSignalBlocker blocker(controller);
                controller->setPosition(0);
            }
            clip->controllerPositionChanged();
            clip->frameReady();
        }
    }
    const QList<QQuickItem*> children = item->childItems();
    for (QQuickItem* child : children)
        showFirstPictures(child);
}

/// Those of the scene, and those that the tip names and the scene does not show yet.
QStringList AuthorTipPainter::clips(QQuickItem* item) const
{
    QStringList paths;
    QList<QQuickItem*> pending;
    if (item)
        pending.append(item);
    while (!pending.isEmpty()) {
        const QQuickItem* next = pending.takeFirst();
        const auto* clip = qobject_cast<const VLVideoComponent*>(next);
        const QString path =
            clip && !clip->source().isEmpty() ? view()->findResource(clip->source()) : QString();
        if (QFileInfo(path).isFile() && !paths.contains(path))
            paths.append(path);
        pending += next->childItems();
    }
    addClips(view()->content(), paths);
    return paths;
}

void AuthorTipPainter::addClips(const VLXmlElement* element, QStringList& paths) const
{
    const QList<QObject*> below = element->childElementList(QString());
    QList<const VLXmlElement*> elements{element};
    for (const QObject* object : below)
        elements.append(qobject_cast<const VLXmlElement*>(object));
    for (const VLXmlElement* each : std::as_const(elements)) {
        const QStringList names = each->attributeNames();
        for (const QString& name : names) {
            const QString value = each->attribute(name);
            if (!looksLikeResource(value))
                continue;
            const QString path = view()->findResource(value);
            const bool isClip =
                QFileInfo(path).isFile() && QImageReader::imageFormat(path).isEmpty();
            if (isClip && !paths.contains(path))
                paths.append(path);
        }
    }
}

} // namespace Vidlets
