// The key map of a page: for each key mode, one table for presses and one for releases.
#pragma once

#include <QKeyEvent>

#include <cstddef>

// The press or release of a key that the event is; null for any other event.
inline const QKeyEvent* keyEvent(const QEvent* event)
{
    const QEvent::Type type = event->type();
    const bool key = type == QEvent::KeyPress || type == QEvent::KeyRelease;
    return key ? static_cast<const QKeyEvent*>(event) : nullptr;
}

// The pages consume these, so that a key that is held acts once.
inline bool isRepeatedPress(const QKeyEvent* key)
{
    return key->type() == QEvent::KeyPress && key->isAutoRepeat();
}

template <typename Action> struct KeyRule
{
    int key; // Qt::Key
    Action action;
};

// Points to the rules, so the array must live as long as the table.
template <typename Action> class KeyTable
{
public:
    template <std::size_t N>
    constexpr explicit KeyTable(const KeyRule<Action> (&rules)[N])
        : m_pBegin(rules), m_pEnd(rules + N)
    {
    }

    // Null: the page passes the key on.
    const Action* find(int key) const
    {
        for (const KeyRule<Action>* rule = m_pBegin; rule != m_pEnd; ++rule) {
            if (rule->key == key)
                return &rule->action;
        }
        return nullptr;
    }

private:
    const KeyRule<Action>* m_pBegin;
    const KeyRule<Action>* m_pEnd;
};

template <typename Action> struct KeyMode
{
    KeyTable<Action> press;
    KeyTable<Action> release;

    const Action* find(QEvent::Type type, int key) const
    {
        return (type == QEvent::KeyPress ? press : release).find(key);
    }
};
