// Makes presentation times increase. AVI files with B-frames give two neighbours the same time, and
// the engine, which keeps one frame for each time, would lose one of them. All times in ns.
#pragma once

#include <gst/gst.h>

class TimestampRepair
{
public:
    // A new segment begins at `start`.
    void reset(GstClockTime start);

    // The time for a frame that has this `pts`, or none, and lasts for `duration`.
    GstClockTime repaired(GstClockTime pts, GstClockTime duration);

    // From one frame to the next, in this segment.
    GstClockTime longestStep() const { return m_nLongestStep; }

private:
    GstClockTime m_nStart = 0;
    GstClockTime m_nLast = GST_CLOCK_TIME_NONE;
    GstClockTime m_nLongestStep = 0;
};
