// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLQUICKHOVER_H
#define VLQUICKHOVER_H

#include <Vidlets/VLXmlElement.h>

#include <QList>
#include <QMetaObject>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QPointingDevice>
#include <QQuickWindow>
#include <QTimer>
#include <QWidget>

class QEvent;
class QMouseEvent;
class QQuickItem;
class QTouchEvent;

namespace Vidlets {

class VLHostInterfacePrivate;

/**
 * Asks for the tips of Qt Quick items: at a pointer that rests in a window of theirs, as Qt does
 * for widgets, and at a finger that is held on one, in a QQuickWidget too. What the pointer rests
 * on in a QQuickWidget Qt asks for by itself.
 *
 * Internal to the host kit. It holds back no event.
 */
class VLQuickHover final : public QObject
{
public:
    explicit VLQuickHover(VLHostInterfacePrivate& record);
    ~VLQuickHover() override;

    /// Sees the events of the application.
    void watch(QObject* object, const QEvent* event);
    /// Whether a mouse event of @p object stands for a touch that the scene there has left alone:
    /// the finger that lifts is not to take the tip away.
    static bool isOfFinger(const QObject* object, const QMouseEvent* event);
    /// The tip for @p item, which may be null, has just been asked for: it goes with its item.
    void follow(QQuickItem* item);
    /// The same for what is at @p globalPos in @p widget, if that shows a scene.
    void followItemIn(QObject* widget, const QPoint& globalPos);
    /// The pointer asks for a tip, so that none waits for a finger any longer.
    void endTouchTip();

private:
    Q_DISABLE_COPY_MOVE(VLQuickHover)

    /// What shows items, and where: one of the two, the other null.
    struct Scene
    {
        QPointer<QQuickWindow> window;
        QPointer<QWidget> widget;

        bool isThere() const
        {
            return window || widget;
        }
    };

    static Scene sceneOf(QObject* object);
    void pointerMoved(QObject* object, const QMouseEvent* event);
    void pointerPressed(QObject* object, const QMouseEvent* event);
    void pointerLeft(const QObject* object);
    void touched(QObject* object, const QTouchEvent* event);
    void touchBegan(QObject* object, const QTouchEvent* event);
    void touchMoved(const QTouchEvent* event);
    void showForPointer();
    void showForFinger();
    void cancelTouch() const;
    bool show(const Scene& scene, const QPoint& globalPos);
    void dismiss();
    VLXmlElement* contentUp() const;

    VLHostInterfacePrivate& m_record;

    /// Runs while the pointer rests and its tip has not been asked for yet.
    QTimer m_wakeUp;
    /// Runs after a tip came up, while the next one is to come sooner.
    QTimer m_fallAsleep;
    /// A window of Qt Quick. It is compared with one that is going, too, and is no more than this
    /// then.
    QPointer<QWindow> m_pointerWindow;
    QPoint m_pointer;

    /// Runs while a finger is held and its tip has not been asked for yet.
    QTimer m_hold;
    Scene m_touched;
    QPoint m_finger;
    QPointer<const QPointingDevice> m_touchDevice;
    /// What has come up for a finger.
    QPointer<VLXmlElement> m_touchContent;

    QPointer<QQuickItem> m_item;
    QList<QMetaObject::Connection> m_itemConnections;
    /// What has come up for m_item.
    QPointer<VLXmlElement> m_itemContent;
};

} // namespace Vidlets

#endif
