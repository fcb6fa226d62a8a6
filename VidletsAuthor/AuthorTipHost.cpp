// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorTipHost.h"

#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLHostHooks.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLSafeguards.h>
#include <Vidlets/VLSettings.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QFileInfo>
#include <QGuiApplication>
#include <QQmlError>
#include <QQuickItem>
#include <QRect>

#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

/// What the control of the author asks for; the index knows which tip is meant.
QString anyKey()
{
    return u"tip"_s;
}

VLContext safeguarded(VLContext settings)
{
    VLContext context;
    useSafeguards(context);
    const QList<int> keys = settings.keys();
    for (const int key : keys)
        context.set(key, settings.get(key, QVariant()));
    return context;
}

} // namespace

AuthorTipHost::AuthorTipHost(VLContext& context, const AuthorTipPlaces& places,
                             AuthorTipIndex* index, QWidget* control)
    : VLHostInterface(context, places.dataPaths, index)
    , m_control(control)
{
}

AuthorTipHost::~AuthorTipHost() = default;

bool AuthorTipHost::showTip(const QPoint& position)
{
    return show(anyKey(), position, m_control);
}

QStringList AuthorTipHost::takeWarnings()
{
    return std::exchange(m_warnings, {});
}

void AuthorTipHost::setShortcut(const QString& shortcut)
{
    m_shortcut = shortcut;
}

void AuthorTipHost::setDrafting(bool on)
{
    m_isDrafting = on;
}

VLWidget* AuthorTipHost::showTipIn(QWidget* room)
{
    // A popup is made with the first request, and by a step of this.
    if (!manager()->widget())
        VLHostHooks::warmUp(manager());
    const QPointer<VLWidget> popup = manager()->widget();
    m_popup = popup;
    popup->setAttribute(Qt::WA_DontShowOnScreen);
    const bool isShown = showTip(QPoint()) && popup && popup->view()->content();
    if (isShown) {
        m_room = room;
        popup->view()->setReserved(true);
        popup->view()->setReserved(false);
        m_room = nullptr;
    }
    if (popup)
        popup->setAttribute(Qt::WA_DontShowOnScreen, false);
    return isShown ? popup.data() : nullptr;
}

QString AuthorTipHost::keyAt(QObject* object, const QPoint& /*globalPos*/, QRect* zone)
{
    const bool isControl = m_control && object == m_control;
    if (zone)
        *zone = isControl ? QRect(m_control->mapToGlobal(QPoint()), m_control->size()) : QRect();
    return isControl ? anyKey() : QString();
}

QWidget* AuthorTipHost::createWindow()
{
    return m_room ? m_room.data() : VLHostInterface::createWindow();
}

void AuthorTipHost::handleMessage(VLMessageType type, const QString& message)
{
    if (type <= VLMessageWarning && !m_warnings.contains(message))
        m_warnings.append(message);
    Q_EMIT messageRaised(type, message);
}

QString AuthorTipHost::shortCutForObject(const QString& /*key*/, QObject* /*object*/,
                                         const QString& shortcut)
{
    return m_shortcut.isEmpty() ? shortcut : m_shortcut;
}

QString AuthorTipHost::translateString(const QString& text, const QString& context)
{
    // By that name Qt asks translators which way a language runs, and so do scenes. Authors may
    // want to see the other one.
    if (text == "QT_LAYOUT_DIRECTION"_L1)
        return QGuiApplication::layoutDirection() == Qt::RightToLeft ? u"RTL"_s : u"LTR"_s;
    const QString draft = draftFor(text, context);
    return draft.isNull() ? VLHostInterface::translateString(text, context) : draft;
}

/// Null where there is no draft in the place from which the library would translate.
QString AuthorTipHost::draftFor(const QString& text, const QString& context)
{
    VLWidget* popup = m_popup ? m_popup.data() : manager()->widget();
    const VLView* view = popup ? popup->view() : nullptr;
    if (!m_isDrafting || !view)
        return QString();
    const QString name = u"%1_%2"_s.arg(Settings::translationStem(manager()->context()),
                                        manager()->currentLocale().name());
    const auto find = [view](const QString& file) {
        const QString path =
            view->findComponent(ContentNames::translationsAttribute(), ckTranslationDirectory,
                                Settings::translationDirectoryDefault(), file);
        return QFileInfo(path).isFile() ? path : QString();
    };
    const QString draft = find(name + u".ts"_s);
    const QString released = find(name + u".qm"_s);
    if (!released.isNull() && QFileInfo(released).path() != QFileInfo(draft).path())
        return QString();
    return m_drafts.translation(draft, text, context);
}

AuthorTipSession::AuthorTipSession(const AuthorTipPlaces& places, const VLContext& settings,
                                   QWidget* control)
    : m_context(safeguarded(settings))
    , m_index(&m_context, places.roots)
    , m_host(m_context, places, &m_index, control)
{
}

AuthorTipSession::~AuthorTipSession() = default;

AuthorTipIndex& AuthorTipSession::index()
{
    return m_index;
}

AuthorTipHost& AuthorTipSession::host()
{
    return m_host;
}

QString describe(const QQmlError& error)
{
    const QString file =
        error.url().isLocalFile() ? error.url().toLocalFile() : error.url().toString();
    return u"%1:%2:%3: %4"_s.arg(file, QString::number(qMax(1, error.line())),
                                 QString::number(qMax(1, error.column())), error.description());
}

QString failureOf(const VLView* view)
{
    QStringList errors;
    const QList<QQmlError> viewErrors = view->errors();
    for (const QQmlError& error : viewErrors)
        errors.append(describe(error));
    if (!errors.isEmpty())
        return errors.join(u'\n');
    if (view->source().isEmpty())
        return u"The scene \"%1\" is not found."_s.arg(view->uiRootFilePath());
    const QQuickItem* scene = view->rootObject();
    if (!scene)
        return u"The scene shows nothing."_s;
    if (scene->width() < 1 || scene->height() < 1)
        return u"The scene has no size: width and height of its root are %1 and %2."_s
            .arg(scene->width())
            .arg(scene->height());
    return QString();
}

} // namespace Vidlets

#include "moc_AuthorTipHost.cpp"
