// Converts pictures to RGBA with libyuv and uploads them to a texture. Packed frames are YUYV.
#pragma once

#include "platform/open/Picture.h"

#include <vector>

class FrameUpload
{
public:
    // To the texture that is bound to `target` and has storage of the picture's size.
    void upload(GLenum target, const Picture& picture);

private:
    void convert(const Picture& picture, int y, int rows);
    void convertNv12(const Picture& picture, int y, int rows);

    // Buffers for one band of rows.
    std::vector<uint8_t> m_vecRgba;
    std::vector<uint8_t> m_vecColours;
};
