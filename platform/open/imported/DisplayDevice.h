// The DRM device of the display. A software renderer maps what it imports, and ends the program
// where that fails: the kernel refuses to map another device's memory through this one.
// EGL does not tell a software renderer's device. So this is the only device that the system has;
// with more than one it owns nothing.
#pragma once

class DisplayDevice
{
public:
    DisplayDevice();
    ~DisplayDevice();
    DisplayDevice(const DisplayDevice&) = delete;
    DisplayDevice& operator=(const DisplayDevice&) = delete;

    bool owns(int dmabuf) const;

private:
    const int m_nFd;
};
