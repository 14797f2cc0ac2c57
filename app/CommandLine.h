// The one command-line option: --twokeymode=on or --twokeymode=off.
#pragma once

// Sets g_bTwoKeyMode. Looks at argv[0] and argv[1] only, so call it after QApplication has removed
// Qt's own options. An unknown argument changes nothing.
void readCommandLine(int argc, char** argv);
