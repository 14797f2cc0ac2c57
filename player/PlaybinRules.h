// What playbin may and must do in this process.
#pragma once

// Lets playbin open the chosen file only, whatever a recording names, report every error, and bear
// a stop at any moment. Call it once, after gst_init() and before the first playbin plays; GUI
// thread.
void setPlaybinRules();
