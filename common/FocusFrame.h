// The drawing that both focus-frame styles share.
#pragma once

#include <QString>

class QPainter;
class QStyleOption;

// Draws the picture as focus frame of the widget that `painter` paints, from the widget's top left
// corner and 8 px larger than the option's rectangle in both directions.
void drawFocusFrame(const QString& picture, Qt::AspectRatioMode mode, const QStyleOption* option,
                    QPainter* painter);
