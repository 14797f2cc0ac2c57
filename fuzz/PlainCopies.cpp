// Stands in for the two functions of libyuv that copy decoded frames: libyuv is built without the
// address sanitizer, which sees each byte that is read or written here.
#include <cstdint>

namespace {

void copyRows(const uint8_t* from, int fromStride, uint8_t* to, int toStride, int width, int height)
{
    for (int y = 0; y < height; ++y, from += fromStride, to += toStride) {
        for (int x = 0; x < width; ++x)
            to[x] = from[x];
    }
}

} // namespace

extern "C" int NV12Copy(const uint8_t* fromY, int fromStrideY, const uint8_t* fromUv,
                        int fromStrideUv, uint8_t* toY, int toStrideY, uint8_t* toUv,
                        int toStrideUv, int width, int height)
{
    copyRows(fromY, fromStrideY, toY, toStrideY, width, height);
    copyRows(fromUv, fromStrideUv, toUv, toStrideUv, (width + 1) / 2 * 2, (height + 1) / 2);
    return 0;
}

extern "C" int I420ToNV12(const uint8_t* fromY, int fromStrideY, const uint8_t* fromU,
                          int fromStrideU, const uint8_t* fromV, int fromStrideV, uint8_t* toY,
                          int toStrideY, uint8_t* toUv, int toStrideUv, int width, int height)
{
    copyRows(fromY, fromStrideY, toY, toStrideY, width, height);
    for (int y = 0; y < (height + 1) / 2; ++y) {
        for (int x = 0; x < (width + 1) / 2; ++x) {
            toUv[2 * x] = fromU[x];
            toUv[2 * x + 1] = fromV[x];
        }
        fromU += fromStrideU;
        fromV += fromStrideV;
        toUv += toStrideUv;
    }
    return 0;
}
