#include "pages/list/ListKeys.h"

#include "common/KeyTable.h"

namespace {

using Rule = KeyRule<ListAction>;

constexpr Rule kNormalPress[] = {
    {Qt::Key_Up, ListAction::Up},          {Qt::Key_Down, ListAction::Down},
    {Qt::Key_Left, ListAction::Left},      {Qt::Key_Right, ListAction::Right},
    {Qt::Key_Return, ListAction::Nothing}, {Qt::Key_Enter, ListAction::Nothing},
    {Qt::Key_Space, ListAction::Nothing},
};

constexpr Rule kNormalRelease[] = {
    {Qt::Key_Return, ListAction::Ok},   {Qt::Key_Enter, ListAction::Ok},
    {Qt::Key_Space, ListAction::Ok},    {Qt::Key_Backspace, ListAction::GoBack},
    {Qt::Key_Exit, ListAction::GoBack},
};

constexpr Rule kTwoKeyPress[] = {
    {Qt::Key_1, ListAction::Down},        {Qt::Key_2, ListAction::Nothing},
    {Qt::Key_Left, ListAction::Nothing},  {Qt::Key_Up, ListAction::Nothing},
    {Qt::Key_Right, ListAction::Nothing}, {Qt::Key_Down, ListAction::Nothing},
};

constexpr Rule kTwoKeyRelease[] = {
    {Qt::Key_2, ListAction::Ok},          {Qt::Key_1, ListAction::Nothing},
    {Qt::Key_Left, ListAction::Nothing},  {Qt::Key_Up, ListAction::Nothing},
    {Qt::Key_Right, ListAction::Nothing}, {Qt::Key_Down, ListAction::Nothing},
};

using Table = KeyTable<ListAction>;
constexpr KeyMode<ListAction> kNormal{Table(kNormalPress), Table(kNormalRelease)};
constexpr KeyMode<ListAction> kTwoKey{Table(kTwoKeyPress), Table(kTwoKeyRelease)};

} // namespace

const ListAction* listAction(bool twoKeyMode, QEvent::Type type, int key)
{
    return (twoKeyMode ? kTwoKey : kNormal).find(type, key);
}
