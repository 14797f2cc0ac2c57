#include "platform/open/imported/DmabufFrame.h"

#include "platform/open/imported/GpuConversion.h"

#include <gst/allocators/gstdmabuf.h>

namespace {

// Users of the buffer library see an address, but no pixels are there.
unsigned char s_NoPixels;

// False: the plane is in no DMABUF, or in more than one.
bool locate(GstBuffer* buffer, const FrameLayout::Plane& from, DmabufPlane& plane)
{
    guint index = 0;
    guint count = 0;
    gsize skip = 0;
    if (!gst_buffer_find_memory(buffer, from.offset, from.bytes, &index, &count, &skip) ||
        count != 1)
        return false;
    GstMemory* memory = gst_buffer_peek_memory(buffer, index);
    if (!gst_is_dmabuf_memory(memory))
        return false;
    plane.fd = gst_dmabuf_memory_get_fd(memory);
    plane.offset = static_cast<int>(memory->offset + skip);
    plane.stride = from.stride;
    return true;
}

} // namespace

std::shared_ptr<DmabufFrame> DmabufFrame::make(GstBuffer* buffer, const FrameLayout& layout)
{
    Nv12Planes planes;
    if (layout.format != GST_VIDEO_FORMAT_NV12 || layout.width % 2 != 0 || layout.height % 2 != 0)
        return nullptr;
    for (size_t i = 0; i < planes.size(); ++i) {
        if (!locate(buffer, layout.planes[i], planes[i]))
            return nullptr;
        planes[i].width = i == 0 ? layout.width : layout.width / 2;
        planes[i].height = i == 0 ? layout.height : layout.height / 2;
    }
    return std::shared_ptr<DmabufFrame>(new DmabufFrame(buffer, layout, planes));
}

DmabufFrame::DmabufFrame(GstBuffer* buffer, const FrameLayout& layout, const Nv12Planes& planes)
    : PhysFrame(&s_NoPixels), m_pBuffer(gst_buffer_ref(buffer)), m_Layout(layout), m_Planes(planes)
{
}

DmabufFrame::~DmabufFrame()
{
    letGo();
}

void DmabufFrame::letGo()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    gst_clear_buffer(&m_pBuffer);
}

bool DmabufFrame::draw(GLuint texture, int width, int height)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_pBuffer)
        return false;
    m_pWhyNot = GpuConversion::current().draw(gst_buffer_peek_memory(m_pBuffer, 0), m_Planes,
                                              colours(), texture, width, height);
    return !m_pWhyNot;
}

bool DmabufFrame::map(int width, int height, GLenum format, Picture* picture)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_pBuffer || format != kFormatNv12 || width != m_Layout.width || height != m_Layout.height)
        return false;
    m_Luma.emplace(m_pBuffer, m_Layout.planes[0]);
    m_Chroma.emplace(m_pBuffer, m_Layout.planes[1]);
    *picture = {format,
                width,
                height,
                {m_Luma->data(), m_Chroma->data()},
                {m_Luma->stride(), m_Chroma->stride()},
                colours()};
    return m_Luma->data() && m_Chroma->data();
}

void DmabufFrame::unmap()
{
    m_Luma.reset();
    m_Chroma.reset();
}

std::string DmabufFrame::way() const
{
    if (m_pWhyNot)
        return std::string("copied (") + m_pWhyNot + ")";
    const auto size = [](int width, int height) {
        return std::to_string(width) + "x" + std::to_string(height);
    };
    return "imported (NV12, " + size(m_Layout.width, m_Layout.height) + " of " +
           size(m_Layout.codedWidth, m_Layout.codedHeight) + ")";
}
