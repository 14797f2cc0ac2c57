// CPagePlayerControl's keys, and which button gets the focus back.
#include "pages/player/CPagePlayerControl.h"

#include "common/KeyTable.h"
#include "common/globals.h"
#include "pages/player/ControlKeys.h"

#include <QPushButton>

bool CPagePlayerControl::eventFilter(QObject* watched, QEvent* event)
{
    if (isHidden())
        return QObject::eventFilter(watched, event);
    const int index = m_vecButtons.indexOf(qobject_cast<QPushButton*>(watched));
    if (index < 0)
        return true;
    const QKeyEvent* key = keyEvent(event);
    if (!key)
        return QObject::eventFilter(watched, event);
    if (isRepeatedPress(key))
        return true;
    const bool twoKeyMode = g_bTwoKeyMode;
    const ControlAction* action = controlAction(twoKeyMode, key->type(), key->key());
    if (!action)
        return QObject::eventFilter(watched, event);
    perform(*action, index);
    if (consumedKeysAreActivity(twoKeyMode))
        emit sgKeyEventUpdate();
    return true;
}

void CPagePlayerControl::perform(ControlAction action, int index)
{
    switch (action) {
    case ControlAction::FocusPrevious:
        focusButton(index - 1, false);
        break;
    case ControlAction::FocusNext:
        focusButton(index + 1, true);
        break;
    case ControlAction::Activate:
        emit m_vecButtons[index]->clicked(false);
        break;
    case ControlAction::Nothing:
        break;
    }
}

// `index` may be one before the first or after the last button.
void CPagePlayerControl::focusButton(int index, bool next)
{
    const int count = m_vecButtons.size();
    focusNextPrevChild(next);
    m_vecButtons[(index + count) % count]->setFocus(Qt::OtherFocusReason);
}

void CPagePlayerControl::hideControl()
{
    hide();
    m_pLastFocus = focusWidget();
}

void CPagePlayerControl::showControl()
{
    show();
    raise();
    const int index = m_vecButtons.indexOf(qobject_cast<QPushButton*>(m_pLastFocus));
    m_vecButtons[index < 0 ? 0 : index]->setFocus(Qt::OtherFocusReason);
}
