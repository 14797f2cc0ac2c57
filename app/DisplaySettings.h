// Process-wide display settings made at start-up, on the GUI thread, after the application object
// exists, but for the first, and before the first window.
#pragma once

// Before the application object: the toolkit's own sizes do not grow on a dense screen. Those of
// the pages are fixed numbers of pixels, and buttons would be cut off.
void ignoreScreenDensity();

// Hides the pointer, reads the screen's size and loads the application font.
void setUpDisplay();

void readScreenSize(); // into gScreenW and gScreenH

// Makes the device's font the application font; without its file the toolkit's default stays.
void loadApplicationFont();

// Depth, stencil and samples of every OpenGL surface, adapted to the platform.
void setDefaultSurfaceFormat();

// False on a platform whose windows hold no OpenGL surface; the reason has then been printed. After
// setDefaultSurfaceFormat().
bool canDrawWithOpenGl();
