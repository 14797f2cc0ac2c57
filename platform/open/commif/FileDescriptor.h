// Owns a file descriptor and closes it.
#pragma once

#include <unistd.h>

#include <utility>

class FileDescriptor
{
public:
    explicit FileDescriptor(int fd = -1) : m_nFd(fd) {}
    ~FileDescriptor() { reset(); }
    FileDescriptor(FileDescriptor&& other) noexcept : m_nFd(std::exchange(other.m_nFd, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        reset(std::exchange(other.m_nFd, -1));
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return m_nFd; }
    bool isValid() const { return m_nFd >= 0; }
    void reset(int fd = -1)
    {
        const int old = std::exchange(m_nFd, fd);
        if (old >= 0)
            ::close(old);
    }

private:
    int m_nFd;
};
