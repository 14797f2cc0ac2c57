#include "pages/player/ControlKeys.h"

#include "common/KeyTable.h"

namespace {

using Rule = KeyRule<ControlAction>;

constexpr Rule kNormalPress[] = {
    {Qt::Key_Left, ControlAction::FocusPrevious}, {Qt::Key_Up, ControlAction::FocusPrevious},
    {Qt::Key_Right, ControlAction::FocusNext},    {Qt::Key_Down, ControlAction::FocusNext},
    {Qt::Key_Escape, ControlAction::Nothing},     {Qt::Key_Tab, ControlAction::Nothing},
    {Qt::Key_Backspace, ControlAction::Nothing},  {Qt::Key_Return, ControlAction::Nothing},
    {Qt::Key_Enter, ControlAction::Nothing},      {Qt::Key_Space, ControlAction::Nothing},
    {Qt::Key_Exit, ControlAction::Nothing},
};

constexpr Rule kNormalRelease[] = {
    {Qt::Key_Return, ControlAction::Activate}, {Qt::Key_Enter, ControlAction::Activate},
    {Qt::Key_Space, ControlAction::Activate},  {Qt::Key_Left, ControlAction::Nothing},
    {Qt::Key_Up, ControlAction::Nothing},      {Qt::Key_Right, ControlAction::Nothing},
    {Qt::Key_Down, ControlAction::Nothing},    {Qt::Key_Tab, ControlAction::Nothing},
};

constexpr Rule kTwoKeyPress[] = {
    {Qt::Key_1, ControlAction::FocusNext},       {Qt::Key_Tab, ControlAction::Nothing},
    {Qt::Key_Backspace, ControlAction::Nothing}, {Qt::Key_Return, ControlAction::Nothing},
    {Qt::Key_Enter, ControlAction::Nothing},     {Qt::Key_Space, ControlAction::Nothing},
    {Qt::Key_Home, ControlAction::Nothing},      {Qt::Key_Left, ControlAction::Nothing},
    {Qt::Key_Up, ControlAction::Nothing},        {Qt::Key_Right, ControlAction::Nothing},
    {Qt::Key_Down, ControlAction::Nothing},      {Qt::Key_Back, ControlAction::Nothing},
    {Qt::Key_Exit, ControlAction::Nothing},
};

constexpr Rule kTwoKeyRelease[] = {
    {Qt::Key_Tab, ControlAction::Nothing},    {Qt::Key_Backspace, ControlAction::Nothing},
    {Qt::Key_Return, ControlAction::Nothing}, {Qt::Key_Enter, ControlAction::Nothing},
    {Qt::Key_Space, ControlAction::Nothing},  {Qt::Key_Home, ControlAction::Nothing},
    {Qt::Key_Left, ControlAction::Nothing},   {Qt::Key_Up, ControlAction::Nothing},
    {Qt::Key_Right, ControlAction::Nothing},  {Qt::Key_Down, ControlAction::Nothing},
    {Qt::Key_Back, ControlAction::Nothing},   {Qt::Key_Exit, ControlAction::Nothing},
};

using Table = KeyTable<ControlAction>;
constexpr KeyMode<ControlAction> kNormal{Table(kNormalPress), Table(kNormalRelease)};
constexpr KeyMode<ControlAction> kTwoKey{Table(kTwoKeyPress), Table(kTwoKeyRelease)};

} // namespace

const ControlAction* controlAction(bool twoKeyMode, QEvent::Type type, int key)
{
    return (twoKeyMode ? kTwoKey : kNormal).find(type, key);
}

bool consumedKeysAreActivity(bool twoKeyMode)
{
    return !twoKeyMode;
}
