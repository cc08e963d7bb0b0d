// SPDX-License-Identifier: MIT
#pragma once

#include <QDebug>
#include <QString>

#include <cstdlib>

/// Reports that the library's \a result for \a input is not the \a expected one, and ends the fuzzer with a crash.
template<typename Input, typename Value>
[[noreturn]] void reportMismatch(const char *what, const Input &input, const Value &result, const Value &expected)
{
    qCritical() << what << "of" << input << "is" << result << "but should be" << expected;
    std::abort();
}
