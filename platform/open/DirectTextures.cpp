#include "platform/open/DirectTextures.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <utility>

namespace {

constexpr GLuint kUsesLogical = 0xFFFFFFFF;

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
    const size_t bytes = tightBytes(width, height, format);
    if (bytes == 0)
        return;
    Source source;
    source.width = width;
    source.height = height;
    source.format = format;
    source.own.resize(bytes);
    planes[0] = source.own.data();
    const auto lumaBytes = static_cast<ptrdiff_t>(width) * height;
    planes[1] = format == kFormatNv12 ? source.own.data() + lumaBytes : nullptr;
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
    if (tightBytes(source.width, source.height, source.format) == 0)
        return;
    const uint8_t* pixels = source.own.empty() ? source.logical : source.own.data();
    // Keeps the frame alive while it is read.
    const auto frame = PhysFrame::find(source.physical);
    if (!frame && !pixels)
        return;
    giveStorage(target, source);
    if (frame)
        show(target, source, *frame);
    else
        m_Upload.upload(target, tightPicture(source.width, source.height, source.format, pixels));
}

// Only when the size changes, because the driver may clear new storage: 8 MB at 1920x1080.
void DirectTextures::giveStorage(GLenum target, Source& source)
{
    const QSize size(source.width, source.height);
    if (source.stored != size)
        gl()->glTexImage2D(target, 0, GL_RGBA, size.width(), size.height(), 0, GL_RGBA,
                           GL_UNSIGNED_BYTE, nullptr);
    source.stored = size;
}

void DirectTextures::show(GLenum target, const Source& source, PhysFrame& frame)
{
    Picture picture;
    if (!frame.draw(boundTexture(target), source.width, source.height) &&
        frame.map(source.width, source.height, source.format, &picture)) {
        m_Upload.upload(target, picture);
        frame.unmap();
    }
    if (frame.stream() != m_nStream)
        qDebug("frames: %s", frame.way().c_str());
    m_nStream = frame.stream();
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
