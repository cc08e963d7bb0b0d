// SPDX-License-Identifier: MIT
#include "formatoptions.h"

#include "exitcode.h"

#include <CLI/CLI.hpp>

#include <cctype>

using namespace SondixApp;

namespace {

std::string separatorProblem(const std::string &text)
{
    if (text == "tab" || (text.size() == 1 && text[0] > ' ' && text[0] < 0x7f && !std::isalnum(text[0]) &&
                          std::string("\"#+-.").find(text[0]) == std::string::npos))
        return {};
    return "'" + text + "' is no separator; use a character such as ',' or ';', or 'tab'";
}

} // namespace

void FormatArguments::addTo(CLI::App &app)
{
    app.add_option("--separator", m_separator, "Separator of the columns in CSV: a character, or tab (default: ,)")
        ->check(separatorProblem);
    app.add_flag("--decimal-comma", m_decimalComma,
                 "Numbers with a decimal comma in CSV; columns are then separated by ;");
    app.add_option("--errors", m_errors, "How error values are written: text (default), nan or empty")
        ->check(CLI::IsMember({"text", "nan", "empty"}));
}

FormatOptions FormatArguments::options(RecordFormat format) const
{
    if (format != RecordFormat::Csv && (!m_separator.empty() || m_decimalComma))
        throw Failure{ExitCode::Usage, QStringLiteral("--separator and --decimal-comma are for CSV")};
    if (format == RecordFormat::Npy && !m_errors.empty() && m_errors != "nan")
        throw Failure{ExitCode::Usage, QStringLiteral("error values are always nan in .npy")};
    FormatOptions options;
    if (m_decimalComma) {
        options.decimalMark = ',';
        options.separator = ';';
    }
    if (!m_separator.empty())
        options.separator = m_separator == "tab" ? '\t' : m_separator[0];
    if (options.separator == options.decimalMark)
        throw Failure{ExitCode::Usage, QStringLiteral("--separator is the decimal comma")};
    if (m_errors == "nan")
        options.errors = ErrorStyle::NaN;
    else if (m_errors == "empty")
        options.errors = ErrorStyle::Empty;
    return options;
}
