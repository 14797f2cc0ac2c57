#include "pages/player/CFrameButton.h"

#include "common/noFocusStyle.h"

#include <QStyleOptionButton>
#include <QStyleOptionFocusRect>
#include <QStylePainter>

namespace {

// With this inset, the frame's picture is as large as the button.
constexpr int kFrameInset = kFocusFrameOverhang / 2;

} // namespace

void CFrameButton::paintEvent(QPaintEvent* /*event*/)
{
    QStylePainter painter(this);
    QStyleOptionButton button;
    initStyleOption(&button);
    const bool focused = button.state.testFlag(QStyle::State_HasFocus);
    button.state &= ~QStyle::State_HasFocus; // some styles draw a frame for it
    painter.drawControl(QStyle::CE_PushButton, button);
    if (!focused)
        return;
    QStyleOptionFocusRect frame;
    frame.QStyleOption::operator=(button);
    frame.rect = rect().adjusted(kFrameInset, kFrameInset, -kFrameInset, -kFrameInset);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, frame);
}
