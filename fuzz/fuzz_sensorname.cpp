// SPDX-License-Identifier: MIT
#include "mismatch.h"

#include <SondixQt/SensorFeatures>
#include <SondixQt/SensorType>

#include <cstddef>
#include <cstdint>
#include <cstring>

using namespace SondixQt;

namespace {

/// Reference implementation: four passes over the models; later matches replace earlier ones.
SensorType typeByFourPasses(const QString &name)
{
    if (name.isEmpty())
        return NoSensor;
    const QMap<SensorType, SensorFeatures> &models = getSensorFeatures();
    QString withoutSpaces = name;
    withoutSpaces.remove(QLatin1Char(' '));
    SensorType found = NoSensor;
    for (const bool reduced : {false, true}) {
        for (const bool shortNames : {true, false}) {
            int longest = 0;
            for (auto model = models.begin(); model != models.end(); ++model) {
                QString candidate = shortNames ? model->shortName : model->name;
                if (candidate == name)
                    return model.key();
                if (reduced)
                    candidate.remove(QLatin1Char('x'), Qt::CaseInsensitive).remove(QLatin1Char('-'));
                const QString &text = shortNames ? withoutSpaces : name;
                if (candidate.size() > 2 && candidate.size() > longest &&
                    text.contains(candidate, Qt::CaseInsensitive)) {
                    longest = candidate.size();
                    found = model.key();
                }
            }
        }
    }
    return found;
}

/// Decodes the input: UTF-16, possibly malformed, if the first byte is odd, otherwise UTF-8.
QString textOf(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return {};
    const std::size_t rest = size - 1;
    if (data[0] % 2 == 0)
        return QString::fromUtf8(reinterpret_cast<const char *>(data + 1), static_cast<int>(rest));
    QString text(static_cast<int>(rest / sizeof(QChar)), Qt::Uninitialized);
    std::memcpy(text.data(), data + 1, rest / sizeof(QChar) * sizeof(QChar));
    return text;
}

} // namespace

/// The input is a text that may contain the name of a model.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString name = textOf(data, size);
    const SensorType found = getSensorTypeFromName(name);
    const SensorType expected = typeByFourPasses(name);
    if (found != expected)
        reportMismatch("getSensorTypeFromName", name, int(found), int(expected));
    return 0;
}
