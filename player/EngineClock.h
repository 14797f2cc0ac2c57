// The clock that paces the pictures, and the one conversion between its unit and GStreamer's.
#pragma once

#include <QtGlobal>

// CLOCK_MONOTONIC in us, rounded. The engine and the player page compare their readings.
qint64 currentTimeUs();

// GStreamer's ns to the engine's us, rounded. Single precision makes it coarse: values lie up to
// 66 us apart at 10 minutes and 262 us at an hour. Convert every time that is compared with another
// by this function, so that both are rounded alike.
qint64 nanosecondsToUs(qint64 ns);
