// Process-wide display settings made at start-up, on the GUI thread, after the application object
// exists and before the first window.
#pragma once

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
