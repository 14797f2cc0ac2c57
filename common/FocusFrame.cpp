#include "common/FocusFrame.h"

#include <QPainter>
#include <QPixmap>
#include <QStyleOption>

void drawFocusFrame(const QString& picture, Qt::AspectRatioMode mode, const QStyleOption* option,
                    QPainter* painter)
{
    const QPixmap frame(picture);
    const QSize size = option->rect.size() + QSize(kFocusFrameOverhang, kFocusFrameOverhang);
    painter->drawPixmap(0, 0, frame.scaled(size, mode, Qt::FastTransformation));
}
