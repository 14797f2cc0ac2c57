// The control bar's key tables.
#pragma once

#include <QEvent>

enum class ControlAction {
    Nothing, // consumes the key
    FocusPrevious,
    FocusNext,
    Activate,
};

// Null: the key is not the bar's. `type` is KeyPress or KeyRelease.
const ControlAction* controlAction(bool twoKeyMode, QEvent::Type type, int key);

// Whether keys that the bar consumes keep it visible.
bool consumedKeysAreActivity(bool twoKeyMode);
