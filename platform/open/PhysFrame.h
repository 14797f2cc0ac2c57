// A frame with a made-up 32-bit physical address, because processes on open systems do not know
// real ones. It can be found by that address while it lives. copied/ and imported/ derive from it
// and say how the pixels reach a texture. Any thread may make, find and drop frames. Set the
// colours before handing the frame on.
#pragma once

#include "platform/open/Picture.h"
#include "platform/phymem.h"

#include <cstdint>
#include <memory>
#include <string>

class PhysFrame : public std::enable_shared_from_this<PhysFrame>
{
public:
    // The frame at this address; null if there is none.
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

    // Lets the GPU draw the frame into `texture`, which is bound to GL_TEXTURE_2D and has RGBA
    // storage of this size. False: use map() and upload the pixels. Thread of the current context.
    virtual bool draw(GLuint /*texture*/, int /*width*/, int /*height*/) { return false; }

    // Gives access to the pixels as a picture of this size and format. Call unmap() afterwards,
    // unless it returns false: then there is no such picture.
    virtual bool map(int width, int height, GLenum format, Picture* picture) = 0;
    virtual void unmap() {}

    // How it got into the texture, and why so, for the debug output.
    virtual std::string way() const = 0;

protected:
    // `vaddr` is the virtual address in the block descriptor; never null.
    explicit PhysFrame(unsigned char* vaddr);

private:
    PhyMemBlock m_Descriptor;
    Colours m_Colours;
    int m_nStream = 0;
};
