// Tells the service manager that the event loop still runs, so that a frozen program is started
// again: a decoder that does not return would hold the GUI thread for ever. Does nothing if the
// service manager does not ask for it (WATCHDOG_USEC and NOTIFY_SOCKET, see sd_notify(3)). GUI
// thread.
#pragma once

#include <QByteArray>
#include <QObject>

class CServiceWatch : public QObject
{
public:
    explicit CServiceWatch(QObject* parent = nullptr);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    QByteArray m_strSocket; // a path, or "@" and an abstract name
};
