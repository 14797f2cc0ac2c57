#include "pages/player/CPagePlayer.h"

#include "common/CPlayerDatas.h"
#include "common/globals.h"
#include "pages/player/CPagePlayerControl.h"
#include "player/CPlayback.h"
#include "player/CPlayer.h"
#include "player/EngineClock.h"
#include "render/CGLWndPlayer.h"

#include <QTimer>

#include <utility>

namespace {

constexpr int kControlBarHeight = 80; // px
constexpr int kHideTickMs = 50;
constexpr qint64 kBarStaysUs = 9999999;
constexpr float kNsPerSecond = 1000000000.0F;

int wholeSeconds(qint64 ns)
{
    return static_cast<int>(static_cast<float>(ns) / kNsPerSecond + 0.5F);
}

} // namespace

CPagePlayer::CPagePlayer(QWidget* parent) : QWidget(parent)
{
    placeInside(*parent);
    createSurface();
    createControlBar();
    connectControlBar();
    createEngine();
    connectEngine();
    createHideTimer();
}

// Delete the engine first: its worker hands frames to the surface.
CPagePlayer::~CPagePlayer()
{
    delete m_pPlayer;
    m_pPlayer = nullptr;
}

void CPagePlayer::placeInside(const QWidget& parent)
{
    const int left = g_nMarginLeft + g_nPaddingLeft;
    const int top = g_nMarginTop + g_nPaddingTop;
    const int right = g_nMarginRight + g_nPaddingRight;
    const int bottom = g_nMarginBottom + g_nPaddingBottom;
    setGeometry(left, top, parent.width() - left - right, parent.height() - top - bottom);
}

void CPagePlayer::createSurface()
{
    m_pGLWndPlayer = new CGLWndPlayer(this);
    m_pGLWndPlayer->setGeometry(0, 0, width(), height());
    m_pGLWndPlayer->show();
}

void CPagePlayer::createControlBar()
{
    m_pPlayerControl = new CPagePlayerControl(this);
    m_pPlayerControl->setGeometry(0, height() - kControlBarHeight, width(), kControlBarHeight);
    m_pPlayerControl->raise();
    m_pPlayerControl->show();
}

void CPagePlayer::connectControlBar()
{
    connect(m_pPlayerControl, SIGNAL(sgCmdPlay()), this, SLOT(slotCmdPlay()));
    connect(m_pPlayerControl, SIGNAL(sgCmdStop()), this, SLOT(slotCmdStop()));
    connect(m_pPlayerControl, SIGNAL(sgCmdBackward()), this, SLOT(slotCmdBackward()));
    connect(m_pPlayerControl, SIGNAL(sgCmdForward()), this, SLOT(slotCmdForward()));
    connect(m_pPlayerControl, SIGNAL(sgCmdBack()), this, SIGNAL(sgBackToPagePlayerList()));
    connect(m_pPlayerControl, SIGNAL(sgKeyEventUpdate()), this, SLOT(slotKeyEventUpdate()));
}

void CPagePlayer::createEngine()
{
    m_pPlayer = new CPlayer(CGLWndPlayer::OnVideoData, m_pGLWndPlayer);
    m_pPlayer->initPipeline();
}

void CPagePlayer::connectEngine()
{
    connect(m_pPlayer, SIGNAL(sgSendPlayingState(bool, bool)), this,
            SLOT(slotUpdatePlayingState(bool, bool)));
    connect(m_pPlayer, SIGNAL(sgRestartPlay()), this, SLOT(slotRestartPlay()));
}

void CPagePlayer::createHideTimer()
{
    m_pHideTimer = new QTimer(this);
    m_pHideTimer->setInterval(kHideTickMs);
    connect(m_pHideTimer, SIGNAL(timeout()), this, SLOT(slotHidePagePlayerControl()));
}

void CPagePlayer::enterPage()
{
    m_nLastEventTimeUs = currentTimeUs();
    m_pHideTimer->start();
    m_pPlayerControl->showControl();
    // Qt does not repaint a surface when it is shown again, and a hand-off would wait for ever.
    // Queued, because the page is shown after this call.
    QMetaObject::invokeMethod(m_pGLWndPlayer, "update", Qt::QueuedConnection);
}

void CPagePlayer::leavePage()
{
    m_pHideTimer->stop();
    stopPlayback();
    showVideo(false); // or the page would come back black with labels, before any file plays
    CPlayerDatas::getInstance()->clearFiles();
    m_pPlayerControl->resetTime();
    m_pPlayerControl->raise();
    m_pPlayerControl->show();
    m_pGLWndPlayer->wakeFrameDrawn();
}

void CPagePlayer::slotPlayInMultiFileMode()
{
    CPlayerDatas* files = CPlayerDatas::getInstance();
    if (files->isEmpty())
        return;
    files->next();
    if (files->isEnd()) {
        emit sgBackToPagePlayerList();
        return;
    }
    stopPlayback();
    showVideo(true);
    m_pPlayerControl->resetTime();
    const QByteArray path = files->currentFile().toLocal8Bit();
    beginPlayback();
    m_pPlayer->playFile(path.constData());
}

void CPagePlayer::beginPlayback()
{
    m_pPlayback = new CPlayback(m_pPlayer, this);
    connect(m_pPlayback, SIGNAL(sgPlayFinished()), this, SLOT(slotPlayInMultiFileMode()));
    connect(m_pPlayback, SIGNAL(sgPlayError()), this, SLOT(slotCmdStop()));
    connect(m_pPlayback, SIGNAL(sgUpdateData()), this, SLOT(slotUpdateData()));
}

// Drops everything of the stopped file, so that nothing of it reaches the next one: its queued
// reports, the frame that waits to be drawn or is on its way, and its last picture.
void CPagePlayer::stopPlayback()
{
    if (m_pPlayback)
        std::exchange(m_pPlayback, nullptr)->end();
    m_pPlayer->stop();
    m_pGLWndPlayer->refuseFrames(true);
    m_pPlayer->waitForWorker();
    m_pGLWndPlayer->refuseFrames(false);
    m_pGLWndPlayer->forgetPicture();
}

void CPagePlayer::showVideo(bool on)
{
    m_pGLWndPlayer->m_bVideo = on;
    m_pGLWndPlayer->update();
}

void CPagePlayer::selectView(int view)
{
    m_pGLWndPlayer->setSwitch(view);
    m_pGLWndPlayer->update();
}

void CPagePlayer::slotHidePagePlayerControl()
{
    if (currentTimeUs() - m_nLastEventTimeUs <= kBarStaysUs || !m_pPlayerControl->isVisible())
        return;
    m_pPlayerControl->hideControl();
    m_pGLWndPlayer->raise();
    // Otherwise the hidden button keeps the focus and acts on Space.
    setFocus(Qt::OtherFocusReason);
}

void CPagePlayer::slotUpdateData()
{
    const qint64 duration = m_pPlayer->queryDuration();
    const qint64 position = m_pPlayer->queryPosition();
    if (duration != CPlayer::kUnknown)
        m_pPlayerControl->setDuration(wholeSeconds(duration));
    if (position != CPlayer::kUnknown)
        m_pPlayerControl->setPosition(wholeSeconds(position));
}

void CPagePlayer::slotUpdatePlayingState(bool bPlaying, bool bPause)
{
    m_pPlayerControl->updatePlayingState(bPlaying, bPause);
}

void CPagePlayer::slotRestartPlay()
{
    m_pGLWndPlayer->setSwitch(0);
    showVideo(true);
}

void CPagePlayer::slotKeyEventUpdate()
{
    m_nLastEventTimeUs = currentTimeUs();
}

void CPagePlayer::slotPrepare()
{
    m_pGLWndPlayer->prepare(); // first, because loading plugins would delay it
    m_pPlayer->loadAhead();
}

void CPagePlayer::slotCmdPlay()
{
    if (!m_pPlayer->isPlaying())
        beginPlayback();
    m_pPlayer->playPause();
}

void CPagePlayer::slotCmdStop()
{
    stopPlayback();
    showVideo(false);
}

void CPagePlayer::slotCmdBackward()
{
    m_pPlayer->seekBackward();
}

void CPagePlayer::slotCmdForward()
{
    m_pPlayer->seekForward();
}

void CPagePlayer::showPagePlayerControl()
{
    if (m_pPlayerControl->isHidden())
        m_pPlayerControl->showControl();
}
