// Display settings of the process. Call them at start-up on the GUI thread, before the first
// window; all but ignoreScreenDensity() need the QApplication.
#pragma once

// Keeps Qt from enlarging its own sizes on a dense screen: the pages have fixed sizes in pixels,
// and buttons would be cut off. Call it before QApplication is made.
void ignoreScreenDensity();

// Hides the pointer, reads the screen's size into gScreenW and gScreenH, and makes the device's
// font the application font. Without its file, Qt's default font stays.
void setUpDisplay();

// Depth, stencil and samples of every OpenGL surface, adapted to the platform.
void setDefaultSurfaceFormat();

// False if Qt's platform has no OpenGL; then it prints so. Call it after setDefaultSurfaceFormat().
bool canDrawWithOpenGl();
