// CPagePlayer's keys and taps.
#include "pages/player/CPagePlayer.h"

#include "pages/player/CPagePlayerControl.h"
#include "player/CPlayer.h"
#include "render/CGLWndPlayer.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace {

constexpr int kWholePicture = 0;
constexpr int kUpperLeft = 1;
constexpr int kUpperRight = 2;
constexpr int kLowerLeft = 3;
constexpr int kLowerRight = 4;

// The view of each digit key. 0 and 5 to 9 show the whole picture.
constexpr int kViewOfDigit[] = {kWholePicture, kUpperLeft,    kUpperRight,   kLowerLeft,
                                kLowerRight,   kWholePicture, kWholePicture, kWholePicture,
                                kWholePicture, kWholePicture};

bool isDigit(int key)
{
    return key >= Qt::Key_0 && key <= Qt::Key_9;
}

} // namespace

void CPagePlayer::keyPressEvent(QKeyEvent* event)
{
    slotKeyEventUpdate();
    QWidget::keyPressEvent(event);
}

void CPagePlayer::keyReleaseEvent(QKeyEvent* event)
{
    slotKeyEventUpdate();
    const int key = event->key();
    if (!isDigit(key))
        showPagePlayerControl();
    else if (m_pPlayer->isPlaying())
        selectView(kViewOfDigit[key - Qt::Key_0]);
    QWidget::keyReleaseEvent(event);
}

void CPagePlayer::mousePressEvent(QMouseEvent* event)
{
    slotKeyEventUpdate();
    QWidget::mousePressEvent(event);
}

void CPagePlayer::mouseReleaseEvent(QMouseEvent* event)
{
    slotKeyEventUpdate();
    if (m_pPlayerControl->isHidden())
        showPagePlayerControl();
    else if (m_pGLWndPlayer->viewMode() != kWholePicture)
        selectView(kWholePicture);
    else
        selectView(quarterAt(event->localPos()));
    QWidget::mouseReleaseEvent(event);
}

int CPagePlayer::quarterAt(const QPointF& position) const
{
    const bool left = qRound(position.x()) < width() / 2;
    const bool upper = qRound(position.y()) < height() / 2;
    if (upper)
        return left ? kUpperLeft : kUpperRight;
    return left ? kLowerLeft : kLowerRight;
}
