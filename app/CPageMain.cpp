#include "app/CPageMain.h"

#include "comm/CInnerCommunication.h"
#include "common/CPlayerDatas.h"
#include "common/globals.h"
#include "pages/list/CPagePlayerList.h"
#include "pages/player/CPagePlayer.h"

#include <QDebug>
#include <QTimer>

namespace {

constexpr int kPrepareAfterMs = 300; // the list is on the screen by then

} // namespace

CPageMain* g_pPageMain = nullptr;

CPageMain::CPageMain(QWidget* parent) : QWidget(parent)
{
    coverScreen();
    createLink();
    createListPage();
    createPlayerPage();
    connectPages();
    CPlayerDatas::getInstance();
    paintBlack();
    show();
    takeKeys();
    QTimer::singleShot(kPrepareAfterMs, m_pPagePlayer, SLOT(slotPrepare()));
}

CPageMain::~CPageMain()
{
    m_pInnerComm->exitInnerComm();
    delete m_pInnerComm;
    m_pInnerComm = nullptr;
    CPlayerDatas::releaseInstance();
}

void CPageMain::coverScreen()
{
    setWindowState(windowState() | Qt::WindowFullScreen);
    setGeometry(0, 0, gScreenW, gScreenH);
}

void CPageMain::createLink()
{
    // Its sgAppExit() stays unconnected on purpose: other programs may ask, but only the user
    // exits.
    m_pInnerComm = new CInnerCommunication;
    m_pInnerComm->initInnerComm();
}

void CPageMain::createListPage()
{
    m_pPagePlayerList = new CPagePlayerList(this);
    m_pPagePlayerList->enterPage();
    m_pPagePlayerList->setGeometry(0, 0, width(), height());
    m_pPagePlayerList->show();
    connect(m_pPagePlayerList, SIGNAL(sgExitApp()), this, SLOT(slotExitApp()));
}

void CPageMain::createPlayerPage()
{
    m_pPagePlayer = new CPagePlayer(this);
    m_pPagePlayer->hide();
}

void CPageMain::connectPages()
{
    connect(m_pPagePlayerList, SIGNAL(sgSwitchToPagePlayer()), this,
            SLOT(slotPagePlayerListToPagePlayer()));
    connect(m_pPagePlayer, SIGNAL(sgBackToPagePlayerList()), this,
            SLOT(slotPagePlayerToPagePlayerList()));
    connect(m_pPagePlayerList, SIGNAL(sgStartToPlay()), m_pPagePlayer,
            SLOT(slotPlayInMultiFileMode()));
}

void CPageMain::paintBlack()
{
    QPalette colours = palette();
    colours.setBrush(QPalette::All, QPalette::Window, QBrush(Qt::black));
    setAutoFillBackground(true);
    setPalette(colours);
}

// Without a window manager, no one activates the window. Keys would then go to the widget that
// asked for the focus last: a button of the hidden control bar.
void CPageMain::takeKeys()
{
    activateWindow();
    m_pPagePlayerList->placeFocus();
}

void CPageMain::slotExitApp()
{
    // Exit and an interrupt can come together. Only the first finds the window open.
    if (isVisible() && m_pInnerComm->isInited())
        m_pInnerComm->slotAppSwitch();
    close();
    emit sgAppExit();
}

void CPageMain::slotPagePlayerListToPagePlayer()
{
    qDebug() << "+++ CPageMain::slotPagePlayerListToPagePlayer() ...";
    m_pPagePlayerList->leavePage();
    m_pPagePlayerList->hide();
    m_pPagePlayer->enterPage();
    m_pPagePlayer->show();
}

void CPageMain::slotPagePlayerToPagePlayerList()
{
    qDebug() << "+++ CPageMain::slotPagePlayerToPagePlayerList() ...";
    m_pPagePlayer->leavePage();
    m_pPagePlayer->hide();
    m_pPagePlayerList->enterPage();
    m_pPagePlayerList->show();
}
