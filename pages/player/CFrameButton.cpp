#include "pages/player/CFrameButton.h"

#include "common/noFocusStyle.h"

#include <QStyleOptionButton>
#include <QStyleOptionFocusRect>
#include <QStylePainter>

namespace {

// With it the frame's picture ends where the button does.
constexpr int kFrameInset = kFocusFrameOverhang / 2;

} // namespace

void CFrameButton::paintEvent(QPaintEvent* /*event*/)
{
    QStylePainter painter(this);
    QStyleOptionButton button;
    initStyleOption(&button);
    const bool focused = button.state.testFlag(QStyle::State_HasFocus);
    button.state &= ~QStyle::State_HasFocus; // or some styles draw a frame as well
    painter.drawControl(QStyle::CE_PushButton, button);
    if (!focused)
        return;
    QStyleOptionFocusRect frame;
    frame.QStyleOption::operator=(button);
    frame.rect = rect().adjusted(kFrameInset, kFrameInset, -kFrameInset, -kFrameInset);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, frame);
}
