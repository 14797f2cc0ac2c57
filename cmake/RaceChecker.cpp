// Part of every program that is built for the thread sanitizer. GLib, GStreamer and Qt are not
// instrumented and their locks are no pthread locks, so the sanitizer would take whatever is handed
// over under one of them for a race. Here it is told of them; what is not handed over properly
// still shows.
#include <QMutex>
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

} // namespace

extern "C" {

void g_mutex_lock(GMutex* mutex)
{
    static const auto real = next<void (*)(GMutex*)>("g_mutex_lock");
    real(mutex);
    __tsan_acquire(mutex);
}

gboolean g_mutex_trylock(GMutex* mutex)
{
    static const auto real = next<gboolean (*)(GMutex*)>("g_mutex_trylock");
    const gboolean locked = real(mutex);
    if (locked)
        __tsan_acquire(mutex);
    return locked;
}

void g_mutex_unlock(GMutex* mutex)
{
    static const auto real = next<void (*)(GMutex*)>("g_mutex_unlock");
    __tsan_release(mutex);
    real(mutex);
}

void g_cond_wait(GCond* condition, GMutex* mutex)
{
    static const auto real = next<void (*)(GCond*, GMutex*)>("g_cond_wait");
    __tsan_release(mutex);
    real(condition, mutex);
    __tsan_acquire(mutex);
}

gboolean g_cond_wait_until(GCond* condition, GMutex* mutex, gint64 end)
{
    static const auto real = next<gboolean (*)(GCond*, GMutex*, gint64)>("g_cond_wait_until");
    __tsan_release(mutex);
    const gboolean woken = real(condition, mutex, end);
    __tsan_acquire(mutex);
    return woken;
}

} // extern "C"

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto real = next<void (*)(QMutex*)>("_ZN6QMutex4lockEv");
    real(this);
    __tsan_acquire(this);
}

bool QMutex::tryLock(int timeout) QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto real = next<bool (*)(QMutex*, int)>("_ZN6QMutex7tryLockEi");
    const bool locked = real(this, timeout);
    if (locked)
        __tsan_acquire(this);
    return locked;
}

void QMutex::unlock() noexcept
{
    static const auto real = next<void (*)(QMutex*)>("_ZN6QMutex6unlockEv");
    __tsan_release(this);
    real(this);
}

bool QWaitCondition::wait(QMutex* mutex, unsigned long time)
{
    static const auto real = next<bool (*)(QWaitCondition*, QMutex*, unsigned long)>(
        "_ZN14QWaitCondition4waitEP6QMutexm");
    __tsan_release(mutex);
    const bool woken = real(this, mutex, time);
    __tsan_acquire(mutex);
    return woken;
}
