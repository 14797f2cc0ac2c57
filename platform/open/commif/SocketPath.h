// Where the player and the hub meet.
#pragma once

#include <string>

// The socket that $QUADPLAYER_LINK names, or one in the user's runtime directory
// ($XDG_RUNTIME_DIR), or, without both, in a folder under /tmp that only this user can enter; that
// folder is made when it is missing. Empty when such a folder belongs to someone else or is open to
// others.
std::string commSocketPath();
