#include "platform/open/copied/FrameUpload.h"

#include "platform/open/FrameCounters.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <algorithm>

#include <libyuv.h>

namespace {

constexpr int kRgbaBytes = 4;
constexpr int kBandRows = 16; // even, because two rows of NV12 share their colours

} // namespace

// In bands, which the processor's cache still holds when the driver reads them.
void FrameUpload::upload(GLenum target, const Picture& picture)
{
    m_vecRgba.resize(static_cast<size_t>(picture.width) * kBandRows * kRgbaBytes);
    for (int y = 0; y < picture.height; y += kBandRows) {
        const int rows = std::min(kBandRows, picture.height - y);
        convert(picture, y, rows);
        QOpenGLContext::currentContext()->functions()->glTexSubImage2D(
            target, 0, 0, y, picture.width, rows, GL_RGBA, GL_UNSIGNED_BYTE, m_vecRgba.data());
    }
    ++frameCounters().uploads;
}

// libyuv names formats by the order within a little-endian word: its ABGR is RGBA in memory.
void FrameUpload::convert(const Picture& picture, int y, int rows)
{
    const int width = picture.width;
    const int rowBytes = width * kRgbaBytes;
    uint8_t* out = m_vecRgba.data();
    const uint8_t* first = picture.planes[0] + static_cast<ptrdiff_t>(picture.strides[0]) * y;
    if (picture.format == kFormatNv12) {
        const uint8_t* second =
            picture.planes[1] + static_cast<ptrdiff_t>(picture.strides[1]) * y / 2;
        libyuv::NV12ToABGR(first, picture.strides[0], second, picture.strides[1], out, rowBytes,
                           width, rows);
    } else {
        libyuv::YUY2ToARGB(first, picture.strides[0], out, rowBytes, width, rows);
        libyuv::ARGBToABGR(out, rowBytes, out, rowBytes, width, rows);
    }
}
