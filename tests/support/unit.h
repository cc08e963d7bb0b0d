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

/// The parameter type that makes each unit's unitMain() a different function.
struct ThisUnit
{
};

} // namespace

#define main(...)                                                                                                 \
    unitMain(ThisUnit, int, char **);                                                                             \
    static const TestUnit thisUnit(                                                                               \
        __BASE_FILE__, [](int count, char *values[]) { return unitMain(ThisUnit(), count, values); });            \
    int unitMain(ThisUnit, __VA_ARGS__)
