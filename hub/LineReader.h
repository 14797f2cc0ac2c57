// Lines from a descriptor that is read only when poll() says so.
#pragma once

#include <string>
#include <vector>

class LineReader
{
public:
    explicit LineReader(int fd) : m_nFd(fd) {}

    // The lines that one read completed. At the end of the input the last one needs no newline.
    std::vector<std::string> readLines();
    bool atEnd() const { return m_bEnd; }

private:
    int m_nFd;
    bool m_bEnd = false;
    std::string m_strPending;
};
