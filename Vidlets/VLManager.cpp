// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLManager.h"

#include "VLAskingView.h"
#include "VLContentGuard.h"
#include "VLContentNames.h"
#include "VLContentRoots.h"
#include "VLContentTree.h"
#include "VLContext.h"
#include "VLHostState.h"
#include "VLIndex.h"
#include "VLIndexHooks.h"
#include "VLNumbers.h"
#include "VLSettings.h"
#include "VLTextExpansion.h"
#include "VLView.h"
#include "VLWidget.h"
#include "VLWidgetPrivate.h"
#include "VLXmlElement.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QSet>
#include <QSize>
#include <QStringBuilder>
#include <QTranslator>
#include <QUrl>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

using namespace ContentNames;

namespace {

constexpr double kMsPerSecond = 1000.0;

double secondsSince(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.elapsed()) / kMsPerSecond;
}

void setAlwaysShowToolTips(bool on)
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets)
        widget->setAttribute(Qt::WA_AlwaysShowToolTips, on);
}

/// A tip as the index hands it out: owned by nobody yet, and not there if @c element is null.
struct FoundTip
{
    /// The package directory: that of the control file is @c depth - 1 levels below.
    QString packageRoot() const
    {
        QDir dir(path);
        for (int step = 1; step < depth; ++step)
            dir.cdUp();
        return dir.canonicalPath();
    }

    VLXmlElement* element = nullptr;
    /// The top of the tree that the element is in.
    VLXmlElement* root = nullptr;
    /// The directory of the control file.
    QString path;
    int depth = 0;
};

VLXmlElement* contentOf(VLWidget* popup)
{
    return popup && popup->view() ? popup->view()->content() : nullptr;
}

bool hasContentWithKey(VLWidget* popup, const QString& key)
{
    const VLXmlElement* content = contentOf(popup);
    return content && content->attribute(keyAttribute()) == key;
}

QString attributeOr(const VLXmlElement* element, const QString& name, const QString& defaultValue)
{
    return element->hasAttribute(name) ? element->attribute(name) : defaultValue;
}

/// The canonical path of a file that is no link, by that of its directory: what is no link needs
/// no look at the disk. Null where the directory has none. Built at once, since the index keeps it:
/// a string that grew has room to spare.
QString pathIn(const QString& canonicalDirectory, const QString& fileName)
{
    if (canonicalDirectory.isEmpty())
        return QString();
    if (canonicalDirectory.endsWith(u'/'))
        return canonicalDirectory % fileName;
    return canonicalDirectory % u'/' % fileName;
}

} // namespace

/// A warning from before the host's override existed.
struct EarlyWarning
{
    QString text;
    /// Whether the level let it pass to the default.
    bool wasSaid = false;
};

class VLManagerPrivate
{
public:
    VLManagerPrivate(VLInterface* owner, const VLContext& context, const QStringList& dataPaths,
                     VLIndex* givenIndex)
        : interface(owner)
        , searchPaths(dataPaths)
        , settings(context)
        , index(givenIndex)
    {
    }

    template <typename Action> void forEachReserved(Action action);
    bool isTranslationLoaded(const QString& file) const;
    bool loadTranslation(const QString& file, VLContentGuard& guard);
    bool isAllowedToShow() const;
    VLHoverKeeper& hover() const;
    bool isOnShow(const QString& key, const QWidget* widget) const;
    bool isFallbackOnShow(const QString& key, const QWidget* widget) const;
    FoundTip findFallback(const QString& key);
    const VLView* viewToTranslate(const VLManager* manager) const;
    bool showWithoutContent(const QString& key, const QPoint& position, const QWidget* widget);
    void replaceContent(VLXmlElement* element);
    void askForShortcut(const QString& key, QObject* reference, VLXmlElement* element) const;
    QString admitted(const QString& file) const;

    VLInterface* interface;
    QStringList searchPaths;
    /// The canonical path of each scanned directory, the latest first. Only ever written.
    QStringList indexedPaths;
    VLContext settings;
    /// The current popup, or null.
    QPointer<VLWidget> tooltipWindow;
    VLIndex* index;
    /// Made here, for want of one of the host's.
    bool ownsIndex = false;
    /// One that the host kit has handed over.
    std::unique_ptr<VLIndex> keptIndex;
    /// Popups given up to the user, in the order of reserving; entries die with their window.
    QList<QPointer<VLWidget>> reservedWindows;
    QMap<QString, QVariant> globalProperties;
    /// The warnings of texts that were sent.
    QSet<QString> textWarnings;
    bool filterInstalled = false;
    /// Made at the first translation, a child of the manager.
    QTranslator* translator = nullptr;
    /// The file that is loaded in the translator; null if none is.
    QString translationFile;
    /// What the translator reads from where content is guarded; else null, and the file is mapped.
    QByteArray translationData;
    /// Whether the constructor runs, so that the interface is not yet what the host derived of it.
    bool isBeingBuilt = true;
    /// The warnings of that time.
    QList<EarlyWarning> earlyWarnings;
    /// Whether one is being repeated that the default has said.
    bool isRepeating = false;
    float scaleValue = 1.0F;
    VLHostState hostState;
};

/// Walks the reserved windows from the last to the first and forgets the dead ones.
template <typename Action> void VLManagerPrivate::forEachReserved(Action action)
{
    for (qsizetype i = reservedWindows.size() - 1; i >= 0; --i) {
        if (VLWidget* widget = reservedWindows.at(i))
            action(widget);
        else
            reservedWindows.removeAt(i);
    }
}

bool VLManagerPrivate::isTranslationLoaded(const QString& file) const
{
    // One that was mapped before the host had its content guarded is loaded anew.
    return translationFile == file
        && (!Settings::guardContent(settings) || file.isEmpty() || !translationData.isNull());
}

bool VLManagerPrivate::loadTranslation(const QString& file, VLContentGuard& guard)
{
    if (!Settings::guardContent(settings)) {
        const bool isLoaded = translator->load(file);
        translationData = QByteArray();
        return isLoaded;
    }
    // Most packages have none, which is no fault.
    QByteArray data;
    if (QFileInfo::exists(file) && QFileInfo(file).isAbsolute())
        data = guard.readTranslations(file);
    const bool isLoaded = translator->load(reinterpret_cast<const uchar*>(data.constData()),
                                           static_cast<int>(data.size()));
    translationData = data;
    return isLoaded;
}

bool VLManagerPrivate::isAllowedToShow() const
{
    if (Settings::disabled(settings))
        return false;
    // Compared as a whole: one modifier too many fails like one that is missing.
    const Qt::KeyboardModifiers required = Settings::requiredModifiers(settings);
    return hostState.isCalling || !required || QGuiApplication::keyboardModifiers() == required;
}

VLHoverKeeper& VLManagerPrivate::hover() const
{
    return VLWidgetPrivate::hoverOf(tooltipWindow);
}

bool VLManagerPrivate::isOnShow(const QString& key, const QWidget* widget) const
{
    return tooltipWindow->isVisible() && hasContentWithKey(tooltipWindow, key)
        && hover().isTipOf(widget);
}

/// Unlike isOnShow() this takes a popup without content for one that shows the empty key.
bool VLManagerPrivate::isFallbackOnShow(const QString& key, const QWidget* widget) const
{
    if (hover().isOn() && (key.isNull() || !hover().isTipOf(widget)))
        return false;
    const VLXmlElement* content = contentOf(tooltipWindow);
    const QString keyOnShow = content ? content->attribute(keyAttribute()) : QString();
    return tooltipWindow->isVisible() && keyOnShow == key;
}

/// Asks the index alone, in the fallback's own locale. A null key names no tip.
FoundTip VLManagerPrivate::findFallback(const QString& key)
{
    FoundTip tip;
    if (key.isNull())
        return tip;
    const QLocale locale(Settings::contentFallbackLocale(settings));
    tip.element = index->retrieve(key, locale, tip.path, tip.depth, tip.root);
    return tip;
}

/// The view whose package has the translations; null where there is none.
const VLView* VLManagerPrivate::viewToTranslate(const VLManager* manager) const
{
    const VLView* asking = VLAskingView::current();
    if (asking && asking->manager() == manager && Settings::tendPinned(settings))
        return asking;
    return tooltipWindow ? tooltipWindow->view() : nullptr;
}

/// Gives whether the popup that is up, if one is, may stay.
bool VLManagerPrivate::showWithoutContent(const QString& key, const QPoint& position,
                                          const QWidget* widget)
{
    if (!tooltipWindow->isVisible())
        return false;
    if (hover().isOn())
        return hover().staysWithoutContent(key, position, widget);
    if (tooltipWindow->isSafe(position) && (!widget || widget->toolTip().isEmpty()))
        return true;
    tooltipWindow->hideAnimated();
    return false;
}

void VLManagerPrivate::replaceContent(VLXmlElement* element)
{
    VLView* view = tooltipWindow->view();
    VLXmlElement* old = view->content();
    if (old && old != element) {
        // The scene must let go of the old tree before it dies.
        view->setSource(QUrl());
        view->setContent(nullptr);
        if (old->parent())
            delete old->parent();
        else
            delete old;
    }
    view->setContent(element);
}

/// @p key is the one that was asked for, also where @p element is the fallback.
void VLManagerPrivate::askForShortcut(const QString& key, QObject* reference,
                                      VLXmlElement* element) const
{
    const QString shortcut =
        interface->shortCutForObject(key, reference, element->attribute(shortcutAttribute()));
    if (!shortcut.isEmpty())
        element->setAttribute(shortcutAttribute(), shortcut);
}

/// Where nothing was found there is a name alone, which must not lead to the working directory.
QString VLManagerPrivate::admitted(const QString& file) const
{
    if (!Settings::confineContent(settings) || index->contentRoots(file).contains(file))
        return file;
    return u":/com.larkspan/vidlets/refused"_s;
}

VLManager::VLManager(VLInterface* interface, VLContext& context, const QStringList& dataPaths,
                     VLIndex* index)
    : QObject(nullptr)
    , d(std::make_unique<VLManagerPrivate>(interface, context, dataPaths, index))
{
    if (!d->index) {
        d->index = new VLIndex(&d->settings, dataPaths);
        d->ownsIndex = true;
    }
    d->index->guard().setListener([manager = QPointer<VLManager>(this)](const QString& warning) {
        if (manager)
            manager->handleMessage(VLMessageWarning, warning);
    });
    d->index->open();

    // Only widgets that exist by now are touched.
    if (Settings::alwaysShowToolTips(context))
        setAlwaysShowToolTips(true);

    QElapsedTimer timer;
    timer.start();
    loadDataPath(dataPaths);
    handleMessage(VLMessageInformation,
                  u"Indexed packages in %1 seconds"_s.arg(secondsSince(timer)));

    if (Settings::installEventFilter(d->settings)) {
        QCoreApplication::instance()->installEventFilter(this);
        d->filterInstalled = true;
    }
    d->scaleValue = Settings::scale(d->settings);

    d->isBeingBuilt = false;
    if (!d->earlyWarnings.isEmpty()) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                const QList<EarlyWarning> warnings = std::exchange(d->earlyWarnings, {});
                for (const EarlyWarning& warning : warnings) {
                    const QScopedValueRollback repeating(d->isRepeating, warning.wasSaid);
                    handleMessage(VLMessageWarning, warning.text);
                }
            },
            Qt::QueuedConnection);
    }
}

VLManager::~VLManager()
{
    if (d->filterInstalled)
        QCoreApplication::instance()->removeEventFilter(this);
    // Cleared whether or not the constructor set it.
    setAlwaysShowToolTips(false);
    // Deferred, since the manager may go while an event of the popup is being delivered.
    if (d->tooltipWindow)
        d->tooltipWindow->deleteLater();
    if (d->ownsIndex && Settings::releaseClips(d->settings))
        d->index->deleteWhole();
}

VLHostState& VLManager::hostState()
{
    return d->hostState;
}

bool VLManager::isRepeating() const
{
    return d->isRepeating;
}

void VLManager::showAnew()
{
    // An item must not go while its own code runs, which may have opened a dialog of the host's.
    if (d->hostState.sceneCalls > 0) {
        d->hostState.showsAnewLater = true;
        return;
    }
    // A scene that nobody sees would stay as it is where the next tip has the same.
    if (d->tooltipWindow && !d->tooltipWindow->isVisible())
        d->tooltipWindow->view()->setSource(QUrl());
    else if (d->tooltipWindow)
        renewTip(d->tooltipWindow);
    // Renewing one may close another.
    const QList<VLWidget*> tips = reservedTips();
    const QList<QPointer<VLWidget>> pinned(tips.cbegin(), tips.cend());
    for (const QPointer<VLWidget>& popup : pinned) {
        if (popup)
            renewTip(popup);
    }
}

void VLManager::renewTips(const QStringList& keys)
{
    if (d->hostState.sceneCalls > 0) {
        d->hostState.keysToRenew += keys;
        return;
    }
    const auto isOfKeys = [&keys](VLWidget* popup) {
        const VLXmlElement* content = contentOf(popup);
        return content && keys.contains(content->attribute(keyAttribute()));
    };
    // What is hidden is retrieved anew when it is shown.
    const QPointer<VLWidget> current = d->tooltipWindow;
    if (current && current->isVisible() && isOfKeys(current) && !renewTip(current) && current)
        current->hideAnimationFinished();
    const QList<VLWidget*> tips = reservedTips();
    const QList<QPointer<VLWidget>> pinned(tips.cbegin(), tips.cend());
    for (const QPointer<VLWidget>& popup : pinned) {
        if (popup && isOfKeys(popup))
            renewTip(popup);
    }
}

void VLManager::keepIndex(std::unique_ptr<VLIndex> index)
{
    VLIndexHooks::setContext(*index, &d->settings);
    d->keptIndex = std::move(index);
}

bool VLManager::renewTip(VLWidget* popup)
{
    VLXmlElement* old = contentOf(popup);
    if (!old)
        return false;
    const QString key = old->attribute(keyAttribute());
    FoundTip tip;
    tip.element = retrieve(key, tip.path, tip.depth, tip.root);
    VLWidgetPrivate& widget = VLWidgetPrivate::of(popup);
    // What is not there any more is translated anew at least.
    if (!tip.element || !tip.root) {
        widget.renewContent(old, QString());
        return false;
    }
    d->askForShortcut(key, widget.reference(), tip.element);
    widget.renewContent(tip.element, tip.packageRoot());
    return true;
}

QString VLManager::anyScene() const
{
    const bool isSimple = Settings::simpleTooltips(d->settings);
    const QString file = isSimple
        ? d->settings.get(ckSimpleUiFile, Settings::simpleUiFileDefault()).toString()
        : d->settings.get(ckUiFile, Settings::uiFileDefault()).toString();
    const QList<QString> roots = d->index->packageRoots();
    for (const QString& root : roots) {
        QString path = QDir(root).absoluteFilePath(file);
        if (QFileInfo::exists(path))
            return path;
    }
    return QString();
}

QList<VLWidget*> VLManager::reservedTips() const
{
    QList<VLWidget*> result;
    for (const QPointer<VLWidget>& tip : std::as_const(d->reservedWindows)) {
        if (tip)
            result.append(tip);
    }
    return result;
}

VLContentGuard& VLManager::contentGuard()
{
    return d->index->guard();
}

VLContext& VLManager::context()
{
    return d->settings;
}

const VLContext& VLManager::context() const
{
    return d->settings;
}

VLIndex* VLManager::index()
{
    return d->index;
}

VLInterface* VLManager::interface()
{
    return d->interface;
}

VLWidget* VLManager::widget()
{
    return d->tooltipWindow;
}

float VLManager::realScaleValue()
{
    return d->scaleValue;
}

void VLManager::handleMessage(VLMessageType type, const QString& message)
{
    const VLHostHooks::MessageSink* sink =
        d->isBeingBuilt ? VLHostHooks::earlyMessageSink() : nullptr;
    // What is said before the host's override exists is said to it once more.
    const bool passes = type <= Settings::messageLevel(d->settings);
    const bool isRepeated = d->isBeingBuilt && !sink && type == VLMessageWarning;
    if (isRepeated && Settings::guardContent(d->settings))
        d->earlyWarnings.append({message, passes});
    if (!passes)
        return;
    if (sink)
        (*sink)(type, message);
    else if (d->interface)
        d->interface->handleMessage(type, message);
}

int VLManager::getScaledSize(int size)
{
    if (d->scaleValue == 0.0F)
        return size;
    return truncatedToInt32(static_cast<double>(static_cast<float>(size) * d->scaleValue));
}

QString VLManager::keyForObject(QObject* object)
{
    return d->interface->keyForObject(object);
}

void VLManager::setGlobalProperty(const QString& name, const QVariant& value)
{
    d->globalProperties.insert(name, value);
}

QPoint VLManager::tooltipPosition(const QPoint& position, QWidget* /*reference*/)
{
    const QSize offset = Settings::tooltipOffsetPx(d->settings);
    return position + QPoint(offset.width(), offset.height());
}

void VLManager::loadDataPath(const QStringList& paths)
{
    for (const QString& path : paths) {
        const QFileInfo info(path);
        const bool isGuarded = Settings::guardContent(d->settings);
        const QString extension = Settings::packageExtension(d->settings);
        d->index->noteDataPath(path, extension, Settings::controlDirectory(d->settings));
        if (!info.isDir()) {
            if (isGuarded)
                contentGuard().warn(path, u"not a directory, so no data path"_s);
            continue;
        }
        const QDir dir(info.absoluteFilePath());
        const QString filter = u"*.%1"_s.arg(extension);
        handleMessage(VLMessageInformation,
                      u"indexing packages (%2) in %1 "_s.arg(dir.absolutePath(), filter));

        const QFileInfoList packages = dir.entryInfoList(
            {filter}, QDir::Dirs | QDir::NoSymLinks | QDir::Readable | QDir::NoDotAndDotDot,
            QDir::NoSort);
        if (isGuarded && packages.isEmpty())
            contentGuard().warn(path, u"holds no package (%1)"_s.arg(filter));
        for (const QFileInfo& package : packages)
            loadPackage(package);

        const QString canonicalPath = dir.canonicalPath();
        if (!d->indexedPaths.contains(canonicalPath))
            d->indexedPaths.prepend(canonicalPath);
    }
}

void VLManager::loadPackage(const QFileInfo& package)
{
    const QDir dir(package.absoluteFilePath());
    handleMessage(VLMessageInformation, u"indexing control files in %1"_s.arg(dir.absolutePath()));
    const QString controlDirectory = Settings::controlDirectory(d->settings);
    const QString packagePath = package.canonicalFilePath();

    QFileInfoList pending{QFileInfo(dir.absoluteFilePath(controlDirectory))};
    while (!pending.isEmpty()) {
        const QFileInfo current = pending.takeFirst();
        handleMessage(VLMessageInformation,
                      u"looking for control files in :%1"_s.arg(current.absoluteFilePath()));
        const QDir directory(current.absoluteFilePath());
        const QString directoryPath = directory.canonicalPath();
        // The filter lets no directory through, so the walk ends with the control directory itself.
        const QFileInfoList entries = directory.entryInfoList(
            {u"*.xml"_s}, QDir::Files | QDir::NoSymLinks | QDir::Readable | QDir::NoDotAndDotDot,
            QDir::NoSort);
        for (const QFileInfo& entry : entries) {
            if (entry.isDir()) {
                pending.append(entry);
            } else if (entry.isFile()) {
                const QString controlFile = pathIn(directoryPath, entry.fileName());
                handleMessage(VLMessageInformation, u"found control file :%1"_s.arg(controlFile));
                d->index->setResolvedPaths(controlFile, packagePath);
                indexControFile(controlFile, packagePath);
            }
        }
    }
    d->index->setResolvedPaths(QString(), QString());
}

void VLManager::indexControFile(const QString& controlFile, const QString& packagePath)
{
    d->index->indexControlFile(controlFile, packagePath);
}

QStringList VLManager::searchPaths()
{
    return d->searchPaths;
}

QStringList VLManager::keys()
{
    return d->index->keys();
}

VLXmlElement* VLManager::retrieve(const QString& key, QString& path, int& depth,
                                  VLXmlElement*& root)
{
    const QLocale locale(Settings::contentLocale(d->settings));
    const QLocale fallback(Settings::contentFallbackLocale(d->settings));

    QElapsedTimer timer;
    timer.start();
    VLXmlElement* element = d->index->retrieve(key, locale, path, depth, root);
    if (!element)
        element = d->index->retrieve(key, fallback, path, depth, root);
    if (!element)
        return nullptr;

    handleMessage(VLMessageInformation,
                  u"Retrieved %1 in %2 seconds"_s.arg(key, QString::number(secondsSince(timer))));
    return element;
}

QLocale VLManager::currentLocale()
{
    QString name = Settings::translationLocale(d->settings);
    if (name.isEmpty())
        name = Settings::translationFallbackLocale(d->settings);
    return name.isEmpty() ? QLocale::system() : QLocale(name);
}

QString VLManager::interpolate(const QString& text)
{
    return interpolate(text, d->globalProperties);
}

QString VLManager::interpolate(const QString& text, const QMap<QString, QVariant>& variables)
{
    if (Settings::guardContent(d->settings))
        return interpolateGuarded(text, variables);
    // Made anew each time: texts are filled in once per show, and nothing of it stays in memory.
    // clazy:excludeall=use-static-qregularexpression
    const QRegularExpression pattern(u"\\%\\(([-_a-zA-Z0-9]+)\\)s"_s);
    QString result = text;
    qsizetype position = 0;
    for (;;) {
        const QRegularExpressionMatch match = pattern.match(result, position);
        if (!match.hasMatch())
            return result;
        position = match.capturedStart();
        const QString replacement = variables.value(match.captured(1)).toString();
        // The scan goes on at the start of a replacement, so that references in it are filled too.
        if (replacement.isNull())
            position += match.capturedLength();
        else
            result.replace(position, match.capturedLength(), replacement);
    }
}

QString VLManager::interpolateGuarded(const QString& text, const QMap<QString, QVariant>& variables)
{
    const auto warnOfText = [this](const QString& warning) {
        if (d->textWarnings.contains(warning))
            return;
        d->textWarnings.insert(warning);
        handleMessage(VLMessageWarning, warning);
    };
    const VLTextExpansion expansion(text, variables);
    const QStringList names = expansion.recursiveNames();
    for (const QString& name : names)
        warnOfText(u"the variable \"%1\" contains itself"_s.arg(name));
    if (expansion.isCutOff())
        warnOfText(u"a text with variables is longer than 1 MiB and was cut off"_s);
    return expansion.result();
}

bool VLManager::openExternalResource(const QString& resource)
{
    VLExternalResourceType type = VLResourceDocumentation;
    const QUrl url(resource, QUrl::StrictMode);
    if (url.isValid() && !url.scheme().isEmpty())
        type = VLResourceUrl;
    else if (resource.contains(u'/'))
        type = VLResourcePath;

    const bool isAllowed = type == VLResourceDocumentation
        ? Settings::documentationAllowed(d->settings)
        : Settings::externalLinksEnabled(d->settings);
    if (!isAllowed)
        return false;
    return d->interface->openExternalResource(type, resource);
}

bool VLManager::mouseMoveEventFilter(QObject* /*object*/, QMouseEvent* event)
{
    if (d->tooltipWindow && d->tooltipWindow->isVisible())
        d->tooltipWindow->checkMousePosition(event->globalPosition().toPoint());
    return false;
}

bool VLManager::mouseButtonEventFilter(QObject* object, QMouseEvent* /*event*/)
{
    if (!object || !object->isWidgetType() || !d->tooltipWindow)
        return false;
    if (!d->tooltipWindow->isVisible())
        return false;
    const auto* widget = static_cast<QWidget*>(object);
    if (widget == d->tooltipWindow || d->tooltipWindow->isAncestorOf(widget))
        return false;

    if (d->tooltipWindow->view()->stayOpen())
        d->tooltipWindow->activateWindow();
    else
        d->tooltipWindow->hide();
    return false;
}

void VLManager::initializeTooltipWindow()
{
    if (d->tooltipWindow)
        return;

    d->tooltipWindow = new VLWidget(this, nullptr);
    auto* view = new VLView(this, nullptr);
    QWidget* container = QWidget::createWindowContainer(view, d->tooltipWindow);
    auto* layout = new QHBoxLayout(d->tooltipWindow);
    d->tooltipWindow->SetContainerWidget(container);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(container);
    d->tooltipWindow->setView(view);
}

bool VLManager::eventFilter(QObject* object, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
        if (mouseButtonEventFilter(object, static_cast<QMouseEvent*>(event)))
            return true;
        break;
    case QEvent::MouseMove:
        mouseMoveEventFilter(object, static_cast<QMouseEvent*>(event));
        break;
    case QEvent::ToolTip: {
        const QString key = keyForObject(object);
        return show(key, static_cast<QHelpEvent*>(event)->globalPos(), object);
    }
    case QEvent::ApplicationDeactivate:
        if (d->tooltipWindow)
            d->tooltipWindow->hide();
        break;
    default:
        break;
    }
    return QObject::eventFilter(object, event);
}

bool VLManager::show(const QString& key, const QPoint& position, QObject* reference)
{
    handleMessage(VLMessageInformation, u"looking for Vidlet for key:%1"_s.arg(key));
    if (!d->isAllowedToShow())
        return false;
    initializeTooltipWindow();
    auto* widget =
        reference && reference->isWidgetType() ? static_cast<QWidget*>(reference) : nullptr;
    if (d->isOnShow(key, widget)) {
        d->hover().revive();
        return true;
    }

    FoundTip tip;
    tip.element = retrieve(key, tip.path, tip.depth, tip.root);
    if (!tip.element && !d->hover().isPartOfTip(widget)) {
        const QString fallback = Settings::fallbackKey(d->settings);
        if (d->isFallbackOnShow(fallback, widget)) {
            d->hover().revive();
            return contentOf(d->tooltipWindow) != nullptr;
        }
        tip = d->findFallback(fallback);
    }
    if (!tip.element || !tip.root)
        return d->showWithoutContent(key, position, widget);
    // An index of the host's may hand out the very element that is on show.
    if (d->tooltipWindow->isVisible() && contentOf(d->tooltipWindow) == tip.element
        && d->hover().isTipOf(widget))
        return true;

    const QPoint tipPosition = tooltipPosition(position, widget);
    d->replaceContent(tip.element);
    d->askForShortcut(key, reference, tip.element);
    d->tooltipWindow->showWithContent(reference, tipPosition, tip.element, tip.packageRoot());
    d->tooltipWindow->raise();
    return true;
}

bool VLManager::showAnchored(const QString& key, const QPoint& position, QObject* reference,
                             const VLTipAnchor& anchor)
{
    const QScopedValueRollback<bool> calling(d->hostState.isCalling, anchor.isCalled);
    // What asks for nothing is no reason to make a popup.
    if (!d->isAllowedToShow() || (key.isEmpty() && !d->tooltipWindow))
        return false;
    initializeTooltipWindow();
    // A scene may pin its tip while it is being loaded, and a new popup takes the place.
    const QPointer<VLWidget> popup = d->tooltipWindow;
    auto* widget =
        reference && reference->isWidgetType() ? static_cast<QWidget*>(reference) : nullptr;
    VLWidgetPrivate::of(popup).beginRequest(anchor, position, widget);
    const bool isDealtWith = key.isEmpty() ? d->showWithoutContent(key, position, widget)
                                           : show(key, position, reference);
    if (popup)
        VLWidgetPrivate::of(popup).endRequest();
    return isDealtWith;
}

bool VLManager::reserve(VLWidget* popup, QWidget*& window)
{
    if (popup != d->tooltipWindow)
        return false;

    window = d->interface->createWindow();
    d->reservedWindows.append(QPointer<VLWidget>(popup));
    d->tooltipWindow = nullptr;
    initializeTooltipWindow();
    VLHostHooks::tellOfTip(this);
    return true;
}

void VLManager::raise()
{
    d->forEachReserved([](VLWidget* widget) { widget->raise(); });
}

void VLManager::setStayOnTop(bool onTop)
{
    d->forEachReserved(
        [onTop](VLWidget* widget) { VLWidgetPrivate::setStaysOnTop(widget, onTop); });
}

QString VLManager::translateString(const QString& text, const QString& context)
{
    const VLView* view = d->viewToTranslate(this);
    if (!view)
        return text;

    const QString stem = Settings::translationStem(d->settings);
    const QString fileName = u"%1_%2.qm"_s.arg(stem, currentLocale().name());
    const QString file = view->findComponent(translationsAttribute(), ckTranslationDirectory,
                                             Settings::translationDirectoryDefault(), fileName);

    if (!d->translator)
        d->translator = new QTranslator(this);
    // An empty name equals the null one: as long as nothing was loaded the translator stays empty.
    if (!d->isTranslationLoaded(file)) {
        if (!d->loadTranslation(d->admitted(file), contentGuard())) {
            d->translationFile = QString();
            return text;
        }
        d->translationFile = file;
    }
    // As it comes: a text that the file lacks gives an empty string.
    return d->translator->translate(context.toUtf8().constData(), text.toUtf8().constData(),
                                    nullptr, -1);
}

QString VLManager::vidletAttribute(const QString& key, const QString& attribute,
                                   const QString& defaultValue)
{
    if (hasContentWithKey(d->tooltipWindow, key))
        return attributeOr(contentOf(d->tooltipWindow), attribute, defaultValue);

    const auto reserved = std::find_if(
        d->reservedWindows.cbegin(), d->reservedWindows.cend(),
        [&key](const QPointer<VLWidget>& widget) { return hasContentWithKey(widget, key); });
    if (reserved != d->reservedWindows.cend())
        return attributeOr(contentOf(*reserved), attribute, defaultValue);

    FoundTip tip;
    tip.element = retrieve(key, tip.path, tip.depth, tip.root);
    if (!tip.element)
        return defaultValue;
    QString value = attributeOr(tip.element, attribute, defaultValue);
    // By default the element alone: what is above it stays allocated.
    if (Settings::releaseClips(d->settings))
        deleteTreeOf(tip.element);
    else
        delete tip.element;
    return value;
}

} // namespace Vidlets

#include "moc_VLManager.cpp"
