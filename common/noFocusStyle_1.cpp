#include "common/noFocusStyle_1.h"

#include "common/FocusFrame.h"

void noFocusStyle_1::drawPrimitive(QStyle::PrimitiveElement element, const QStyleOption* option,
                                   QPainter* painter, const QWidget* widget) const
{
    if (element != QStyle::PE_FrameFocusRect) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    drawFocusFrame(QStringLiteral(":/image/s2.png"), Qt::IgnoreAspectRatio, option, painter);
}
