#include "hub/LineReader.h"

#include <unistd.h>

#include <cerrno>

std::vector<std::string> LineReader::readLines()
{
    char chunk[4096];
    const ssize_t length = read(m_nFd, chunk, sizeof chunk);
    if (length > 0)
        m_strPending.append(chunk, static_cast<size_t>(length));
    else
        m_bEnd = length == 0 || (errno != EINTR && errno != EAGAIN);
    if (m_bEnd && !m_strPending.empty())
        m_strPending += '\n';
    std::vector<std::string> lines;
    for (size_t end = 0; (end = m_strPending.find('\n')) != std::string::npos;) {
        lines.push_back(m_strPending.substr(0, end));
        m_strPending.erase(0, end + 1);
    }
    return lines;
}
