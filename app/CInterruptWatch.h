// Brings SIGINT from the signal context into the event loop. GUI thread.
#pragma once

#include <QObject>

class QSocketNotifier;

class CInterruptWatch : public QObject
{
    Q_OBJECT

public:
    explicit CInterruptWatch(int descriptor, QObject* parent = nullptr);

signals:
    // Once, however many interrupts arrived: the program leaves only once.
    void sgInterrupted();

private slots:
    void slotReadable();

private:
    QSocketNotifier* m_pNotifier;
};
