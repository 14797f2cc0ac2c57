// The link to the device's other programs: sets itself up, says when the player leaves, and turns
// the device's exit request into sgAppExit().
//
// GUI thread only, but for msg_process_cb() and processMsg(): the library calls them on its own
// delivery thread, so they touch no member, and sgAppExit() is emitted on that thread. The owner
// calls exitInnerComm() before it deletes the link; no callback arrives after that call.
#pragma once

#include <QObject>

class QTimer;

class CInnerCommunication : public QObject
{
    Q_OBJECT

public:
    CInnerCommunication();
    ~CInnerCommunication() override;

    void initInnerComm(); // after a failure it is repeated every second until it succeeds
    void exitInnerComm(); // does nothing when the link was never up
    bool isInited() const { return m_bInited; }

    static void msg_process_cb(void* context, void* data, unsigned int length);
    void processMsg(void* data, unsigned int length); // one packet

signals:
    void sgAppExit(); // once for each exit request received; delivery thread

public slots:
    void slotReInitInnerComm();
    void slotAppSwitch(); // dropped without a report while the library is not ready

private:
    void setUp();
    void retryLater();

    bool m_bInited = false;
    QTimer* m_pReInitTimer; // child

    static int s_nInitFailReports; // set-up failures of this process that are still reported
};
