#pragma once

// Functions that stand in for a library's lie in a section of their own, so that reports can look
// past them at who called.
#define STAND_IN __attribute__((section("stand_ins")))
