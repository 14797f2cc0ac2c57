// The textures of one OpenGL context that read frames directly, as the GPU of the device does by
// itself. Whenever a frame's bytes are said to have changed, it is looked up here and drawn into
// the texture, or its pixels are uploaded. Sizes that no hardware decoder makes are ignored.
// What a texture was mapped for stays its storage: nobody else may give it another one, nor use its
// name again. Lives in the thread of its context and dies with it.
#pragma once

#include "platform/direct_texture.h"
#include "platform/open/PhysFrame.h"
#include "platform/open/copied/FrameUpload.h"

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
    void giveStorage(GLenum target, Source& source);
    void show(GLenum target, const Source& source, PhysFrame& frame);

    std::map<GLuint, Source> m_mapSources; // by texture name
    FrameUpload m_Upload;
    int m_nStream = 0; // of the last frame
};
