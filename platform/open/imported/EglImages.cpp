#include "platform/open/imported/EglImages.h"

#include "platform/open/FrameCounters.h"
#include "platform/open/imported/DisplayDevice.h"

#include <algorithm>
#include <tuple>

#include <drm_fourcc.h>

namespace {

// One texture each: many renderers sample no NV12.
constexpr std::array<int, 2> kFormats = {DRM_FORMAT_R8, DRM_FORMAT_GR88};

auto tied(const DmabufPlane& plane)
{
    return std::tie(plane.fd, plane.offset, plane.stride, plane.width, plane.height);
}

bool isSame(const DmabufPlane& a, const DmabufPlane& b)
{
    return tied(a) == tied(b);
}

EGLImageKHR newImage(const Egl& egl, const DmabufPlane& plane, int format)
{
    const EGLint attributes[] = {EGL_WIDTH,
                                 plane.width,
                                 EGL_HEIGHT,
                                 plane.height,
                                 EGL_LINUX_DRM_FOURCC_EXT,
                                 format,
                                 EGL_DMA_BUF_PLANE0_FD_EXT,
                                 plane.fd,
                                 EGL_DMA_BUF_PLANE0_OFFSET_EXT,
                                 plane.offset,
                                 EGL_DMA_BUF_PLANE0_PITCH_EXT,
                                 plane.stride,
                                 EGL_NONE};
    return egl.createImage(egl.display, EGL_NO_CONTEXT, EGL_LINUX_DMA_BUF_EXT, nullptr, attributes);
}

void drop(gpointer images)
{
    delete static_cast<EglImages*>(images);
}

} // namespace

const EglImages& EglImages::of(GstMemory* memory, const Nv12Planes& planes, const Egl& egl,
                               const DisplayDevice* owner)
{
    static const GQuark key = g_quark_from_static_string("quadplayer-egl-images");
    auto* object = GST_MINI_OBJECT_CAST(memory);
    auto* images = static_cast<EglImages*>(gst_mini_object_get_qdata(object, key));
    if (!images || !images->isOf(planes, egl.display)) {
        images = new EglImages(planes, egl, owner);
        gst_mini_object_set_qdata(object, key, images, drop);
    }
    return *images;
}

EglImages::EglImages(const Nv12Planes& planes, const Egl& egl, const DisplayDevice* owner)
    : m_Egl(egl), m_Planes(planes)
{
    if (owner && !(owner->owns(planes[0].fd) && owner->owns(planes[1].fd))) {
        m_pWhyNot = "another device's memory";
        return;
    }
    for (size_t i = 0; i < planes.size(); ++i) {
        m_Images[i] = newImage(egl, planes[i], kFormats[i]);
        if (m_Images[i] == EGL_NO_IMAGE_KHR)
            m_pWhyNot = "import failed";
    }
    ++frameCounters().imports;
}

EglImages::~EglImages()
{
    for (EGLImageKHR image : m_Images) {
        if (image != EGL_NO_IMAGE_KHR)
            m_Egl.destroyImage(m_Egl.display, image);
    }
}

bool EglImages::isOf(const Nv12Planes& planes, EGLDisplay display) const
{
    return m_Egl.display == display &&
           std::equal(planes.begin(), planes.end(), m_Planes.begin(), isSame);
}
