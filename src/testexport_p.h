// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtglobal.h>

/// Marks internal symbols that tests use directly: exported only if the library is built with tests.
#if defined(SONDIXQT_EXPORT_FOR_TESTS)
#    define SONDIXQT_TEST_EXPORT SONDIXQT_EXPORT
#else
#    define SONDIXQT_TEST_EXPORT
#endif
