#include "platform/host/TimestampRepair.h"

void TimestampRepair::reset(GstClockTime start)
{
    m_nStart = start;
    m_nLast = GST_CLOCK_TIME_NONE;
    m_nStep = 0;
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
    m_nStep = isFirst ? 0 : time - m_nLast;
    m_nLast = time;
    return time;
}
