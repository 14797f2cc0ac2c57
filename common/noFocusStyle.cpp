#include "common/noFocusStyle.h"

#include <QPainter>
#include <QPixmap>
#include <QStyleOption>
#include <QWidget>

namespace {

void drawFrame(const char* picture, Qt::AspectRatioMode mode, const QStyleOption* option,
               QPainter* painter)
{
    const QPixmap frame(picture);
    const QSize size = option->rect.size() + QSize(kFocusFrameOverhang, kFocusFrameOverhang);
    painter->drawPixmap(0, 0, frame.scaled(size, mode, Qt::FastTransformation));
}

} // namespace

void noFocusStyle::drawPrimitive(QStyle::PrimitiveElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const
{
    if (element == QStyle::PE_FrameFocusRect)
        drawFrame(":/image/s1.png", Qt::KeepAspectRatio, option, painter);
    else
        QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void noFocusStyle_1::drawPrimitive(QStyle::PrimitiveElement element, const QStyleOption* option,
                                   QPainter* painter, const QWidget* widget) const
{
    if (element == QStyle::PE_FrameFocusRect)
        drawFrame(":/image/s2.png", Qt::IgnoreAspectRatio, option, painter);
    else
        QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void setOwnedStyle(QWidget* widget, QStyle* style)
{
    auto* previous = widget->findChild<QStyle*>(QString(), Qt::FindDirectChildrenOnly);
    style->setParent(widget);
    widget->setStyle(style);
    delete previous; // the widget uses it until it has the new one
}
