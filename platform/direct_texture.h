// The GPU driver's direct-texture extension: textures that read frames where the decoder wrote
// them. All three functions change the texture bound to `target` in the current context; without a
// context they do nothing. The caller owns the frames and keeps their bytes until the GPU has
// carried out the last draw call that samples the texture.
#pragma once

#include <QtGui/qopengl.h>

// Frame layouts, with the extension's numbers.
constexpr GLenum kFormatPacked16 = 0x8FC3; // one plane, 2 bytes per pixel
constexpr GLenum kFormatNv12 = 0x8FC1;     // Y plane, then the interleaved UV plane

extern "C" {

// Lets the driver allocate the texture. Sets `planes` (three entries) to the memory to write the
// frame to, which the texture owns. If the GPU refuses the size, the entries stay unchanged.
void glTexDirectVIV(GLenum target, GLsizei width, GLsizei height, GLenum format, GLvoid** planes);

// Makes the texture read the frame at *physical, or at *logical where *physical is all ones.
void glTexDirectVIVMap(GLenum target, GLsizei width, GLsizei height, GLenum format,
                       GLvoid** logical, const GLuint* physical);

// Tells the GPU that the frame's bytes have changed.
void glTexDirectInvalidateVIV(GLenum target);
}
