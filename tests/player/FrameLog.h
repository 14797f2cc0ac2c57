// Receiver of the engine's hand-off for tests: counts frames, and can keep the worker waiting as a
// surface does that is never painted.
#pragma once

#include <QByteArray>
#include <QMutex>
#include <QMutexLocker>
#include <QSize>
#include <QThread>

#include <atomic>

class FrameLog
{
public:
    static int receive(int format, unsigned long phys, unsigned char* virt, int width, int height,
                       void* user)
    {
        auto* log = static_cast<FrameLog*>(user);
        log->m_valid = log->m_valid && format == 1 && phys != 0 && virt != nullptr;
        {
            const QMutexLocker lock(&log->m_mutex);
            log->m_size = QSize(width, height);
            log->m_bytes = QByteArray(reinterpret_cast<char*>(virt), width * height * 3 / 2);
        }
        ++log->m_frames;
        while (log->m_hold && !QThread::currentThread()->isInterruptionRequested())
            QThread::msleep(1);
        return 0;
    }

    void hold(bool on) { m_hold = on; }
    int frames() const { return m_frames; }
    bool valid() const { return m_valid; }
    QSize size()
    {
        const QMutexLocker lock(&m_mutex);
        return m_size;
    }
    QByteArray bytes()
    {
        const QMutexLocker lock(&m_mutex);
        return m_bytes;
    }

private:
    std::atomic<int> m_frames{0};
    std::atomic<bool> m_valid{true};
    std::atomic<bool> m_hold{false};
    QMutex m_mutex; // guards what follows: the last frame
    QSize m_size;
    QByteArray m_bytes;
};
