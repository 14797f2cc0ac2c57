// Makes a stream's presentation times rise. AVI files with B-frames bring the same time for
// neighbours, and whoever keeps one frame per time would lose one of them. All times in ns.
#pragma once

#include <gst/gst.h>

class TimestampRepair
{
public:
    // A new stretch of the stream begins, at `start`.
    void reset(GstClockTime start);

    // The time to give to a frame that says `pts`, or nothing, and stays for `duration`.
    GstClockTime repaired(GstClockTime pts, GstClockTime duration);

    // From one frame to the next, in this stretch.
    GstClockTime longestStep() const { return m_nLongestStep; }

private:
    GstClockTime m_nStart = 0;
    GstClockTime m_nLast = GST_CLOCK_TIME_NONE;
    GstClockTime m_nLongestStep = 0;
};
