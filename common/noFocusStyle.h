// Styles of the buttons: a picture in place of the style's focus rectangle. It starts at the
// widget's top left corner and is larger than the rectangle by the overhang in both directions.
#pragma once

#include <QProxyStyle>

constexpr int kFocusFrameOverhang = 8; // px

// For the control bar: the picture keeps its shape.
class noFocusStyle : public QProxyStyle
{
public:
    void drawPrimitive(QStyle::PrimitiveElement element, const QStyleOption* option,
                       QPainter* painter, const QWidget* widget) const override;
};

// For the list page: the picture fills the frame.
class noFocusStyle_1 : public QProxyStyle
{
public:
    void drawPrimitive(QStyle::PrimitiveElement element, const QStyleOption* option,
                       QPainter* painter, const QWidget* widget) const override;
};

// QWidget::setStyle() takes no ownership. This makes the widget the owner of its style and deletes
// the style of an earlier call.
void setOwnedStyle(QWidget* widget, QStyle* style);
