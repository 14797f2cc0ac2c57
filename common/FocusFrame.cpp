#include "common/FocusFrame.h"

#include <QPainter>
#include <QPixmap>
#include <QStyleOption>

namespace {
constexpr int kOverhang = 8; // px
}

void drawFocusFrame(const QString& picture, Qt::AspectRatioMode mode, const QStyleOption* option,
                    QPainter* painter)
{
    const QPixmap frame(picture);
    const QSize size = option->rect.size() + QSize(kOverhang, kOverhang);
    painter->drawPixmap(0, 0, frame.scaled(size, mode, Qt::FastTransformation));
}
