// Short forms for the rows of data-driven tests.
#pragma once

#include <QtTest>

#include <initializer_list>

// columns<QString, int>({"file", "frames"})
template <typename... Types> void columns(std::initializer_list<const char*> names)
{
    auto name = names.begin();
    (QTest::addColumn<Types>(*name++), ...);
}

template <typename... Values> void row(const char* name, Values... values)
{
    (QTest::newRow(name) << ... << values);
}
