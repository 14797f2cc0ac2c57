// The control bar's key tables.
#pragma once

#include <QEvent>

enum class ControlAction {
    Nothing, // the key is consumed all the same
    FocusPrevious,
    FocusNext,
    Activate,
};

// Null: the key is not the bar's. `type` is KeyPress or KeyRelease.
const ControlAction* controlAction(bool twoKeyMode, QEvent::Type type, int key);

// Whether a key that the bar consumes, whatever its action, shows that the user is active.
bool consumedKeysAreActivity(bool twoKeyMode);
