#include "common/globals.h"

int gScreenW = 0;
int gScreenH = 0;

bool g_bTwoKeyMode = false;

int g_nMarginLeft = 0;
int g_nMarginTop = 0;
int g_nMarginRight = 0;
int g_nMarginBottom = 0;
int g_nPaddingLeft = 0;
int g_nPaddingTop = 0;
int g_nPaddingRight = 0;
int g_nPaddingBottom = 0;
