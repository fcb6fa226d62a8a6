// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSceneFence.h"

#include "VLIndex.h"
#include "VLManager.h"
#include "VLSceneSource.h"
#include "VLSceneText.h"
#include "VLSettings.h"
#include "VLVectorPicture.h"
#include "VLView.h"
#include "VLXmlElement.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QMutexLocker>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QQmlEngine>
#include <QQmlError>
#include <QQmlFile>
#include <QQuickItem>
#include <QQuickTextDocument>
#include <QQuickWindow>
#include <QThread>

#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr int kWorkerEndMs = 100;
// A scene may find ever new addresses.
constexpr int kMaxWarningsPerScene = 100;
constexpr int kMaxScans = 1000;
// Some file systems count whole seconds, and clocks of file servers differ a little.
constexpr qint64 kSettledAfterMs = 3000;
constexpr QLatin1StringView kWorkerEngineClass{"QQuickWorkerScriptEngine"};
constexpr QLatin1StringView kWorkerClass{"QQuickWorkerScript"};

constexpr QLatin1StringView kRefused{":/com.larkspan/vidlets/refused/"};

/// In place of code that is refused: a file that is not there, so that the engine ends the matter
/// at once and by itself.
QUrl nothing()
{
    return QUrl(u"qrc"_s + kRefused);
}

/// The path of @p url on the disk or among the resources; empty for any other place.
QString localPath(const QUrl& url)
{
    return QQmlFile::urlToLocalFileOrQrc(url);
}

/// How warnings call a script that would run on a thread of its own.
QString worker()
{
    return u"WorkerScript"_s;
}

bool isScript(const QString& path)
{
    return path.endsWith(".js"_L1) || path.endsWith(".mjs"_L1);
}

bool isCode(const QString& path)
{
    return isScript(path) || path.endsWith(".qml"_L1);
}

/// Kinds of files that a scene may ask for by address. An address can also be handed to the
/// desktop, which opens it without asking: so nothing that the desktop would run, and no web page.
bool isKindForScenes(const QString& path)
{
    static const QSet<QString> kinds = {
        u"bmp"_s, u"cur"_s, u"gif"_s,  u"ico"_s,  u"icns"_s, u"jpeg"_s, u"jpg"_s,  u"ktx"_s,
        u"pbm"_s, u"pgm"_s, u"pkm"_s,  u"png"_s,  u"ppm"_s,  u"sci"_s,  u"svg"_s,  u"svgz"_s,
        u"tga"_s, u"tif"_s, u"tiff"_s, u"webp"_s, u"xbm"_s,  u"xpm"_s,  u"avif"_s, u"heic"_s,
        u"otf"_s, u"ttc"_s, u"ttf"_s,  u"pfb"_s,  u"woff"_s, u"frag"_s, u"qsb"_s,  u"vert"_s,
        u"qml"_s, u"csv"_s, u"json"_s, u"md"_s,   u"txt"_s,  u"xml"_s,  u"avi"_s,  u"mkv"_s,
        u"mov"_s, u"mp3"_s, u"mp4"_s,  u"m4v"_s,  u"ogg"_s,  u"ogv"_s,  u"wav"_s,  u"webm"_s};
    const QFileInfo info(path);
    return !info.isFile() || kinds.contains(info.suffix().toLower());
}

/// Whether to open @p path could wait for ever, or set off what a device does. What is not there
/// is left to the engine, and so are directories, which begin many addresses.
bool isHazard(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() && !info.isFile() && !info.isDir();
}

/// Whether @p path cannot be read as a part of a program. A directory stands for its qmldir file.
bool isHazardOfCode(const QString& path)
{
    return !QFileInfo(path).isDir() && !SceneSource::isReadable(path);
}

/// The files that are loaded for the picture @p path besides, or in its place: those for screens
/// with finer points, and textures.
QStringList siblingsOf(const QString& path)
{
    constexpr int kMostPoints = 9;
    const QFileInfo info(path);
    QStringList siblings;
    if (!info.exists()) {
        for (const QLatin1StringView suffix : {".ktx"_L1, ".pkm"_L1, ".astc"_L1})
            siblings.append(path + suffix);
    }
    qsizetype dot = path.lastIndexOf(u'.');
    if (dot <= path.lastIndexOf(u'/'))
        dot = path.size();
    for (int points = 2; points <= kMostPoints; ++points) {
        QString sibling = path;
        siblings.append(sibling.insert(dot, u"@%1x"_s.arg(points)));
    }
    return siblings;
}

QStringList straysIn(const QObject& text, const VLContentRoots& roots)
{
    const QUrl base = text.property("baseUrl").toUrl();
    if (text.inherits("QQuickTextEdit")) {
        const auto* edited = text.property("textDocument").value<QQuickTextDocument*>();
        return edited && edited->textDocument()
            ? SceneText::strayAddresses(*edited->textDocument(), base, roots)
            : QStringList();
    }
    const auto format = static_cast<SceneText::Format>(text.property("textFormat").toInt());
    return SceneText::strayAddresses(text.property("text").toString(), format, base, roots);
}

/// Sends out what the fence allows, and answers the rest with an error.
class FencedAccess : public QNetworkAccessManager
{
public:
    FencedAccess(VLSceneFence* fence, QObject* parent)
        : QNetworkAccessManager(parent)
        , m_fence(fence)
    {
    }

protected:
    QNetworkReply* createRequest(Operation operation, const QNetworkRequest& request,
                                 QIODevice* data) override
    {
        const bool isWrite = operation != GetOperation && operation != HeadOperation;
        if (m_fence->allows(request.url(), isWrite))
            return QNetworkAccessManager::createRequest(operation, request, data);
        return QNetworkAccessManager::createRequest(GetOperation, QNetworkRequest(nothing()),
                                                    nullptr);
    }

private:
    VLSceneFence* m_fence;
};

} // namespace

VLSceneFence::VLSceneFence(VLView* view)
    : QObject(view->engine())
    , m_view(view)
    , m_engine(view->engine())
{
    m_engine->addUrlInterceptor(this);
    m_engine->setNetworkAccessManagerFactory(this);
    if (VLManager* manager = view->manager()) {
        m_index = manager->index();
        connect(&manager->context(), &VLContext::settingDidChange, this, [this] { refresh(); });
    }
    refresh();
}

void VLSceneFence::detach()
{
    m_view.clear();
}

void VLSceneFence::beginScene()
{
    m_refused.clear();
    refresh();
    sweepLater();
}

bool VLSceneFence::admitsFile(const QString& path)
{
    if (isInside(path))
        return true;
    refuse(path);
    return false;
}

bool VLSceneFence::isReadable(const QString& path)
{
    refresh();
    return (!m_state.isClosed && !m_state.isGuarded) || !isHazardOfCode(path);
}

bool VLSceneFence::isInside(const QString& path)
{
    refresh(path);
    return !m_state.isClosed || m_state.roots.contains(path);
}

bool VLSceneFence::isEcho(const QQmlError& error) const
{
    if (!state().isClosed)
        return false;
    const QString text = error.description();
    // A refused address becomes an empty one, and a text takes one that was taken out for its own.
    const QString emptied = u"Error decoding: %1: "_s.arg(error.url().toString());
    const bool isOfEmptyAddress = !m_refused.isEmpty() && text == "Invalid empty URL"_L1;
    return isOfEmptyAddress || error.url() == nothing() || text.contains(kRefused)
        || text.contains(emptied);
}

bool VLSceneFence::allows(const QUrl& url, bool isWrite)
{
    const State current = state();
    if (!current.isClosed || url.scheme() == "data"_L1)
        return true;
    const QString path = localPath(url);
    if (!path.isEmpty() && !isWrite && current.roots.contains(path))
        return true;
    // An empty address is one that was refused before.
    if (!url.isEmpty())
        refuse(url.toString());
    return false;
}

QUrl VLSceneFence::intercept(const QUrl& url, DataType type)
{
    if (isOnInterfaceThread())
        refresh(localPath(url));
    const State current = state();
    if ((!current.isClosed && !current.isGuarded) || url.isEmpty())
        return url;
    if (isHazardAt(url, type)) {
        refuse(url.toString());
        return type == UrlString ? QUrl() : nothing();
    }
    if (!current.isClosed)
        return url;
    switch (type) {
    case QmlFile:
    case JavaScriptFile:
        return judgeCode(current, url);
    case QmldirFile:
        return judgeModule(current, url);
    case UrlString:
        break;
    }
    return judgeAddress(current, url);
}

void VLSceneFence::cleanContent(VLXmlElement* content)
{
    refresh();
    m_refused.clear();
    if (!content || !m_view || !m_state.isClosed)
        return;
    const QUrl base = QUrl::fromLocalFile(m_view->uiRootFilePath());
    cleanElement(content, base);
    const QObjectList elements = content->childElementList(QString());
    for (QObject* element : elements)
        cleanElement(qobject_cast<VLXmlElement*>(element), base);
}

void VLSceneFence::cleanElement(VLXmlElement* element, const QUrl& base)
{
    const QString content = cleaned(element->content(), base);
    if (content != element->content())
        element->setContent(content);
    const QList<QString> names = element->attributeNames();
    for (const QString& name : names) {
        const QString value = element->attribute(name);
        const QString result = cleaned(value, base);
        if (result != value)
            element->setAttribute(name, result);
    }
}

/// @p text without the addresses that lead out; what is around them stays.
QString VLSceneFence::cleaned(const QString& text, const QUrl& base)
{
    QStringList strays;
    QString result = SceneText::cleaned(text, base, m_state.roots, strays);
    for (const QString& stray : std::as_const(strays))
        refuse(stray);
    return result;
}

QNetworkAccessManager* VLSceneFence::create(QObject* parent)
{
    return new FencedAccess(this, parent);
}

/// Takes the setting and the packages as they are now, before it is judged over @p path, which may
/// be null. Without a manager things stay as they were.
void VLSceneFence::refresh(const QString& path)
{
    VLManager* manager = m_view ? m_view->manager() : nullptr;
    if (!manager)
        return;
    const VLContext& settings = std::as_const(*manager).context();
    const bool wasClosed = m_state.isClosed;
    const bool isClosed = Settings::confineContent(settings);
    const bool isGuarded = Settings::guardContent(settings);
    if (isClosed) {
        const VLContentRoots roots = m_index ? m_index->contentRoots(path) : m_state.roots;
        if (!wasClosed || isGuarded != m_state.isGuarded
            || roots.revision() != m_state.roots.revision())
            setState({true, isGuarded, roots});
    } else if (wasClosed || isGuarded != m_state.isGuarded) {
        setState({false, isGuarded, {}});
    }
    if (!isClosed)
        return;
    // A host may have put in one of its own, which knows no fence.
    if (m_engine->networkAccessManagerFactory() != this)
        m_engine->setNetworkAccessManagerFactory(this);
    if (!wasClosed) {
        // Texts may have changed while nobody looked.
        forgetAll();
        sweepLater();
    }
    stopWorkers();
}

void VLSceneFence::setState(const State& state)
{
    const QMutexLocker locker(&m_mutex);
    m_state = state;
}

VLSceneFence::State VLSceneFence::state() const
{
    const QMutexLocker locker(&m_mutex);
    return m_state;
}

bool VLSceneFence::isOnInterfaceThread()
{
    // A view may outlive the application.
    const QCoreApplication* application = QCoreApplication::instance();
    return !application || QThread::currentThread() == application->thread();
}

bool VLSceneFence::isHazardAt(const QUrl& url, DataType type)
{
    const QString path = localPath(url);
    if (path.isEmpty() || path.startsWith(u':'))
        return false;
    return type == UrlString ? isHazard(path) : isHazardOfCode(path);
}

QUrl VLSceneFence::judgeCode(const State& state, const QUrl& url)
{
    const QString path = localPath(url);
    if (path.isEmpty() || !state.roots.contains(path)) {
        refuse(url.toString());
        return nothing();
    }
    if (path.startsWith(u':') || state.roots.isOfQt(path))
        return url;
    // Beside its source, a compiled file would be run as it is, and nothing checks its content.
    const QString compiled = path + u'c';
    if (QFileInfo::exists(compiled)) {
        refuse(compiled);
        return nothing();
    }
    const QStringList strays = straysInProgram(state, path);
    if (strays.isEmpty())
        return url;
    for (const QString& stray : strays)
        refuse(stray);
    return nothing();
}

/// Reads the program @p path again only where it, or the roots, may have changed.
QStringList VLSceneFence::straysInProgram(const State& state, const QString& path)
{
    const QFileInfo info(path);
    Scan scan{info.size(),
              info.lastModified().toMSecsSinceEpoch(),
              info.metadataChangeTime().toMSecsSinceEpoch(),
              state.roots.revision(),
              {}};
    {
        const QMutexLocker locker(&m_mutex);
        const auto known = m_scans.constFind(path);
        if (known != m_scans.cend() && known->isOfSameState(scan))
            return known->strays;
    }
    scan.strays = SceneSource::strayAddressesInFile(path, state.roots);
    // One that has just been written may change again without another time.
    const qint64 age = QDateTime::currentMSecsSinceEpoch() - scan.changedMs;
    const QMutexLocker locker(&m_mutex);
    if (m_scans.size() >= kMaxScans)
        m_scans.clear();
    if (age > kSettledAfterMs && scan.strays.isEmpty())
        m_scans.insert(path, scan);
    return scan.strays;
}

QUrl VLSceneFence::judgeModule(const State& state, const QUrl& url)
{
    const QString path = localPath(url);
    // The engine asks for many that are not there.
    if (!path.isEmpty() && !QFileInfo::exists(path))
        return url;
    if (path.startsWith(u':'))
        return url;
    const bool isInside = !path.isEmpty() && state.roots.contains(path);
    const bool isRefused = !isInside
        || (state.roots.isOfQt(path) ? SceneSource::reachesOut(state.roots.relativeToQt(path))
                                     : SceneSource::namesPlugin(path));
    if (!isRefused)
        return url;
    refuse(url.toString());
    return nothing();
}

QUrl VLSceneFence::judgeAddress(const State& state, const QUrl& url)
{
    if (url.scheme() == "image"_L1)
        return url;
    if (url.scheme() == "data"_L1) {
        if (!VectorPicture::dataReachesOut(url))
            return url;
        refuse(u"a vector picture with outer addresses"_s);
        return QUrl();
    }
    const QString path = localPath(url);
    if (!path.isEmpty() && state.roots.contains(path) && isKindForScenes(path)) {
        if (const QString stray = strayPicture(state, path); !stray.isNull()) {
            refuse(stray);
            return QUrl();
        }
        return url;
    }
    refuse(isScript(path) ? worker() : url.toString());
    return QUrl();
}

/// The first file that would be loaded as the picture @p path and may not; null where there is
/// none.
QString VLSceneFence::strayPicture(const State& state, const QString& path)
{
    if (path.startsWith(u':') || isCode(path) || QFileInfo(path).isDir())
        return QString();
    if (VectorPicture::fileReachesOut(path))
        return path;
    const QStringList siblings = siblingsOf(path);
    for (const QString& sibling : siblings) {
        if (!QFileInfo::exists(sibling))
            continue;
        if (!state.roots.contains(sibling) || isHazard(sibling)
            || VectorPicture::fileReachesOut(sibling))
            return sibling;
    }
    return QString();
}

void VLSceneFence::refuse(const QString& what)
{
    if (isOnInterfaceThread())
        warn(what);
    else
        QMetaObject::invokeMethod(
            this, [this, what] { warn(what); }, Qt::QueuedConnection);
}

void VLSceneFence::warn(const QString& what)
{
    if (!m_view || !m_view->manager() || m_refused.size() >= kMaxWarningsPerScene
        || m_refused.contains(what))
        return;
    m_refused.insert(what);
    // Content comes before its scene.
    const QString scene =
        m_view->source().isEmpty() ? m_view->uiRootFilePath() : localPath(m_view->source());
    m_view->manager()->handleMessage(VLMessageWarning,
                                     u"Kept %1 from the scene %2"_s.arg(what, scene));
    if (m_refused.size() == kMaxWarningsPerScene)
        m_view->manager()->handleMessage(VLMessageWarning,
                                         u"Keeping more from the scene %1"_s.arg(scene));
}

/// A worker could open addresses on the desktop and load modules from anywhere, and none of it
/// comes by the fence. But its script's address does, before the script is loaded.
void VLSceneFence::stopWorkers()
{
    const QObjectList children = m_engine->children();
    for (QObject* child : children) {
        auto* thread = qobject_cast<QThread*>(child);
        if (!thread || !thread->inherits(kWorkerEngineClass.data()) || !thread->isRunning())
            continue;
        refuse(worker());
        // One that is busy ends when its script does; to wait for it at each address would hold
        // the user interface up for as long.
        if (m_stoppedWorkers.contains(thread))
            continue;
        m_stoppedWorkers.insert(thread);
        thread->quit();
        thread->wait(QDeadlineTimer(kWorkerEndMs));
    }
}

void VLSceneFence::sweepLater()
{
    if (m_isSweepDue)
        return;
    m_isSweepDue = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isSweepDue = false;
            sweep();
        },
        Qt::QueuedConnection);
}

/// Texts load a picture of the disk without asking for it by its own address. So each is looked at
/// when it is first met and whenever it has changed, before its window is drawn.
void VLSceneFence::sweep()
{
    if (!m_view || !m_state.isClosed)
        return;
    const QWindowList windows = QGuiApplication::allWindows();
    for (QWindow* window : windows) {
        auto* scene = qobject_cast<QQuickWindow*>(window);
        if (!scene || (scene != m_view && qmlEngine(scene) != m_engine))
            continue;
        connect(scene, &QQuickWindow::afterAnimating, this, &VLSceneFence::sweep,
                Qt::UniqueConnection);
        sweepBelow(scene);
    }
    // What a scene does about it may end others of them, or change them again.
    for (auto count = m_changed.size(); count > 0 && !m_changed.isEmpty(); --count) {
        QObject* text = *m_changed.cbegin();
        m_changed.remove(text);
        judgeText(text);
    }
}

/// Goes by both kinds of children: items may have no owner in the scene, and owners no place in it.
void VLSceneFence::sweepBelow(QObject* root)
{
    QList<QObject*> waiting = {root};
    QSet<const QObject*> met = {root};
    const auto add = [this, &waiting, &met](QObject* object) {
        // The engine belongs to the window, and this to the engine.
        if (object == m_engine || met.contains(object))
            return;
        met.insert(object);
        waiting.append(object);
    };
    while (!waiting.isEmpty()) {
        QObject* object = waiting.takeLast();
        meet(object);
        for (QObject* child : object->children())
            add(child);
        if (auto* window = qobject_cast<QQuickWindow*>(object))
            add(window->contentItem());
        if (auto* item = qobject_cast<QQuickItem*>(object)) {
            const QList<QQuickItem*> children = item->childItems();
            for (QQuickItem* child : children)
                add(child);
        }
    }
}

void VLSceneFence::meet(QObject* object)
{
    if (m_met.contains(object))
        return;
    m_met.insert(object);
    connect(object, &QObject::destroyed, this, [this, object] {
        m_met.remove(object);
        m_changed.remove(object);
    });
    if (object->inherits(kWorkerClass.data()))
        refuse(worker());
    const bool isEdit = object->inherits("QQuickTextEdit");
    if (!isEdit && !object->inherits("QQuickText"))
        return;
    const QMetaMethod slot = staticMetaObject.method(staticMetaObject.indexOfSlot("judgeSender()"));
    for (const char* name : {"text", "textFormat", "baseUrl"}) {
        const QMetaObject* type = object->metaObject();
        const QMetaProperty property = type->property(type->indexOfProperty(name));
        if (property.hasNotifySignal())
            connect(object, property.notifySignal(), this, slot);
    }
    m_changed.insert(object);
}

void VLSceneFence::forgetAll()
{
    for (const QObject* object : std::as_const(m_met))
        disconnect(object, nullptr, this, nullptr);
    m_met.clear();
    m_changed.clear();
}

void VLSceneFence::judgeSender()
{
    // Not at once: a text that is emptied in the midst of a change takes that badly.
    m_changed.insert(sender());
    sweepLater();
}

/// Empties @p text where it shows what it may not have, so that this is never drawn.
void VLSceneFence::judgeText(QObject* text)
{
    if (!m_state.isClosed)
        return;
    const QStringList strays = straysIn(*text, m_state.roots);
    if (strays.isEmpty())
        return;
    for (const QString& stray : strays)
        refuse(stray);
    const QPointer<QQuickItem> item = qobject_cast<QQuickItem*>(text);
    text->setProperty("text", QString());
    // A scene may put it back at once.
    if (item && !straysIn(*item, m_state.roots).isEmpty())
        item->setParentItem(nullptr);
}

} // namespace Vidlets

#include "moc_VLSceneFence.cpp"
