// Draws with a widget's context in a thread of its own, so that what the driver compiles at a first
// draw keeps nobody waiting. The context belongs to that thread until it has ended.
#pragma once

#include <functional>
#include <future>
#include <thread>

class QOpenGLContext;
class QSurface;
class QThread;

class CRehearsal
{
public:
    // Starts at once. Called in the context's thread, with the context current; none is afterwards.
    explicit CRehearsal(std::function<void()> draw);
    ~CRehearsal(); // waits; the context is back then
    CRehearsal(const CRehearsal&) = delete;
    CRehearsal& operator=(const CRehearsal&) = delete;

private:
    void run();

    const std::function<void()> m_fnDraw;
    QOpenGLContext* const m_pContext;
    QSurface* const m_pSurface;
    QThread* const m_pHome;
    std::promise<QThread*> m_Stage; // the thread that waits for the context
    std::promise<void> m_Moved;     // the context is there
    std::thread m_Thread;           // last: it uses what stands above
};
