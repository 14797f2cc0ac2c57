// The link to the device's other programs: sets itself up, tells them when the player exits, and
// turns their exit request into sgAppExit().
//
// GUI thread only, except for msg_process_cb() and processMsg(). The library calls those on its
// delivery thread, so they touch no member, and sgAppExit() is emitted there. The owner calls
// exitInnerComm() before it deletes the link; no callback comes after that.
#pragma once

#include <QObject>

class QTimer;

class CInnerCommunication : public QObject
{
    Q_OBJECT

public:
    CInnerCommunication();
    ~CInnerCommunication() override;

    void initInnerComm(); // after a failure, tries again every second
    void exitInnerComm(); // does nothing if the link was never up
    bool isInited() const { return m_bInited; }

    static void msg_process_cb(void* context, void* data, unsigned int length);
    void processMsg(void* data, unsigned int length); // one packet

signals:
    void sgAppExit(); // once for each exit request received; delivery thread

public slots:
    void slotReInitInnerComm();
    void slotAppSwitch(); // sends nothing while the library is not ready

private:
    void setUp();
    void retryLater();

    bool m_bInited = false;
    QTimer* m_pReInitTimer; // child

    static int s_nInitFailReports; // how many more set-up failures are reported
};
