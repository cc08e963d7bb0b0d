// SPDX-License-Identifier: MIT
#include "cheapsensor.h"
#include "sondix/sondixapi_p.h"

#include <SondixQt/SensorInstance>

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>
#include <windows.h>

using namespace SondixQt;

namespace {

using Clock = std::chrono::steady_clock;

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

struct Pair
{
    double direct = 0.0;
    double library = 0.0;
};

/// Measures the median time of one call of each in ns. Both run alternately, so that other load affects both.
template<typename Direct, typename Library>
Pair timed(int rounds, int batch, Direct direct, Library library)
{
    const auto nanoseconds = [batch](auto &call) {
        const Clock::time_point begin = Clock::now();
        for (int i = 0; i < batch; ++i)
            call();
        return std::chrono::duration<double, std::nano>(Clock::now() - begin).count() / batch;
    };
    std::vector<double> directTimes;
    std::vector<double> libraryTimes;
    direct();
    library();
    for (int i = 0; i < rounds; ++i) {
        directTimes.push_back(nanoseconds(direct));
        libraryTimes.push_back(nanoseconds(library));
    }
    return {median(directTimes), median(libraryTimes)};
}

bool allWithin = true;

void report(const QByteArray &what, double value, const char *unit, double bound)
{
    const bool within = value <= bound;
    allWithin = allWithin && within;
    std::printf("%-52s %10.3f %-2s  bound %7.2f  %s\n", what.constData(), value, unit, bound,
                within ? "within" : "ABOVE");
    std::fflush(stdout);
}

void transfers()
{
    constexpr int largeBlock = 10000;
    for (const int size : {1, 100, 1000, 10000, 100000}) {
        cheapsensor::setBlock(size);
        SensorInstance instance(SensorType::TX290);
        const quint32 handle = instance.handle();
        QVector<double> values(size);
        const auto direct = [&] {
            int count = 0;
            DataAvail(handle, &count);
            TransferData(handle, nullptr, values.data(), count, &count);
        };
        const bool large = size >= largeBlock;
        const Pair pair =
            timed(large ? 4000 : 2000, large ? 16 : 256, direct, [&] { instance.transferData(values); });
        std::printf("transferData, %d values: %.0f ns directly, %.0f ns with the library\n", size, pair.direct,
                    pair.library);
        const QByteArray what = "transferData, " + QByteArray::number(size) + " values: ";
        if (large)
            report(what + "times direct calls", pair.library / pair.direct, "x", 1.02);
        else
            report(what + "above direct calls", pair.library - pair.direct, "ns", 200.0);
    }
}

void command()
{
    SensorInstance instance(SensorType::TX290);
    const quint32 handle = instance.handle();
    const QString name = QStringLiteral("Get_Settings");
    const QString answer = QStringLiteral("SA_Speed");
    int value = 0;
    const auto direct = [&] {
        SetParameterString(handle, "S_Command", "Get_Settings");
        SensorCommand(handle);
        GetParameterInt(handle, "SA_Speed", &value);
    };
    const Pair pair = timed(2000, 256, direct, [&] { instance.sendCommandGetInt(name, answer, value); });
    report("sendCommandGetInt: above direct calls", pair.library - pair.direct, "ns", 500.0);
}

/// Starts a program and waits for its end. QProcess would add threads of its own.
bool run(const char *program)
{
    std::wstring line = QString::fromLocal8Bit(program).toStdWString();
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        return false;
    DWORD code = 1;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code == 0;
}

/// Programs that only start and end, one linked with the library and one with Qt alone.
void start()
{
    bool succeeded = true;
    const auto bare = [&succeeded] { succeeded = run(START_BARE) && succeeded; };
    const auto linked = [&succeeded] { succeeded = run(START_LINKED) && succeeded; };
    const Pair pair = timed(200, 1, bare, linked);
    allWithin = allWithin && succeeded;
    std::printf("starting with Qt alone: %.2f ms%s\n", pair.direct * 1e-6, succeeded ? "" : " (failed)");
    report("loading the library, beyond Qt", (pair.library - pair.direct) * 1e-6, "ms", 2.0);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    transfers();
    command();
    start();
    return allWithin ? 0 : 1;
}
