// A picture in memory that the processor can read, in one of the layouts of direct_texture.h.
#pragma once

#include "platform/direct_texture.h"
#include "platform/open/Colours.h"

#include <cstddef>
#include <cstdint>

struct Picture
{
    GLenum format = 0;
    int width = 0;
    int height = 0;
    const uint8_t* planes[2] = {}; // packed frames have the first one only
    int strides[2] = {};           // bytes from row to row
    Colours colours;
};

// Bytes of a frame without gaps. 0: no hardware decoder makes frames of this size or format.
// Widths, and the heights of NV12, are even.
size_t tightBytes(GLsizei width, GLsizei height, GLenum format);

// The picture in a frame without gaps at `pixels`.
Picture tightPicture(GLsizei width, GLsizei height, GLenum format, const uint8_t* pixels);
