// The GPU driver's direct-texture extension: textures that read frames where the decoder put them.
// All three act on the texture bound to `target` in the context that is current on the calling
// thread; without one they do nothing. Frames stay the caller's: their bytes must be there until
// the last draw call that samples the texture has been carried out.
#pragma once

#include <QtGui/qopengl.h>

// Frame layouts, as the extension numbers them.
constexpr GLenum kFormatPacked16 = 0x8FC3; // one plane, 2 bytes per pixel
constexpr GLenum kFormatNv12 = 0x8FC1;     // Y plane, then the interleaved UV plane

extern "C" {

// Lets the driver allocate the texture; fills `planes` (three entries) with where to write.
// That memory is the texture's. A size that the GPU refuses leaves the entries as they were.
void glTexDirectVIV(GLenum target, GLsizei width, GLsizei height, GLenum format, GLvoid** planes);

// Makes the texture read the frame at *physical, or at *logical where *physical is all ones.
void glTexDirectVIVMap(GLenum target, GLsizei width, GLsizei height, GLenum format,
                       GLvoid** logical, const GLuint* physical);

// Tells the GPU that the frame's bytes have changed.
void glTexDirectInvalidateVIV(GLenum target);
}
