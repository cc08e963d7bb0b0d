// SPDX-License-Identifier: MIT
#pragma once

#include <QDebug>
#include <QString>

#include <cstdlib>

/// Says for which \a input the library's \a result is not the \a expected one, and stops the fuzzer on it.
template<typename Input, typename Value>
[[noreturn]] void reportMismatch(const char *what, const Input &input, const Value &result, const Value &expected)
{
    qCritical() << what << "of" << input << "is" << result << "but should be" << expected;
    std::abort();
}
