// Display settings of the process, all zero at first. Start-up writes them before it creates the
// pages, which then read them. GUI thread only.
#pragma once

extern int gScreenW; // px
extern int gScreenH; // px

extern bool g_bTwoKeyMode; // the device has only two keys

// Insets of the player page, px.
extern int g_nMarginLeft;
extern int g_nMarginTop;
extern int g_nMarginRight;
extern int g_nMarginBottom;
extern int g_nPaddingLeft;
extern int g_nPaddingTop;
extern int g_nPaddingRight;
extern int g_nPaddingBottom;
