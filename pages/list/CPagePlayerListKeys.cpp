// CPagePlayerList's keys and its focus ring.
#include "pages/list/CPagePlayerList.h"

#include "common/KeyTable.h"
#include "common/globals.h"
#include "pages/list/FocusRing.h"
#include "pages/list/ListKeys.h"

#include <QListWidget>
#include <QPushButton>

#include <algorithm>
#include <iterator>

namespace {

constexpr FocusPlace kPlaces[] = {FocusPlace::Play, FocusPlace::Back, FocusPlace::Exit,
                                  FocusPlace::List};

} // namespace

bool CPagePlayerList::eventFilter(QObject* watched, QEvent* event)
{
    const QKeyEvent* key = keyEvent(event);
    if (!key || !watches(watched))
        return QObject::eventFilter(watched, event);
    if (isRepeatedPress(key))
        return true;
    const ListAction* action = listAction(g_bTwoKeyMode, key->type(), key->key());
    if (action && perform(*action))
        return true;
    return QObject::eventFilter(watched, event);
}

bool CPagePlayerList::perform(ListAction action)
{
    switch (action) {
    case ListAction::Down:
    case ListAction::Up:
    case ListAction::Right:
    case ListAction::Left:
        moveFocus(action);
        break;
    case ListAction::Ok:
        return confirm();
    case ListAction::GoBack:
        backListViewFile();
        break;
    case ListAction::Nothing:
        break;
    }
    return true;
}

// The target is computed first, because focusNextPrevChild() may give the list another current row.
void CPagePlayerList::moveFocus(ListAction move)
{
    const FocusStep from{focusPlace(), m_pListWidget->currentRow()};
    const FocusStep to = nextFocus(from, move, m_pListWidget->count());
    focusNextPrevChild(move == ListAction::Down || move == ListAction::Right);
    if (from.place == FocusPlace::List && to.place != FocusPlace::List)
        makeCurrent(to.row);
    if (QWidget* target = widgetAt(to.place))
        target->setFocus(Qt::OtherFocusReason);
    if (to.place != FocusPlace::List)
        return;
    makeCurrent(to.row);
    // The list does not scroll if it made this row current itself when it got the focus.
    m_pListWidget->scrollToItem(m_pListWidget->currentItem());
}

bool CPagePlayerList::confirm()
{
    switch (focusPlace()) {
    case FocusPlace::List:
        confirmRow();
        break;
    case FocusPlace::Play:
        openVideoButton();
        break;
    case FocusPlace::Back:
        backListViewFile();
        break;
    case FocusPlace::Exit:
        emit m_pBtnExit->clicked(false);
        break;
    case FocusPlace::Nowhere:
        return false;
    }
    return true;
}

FocusPlace CPagePlayerList::focusPlace() const
{
    for (const FocusPlace place : kPlaces) {
        if (widgetAt(place)->hasFocus())
            return place;
    }
    return FocusPlace::Nowhere;
}

QWidget* CPagePlayerList::widgetAt(FocusPlace place) const
{
    switch (place) {
    case FocusPlace::Play:
        return m_pBtnOpenVideo;
    case FocusPlace::Back:
        return m_pBtnBack;
    case FocusPlace::Exit:
        return m_pBtnExit;
    case FocusPlace::List:
        return m_pListWidget;
    case FocusPlace::Nowhere:
        break;
    }
    return nullptr;
}

bool CPagePlayerList::watches(const QObject* object) const
{
    return std::any_of(std::begin(kPlaces), std::end(kPlaces),
                       [&](FocusPlace place) { return widgetAt(place) == object; });
}
