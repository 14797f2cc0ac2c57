// Reads lines from a descriptor. Call readLines() only when poll() says that it is readable.
#pragma once

#include <string>
#include <vector>

class LineReader
{
public:
    explicit LineReader(int fd) : m_nFd(fd) {}

    // Reads once; returns the lines that are complete. The last line of the input needs no newline.
    std::vector<std::string> readLines();
    bool atEnd() const { return m_bEnd; }

private:
    int m_nFd;
    bool m_bEnd = false;
    std::string m_strPending;
};
