// Gives every frame a presentation time later than the one before. AVI files with B-frames bring
// equal times for neighbours, and whoever keeps one frame per time would lose the others.
// Streaming thread only.
#pragma once

#include <gst/gst.h>

class TimestampRepair
{
public:
    void reset(); // at a new segment and after a flush

    // A missing time, or one not later than the last, becomes the last plus its duration.
    GstClockTime next(GstClockTime time, GstClockTime duration);

    GstClockTime lastStep() const { return m_step; } // between the last two frames

private:
    GstClockTime m_last = GST_CLOCK_TIME_NONE;
    GstClockTime m_lastDuration = 0;
    GstClockTime m_step = 0;
};
