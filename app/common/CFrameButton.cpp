#include "app/common/CFrameButton.h"

#include <QStyleOptionButton>
#include <QStyleOptionFocusRect>
#include <QStylePainter>

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
    frame.rect = style()->subElementRect(QStyle::SE_PushButtonFocusRect, &button, this);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, frame);
}
