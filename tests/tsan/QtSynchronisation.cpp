// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// What ThreadSanitizer cannot see by itself. QtCore comes without instrumentation, so the locks,
/// semaphores and waits that are compiled into it order nothing in the eyes of the sanitizer, and
/// everything that they guard would be reported. These definitions stand before those of the
/// library: each calls the real one and tells the sanitizer what it did. QMutex needs none, since
/// its inline part tells by itself.

#include <QRecursiveMutex>
#include <QRunnable>
#include <QSemaphore>
#include <QThread>
#include <QThreadPool>

#include <functional>
#include <utility>

#include <dlfcn.h>
#include <pthread.h>
#include <sanitizer/tsan_interface.h>

// Not declared in any header of the compiler.
extern "C" {
void __tsan_acquire(void* address); // NOLINT(bugprone-reserved-identifier)
void __tsan_release(void* address); // NOLINT(bugprone-reserved-identifier)
void AnnotateIgnoreReadsBegin(const char* file, int line);
void AnnotateIgnoreReadsEnd(const char* file, int line);
void AnnotateIgnoreWritesBegin(const char* file, int line);
void AnnotateIgnoreWritesEnd(const char* file, int line);
}

using namespace Qt::StringLiterals;

namespace {

/// The definition of @p mangledName that the program would have without this file.
template <typename Function> Function realFunction(const char* mangledName)
{
    void* address = dlsym(RTLD_NEXT, mangledName);
    if (!address)
        qFatal("There is no %s", mangledName);
    return reinterpret_cast<Function>(address);
}

thread_local bool isIgnored = false;

constexpr unsigned kMutexFlags = __tsan_mutex_write_reentrant;

void endToIgnoreThisThread()
{
    if (!isIgnored)
        return;
    isIgnored = false;
    AnnotateIgnoreWritesEnd(__FILE__, __LINE__);
    AnnotateIgnoreReadsEnd(__FILE__, __LINE__);
}

void endToIgnore(void*)
{
    endToIgnoreThisThread();
}

/**
 * Has the sanitizer take no note of what this thread does to memory from now on.
 *
 * Up to its very end: Qt frees what was the thread's own when the values of its keys are destroyed.
 * That is done in the order in which the keys were made, and Qt's is the older one.
 */
void ignoreThisThread()
{
    static const pthread_key_t key = [] {
        pthread_key_t result = 0;
        pthread_key_create(&result, &endToIgnore);
        return result;
    }();
    pthread_setspecific(key, &key);
    isIgnored = true;
    AnnotateIgnoreReadsBegin(__FILE__, __LINE__);
    AnnotateIgnoreWritesBegin(__FILE__, __LINE__);
}

/// What is handed over with the function is the pool's thread's once it runs.
class Handover : public QRunnable
{
public:
    explicit Handover(std::function<void()> function)
        : m_function(std::move(function))
    {
    }

    void run() override
    {
        endToIgnoreThisThread();
        __tsan_acquire(this);
        m_function();
        // From here on the thread is Qt's: it takes the next from a queue that it shares with all.
        ignoreThisThread();
    }

private:
    std::function<void()> m_function;
};

} // namespace

bool QRecursiveMutex::tryLock(int timeout)
{
    static const auto real =
        realFunction<bool (*)(QRecursiveMutex*, int)>("_ZN15QRecursiveMutex7tryLockEi");
    const unsigned flags = timeout < 0 ? kMutexFlags : kMutexFlags | __tsan_mutex_try_lock;
    __tsan_mutex_pre_lock(this, flags);
    const bool isLocked = real(this, timeout);
    __tsan_mutex_post_lock(this, isLocked ? flags : flags | __tsan_mutex_try_lock_failed, 0);
    return isLocked;
}

void QRecursiveMutex::unlock() noexcept
{
    static const auto real =
        realFunction<void (*)(QRecursiveMutex*)>("_ZN15QRecursiveMutex6unlockEv");
    __tsan_mutex_pre_unlock(this, kMutexFlags);
    real(this);
    __tsan_mutex_post_unlock(this, kMutexFlags);
}

QRecursiveMutex::~QRecursiveMutex()
{
    // Another mutex may be made in the same place, with another order among the others.
    __tsan_mutex_destroy(this, kMutexFlags);
}

void QSemaphore::acquire(int number)
{
    static const auto real = realFunction<void (*)(QSemaphore*, int)>("_ZN10QSemaphore7acquireEi");
    real(this, number);
    __tsan_acquire(this);
}

bool QSemaphore::tryAcquire(int number)
{
    static const auto real =
        realFunction<bool (*)(QSemaphore*, int)>("_ZN10QSemaphore10tryAcquireEi");
    const bool isAcquired = real(this, number);
    if (isAcquired)
        __tsan_acquire(this);
    return isAcquired;
}

bool QSemaphore::tryAcquire(int number, int timeout)
{
    static const auto real =
        realFunction<bool (*)(QSemaphore*, int, int)>("_ZN10QSemaphore10tryAcquireEii");
    const bool isAcquired = real(this, number, timeout);
    if (isAcquired)
        __tsan_acquire(this);
    return isAcquired;
}

void QSemaphore::release(int number)
{
    static const auto real = realFunction<void (*)(QSemaphore*, int)>("_ZN10QSemaphore7releaseEi");
    __tsan_release(this);
    real(this, number);
}

void QThread::start(Priority priority)
{
    static const auto real =
        realFunction<void (*)(QThread*, Priority)>("_ZN7QThread5startENS_8PriorityE");
    // The last that a thread does before others may see that it has ended, be it by waiting or by
    // deleting it, which only an ended one survives.
    connect(
        this, &QThread::finished, this, [this] { __tsan_release(this); }, Qt::DirectConnection);
    connect(this, &QObject::destroyed, [](QObject* thread) { __tsan_acquire(thread); });
    // Loads QML files for the library, and runs nothing of the project's.
    if (objectName().startsWith("QQml"_L1))
        connect(this, &QThread::started, this, &ignoreThisThread, Qt::DirectConnection);
    real(this, priority);
}

bool QThread::wait(QDeadlineTimer deadline)
{
    static const auto real =
        realFunction<bool (*)(QThread*, QDeadlineTimer)>("_ZN7QThread4waitE14QDeadlineTimer");
    const bool hasEnded = real(this, deadline);
    if (hasEnded)
        __tsan_acquire(this);
    return hasEnded;
}

void QThreadPool::start(std::function<void()> functionToRun, int priority)
{
    using Start = void (*)(QThreadPool*, QRunnable*, int);
    static const auto real = realFunction<Start>("_ZN11QThreadPool5startEP9QRunnablei");
    auto* handover = new Handover(std::move(functionToRun));
    __tsan_release(handover);
    real(this, handover, priority);
}
