#include "common/noFocusStyle.h"

#include "common/FocusFrame.h"

void noFocusStyle::drawPrimitive(QStyle::PrimitiveElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const
{
    if (element != QStyle::PE_FrameFocusRect) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    drawFocusFrame(QStringLiteral(":/image/s1.png"), Qt::KeepAspectRatio, option, painter);
}
