// SPDX-License-Identifier: MIT
#include "mismatch.h"

#include "record.h"

#include <cstddef>
#include <cstdint>

using namespace sondixrec;

namespace {

/// What is read of a record: all values, each by its name, in text form.
struct Reading
{
    bool isRefused = false;
    bool isCut = false;
    std::vector<std::string> calls; ///< of the first process
};

Reading readAll(std::string_view text)
{
    Reading reading;
    try {
        const Record record = readRecord(text, "record");
        reading.isCut = record.isCut;
        for (const Call &call : record.processes.front().calls) {
            std::string all =
                call.function + ' ' + std::to_string(call.number) + ' ' + std::to_string(call.result);
            for (const char *key : {"name", "text", "data"})
                all += ' ' + call.bytes(call.arguments, key) + call.bytes(call.answers, key);
            for (const char *key : {"length", "read", "available", "maxCount", "sensorType"})
                all += ' ' + std::to_string(call.integer(call.answers, key));
            if (const auto scaled = call.answers.find("scaled");
                scaled != call.answers.end() && scaled->is_array()) {
                for (const nlohmann::json &value : *scaled)
                    all += ' ' + std::to_string(realOf(value));
            }
            reading.calls.push_back(all);
        }
    } catch (const RecordError &error) {
        reading.isRefused = true;
        if (std::string_view(error.what()).substr(0, 7) != "record:")
            throw;
    }
    return reading;
}

} // namespace

/// A record that is cut off must be read up to its last whole line, like the whole one.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    const Reading whole = readAll(text);
    const Reading part = readAll(text.substr(0, size / 2));
    if (!whole.isRefused && !part.isRefused && part.calls.size() > whole.calls.size())
        reportMismatch("cut record", QByteArray(text.data(), static_cast<int>(size)),
                       QByteArray::number(static_cast<int>(part.calls.size())),
                       QByteArray::number(static_cast<int>(whole.calls.size())));
    return 0;
}
