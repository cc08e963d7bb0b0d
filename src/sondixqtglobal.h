// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// Marks the symbols that the shared library exports; all others are hidden.
#if defined(SONDIXQT_BUILD_LIBRARY)
#    define SONDIXQT_EXPORT Q_DECL_EXPORT
#else
#    define SONDIXQT_EXPORT Q_DECL_IMPORT
#endif
