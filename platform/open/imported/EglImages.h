// What EGL made of the planes of one decoder buffer. It stays with the buffer's memory: each buffer
// of a decoder's pool is imported once, and let go with the pool.
#pragma once

#include "platform/open/imported/Egl.h"

#include <array>

#include <gst/gst.h>

struct DmabufPlane
{
    int fd = -1;
    int offset = 0; // bytes
    int stride = 0; // bytes
    int width = 0;  // texels
    int height = 0;
};

using Nv12Planes = std::array<DmabufPlane, 2>;

class DisplayDevice;

class EglImages
{
public:
    // Those of `memory`, which are made the first time; thread of the current context. `owner` is
    // the only device whose memory may be imported, null: any. Valid for as long as the memory.
    static const EglImages& of(GstMemory* memory, const Nv12Planes& planes, const Egl& egl,
                               const DisplayDevice* owner);

    ~EglImages();
    EglImages(const EglImages&) = delete;
    EglImages& operator=(const EglImages&) = delete;

    const char* whyNot() const { return m_pWhyNot; } // null: they are there
    EGLImageKHR luma() const { return m_Images[0]; }
    EGLImageKHR chroma() const { return m_Images[1]; }

private:
    EglImages(const Nv12Planes& planes, const Egl& egl, const DisplayDevice* owner);
    bool isOf(const Nv12Planes& planes, EGLDisplay display) const;

    const Egl m_Egl;
    const Nv12Planes m_Planes;
    const char* m_pWhyNot = nullptr;
    std::array<EGLImageKHR, 2> m_Images = {EGL_NO_IMAGE_KHR, EGL_NO_IMAGE_KHR};
};
