// The one command-line option: --twokeymode=on or --twokeymode=off.
#pragma once

// Sets g_bTwoKeyMode from the program name and the first argument, after the toolkit has taken its
// own options out; later arguments are not looked at. Anything not understood changes nothing.
void readCommandLine(int argc, char** argv);
