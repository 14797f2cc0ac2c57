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
    const uint8_t* planes[2] = {}; // packed formats use only the first
    int strides[2] = {};           // bytes from row to row
    Colours colours;
};

// Bytes of a frame without gaps between its rows. 0 if no hardware decoder makes such frames: the
// width must be even, and for NV12 the height as well.
size_t tightBytes(GLsizei width, GLsizei height, GLenum format);

// Describes a frame without gaps that starts at `pixels`.
Picture tightPicture(GLsizei width, GLsizei height, GLenum format, const uint8_t* pixels);
