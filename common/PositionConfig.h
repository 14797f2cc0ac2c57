// Reads the screen margins and paddings of the device into the globals of globals.h.
#pragma once

class QIODevice;

// Called once at start-up, on the GUI thread, before the pages are made. A missing file leaves
// every inset at 0; a line that is not understood is skipped.
//
// Each line is KEY=left,top,right,bottom in px; the keys are EGL_MARGIN and EGL_PADDING, a later
// line wins, and a field that is no number counts as 0.
void readPositionConfig();

// The same from a text that is open already.
void readPositionConfig(QIODevice& text);
