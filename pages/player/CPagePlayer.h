// The page on which video is watched: the video surface over its whole area, the control bar over
// the bottom of it, and the engine. It plays the play list file by file, hides the bar after 10 s
// without activity, and lets the user choose a view by digit keys or taps. GUI thread only;
// CPlayback says why the engine's signals arrive queued.
#pragma once

#include <QWidget>

class CGLWndPlayer;
class CPagePlayerControl;
class CPlayback;
class CPlayer;
class QTimer;

class CPagePlayer : public QWidget
{
    Q_OBJECT

public:
    explicit CPagePlayer(QWidget* parent); // places itself by the insets of globals.h
    ~CPagePlayer() override;

    void enterPage(); // before the page is shown
    void leavePage(); // before it is hidden: stops playback and empties the play list
    void showPagePlayerControl();

signals:
    void sgBackToPagePlayerList();

public slots:
    void slotPlayInMultiFileMode(); // plays the next file of the play list
    void slotHidePagePlayerControl();
    void slotUpdateData();
    void slotUpdatePlayingState(bool bPlaying, bool bPause);
    void slotRestartPlay();
    void slotKeyEventUpdate();
    void slotPrepare(); // makes the first playback start as fast as later ones

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private slots:
    void slotCmdPlay();
    void slotCmdStop();
    void slotCmdBackward();
    void slotCmdForward();

private:
    friend struct IdleTime; // of the tests, which do not wait for 10 s

    void placeInside(const QWidget& parent);
    void createSurface();
    void createControlBar();
    void connectControlBar();
    void createEngine();
    void connectEngine();
    void createHideTimer();

    void beginPlayback(); // before the engine is told to start a file
    void stopPlayback();
    void showVideo(bool on);
    void selectView(int view);
    int quarterAt(const QPointF& position) const;

    CGLWndPlayer* m_pGLWndPlayer = nullptr;
    CPagePlayerControl* m_pPlayerControl = nullptr;
    CPlayer* m_pPlayer = nullptr; // no Qt parent; deleted by the destructor
    QTimer* m_pHideTimer = nullptr;
    qint64 m_nLastEventTimeUs = 0;    // of currentTimeUs()
    CPlayback* m_pPlayback = nullptr; // child; null while no file is loaded
};
