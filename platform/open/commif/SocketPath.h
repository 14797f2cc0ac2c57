// Where the player and the hub meet.
#pragma once

#include <string>

// The path in $QUADPLAYER_LINK; else a socket in $XDG_RUNTIME_DIR; else one in a folder below /tmp
// that only this user can enter. Makes that folder if it is missing. Returns an empty path if the
// folder belongs to another user or is open to others.
std::string commSocketPath();
