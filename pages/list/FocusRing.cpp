#include "pages/list/FocusRing.h"

#include "pages/list/ListKeys.h"

namespace {

constexpr int kMoves = 4;
constexpr int kButtons = 3;
constexpr int kNoRow = -1;

// The first row of the list, if `list` is set and there is one; otherwise the button.
struct Target
{
    bool list;
    FocusPlace button;
};

constexpr Target kPlay{false, FocusPlace::Play};
constexpr Target kBack{false, FocusPlace::Back};
constexpr Target kExit{false, FocusPlace::Exit};
constexpr Target kListElsePlay{true, FocusPlace::Play};
constexpr Target kListElseExit{true, FocusPlace::Exit};

// Columns as in ListAction: down, up, right, left.
constexpr Target kFromButton[kButtons][kMoves] = {
    {kBack, kListElseExit, kBack, kListElseExit}, // Play
    {kExit, kPlay, kExit, kPlay},                 // Back
    {kListElsePlay, kBack, kListElsePlay, kBack}, // Exit
};

struct ListMove
{
    int step; // 0: the move leaves the list from any row
    FocusPlace leaveTo;
};

constexpr ListMove kFromList[kMoves] = {
    {+1, FocusPlace::Play}, {-1, FocusPlace::Exit}, {0, FocusPlace::Exit}, {0, FocusPlace::Play}};

FocusStep fromList(int row, const ListMove& move, int rows)
{
    const int edge = move.step > 0 ? rows - 1 : 0;
    if (move.step == 0 || row == edge)
        return {move.leaveTo, kNoRow};
    return {FocusPlace::List, row + move.step};
}

} // namespace

FocusStep nextFocus(const FocusStep& now, ListAction move, int rows)
{
    const int column = static_cast<int>(move);
    if (now.place == FocusPlace::Nowhere)
        return now;
    if (now.place == FocusPlace::List)
        return fromList(now.row, kFromList[column], rows);
    const Target& target = kFromButton[static_cast<int>(now.place)][column];
    if (target.list && rows > 0)
        return {FocusPlace::List, 0};
    return {target.button, now.row};
}
