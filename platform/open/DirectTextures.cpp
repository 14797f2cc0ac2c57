#include "platform/open/DirectTextures.h"

#include "platform/open/HostCounters.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <algorithm>
#include <utility>

#include <libyuv.h>

namespace {

constexpr int kRgbaBytes = 4;
constexpr int kBandRows = 16; // even, for two rows share their colours
constexpr GLuint kUsesLogical = 0xFFFFFFFF;

size_t pixelsOf(int width, int height)
{
    return static_cast<size_t>(width) * static_cast<size_t>(height);
}

// 0: not a frame that a decoder could have made.
size_t frameBytes(int width, int height, GLenum format)
{
    if (width <= 0 || height <= 0 || width % 2 != 0)
        return 0;
    if (format == kFormatPacked16)
        return pixelsOf(width, height) * 2;
    return format == kFormatNv12 && height % 2 == 0 ? pixelsOf(width, height) * 3 / 2 : 0;
}

QOpenGLFunctions* gl()
{
    return QOpenGLContext::currentContext()->functions();
}

GLuint boundTexture(GLenum target)
{
    GLint name = 0;
    if (target == GL_TEXTURE_2D)
        gl()->glGetIntegerv(GL_TEXTURE_BINDING_2D, &name);
    return static_cast<GLuint>(name);
}

} // namespace

DirectTextures* DirectTextures::current()
{
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!context)
        return nullptr;
    auto* textures = context->findChild<DirectTextures*>(QString(), Qt::FindDirectChildrenOnly);
    return textures ? textures : new DirectTextures(context);
}

void DirectTextures::allocate(GLenum target, GLsizei width, GLsizei height, GLenum format,
                              GLvoid** planes)
{
    const size_t bytes = frameBytes(width, height, format);
    if (bytes == 0)
        return;
    Source source;
    source.width = width;
    source.height = height;
    source.format = format;
    source.own.resize(bytes);
    planes[0] = source.own.data();
    planes[1] = format == kFormatNv12 ? source.own.data() + pixelsOf(width, height) : nullptr;
    planes[2] = nullptr;
    remember(target, std::move(source));
}

void DirectTextures::mapPhysical(GLenum target, GLsizei width, GLsizei height, GLenum format,
                                 GLuint physical)
{
    remember(target, {width, height, format, physical, nullptr, {}, {}});
}

void DirectTextures::mapLogical(GLenum target, GLsizei width, GLsizei height, GLenum format,
                                const GLvoid* logical)
{
    remember(target, {width, height, format, 0, static_cast<const uint8_t*>(logical), {}, {}});
}

void DirectTextures::remember(GLenum target, Source source)
{
    const GLuint texture = boundTexture(target);
    if (texture == 0)
        return;
    Source& last = m_mapSources[texture];
    source.stored = last.stored;
    last = std::move(source);
}

void DirectTextures::invalidate(GLenum target)
{
    const auto found = m_mapSources.find(boundTexture(target));
    if (found == m_mapSources.end())
        return;
    Source& source = found->second;
    const size_t bytes = frameBytes(source.width, source.height, source.format);
    // Kept until the end: the frame must not go while it is read.
    const auto block = PhysBlock::find(source.physical);
    const uint8_t* pixels = source.logical;
    if (!source.own.empty()) {
        pixels = source.own.data();
    } else if (block) {
        pixels = block->size() >= bytes ? block->data() : nullptr;
    }
    if (bytes == 0 || !pixels)
        return;
    upload(target, source, pixels);
}

// In bands, whose pixels are still in the processor's cache when the driver takes them. Saying the
// size again would let the driver clear 8 MB for a frame of 1920x1080.
void DirectTextures::upload(GLenum target, Source& source, const uint8_t* pixels)
{
    const QSize size(source.width, source.height);
    if (source.stored != size)
        gl()->glTexImage2D(target, 0, GL_RGBA, size.width(), size.height(), 0, GL_RGBA,
                           GL_UNSIGNED_BYTE, nullptr);
    source.stored = size;
    for (int y = 0; y < source.height; y += kBandRows) {
        const int rows = std::min(kBandRows, source.height - y);
        convert(source, pixels, y, rows);
        gl()->glTexSubImage2D(target, 0, 0, y, size.width(), rows, GL_RGBA, GL_UNSIGNED_BYTE,
                              m_vecRgba.data());
    }
    ++hostCounters().uploads;
}

// libyuv names formats by the order within a little-endian word: its ABGR is RGBA in memory.
void DirectTextures::convert(const Source& source, const uint8_t* pixels, int y, int rows)
{
    const int width = source.width;
    const int rowBytes = width * kRgbaBytes;
    m_vecRgba.resize(pixelsOf(width, kBandRows) * kRgbaBytes);
    uint8_t* out = m_vecRgba.data();
    if (source.format == kFormatNv12) {
        const uint8_t* colours = pixels + pixelsOf(width, source.height) + pixelsOf(width, y / 2);
        libyuv::NV12ToABGR(pixels + pixelsOf(width, y), width, colours, width, out, rowBytes, width,
                           rows);
    } else {
        libyuv::YUY2ToARGB(pixels + pixelsOf(width, y) * 2, width * 2, out, rowBytes, width, rows);
        libyuv::ARGBToABGR(out, rowBytes, out, rowBytes, width, rows);
    }
}

void glTexDirectVIV(GLenum target, GLsizei width, GLsizei height, GLenum format, GLvoid** planes)
{
    if (DirectTextures* textures = DirectTextures::current())
        textures->allocate(target, width, height, format, planes);
}

void glTexDirectVIVMap(GLenum target, GLsizei width, GLsizei height, GLenum format,
                       GLvoid** logical, const GLuint* physical)
{
    DirectTextures* textures = DirectTextures::current();
    if (!textures)
        return;
    if (*physical == kUsesLogical)
        textures->mapLogical(target, width, height, format, *logical);
    else
        textures->mapPhysical(target, width, height, format, *physical);
}

void glTexDirectInvalidateVIV(GLenum target)
{
    if (DirectTextures* textures = DirectTextures::current())
        textures->invalidate(target);
}
