// Part of every program that is built for the thread sanitizer. GLib, GStreamer and Qt are not
// instrumented and their locks are no pthread locks, so the sanitizer would take whatever is handed
// over under one of them for a race, and would not know in which order they are taken. Here it is
// told of them.
#include "tests/sanitizers/RaceChecker.h"

#include <QMutex>
#include <QThread>
#include <QWaitCondition>

#include <dlfcn.h>
#include <glib.h>
#include <sanitizer/tsan_interface.h>

namespace {

// The library's own function behind the one that stands in for it here.
template <typename Function> Function next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

STAND_IN void locking(void* mutex, unsigned how = 0)
{
    __tsan_mutex_pre_lock(mutex, how | __tsan_mutex_write_reentrant);
}

STAND_IN void locked(void* mutex, unsigned how = 0)
{
    __tsan_mutex_post_lock(mutex, how | __tsan_mutex_write_reentrant, 1);
}

STAND_IN void tried(void* mutex, bool isLocked)
{
    locked(mutex, __tsan_mutex_try_lock | (isLocked ? 0 : __tsan_mutex_try_lock_failed));
}

// Told before it happens: until then nobody else gets the lock.
STAND_IN void unlocking(void* mutex)
{
    __tsan_mutex_pre_unlock(mutex, 0);
    __tsan_mutex_post_unlock(mutex, 0);
}

} // namespace

extern "C" {

STAND_IN void g_mutex_clear(GMutex* mutex)
{
    static const auto real = next<void (*)(GMutex*)>("g_mutex_clear");
    __tsan_mutex_destroy(mutex, 0);
    real(mutex);
}

STAND_IN void g_mutex_lock(GMutex* mutex)
{
    static const auto real = next<void (*)(GMutex*)>("g_mutex_lock");
    locking(mutex);
    real(mutex);
    locked(mutex);
}

STAND_IN gboolean g_mutex_trylock(GMutex* mutex)
{
    static const auto real = next<gboolean (*)(GMutex*)>("g_mutex_trylock");
    locking(mutex, __tsan_mutex_try_lock);
    const gboolean isLocked = real(mutex);
    tried(mutex, isLocked);
    return isLocked;
}

STAND_IN void g_mutex_unlock(GMutex* mutex)
{
    static const auto real = next<void (*)(GMutex*)>("g_mutex_unlock");
    unlocking(mutex);
    real(mutex);
}

STAND_IN void g_cond_wait(GCond* condition, GMutex* mutex)
{
    static const auto real = next<void (*)(GCond*, GMutex*)>("g_cond_wait");
    unlocking(mutex);
    real(condition, mutex);
    locking(mutex);
    locked(mutex);
}

STAND_IN gboolean g_cond_wait_until(GCond* condition, GMutex* mutex, gint64 end)
{
    static const auto real = next<gboolean (*)(GCond*, GMutex*, gint64)>("g_cond_wait_until");
    unlocking(mutex);
    const gboolean woken = real(condition, mutex, end);
    locking(mutex);
    locked(mutex);
    return woken;
}

} // extern "C"

STAND_IN QMutex::~QMutex()
{
    static const auto real = next<void (*)(QMutex*)>("_ZN6QMutexD1Ev");
    __tsan_mutex_destroy(this, 0);
    real(this);
}

STAND_IN void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto real = next<void (*)(QMutex*)>("_ZN6QMutex4lockEv");
    locking(this);
    real(this);
    locked(this);
}

STAND_IN bool QMutex::tryLock(int timeout) QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto real = next<bool (*)(QMutex*, int)>("_ZN6QMutex7tryLockEi");
    locking(this, __tsan_mutex_try_lock);
    const bool isLocked = real(this, timeout);
    tried(this, isLocked);
    return isLocked;
}

STAND_IN void QMutex::unlock() noexcept
{
    static const auto real = next<void (*)(QMutex*)>("_ZN6QMutex6unlockEv");
    unlocking(this);
    real(this);
}

STAND_IN bool QWaitCondition::wait(QMutex* mutex, unsigned long time)
{
    static const auto real = next<bool (*)(QWaitCondition*, QMutex*, unsigned long)>(
        "_ZN14QWaitCondition4waitEP6QMutexm");
    unlocking(mutex);
    const bool woken = real(this, mutex, time);
    locking(mutex);
    locked(mutex);
    return woken;
}

// The lock of a QThread orders a worker's call of exit() before whoever finds it ended.
STAND_IN void QThread::exit(int code)
{
    static const auto real = next<void (*)(QThread*, int)>("_ZN7QThread4exitEi");
    __tsan_release(this);
    real(this, code);
}

STAND_IN bool QThread::wait(QDeadlineTimer deadline)
{
    static const auto real =
        next<bool (*)(QThread*, QDeadlineTimer)>("_ZN7QThread4waitE14QDeadlineTimer");
    const bool ended = real(this, deadline);
    if (ended)
        __tsan_acquire(this);
    return ended;
}

STAND_IN bool QThread::isRunning() const
{
    static const auto real = next<bool (*)(const QThread*)>("_ZNK7QThread9isRunningEv");
    const bool running = real(this);
    if (!running)
        __tsan_acquire(const_cast<QThread*>(this));
    return running;
}
