// A page's reaction to keys, kept as tables: one for presses and one for releases of each key mode.
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

// A key that is held acts once. Its repeated releases act again.
inline bool isRepeatedPress(const QKeyEvent* key)
{
    return key->type() == QEvent::KeyPress && key->isAutoRepeat();
}

template <typename Action> struct KeyRule
{
    int key; // Qt::Key
    Action action;
};

// Refers to an array of rules that lives as long as the program.
template <typename Action> class KeyTable
{
public:
    template <std::size_t N>
    constexpr explicit KeyTable(const KeyRule<Action> (&rules)[N])
        : m_pBegin(rules), m_pEnd(rules + N)
    {
    }

    // Null when the table leaves the key to others.
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
