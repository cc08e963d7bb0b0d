// SPDX-License-Identifier: MIT
#include "mismatch.h"

#include "exitcode.h"
#include "madebench.h"
#include "record.h"
#include "sondix/sondixapi_p.h"
#include "SondixSimulator/control.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

/// In memory where the system has such a folder: every input is written to files.
QString folderInMemory()
{
    const QString shared = QStringLiteral("/dev/shm");
    return (QDir(shared).exists() ? shared : QDir::tempPath()) + QStringLiteral("/fuzz_benchfrom");
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

MadeBench::Bench madeOf(const QByteArray &input, const QString &path)
{
    if (input.left(input.indexOf('\n')).contains("\"sondix calls\""))
        return MadeBench::ofRecord(
            sondixrec::readRecord({input.constData(), static_cast<std::size_t>(input.size())}, "record"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(input) != input.size())
        qFatal("cannot write %s", qPrintable(path));
    file.close();
    return MadeBench::ofRecording(path);
}

/// The scaled values of a sensor, whole frames; empty if some are not known or if there are many.
std::vector<double> valuesOf(const MadeBench::Sensor &sensor)
{
    constexpr std::size_t maxValues = 10000;
    std::vector<double> values;
    const std::size_t perFrame = sensor.frame.size();
    for (const MadeBench::Values &block : sensor.values) {
        if (block.scaled.empty() || block.raw.size() > block.scaled.size() || values.size() > maxValues)
            return {};
        values.insert(values.end(), block.scaled.begin(),
                      block.scaled.end() - static_cast<std::ptrdiff_t>(block.scaled.size() % perFrame));
    }
    return values;
}

/// What comes when the sensor is opened and measures for a while; empty if it cannot be opened or sends nothing.
std::vector<double> playedValues(const MadeBench::Sensor &sensor, std::size_t count)
{
    sondixsim::clearFaults(); // those of the record
    sondixsim::useVirtualClock();
    sondixsim::setLineSpeedEffect(false);
    const quint32 handle = CreateSensorInstance(sensor.type);
    std::vector<double> values(count);
    qint32 read = 0;
    SetParameterString(handle, "IP_Interface", sensor.place["interface"].get<std::string>().c_str());
    if (OpenSensor(handle) == 0) {
        sondixsim::advance(1.0);
        TransferData(handle, nullptr, values.data(), static_cast<qint32>(count), &read);
    }
    ReleaseSensorInstance(handle);
    values.resize(static_cast<std::size_t>(read));
    return values;
}

/// The only sensor of a bench plays the values that were recorded, to the bit, as far as they arrive in a second.
void comparePlayed(const QByteArray &input, const MadeBench::Bench &bench)
{
    const MadeBench::Sensor &sensor = bench.sensors.front();
    if (bench.sensors.size() != 1 || sensor.frame.empty())
        return;
    const std::vector<double> recorded = valuesOf(sensor);
    if (recorded.empty())
        return;
    std::vector<double> played = playedValues(sensor, recorded.size());
    if (!played.empty() && std::memcmp(played.data(), recorded.data(), played.size() * sizeof(double)) != 0)
        reportMismatch("values", input, QVector<double>(played.begin(), played.end()),
                       QVector<double>(recorded.begin(), recorded.end()));
}

} // namespace

/// A record or a recording gives a bench, or is refused. The bench is one that the simulator loads, or refuses with a
/// reason. The same input gives the same bench, and it plays the values of the input.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QTemporaryDir folder(folderInMemory());
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<int>(size));
    QDir outputs(folder.filePath(QStringLiteral("made")));
    outputs.mkpath(QStringLiteral("."));
    const QString path = outputs.filePath(QStringLiteral("bench.json"));
    const QString recording = folder.filePath(QStringLiteral("recording"));
    try {
        MadeBench::Bench bench = madeOf(input, recording);
        if (!bench.sensors.empty()) {
            MadeBench::write(bench, path);
            const QByteArray text = contentOf(path);
            MadeBench::Bench again = madeOf(input, recording);
            MadeBench::write(again, path);
            if (contentOf(path) != text)
                reportMismatch("bench", input, contentOf(path), text);
            sondixsim::loadBenchFile(path.toStdString());
            comparePlayed(input, bench);
        }
    } catch (const Failure &failure) {
        if (failure.text.isEmpty())
            reportMismatch("refusal", input, QByteArray(), QByteArray("a reason"));
    } catch (const sondixrec::RecordError &) {
        // refused
    } catch (const sondixsim::BenchError &) {
        // the tool reports that the bench must be corrected
    }
    outputs.removeRecursively();
    return 0;
}
