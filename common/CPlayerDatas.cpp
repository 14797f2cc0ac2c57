#include "common/CPlayerDatas.h"

CPlayerDatas* CPlayerDatas::s_var = nullptr;

CPlayerDatas* CPlayerDatas::getInstance()
{
    if (!s_var)
        s_var = new CPlayerDatas;
    return s_var;
}

void CPlayerDatas::releaseInstance()
{
    delete s_var;
    s_var = nullptr;
}

CPlayerDatas::CPlayerDatas()
{
    clearFiles();
}

void CPlayerDatas::clearFiles()
{
    m_vecFiles.clear();
    m_nIndex = -1;
}

void CPlayerDatas::addFile(const QString& path)
{
    if (!path.isEmpty())
        m_vecFiles.append(path);
}

bool CPlayerDatas::isEmpty() const
{
    return m_vecFiles.isEmpty();
}

bool CPlayerDatas::isEnd() const
{
    return m_nIndex == m_vecFiles.size();
}

bool CPlayerDatas::next()
{
    if (isEmpty() || isEnd())
        return false;
    ++m_nIndex;
    return true;
}

QString CPlayerDatas::currentFile() const
{
    return m_vecFiles.value(m_nIndex);
}
