// The page manager: the one window. It holds the list page and the player page, shows one of them
// at a time, and runs the program's exit. GUI thread only.
#pragma once

#include <QWidget>

class CInnerCommunication;
class CPagePlayer;
class CPagePlayerList;

class CPageMain : public QWidget
{
    Q_OBJECT

public:
    explicit CPageMain(QWidget* parent); // shows itself over the whole screen
    ~CPageMain() override;

signals:
    void sgAppExit(); // after the window has closed; ends the event loop

public slots:
    void slotExitApp(); // tells the device, closes the window, emits sgAppExit()
    void slotPagePlayerListToPagePlayer();
    void slotPagePlayerToPagePlayerList();

private:
    void coverScreen();
    void createLink();
    void createListPage();
    void createPlayerPage();
    void connectPages();
    void paintBlack();
    void takeKeys();

    CInnerCommunication* m_pInnerComm = nullptr; // no Qt parent; deleted by the destructor
    CPagePlayerList* m_pPagePlayerList = nullptr;
    CPagePlayer* m_pPagePlayer = nullptr;
};

extern CPageMain* g_pPageMain; // the one page manager, owned by main(); null before and after it
