// Sizes of the list's rows, in pixels.
#pragma once

#include <QFont>
#include <QSize>

constexpr QSize kRowIconSize(38, 38);
constexpr int kRowFontSize = 38;
constexpr int kCurrentRowFontSize = 45;

inline QFont fontOfSize(int pixels, QFont::Weight weight = QFont::Normal)
{
    QFont font;
    font.setPixelSize(pixels);
    font.setWeight(weight);
    return font;
}
