// The drawing that both focus-frame styles share.
#pragma once

#include <QString>

class QPainter;
class QStyleOption;

constexpr int kFocusFrameOverhang = 8; // px

// Draws the picture as focus frame of the widget that `painter` paints, from the widget's top left
// corner and larger by the overhang than the option's rectangle in both directions.
void drawFocusFrame(const QString& picture, Qt::AspectRatioMode mode, const QStyleOption* option,
                    QPainter* painter);
