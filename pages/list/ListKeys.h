// The list page's key tables.
#pragma once

#include <QEvent>

enum class ListAction {
    Down, // the four moves come first, because they index the tables of FocusRing
    Up,
    Right,
    Left,
    Ok,
    GoBack,
    Nothing, // but the page consumes the key
};

// Null: the page passes the key on. `type` is KeyPress or KeyRelease.
const ListAction* listAction(bool twoKeyMode, QEvent::Type type, int key);
