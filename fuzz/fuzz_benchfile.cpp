// SPDX-License-Identifier: MIT
#include "mismatch.h"

#include "model/bench.h"
#include "model/json.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>

using namespace sondixsim::model;

namespace {

struct Verdict
{
    QByteArray error; ///< empty if the bench is accepted
    int line = 0;
};

/// Without a folder, so that no file is read.
Verdict verdictOn(std::string_view text)
{
    try {
        readBench(text, {});
        return {};
    } catch (const ParseError &error) {
        return {QByteArray(error.what()), error.line};
    }
}

} // namespace

/// A bench is accepted, or refused with a line of its own. One that is accepted must be accepted without its comments
/// and line breaks, too.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    const Verdict verdict = verdictOn(text);
    const QByteArray input(text.data(), static_cast<int>(size));
    if (!verdict.error.isEmpty()) {
        const int lines = 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
        if (verdict.line < 1 || verdict.line > lines)
            reportMismatch("line of the error", input, verdict.line, lines);
        return 0;
    }
    const auto json = nlohmann::ordered_json::parse(text.begin(), text.end(), nullptr, false, true);
    if (json.is_discarded())
        reportMismatch("syntax", input, QByteArray("accepted"), QByteArray("refused"));
    const Verdict again = verdictOn(json.dump());
    if (!again.error.isEmpty())
        reportMismatch("bench without comments", input, again.error, QByteArray("accepted"));
    return 0;
}
