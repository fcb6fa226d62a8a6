// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLView.h"

#include "VLAskingView.h"
#include "VLContentGuard.h"
#include "VLContentNames.h"
#include "VLContentTree.h"
#include "VLIndex.h"
#include "VLInterface.h"
#include "VLManager.h"
#include "VLManagerSettings.h"
#include "VLSceneCall.h"
#include "VLSceneFence.h"
#include "VLSettings.h"

#include <QCursor>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace Vidlets {

using namespace ContentNames;

namespace {

Qt::CursorShape cursorShape(const QString& name)
{
    if (name == "PointingHandCursor"_L1)
        return Qt::PointingHandCursor;
    if (name == "IBeamCursor"_L1)
        return Qt::IBeamCursor;
    if (name == "BlankCursor"_L1)
        return Qt::BlankCursor;
    return Qt::ArrowCursor;
}

QString errorMessage(const QString& format, const QQmlError& error)
{
    return format.arg(QString::number(error.line()), QString::number(error.column()),
                      error.description());
}

} // namespace

VLView::VLView(VLManager* manager, QWindow* parent)
    : QQuickView(parent)
    , m_manager(manager)
{
    // By name: the slot is part of the view's public face, and a host may disconnect it so.
    connect(engine(), SIGNAL(warnings(QList<QQmlError>)), this,
            SLOT(handleWarnings(QList<QQmlError>)));
    m_fence = new VLSceneFence(this);
    setFlags(Qt::FramelessWindowHint);
    setResizeMode(QQuickView::SizeViewToRootObject);
}

VLView::~VLView()
{
    // The scene goes before the data that it binds to.
    setSource(QUrl());
    m_fence->detach();
    if (m_releasesContent)
        deleteTreeOf(m_content);
    else
        delete m_content;
}

void VLView::setItemCursor(QObject* object, const QString& shape, const QString& /*tag*/)
{
    if (!object || !object->isQuickItemType())
        return;
    auto* item = static_cast<QQuickItem*>(object);
    if (shape.isEmpty())
        item->unsetCursor();
    else
        item->setCursor(QCursor(cursorShape(shape)));
}

void VLView::debugLog(const QString& msg)
{
    if (m_manager)
        m_manager->handleMessage(VLMessageDebug, msg);
}

void VLView::openExternalResource(const QString& resourceLocator)
{
    const VLSceneCall call(m_manager);
    if (m_manager)
        m_manager->openExternalResource(resourceLocator);
}

QString VLView::interpolate(const QString& string)
{
    const VLSceneCall call(m_manager);
    return m_manager ? m_manager->interpolate(string) : string;
}

void VLView::setOverrideCursor(const QString& shape)
{
    QGuiApplication::setOverrideCursor(QCursor(cursorShape(shape)));
}

void VLView::restoreOverrideCursor()
{
    QGuiApplication::restoreOverrideCursor();
}

QString VLView::translate(const QString& string, const QString& context) const
{
    if (!m_manager || !m_manager->interface())
        return string;
    const VLSceneCall call(m_manager);
    const VLAskingView asking(this);
    return m_manager->interface()->translateString(string, context);
}

QString VLView::findResource(const QString& relativePath) const
{
    const Finding finding = searchResource(relativePath);
    return finding.path.isNull() ? finding.fallback : finding.path;
}

VLView::Finding VLView::searchResource(const QString& relativePath) const
{
    const QString category = categoryPath(
        resourcesAttribute(), Settings::resourceDirectoryDefault(), ckResourceDirectory);
    Finding finding = find(category, relativePath);
    const bool isMissing =
        finding.path.isNull() && !finding.isRefused && m_content && !relativePath.isEmpty();
    if (isMissing && isGuarded())
        warnOfTip(u"the resource \"%1\" is not found"_s.arg(relativePath));
    return finding;
}

int VLView::getScaledSize(int size)
{
    return m_manager ? m_manager->getScaledSize(size) : size;
}

QString VLView::categoryPath(const QString& attribute, const QString& defaultValue,
                             contextKey key) const
{
    if (!m_content)
        return QString();

    QString path;
    if (m_content->hasAttribute(attribute))
        path = m_content->attribute(attribute);
    else if (const auto* parent = qobject_cast<VLXmlElement*>(m_content->parent()))
        path = parent->attribute(attribute);

    if (path.isEmpty())
        path = settingsOf(m_manager).get(key, defaultValue).toString();
    return path;
}

QString VLView::findComponent(const QString& attribute, contextKey key, const QString& defaultValue,
                              const QString& relativePath) const
{
    const Finding finding = find(categoryPath(attribute, defaultValue, key), relativePath);
    return finding.path.isNull() ? finding.fallback : finding.path;
}

VLView::Finding VLView::find(const QString& category, const QString& relativePath) const
{
    Finding finding;
    if (m_manager) {
        const QList<QString> candidates =
            m_manager->index()->componentPathsForElement(m_content, category);
        for (const QString& candidate : candidates) {
            const QFileInfo info(relativePath.isEmpty()
                                     ? candidate
                                     : QDir(candidate).absoluteFilePath(relativePath));
            if (!info.exists())
                continue;
            if (m_fence->admitsFile(info.absoluteFilePath())) {
                finding.path = info.absoluteFilePath();
                return finding;
            }
            finding.isRefused = true;
        }
    }
    // Callers try what they get where nothing was found, so an absolute path must not lead out
    // there.
    if (!QDir::isAbsolutePath(category) || m_fence->isInside(category)) {
        finding.fallback = category;
    } else if (!finding.isRefused) {
        m_fence->admitsFile(category);
        finding.isRefused = true;
    }
    return finding;
}

QString VLView::uiRootFilePath() const
{
    const Finding finding = searchScene();
    return finding.path.isNull() ? finding.fallback : finding.path;
}

VLView::Finding VLView::searchScene() const
{
    const bool isSimple = Settings::simpleTooltips(settingsOf(m_manager));
    const QString category = isSimple
        ? categoryPath(simpleUiAttribute(), Settings::simpleUiFileDefault(), ckSimpleUiFile)
        : categoryPath(uiAttribute(), Settings::uiFileDefault(), ckUiFile);
    return find(category, QString());
}

QString VLView::resourceDirectoryPath() const
{
    return categoryPath(resourceAttribute(), Settings::resourceDirectoryDefault(),
                        ckResourceDirectory);
}

bool VLView::documentationAvailable()
{
    return Settings::documentationAvailable(settingsOf(m_manager));
}

QDir VLView::packageRoot() const
{
    return QDir(m_packageRoot);
}

void VLView::setPackageRoot(const QDir& dir)
{
    m_packageRoot = dir.absolutePath();
}

void VLView::setViewPos(int x, int y)
{
    setPosition(x, y);
}

VLManager* VLView::manager() const
{
    return m_manager;
}

VLXmlElement* VLView::content()
{
    return m_content;
}

const VLXmlElement* VLView::content() const
{
    return m_content;
}

void VLView::setContent(VLXmlElement* content)
{
    // Plain: nothing is deleted, and contentChanged stays unsent.
    const bool isOther = m_content != content;
    m_content = content;
    if (isOther)
        m_fence->cleanContent(content);
    // A view may outlive the manager and its settings.
    m_releasesContent = Settings::releaseClips(settingsOf(m_manager));
}

bool VLView::stayOpen() const
{
    return m_stayOpen;
}

void VLView::setStayOpen(bool stayOpen)
{
    m_stayOpen = stayOpen;
    Q_EMIT stayOpenChanged();
}

bool VLView::reserved() const
{
    return m_reserved;
}

void VLView::setReserved(bool reserved)
{
    if (m_reserved == reserved)
        return;
    m_reserved = reserved;
    const VLSceneCall call(m_manager);
    Q_EMIT reservedChanged();
}

void VLView::handleWarnings(const QList<QQmlError>& warnings)
{
    for (const QQmlError& warning : warnings) {
        debugLog(errorMessage(u"QML Warning %1:%2:%3"_s, warning));
        if (isGuarded())
            warnOf(warning);
    }
}

void VLView::statusHasChanged(QQuickView::Status s)
{
    if (s != QQuickView::Error)
        return;
    const QList<QQmlError> viewErrors = errors();
    for (const QQmlError& error : viewErrors)
        debugLog(errorMessage(u"Error %1:%2:%3"_s, error));
}

void VLView::loadQML(const QString& path)
{
    if (!QFile::exists(path)) {
        debugLog(u"Can't find :%1"_s.arg(path));
        warnOfMissing(path);
        return;
    }
    if (m_manager && !m_fence->isReadable(path)) {
        m_manager->contentGuard().warn(path, u"not a regular file of a sensible size"_s);
        return;
    }
    // The same scene stays alive; new content reaches it through the context names.
    const QUrl url = QUrl::fromLocalFile(path);
    if (url == source())
        return;
    m_fence->beginScene();
    setSource(url);
    warnOfFailure(url);
    // The window system may tell of the size only after the container has given the hidden window
    // its old one back, and then never.
    if (rootObject())
        Q_EMIT contentSizeChanged();
}

bool VLView::isGuarded() const
{
    return m_manager && Settings::guardContent(settingsOf(m_manager));
}

void VLView::warnOfTip(const QString& reason) const
{
    const bool isPlaced = m_content && !m_content->attribute(locationAttribute()).isEmpty();
    if (isPlaced)
        m_manager->index()->warnInTip(m_content, reason);
    else
        m_manager->contentGuard().warn(source().toLocalFile(), reason);
}

void VLView::warnOfMissing(const QString& path)
{
    if (!isGuarded())
        return;
    // A name that was found nowhere comes as one in the working directory, which helps nobody.
    const Finding scene = searchScene();
    const QString wanted = scene.path.isNull() ? scene.fallback : scene.path;
    const bool isWanted = m_content && QFileInfo(wanted).absoluteFilePath() == path;
    if (isWanted && scene.isRefused)
        return;
    const QString reason = u"the scene \"%1\" is not found"_s.arg(isWanted ? wanted : path);
    if (m_content)
        m_manager->index()->warnInTip(m_content, reason);
    else
        m_manager->contentGuard().warn(path, reason);
}

void VLView::warnOfFailure(const QUrl& url)
{
    if (!isGuarded() || status() == QQuickView::Ready)
        return;
    if (status() == QQuickView::Loading) {
        // A scene that waits for others comes later.
        auto* waiting = new QObject(this);
        connect(this, &QQuickView::statusChanged, waiting, [this, waiting, url] {
            waiting->deleteLater();
            disconnect(this, nullptr, waiting, nullptr);
            if (source() == url)
                warnOfFailure(url);
        });
        return;
    }
    const QList<QQmlError> viewErrors = errors();
    for (const QQmlError& error : viewErrors)
        warnOf(error);
    if (viewErrors.isEmpty())
        m_manager->contentGuard().warn(url.toLocalFile(), u"the scene shows nothing"_s);
}

void VLView::warnOf(const QQmlError& error)
{
    // The fence has said what and why.
    if (m_fence->isEcho(error))
        return;
    const QUrl url = error.url().isEmpty() ? source() : error.url();
    const QString path = url.isLocalFile() ? url.toLocalFile() : url.toString();
    // An error of the file as a whole has no place.
    const XmlPosition position{qMax(1, error.line()), qMax(1, error.column())};
    m_manager->contentGuard().warn(path, position, error.description());
}

void VLView::resetState()
{
    if (QQuickItem* root = rootObject())
        root->setProperty("state", QString());
}

void VLView::managerContextSettingDidChange(contextKey key)
{
    if (key == ckDocumentationEnabled)
        Q_EMIT documentationAvailableChanged();
}

void VLView::resizeEvent(QResizeEvent* /*event*/)
{
    // The base class is left out: the scene's size drives the window, never the other way round.
    update();
    Q_EMIT contentSizeChanged();
}

} // namespace Vidlets

#include "moc_VLView.cpp"
