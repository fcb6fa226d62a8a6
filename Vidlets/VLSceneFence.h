// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSCENEFENCE_H
#define VLSCENEFENCE_H

#include "VLContentRoots.h"

#include <QHash>
#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QQmlAbstractUrlInterceptor>
#include <QQmlNetworkAccessManagerFactory>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUrl>

class QQmlEngine;
class QQmlError;

namespace Vidlets {

class VLIndex;
class VLView;
class VLXmlElement;

/**
 * Keeps the scenes of one view from the network and from files outside of the packages, while
 * ckConfineContent is set, and from what is no regular file, while that or ckGuardContent is set.
 *
 * Internal to the library. The fence stands around the engine of the view from its start, lets all
 * pass while the setting is off, and reads it anew at each request, so that it closes around a
 * scene that runs already. It is a child of the engine, which may call it until its own end.
 *
 * Threads: intercept(), create() and allows() are called on the threads of the engine too. They go
 * by the state of the last request of the user-interface thread, guarded by m_mutex; all of an
 * engine's work begins with such a request. All else belongs to the user-interface thread.
 */
class VLSceneFence
    : public QObject
    , public QQmlAbstractUrlInterceptor
    , public QQmlNetworkAccessManagerFactory
{
    Q_OBJECT

public:
    /// Puts the fence around the engine of @p view. Both outlive their use of each other.
    explicit VLSceneFence(VLView* view);

    /// Lets go of the view, which is about to end before its engine does. The fence stays as it is.
    void detach();

    /// Makes ready for another scene: what was refused to the one before is told of again.
    void beginScene();

    /// Returns whether a scene may have the file @p path; warns where not. Always true while the
    /// setting is off.
    bool admitsFile(const QString& path);

    /// Returns whether the scene @p path can be tried without harm; the engine itself refuses a
    /// directory. Always true while nothing is guarded.
    bool isReadable(const QString& path);

    /// Returns the same as admitsFile() without a warning.
    bool isInside(const QString& path);

    /// Takes the addresses of outer files out of the texts and attributes of @p content, so that no
    /// text that shows them loads a picture from there. @p content may be null.
    void cleanContent(VLXmlElement* content);

    /// Returns whether @p error only tells that something is not there which was refused, and has
    /// been warned of by that.
    bool isEcho(const QQmlError& error) const;

    /// Returns whether a request for @p url may go out. @p isWrite tells of one that sends data.
    bool allows(const QUrl& url, bool isWrite);

    QUrl intercept(const QUrl& url, DataType type) override;
    QNetworkAccessManager* create(QObject* parent) override;

private Q_SLOTS:
    void judgeSender();

private:
    /// What the other threads go by.
    struct State
    {
        bool isClosed = false;
        /// Whether to refuse what is no regular file, also where the fence is open.
        bool isGuarded = false;
        VLContentRoots roots;
    };

    /// What was found in one state of a program.
    struct Scan
    {
        qint64 size = 0;
        qint64 modifiedMs = 0;
        qint64 changedMs = 0;
        quint64 rootsRevision = 0;
        QStringList strays;

        bool isOfSameState(const Scan& other) const
        {
            return size == other.size && modifiedMs == other.modifiedMs
                && changedMs == other.changedMs && rootsRevision == other.rootsRevision;
        }
    };

    void refresh(const QString& path = QString());
    void setState(const State& state);
    State state() const;
    static bool isOnInterfaceThread();

    static bool isHazardAt(const QUrl& url, DataType type);
    QStringList straysInProgram(const State& state, const QString& path);
    QUrl judgeCode(const State& state, const QUrl& url);
    QUrl judgeModule(const State& state, const QUrl& url);
    QUrl judgeAddress(const State& state, const QUrl& url);

    static QString strayPicture(const State& state, const QString& path);

    void cleanElement(VLXmlElement* element, const QUrl& base);
    QString cleaned(const QString& text, const QUrl& base);

    void refuse(const QString& what);
    void warn(const QString& what);
    void stopWorkers();
    void sweepLater();
    void sweep();
    void sweepBelow(QObject* root);
    void meet(QObject* object);
    void forgetAll();
    void judgeText(QObject* text);

    QPointer<VLView> m_view;
    QPointer<VLIndex> m_index;
    QQmlEngine* m_engine;
    mutable QMutex m_mutex;
    State m_state; ///< Guarded by m_mutex.
    /// Those of programs that may be loaded, by their path. Guarded by m_mutex.
    QHash<QString, Scan> m_scans;
    /// What the present scene was refused.
    QSet<QString> m_refused;
    /// Compared only; they may be gone.
    QSet<const QObject*> m_stoppedWorkers;
    /// The objects that are looked at whenever they change, or need not be. None of them is gone.
    QSet<QObject*> m_met;
    /// Those of them that have changed since they were looked at.
    QSet<QObject*> m_changed;
    bool m_isSweepDue = false;
};

} // namespace Vidlets

#endif
