// SPDX-License-Identifier: MIT
#pragma once

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
