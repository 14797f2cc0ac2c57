// A page's reaction to keys, kept as tables: one for presses and one for releases of each key mode.
#pragma once

#include <QEvent>

#include <cstddef>

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
