// One frame under a made-up 32-bit physical address, because a process on an open system knows no
// real ones. It is found by its address for as long as it lives. How its pixels reach a texture is
// for the classes of copied/ and imported/ to say.
// Made, found and dropped by any thread; colours are set before others know the frame.
#pragma once

#include "platform/open/Picture.h"
#include "platform/phymem.h"

#include <cstdint>
#include <memory>
#include <string>

class PhysFrame : public std::enable_shared_from_this<PhysFrame>
{
public:
    // The frame at this address, kept alive by what is returned; null: none is there.
    static std::shared_ptr<PhysFrame> find(uint32_t physical);

    virtual ~PhysFrame();
    PhysFrame(const PhysFrame&) = delete;
    PhysFrame& operator=(const PhysFrame&) = delete;

    uint32_t physical() const { return static_cast<uint32_t>(m_Descriptor.paddr); }
    PhyMemBlock* descriptor() { return &m_Descriptor; }
    const Colours& colours() const { return m_Colours; }
    void setColours(const Colours& colours) { m_Colours = colours; }
    int stream() const { return m_nStream; } // the same for all frames of a file
    void setStream(int stream) { m_nStream = stream; }

    // Thread of the current context. Draws the frame into `texture`, which is bound to
    // GL_TEXTURE_2D and has RGBA storage of this size. False: its pixels have to be uploaded.
    virtual bool draw(GLuint /*texture*/, int /*width*/, int /*height*/) { return false; }

    // Its pixels, as a picture of this size and format, until unmap(). False: they are not there.
    virtual bool map(int width, int height, GLenum format, Picture* picture) = 0;
    virtual void unmap() {}

    // How it got into the texture, and why so, for the debug output.
    virtual std::string way() const = 0;

protected:
    // `vaddr` is what users of the buffer library see as its virtual address; never null.
    explicit PhysFrame(unsigned char* vaddr);

private:
    PhyMemBlock m_Descriptor;
    Colours m_Colours;
    int m_nStream = 0;
};
