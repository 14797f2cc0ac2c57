#include "platform/host/TimestampRepair.h"

void TimestampRepair::reset()
{
    *this = TimestampRepair();
}

GstClockTime TimestampRepair::next(GstClockTime time, GstClockTime duration)
{
    const bool first = !GST_CLOCK_TIME_IS_VALID(m_last);
    if (!GST_CLOCK_TIME_IS_VALID(time))
        time = first ? 0 : m_last;
    if (!first && time <= m_last)
        time = m_last + m_lastDuration;
    m_step = first ? duration : time - m_last;
    m_last = time;
    m_lastDuration = duration;
    return time;
}
