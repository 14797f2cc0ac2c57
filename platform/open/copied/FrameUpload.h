// Converts pictures to RGBA on the processor and sends them to a texture. libyuv does the
// conversion. Packed frames are in the order Y0 U Y1 V (YUYV).
#pragma once

#include "platform/open/Picture.h"

#include <vector>

class FrameUpload
{
public:
    // Into the texture bound to `target`, whose storage has the picture's size.
    void upload(GLenum target, const Picture& picture);

private:
    void convert(const Picture& picture, int y, int rows);
    void convertNv12(const Picture& picture, int y, int rows);

    // Of some rows, used again and again.
    std::vector<uint8_t> m_vecRgba;
    std::vector<uint8_t> m_vecColours;
};
