#include "player/CPlayback.h"

#include "player/CPlayer.h"

// All queued: the engine reports a missing file inside the call that starts it, and that call would
// then report that the file plays.
CPlayback::CPlayback(CPlayer* player, QObject* parent) : QObject(parent)
{
    connect(player, SIGNAL(sgPlayFinished()), this, SIGNAL(sgPlayFinished()), Qt::QueuedConnection);
    connect(player, SIGNAL(sgPlayError()), this, SIGNAL(sgPlayError()), Qt::QueuedConnection);
    connect(player, SIGNAL(sgUpdateData()), this, SIGNAL(sgUpdateData()), Qt::QueuedConnection);
}

void CPlayback::end()
{
    disconnect();
    deleteLater(); // one of its own signals may be what ends it
}
