// SPDX-License-Identifier: MIT
#include "support/unit.h"

#undef main

#include <cstdio>
#include <map>
#include <string>

namespace {

std::map<std::string, TestUnit::Main> &units()
{
    static std::map<std::string, TestUnit::Main> all;
    return all;
}

/// The unit's name: "find" for "/.../tst_find.cpp".
std::string unitName(const std::string &source)
{
    const std::string prefix = "tst_";
    const auto begin = source.rfind(prefix) + prefix.size();
    return source.substr(begin, source.rfind('.') - begin);
}

} // namespace

TestUnit::TestUnit(const char *source, Main main)
{
    units()[unitName(source)] = main;
}

int TestUnit::run(int argc, char *argv[])
{
    const auto unit = argc > 1 ? units().find(argv[1]) : units().end();
    if (unit == units().end()) {
        std::fprintf(stderr, "Usage: %s UNIT [ARGUMENT ...]\nUnits:\n", argv[0]);
        for (const auto &[name, main] : units())
            std::fprintf(stderr, "  %s\n", name.c_str());
        return 2;
    }
    // The unit gets the arguments without its name.
    argv[1] = argv[0];
    return unit->second(argc - 1, argv + 1);
}

int main(int argc, char *argv[])
{
    return TestUnit::run(argc, argv);
}
