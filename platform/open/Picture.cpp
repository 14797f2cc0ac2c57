#include "platform/open/Picture.h"

size_t tightBytes(GLsizei width, GLsizei height, GLenum format)
{
    if (width <= 0 || height <= 0 || width % 2 != 0)
        return 0;
    const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
    if (format == kFormatPacked16)
        return pixels * 2;
    return format == kFormatNv12 && height % 2 == 0 ? pixels * 3 / 2 : 0;
}

Picture tightPicture(GLsizei width, GLsizei height, GLenum format, const uint8_t* pixels)
{
    const ptrdiff_t lumaBytes = static_cast<ptrdiff_t>(width) * height;
    if (format == kFormatPacked16)
        return {format, width, height, {pixels, nullptr}, {width * 2, 0}, {}};
    return {format, width, height, {pixels, pixels + lumaBytes}, {width, width}, {}};
}
