// The ring that the focus of the list page walks: Play, Back, Exit, the rows of the list one by
// one, Play again.
#pragma once

enum class ListAction;

enum class FocusPlace {
    Play, // the buttons come first: they index a table
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

// Where a move leads. `move` is one of the four moves, `rows` the number of rows of the list. From
// nowhere it leads nowhere.
FocusStep nextFocus(const FocusStep& now, ListAction move, int rows);
