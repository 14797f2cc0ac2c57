// Style of the control bar's buttons: a picture instead of the toolkit's focus rectangle. The
// picture keeps its shape.
#pragma once

#include <QProxyStyle>

class noFocusStyle : public QProxyStyle
{
public:
    void drawPrimitive(QStyle::PrimitiveElement element, const QStyleOption* option,
                       QPainter* painter, const QWidget* widget) const override;
};
