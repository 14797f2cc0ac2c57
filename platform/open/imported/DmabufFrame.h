// A frame that stays in the DMABUFs that the decoder delivered: NV12 of even size. It holds the
// decoder's buffer, so that the decoder does not write to it again before the frame is dropped.
#pragma once

#include "platform/open/FrameLayout.h"
#include "platform/open/MappedPlane.h"
#include "platform/open/PhysFrame.h"
#include "platform/open/imported/EglImages.h"

#include <mutex>
#include <optional>

class DmabufFrame : public PhysFrame
{
public:
    // Null: it has to be copied. `layout` is that of `buffer`.
    static std::shared_ptr<DmabufFrame> make(GstBuffer* buffer, const FrameLayout& layout);

    ~DmabufFrame() override;

    // Gives the decoder's buffer back; nothing can be drawn any more. Any thread.
    void letGo();

    bool draw(GLuint texture, int width, int height) override;
    bool map(int width, int height, GLenum format, Picture* picture) override;
    void unmap() override;
    std::string way() const override;

private:
    DmabufFrame(GstBuffer* buffer, const FrameLayout& layout, const Nv12Planes& planes);

    std::mutex m_Mutex; // guards m_pBuffer
    GstBuffer* m_pBuffer;
    const FrameLayout m_Layout;
    const Nv12Planes m_Planes;
    const char* m_pWhyNot = nullptr; // imported; thread of the context
    std::optional<MappedPlane> m_Luma;
    std::optional<MappedPlane> m_Chroma;
};
