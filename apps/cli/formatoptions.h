// SPDX-License-Identifier: MIT
#pragma once

#include "shared/framewriter.h"

#include <string>

namespace CLI {
class App;
}

/// The options that say how values are written.
class FormatArguments
{
public:
    void addTo(CLI::App &app);

    /// The options for \a format. Throws Failure if one of them does not apply to it.
    SondixApp::FormatOptions options(SondixApp::RecordFormat format) const;
    /// Whether any of the options is used.
    bool isAnyUsed() const { return !m_separator.empty() || m_decimalComma || !m_errors.empty(); }

private:
    std::string m_separator;
    std::string m_errors;
    bool m_decimalComma = false;
};
