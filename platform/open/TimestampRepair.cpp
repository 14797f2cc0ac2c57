#include "platform/open/TimestampRepair.h"

#include <algorithm>

void TimestampRepair::reset(GstClockTime start)
{
    m_nStart = start;
    m_nLast = GST_CLOCK_TIME_NONE;
    m_nLongestStep = 0;
}

GstClockTime TimestampRepair::repaired(GstClockTime pts, GstClockTime duration)
{
    const bool isFirst = !GST_CLOCK_TIME_IS_VALID(m_nLast);
    GstClockTime time = pts;
    if (isFirst && !GST_CLOCK_TIME_IS_VALID(pts)) {
        time = m_nStart;
    } else if (!isFirst && (!GST_CLOCK_TIME_IS_VALID(pts) || pts <= m_nLast)) {
        time = m_nLast + duration;
    }
    if (!isFirst)
        m_nLongestStep = std::max(m_nLongestStep, time - m_nLast);
    m_nLast = time;
    return time;
}
