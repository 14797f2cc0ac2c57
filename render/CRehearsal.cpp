#include "render/CRehearsal.h"

#include <QOpenGLContext>
#include <QThread>

#include <utility>

CRehearsal::CRehearsal(std::function<void()> draw)
    : m_fnDraw(std::move(draw)),
      m_pContext(QOpenGLContext::currentContext()),
      m_pSurface(m_pContext->surface()),
      m_pHome(m_pContext->thread()),
      m_Thread(&CRehearsal::run, this)
{
    m_pContext->doneCurrent();
    m_pContext->moveToThread(m_Stage.get_future().get());
    m_Moved.set_value();
}

CRehearsal::~CRehearsal()
{
    m_Thread.join();
}

void CRehearsal::run()
{
    m_Stage.set_value(QThread::currentThread());
    m_Moved.get_future().wait();
    if (m_pContext->makeCurrent(m_pSurface)) {
        m_fnDraw();
        m_pContext->doneCurrent();
    }
    m_pContext->moveToThread(m_pHome);
}
