// SPDX-License-Identifier: MIT
#include "mismatch.h"
#include "sondix/answerparser_p.h"
#include "sondix/textcodec_p.h"
#include "support/answerpattern.h"

#include <cstddef>
#include <cstdint>

using namespace SondixQt;

/// The input is a complete answer of the sensor-access library. The parser must agree with the regular expression that
/// defines the format.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const QString answer = decodeText(bytes);
    const QMap<QString, QVariant> parsed = parseAllParameters(answer);
    const QMap<QString, QVariant> expected = parseByPattern(answer);
    if (!identical(parsed, expected))
        reportMismatch("parseAllParameters", answer, parsed, expected);
    return 0;
}
