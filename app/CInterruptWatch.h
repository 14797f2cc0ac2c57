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
    // Once, even for several interrupts: the program exits only once.
    void sgInterrupted();

private slots:
    void slotReadable();

private:
    QSocketNotifier* m_pNotifier;
};
