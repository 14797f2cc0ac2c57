// Reads the screen margins and paddings of the device into the globals of globals.h.
#pragma once

class QIODevice;

// Start-up calls this once, on the GUI thread, before it creates the pages. If the file is missing,
// every inset stays 0.
//
// Each line is KEY=left,top,right,bottom in px, and the keys are EGL_MARGIN and EGL_PADDING. A
// later line wins, a field that is not a number counts as 0, any other line is skipped.
void readPositionConfig();

// Reads an open text instead of the device's file.
void readPositionConfig(QIODevice& text);
