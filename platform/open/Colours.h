// How the YUV values of a picture become colours. The default is BT.601 with limited range.
#pragma once

struct Colours
{
    enum Matrix { Bt601, Bt709, Bt2020 };

    Matrix matrix = Bt601;
    bool fullRange = false;
};
