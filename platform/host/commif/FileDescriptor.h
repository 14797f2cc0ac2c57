// Owner of one file descriptor.
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
        std::swap(m_nFd, other.m_nFd);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return m_nFd; }
    bool isValid() const { return m_nFd >= 0; }
    void reset()
    {
        if (m_nFd >= 0)
            ::close(std::exchange(m_nFd, -1));
    }

private:
    int m_nFd;
};
