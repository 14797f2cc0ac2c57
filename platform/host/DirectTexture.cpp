// The GPU driver's direct textures, in software: map remembers where the pixels are, invalidate
// converts them (BT.601, limited range) and uploads. GUI thread, with a context current.
#include "render/direct_texture.h"

#include "platform/host/HostCounters.h"
#include "platform/host/PhysBlock.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <map>
#include <vector>

#include <libyuv.h>

namespace {

constexpr GLuint kPhysUnused = 0xFFFFFFFF;
constexpr size_t kBytesPerPixel = 4;

struct DirectTexture
{
    int width = 0;
    int height = 0;
    GLenum format = 0;
    const unsigned char* pixels = nullptr; // the caller's, or `own`
    std::vector<unsigned char> own;        // what glTexDirectVIV() handed out
    std::vector<unsigned char> rgba;
};

QOpenGLFunctions* gl()
{
    return QOpenGLContext::currentContext()->functions();
}

// By texture name; a name that is used again starts with the next mapping.
DirectTexture& boundTexture()
{
    static auto* textures = new std::map<GLint, DirectTexture>;
    GLint name = 0;
    gl()->glGetIntegerv(GL_TEXTURE_BINDING_2D, &name);
    return (*textures)[name];
}

size_t frameSize(int width, int height, GLenum format)
{
    const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
    return format == kFormatPacked16 ? pixels * 2 : pixels * 3 / 2;
}

void define(DirectTexture& texture, int width, int height, GLenum format)
{
    texture.width = width;
    texture.height = height;
    texture.format = format;
    texture.rgba.resize(static_cast<size_t>(width) * static_cast<size_t>(height) * kBytesPerPixel);
}

bool convert(DirectTexture& texture)
{
    const int width = texture.width;
    const int height = texture.height;
    const int target = width * static_cast<int>(kBytesPerPixel);
    const unsigned char* luma = texture.pixels;
    unsigned char* rgba = texture.rgba.data();
    switch (texture.format) { // libyuv names the order of bytes from the word's high end
    case kFormatNv12:
        libyuv::NV12ToABGR(luma, width, luma + static_cast<size_t>(width) * height, width, rgba,
                           target, width, height);
        return true;
    case kFormatPacked16:
        libyuv::YUY2ToARGB(luma, width * 2, rgba, target, width, height);
        libyuv::ARGBToABGR(rgba, target, rgba, target, width, height);
        return true;
    default:
        return false;
    }
}

} // namespace

void glTexDirectVIV(GLenum /*target*/, GLsizei width, GLsizei height, GLenum format,
                    GLvoid** planes)
{
    DirectTexture& texture = boundTexture();
    define(texture, width, height, format);
    texture.own.resize(frameSize(width, height, format));
    texture.pixels = texture.own.data();
    planes[0] = texture.own.data();
    planes[1] =
        format == kFormatNv12 ? texture.own.data() + static_cast<size_t>(width) * height : nullptr;
    planes[2] = nullptr;
}

void glTexDirectVIVMap(GLenum /*target*/, GLsizei width, GLsizei height, GLenum format,
                       GLvoid** logical, const GLuint* physical)
{
    DirectTexture& texture = boundTexture();
    define(texture, width, height, format);
    texture.pixels = *physical == kPhysUnused ? static_cast<const unsigned char*>(*logical)
                                              : PhysBlock::find(*physical);
}

void glTexDirectInvalidateVIV(GLenum target)
{
    DirectTexture& texture = boundTexture();
    if (!texture.pixels || !convert(texture))
        return;
    gl()->glTexImage2D(target, 0, GL_RGBA, texture.width, texture.height, 0, GL_RGBA,
                       GL_UNSIGNED_BYTE, texture.rgba.data());
    ++hostCounters().uploads;
}
