#include "player/CPlayback.h"

#include "player/CPlayer.h"

#include <QTimer>

namespace {

constexpr int kWatchTickMs = 250;
constexpr int kMostStillTicks = 20; // 5 s

} // namespace

// Queued, all of them: an error for a missing file is reported inside the call that starts it,
// which would go on to report that it plays.
CPlayback::CPlayback(CPlayer* player, QObject* parent)
    : QObject(parent), m_pPlayer(player), m_pWatch(new QTimer(this))
{
    connect(player, SIGNAL(sgPlayFinished()), this, SIGNAL(sgPlayFinished()), Qt::QueuedConnection);
    connect(player, SIGNAL(sgPlayError()), this, SIGNAL(sgPlayError()), Qt::QueuedConnection);
    connect(player, SIGNAL(sgUpdateData()), this, SIGNAL(sgUpdateData()), Qt::QueuedConnection);
    connect(this, SIGNAL(sgUpdateData()), m_pWatch, SLOT(stop()));
    connect(m_pWatch, SIGNAL(timeout()), this, SLOT(slotWatchStart()));
    m_pWatch->start(kWatchTickMs);
}

void CPlayback::end()
{
    disconnect();
    m_pWatch->stop();
    deleteLater(); // it may be one of its own signals that ends it
}

// The pipeline drops an error that a demuxer reports while it is still being plugged in; such a
// file would then start for ever. But a slow disk may need long for a good one, so it is given up
// when nothing moves any more: no thread of the pipeline has been seen computing or waiting for the
// disk. Ticks are counted, not time: a GUI that was busy has not looked.
void CPlayback::slotWatchStart()
{
    if (!m_pPlayer->waitsForData()) {
        m_pWatch->stop();
    } else if (m_pPlayer->isAtWork()) {
        m_nStillTicks = 0;
    } else if (++m_nStillTicks >= kMostStillTicks) {
        m_pWatch->stop();
        emit sgPlayError();
    }
}
