// The clock that paces the pictures, and the one conversion between its unit and GStreamer's.
#pragma once

#include <QtGlobal>

// CLOCK_MONOTONIC in us, rounded. The engine and the player page compare their readings.
qint64 currentTimeUs();

// GStreamer's ns to the engine's us, rounded. It goes through single precision, so keys of the
// sample store and readings of the pipeline agree with each other to the same few us.
qint64 nanosecondsToUs(qint64 ns);
