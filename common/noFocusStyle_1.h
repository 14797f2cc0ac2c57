// Style of the list page's buttons: a picture instead of the toolkit's focus rectangle. The
// picture fills the frame.
#pragma once

#include <QProxyStyle>

class noFocusStyle_1 : public QProxyStyle
{
public:
    void drawPrimitive(QStyle::PrimitiveElement element, const QStyleOption* option,
                       QPainter* painter, const QWidget* widget) const override;
};
