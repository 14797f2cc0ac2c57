// One playback, from the start of a file until it is stopped: what the engine reports of it, and
// the watch over its start. A report that is still on its way when the playback ends goes with it,
// so none can stop, start or time the next one. GUI thread only.
#pragma once

#include <QObject>

class CPlayer;
class QTimer;

class CPlayback : public QObject
{
    Q_OBJECT

public:
    CPlayback(CPlayer* player, QObject* parent); // before the file is started
    void end();                                  // no signal any more; it deletes itself

signals:
    // As the engine's, but never inside the call that starts the file.
    void sgPlayFinished();
    void sgPlayError(); // also when the start gets nowhere
    void sgUpdateData();

private slots:
    void slotWatchStart();

private:
    CPlayer* const m_pPlayer;
    QTimer* m_pWatch;      // child
    int m_nStillTicks = 0; // looks in a row that found nothing moving
};
