// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// Marks what the shared library exports; everything else stays hidden.
#if defined(SONDIXQT_BUILD_LIBRARY)
#    define SONDIXQT_EXPORT Q_DECL_EXPORT
#else
#    define SONDIXQT_EXPORT Q_DECL_IMPORT
#endif
