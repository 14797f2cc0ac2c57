// What the engine reports of one playback, from the start of a file until it is stopped. Ending the
// playback drops the reports that are still queued, so none of them stops or updates the next file.
// GUI thread only.
#pragma once

#include <QObject>

class CPlayer;

class CPlayback : public QObject
{
    Q_OBJECT

public:
    CPlayback(CPlayer* player, QObject* parent); // before the file is started
    void end();                                  // emits nothing more, and deletes itself

signals:
    // The engine's signals, queued: none arrives inside the call that starts the file.
    void sgPlayFinished();
    void sgPlayError();
    void sgUpdateData();
};
