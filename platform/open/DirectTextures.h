// The textures of one OpenGL context that show frames. The device's GPU reads frames where they
// are; here, each call of invalidate() draws the frame into the texture or uploads its pixels. A
// frame whose size no hardware decoder makes is ignored. A mapped texture gets its storage here:
// nobody else may give it storage or use its name again. Lives in the thread of its context and is
// deleted with it.
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
    // Of the current context; null if there is none.
    static DirectTextures* current();

    // All of them change the texture that is bound to `target`.
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
        GLuint physical = 0;              // a PhysFrame's address, or
        const uint8_t* logical = nullptr; // the caller's memory, or
        std::vector<uint8_t> own;         // memory that the caller writes to
        QSize stored;                     // size of the texture's storage
    };

    void remember(GLenum target, Source source);
    void giveStorage(GLenum target, Source& source);
    void show(GLenum target, const Source& source, PhysFrame& frame);

    std::map<GLuint, Source> m_mapSources; // by texture name
    FrameUpload m_Upload;
    int m_nStream = 0; // of the last frame
};
