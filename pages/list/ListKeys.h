// The list page's key tables.
#pragma once

#include <QEvent>

enum class ListAction {
    Down, // the four moves come first: they index the tables of FocusRing
    Up,
    Right,
    Left,
    Ok,
    GoBack,
    Nothing, // the key is consumed all the same
};

// Null: the key is not the page's. `type` is KeyPress or KeyRelease.
const ListAction* listAction(bool twoKeyMode, QEvent::Type type, int key);
