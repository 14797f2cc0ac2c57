// The order in which keys move the focus on the list page: Play, Back, Exit, each row of the list,
// then Play again.
#pragma once

enum class ListAction;

enum class FocusPlace {
    Play, // the three buttons come first, because they index a table
    Back,
    Exit,
    List,
    Nowhere, // none of the four has the focus
};

struct FocusStep
{
    FocusPlace place;
    int row; // of the list; negative: no row is current
};

// Where a move leads to. `move` is one of the four moves, `rows` the number of rows of the list.
// Nowhere leads to Nowhere.
FocusStep nextFocus(const FocusStep& now, ListAction move, int rows);
