// One plane of a buffer, mapped for reading. Not gst_video_frame_map(): it takes its sizes from the
// video meta, which may contradict the caps.
#pragma once

#include "platform/open/FrameLayout.h"

#include <cstdint>

class MappedPlane
{
public:
    MappedPlane(GstBuffer* buffer, const FrameLayout::Plane& plane)
        : m_pBuffer(gst_buffer_ref(buffer)), m_nStride(plane.stride)
    {
        guint first = 0;
        guint count = 0;
        m_bMapped =
            plane.bytes > 0 &&
            gst_buffer_find_memory(buffer, plane.offset, plane.bytes, &first, &count, &m_nSkip) &&
            gst_buffer_map_range(buffer, first, static_cast<gint>(count), &m_Map, GST_MAP_READ);
    }
    ~MappedPlane()
    {
        if (m_bMapped)
            gst_buffer_unmap(m_pBuffer, &m_Map);
        gst_buffer_unref(m_pBuffer);
    }
    MappedPlane(const MappedPlane&) = delete;
    MappedPlane& operator=(const MappedPlane&) = delete;

    const uint8_t* data() const { return m_bMapped ? m_Map.data + m_nSkip : nullptr; }
    int stride() const { return m_nStride; }

private:
    GstBuffer* const m_pBuffer;
    const int m_nStride;
    GstMapInfo m_Map;
    gsize m_nSkip = 0;
    bool m_bMapped = false;
};
