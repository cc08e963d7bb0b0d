// SPDX-License-Identifier: MIT
#pragma once

#include <QtTest/qtestcase.h>

// Qt Test gives up after five seconds, which is not enough on a busy machine or under Wine. A wait ends as soon as its
// condition holds, so the longer limit takes no time when a test passes.
constexpr int longestTestWait = 30000; // milliseconds
#undef QTRY_VERIFY
#undef QTRY_COMPARE
#define QTRY_VERIFY(...) QTRY_VERIFY_WITH_TIMEOUT((__VA_ARGS__), longestTestWait)
#define QTRY_COMPARE(actual, ...) QTRY_COMPARE_WITH_TIMEOUT((actual), (__VA_ARGS__), longestTestWait)

/// Registers the main() of a test unit. The units of a folder are one program, which takes the name of the unit to
/// run as its first argument. This header is precompiled into every unit.
class TestUnit
{
public:
    using Main = int (*)(int argc, char *argv[]);

    /// @param source the path of the unit's source, tst_<unit>.cpp
    TestUnit(const char *source, Main main);

    static int run(int argc, char *argv[]);
};

namespace {

/// The parameter types that make each unit's unitMain() a different function.
template<int number>
struct ThisUnit
{
};

} // namespace

// Units may be compiled together: the names of each contain a number.
#define SONDIXQT_UNIT_MAIN_NUMBERED(number, ...)                                                                  \
    unitMain(ThisUnit<number>, int, char **);                                                                     \
    static const TestUnit thisUnit##number(                                                                       \
        __FILE__, [](int count, char *values[]) { return unitMain(ThisUnit<number>(), count, values); });         \
    int unitMain(ThisUnit<number>, __VA_ARGS__)
#define SONDIXQT_UNIT_MAIN(number, ...) SONDIXQT_UNIT_MAIN_NUMBERED(number, __VA_ARGS__)
#define main(...) SONDIXQT_UNIT_MAIN(__COUNTER__, __VA_ARGS__)
