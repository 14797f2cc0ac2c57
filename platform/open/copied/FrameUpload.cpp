#include "platform/open/copied/FrameUpload.h"

#include "platform/open/FrameCounters.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <algorithm>

#include <libyuv.h>

namespace {

constexpr int kRgbaBytes = 4;
constexpr int kBandRows = 16; // even, because two rows of NV12 share one row of colours
constexpr size_t kChunk = 32; // bytes; a constant, so that the compiler uses SIMD
constexpr int kOneBits = 7;
constexpr int kOne = 1 << kOneBits;

// libyuv converts NV12 to RGBA as it converts NV21 to BGRA (its "ARGB"), with U and V swapped in
// the constants. It limits the factor of U for blue to 2, but the limited range needs up to 2.14:
// blue would be up to 16 of 255 off. blueGain, in fixed point, multiplies U beforehand to make up
// for it.
struct Conversion
{
    const libyuv::YuvConstants* constants;
    int blueGain;
};

Conversion conversionOf(const Colours& colours)
{
    static const Conversion s_Limited[] = {{&libyuv::kYvuI601Constants, 129},
                                           {&libyuv::kYvuH709Constants, 135},
                                           {&libyuv::kYvu2020Constants, 137}};
    static const Conversion s_Full[] = {{&libyuv::kYvuJPEGConstants, kOne},
                                        {&libyuv::kYvuF709Constants, kOne},
                                        {&libyuv::kYvuV2020Constants, kOne}};
    return (colours.fullRange ? s_Full : s_Limited)[colours.matrix];
}

void multiplyBlue(uint8_t* chunk, const int16_t* gains)
{
    for (size_t i = 0; i < kChunk; ++i) {
        const auto colour = static_cast<int16_t>(chunk[i] - 128);
        const int product = static_cast<int16_t>(colour * gains[i] + kOne / 2) >> kOneBits;
        chunk[i] = static_cast<uint8_t>(std::clamp(product, -128, 127) + 128);
    }
}

} // namespace

// In bands, so that the pixels are still in the processor's cache when the driver reads them.
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

void FrameUpload::convert(const Picture& picture, int y, int rows)
{
    if (picture.format == kFormatNv12) {
        convertNv12(picture, y, rows);
        return;
    }
    const int rowBytes = picture.width * kRgbaBytes;
    const uint8_t* pixels = picture.planes[0] + static_cast<ptrdiff_t>(picture.strides[0]) * y;
    uint8_t* out = m_vecRgba.data();
    libyuv::YUY2ToARGB(pixels, picture.strides[0], out, rowBytes, picture.width, rows);
    libyuv::ARGBToABGR(out, rowBytes, out, rowBytes, picture.width, rows);
}

void FrameUpload::convertNv12(const Picture& picture, int y, int rows)
{
    const int width = picture.width;
    const Conversion conversion = conversionOf(picture.colours);
    const uint8_t* luma = picture.planes[0] + static_cast<ptrdiff_t>(picture.strides[0]) * y;
    const uint8_t* colours =
        picture.planes[1] + static_cast<ptrdiff_t>(picture.strides[1]) * (y / 2);
    int stride = picture.strides[1];
    if (conversion.blueGain != kOne) {
        int16_t gains[kChunk];
        for (size_t i = 0; i < kChunk; ++i)
            gains[i] = static_cast<int16_t>(i % 2 == 0 ? conversion.blueGain : kOne);
        const size_t bytes = static_cast<size_t>(width) * kBandRows / 2;
        m_vecColours.resize((bytes + kChunk - 1) / kChunk * kChunk);
        libyuv::CopyPlane(colours, stride, m_vecColours.data(), width, width, rows / 2);
        for (size_t i = 0; i < m_vecColours.size(); i += kChunk)
            multiplyBlue(&m_vecColours[i], gains);
        colours = m_vecColours.data();
        stride = width;
    }
    libyuv::NV21ToARGBMatrix(luma, picture.strides[0], colours, stride, m_vecRgba.data(),
                             width * kRgbaBytes, conversion.constants, width, rows);
}
