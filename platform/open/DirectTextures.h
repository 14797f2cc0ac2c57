// The textures of one OpenGL context that read frames directly. The GPU of the device does that by
// itself; here the frame is converted and uploaded whenever its bytes are said to have changed.
// Packed frames are in the order Y0 U Y1 V (YUYV); colours are BT.601 with limited range. Widths,
// and the heights of NV12, must be even, as a hardware decoder's are; other sizes are ignored.
// What a texture was mapped for stays its storage: nobody else may give it another one, nor use its
// name again. Lives in the thread of its context and dies with it.
#pragma once

#include "platform/direct_texture.h"
#include "platform/open/PhysBlock.h"

#include <QObject>
#include <QSize>

#include <map>
#include <vector>

class DirectTextures : public QObject
{
    Q_OBJECT

public:
    // Those of the current context; null without one.
    static DirectTextures* current();

    // All act on the texture bound to `target`.
    void allocate(GLenum target, GLsizei width, GLsizei height, GLenum format, GLvoid** planes);
    void mapPhysical(GLenum target, GLsizei width, GLsizei height, GLenum format, GLuint physical);
    void mapLogical(GLenum target, GLsizei width, GLsizei height, GLenum format,
                    const GLvoid* logical);
    void invalidate(GLenum target);

private:
    using QObject::QObject;

    struct Source
    {
        int width = 0;
        int height = 0;
        GLenum format = 0;
        GLuint physical = 0;              // looked up at every upload, or
        const uint8_t* logical = nullptr; // the caller's memory, or
        std::vector<uint8_t> own;         // what the caller was given to write to
        QSize stored;                     // of the storage that the texture has
    };

    void remember(GLenum target, Source source);
    void upload(GLenum target, Source& source, const uint8_t* pixels);
    void convert(const Source& source, const uint8_t* pixels, int y, int rows);

    std::map<GLuint, Source> m_mapSources; // by texture name
    std::vector<uint8_t> m_vecRgba;        // converted pixels of some rows, used again and again
};
