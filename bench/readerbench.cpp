// SPDX-License-Identifier: MIT
#include "report.h"

#include <SondixQt/SondixQt>
#include <SondixSimulator/control.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <ctime>
#include <memory>
#include <thread>
#include <vector>

using namespace SondixQt;
using namespace std::chrono_literals;

namespace {

/// So many sensors, each with frames of so many values. The clock runs in real time.
void loadSensors(int count, int rate, int values)
{
    std::string signalList;
    for (int i = 0; i < values; ++i)
        signalList +=
            std::string(i > 0 ? "," : "") + "{ \"name\": \"s" + std::to_string(i) +
            "\", \"generator\": { \"kind\": \"sine\", \"amplitude\": 4, \"middle\": 5, \"period\": 1 } }";
    std::string sensors;
    for (int i = 0; i < count; ++i)
        sensors += std::string(i > 0 ? "," : "") + "{ \"model\": \"TX270\", \"serialNumber\": \"" +
                   std::to_string(i) +
                   "\", \"place\": { \"interface\": \"WinUSB\", \"device\": " + std::to_string(i) +
                   " }, \"rateRule\": { \"unit\": \"fixed\" }, \"rate\": " + std::to_string(rate) +
                   ", \"ring\": 200000, \"signals\": [" + signalList + "] }";
    sondixsim::loadBench("{ \"clock\": { \"speed\": 1 }, \"sensors\": [" + sensors + "] }");
}

SensorAddress addressOf(int sensor)
{
    SensorAddress address;
    address.type = TX270;
    address.parameters = {{QStringLiteral("IP_Interface"), QStringLiteral("WinUSB")},
                          {QStringLiteral("IP_DeviceInstance"), sensor}};
    return address;
}

/// Of all threads of the process, in seconds.
double processTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

bool isReading(const SensorReader &reader)
{
    return reader.state() == SensorReader::Reading;
}

template<typename Condition>
bool waitFor(Condition &&condition)
{
    const QDeadlineTimer deadline(10s);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 100);
    }
    return true;
}

/// The part of a core that the process uses while the event loop of this thread runs for a second.
double coreShare()
{
    QElapsedTimer timer;
    timer.start();
    const double before = processTime();
    QTimer end;
    end.setSingleShot(true);
    QEventLoop loop;
    QObject::connect(&end, &QTimer::timeout, &loop, &QEventLoop::quit);
    end.start(1000);
    loop.exec();
    return (processTime() - before) / (static_cast<double>(timer.nsecsElapsed()) * 1e-9);
}

std::uint64_t lostFrames(int sensors)
{
    std::uint64_t lost = 0;
    for (int i = 0; i < sensors; ++i)
        lost += sondixsim::totalFrameCounts(std::to_string(i)).lost;
    return lost;
}

/// What an application writes without a reader: a thread that fetches all values at the same interval.
double shareOfBareLoop()
{
    SensorInstance instance(TX270);
    instance.open(addressOf(0).parameters);
    std::atomic<bool> stop{false};
    std::thread thread([&] {
        constexpr int capacity = 1000000;
        std::vector<double> scaled(capacity);
        std::vector<int> raw(capacity);
        while (!stop) {
            double time = 0.0;
            int count = capacity;
            instance.transferData(scaled.data(), raw.data(), &time, count);
            benchmark::DoNotOptimize(scaled.data());
            std::this_thread::sleep_for(50ms);
        }
    });
    const double share = coreShare();
    stop = true;
    thread.join();
    return share;
}

/// Readers of the first sensors of the bench.
class Readers
{
public:
    explicit Readers(int count, std::chrono::milliseconds interval = 50ms)
    {
        for (int i = 0; i < count; ++i) {
            m_readers.push_back(std::make_unique<SensorReader>(addressOf(i)));
            SensorReader &reader = *m_readers.back();
            reader.setDeliveryInterval(interval);
            QObject::connect(&reader, &SensorReader::blockReady, &reader,
                             [this](const DataBlock &block) { m_frames += block.frameCount(); });
            reader.start();
        }
    }
    bool areReading() const
    {
        return waitFor([this] {
            return std::all_of(m_readers.begin(), m_readers.end(),
                               [](const auto &reader) { return isReading(*reader); });
        });
    }
    SensorReader &first() { return *m_readers.front(); }
    qint64 frames() const { return m_frames; }

private:
    std::vector<std::unique_ptr<SensorReader>> m_readers;
    qint64 m_frames = 0;
};

/// The share of a core above that of a bare loop.
void cost(benchmark::State &state)
{
    loadSensors(1, 100000, 8);
    for (auto _ : state) {
        const double bare = shareOfBareLoop();
        Readers readers(1);
        if (!readers.areReading()) {
            state.SkipWithError("the reader does not read");
            return;
        }
        const double share = coreShare();
        state.counters["bare"] = 100.0 * bare;
        state.counters["reader"] = 100.0 * share;
        state.counters["above"] = 100.0 * (share - bare);
        state.counters["lost"] = static_cast<double>(lostFrames(1));
    }
}

void manyReaders(benchmark::State &state)
{
    constexpr int sensors = 64;
    loadSensors(sensors, 10000, 2);
    for (auto _ : state) {
        Readers readers(sensors);
        if (!readers.areReading()) {
            state.SkipWithError("not all readers read");
            return;
        }
        state.counters["share"] = 100.0 * coreShare();
        state.counters["lost"] = static_cast<double>(lostFrames(sensors));
    }
}

/// The time from the measurement of a value to its delivery: of the first value of each block, which waits longest.
void latency(benchmark::State &state)
{
    const std::chrono::milliseconds interval(state.range(0));
    loadSensors(1, 10000, 2);
    for (auto _ : state) {
        Readers readers(1, interval);
        std::vector<double> ages;
        QObject::connect(&readers.first(), &SensorReader::blockReady, &readers.first(),
                         [&ages](const DataBlock &block) {
                             if (block.time())
                                 ages.push_back(1000.0 * (sondixsim::now() - *block.time()));
                         });
        if (!waitFor([&] { return ages.size() > 20; })) {
            state.SkipWithError("no blocks are delivered");
            return;
        }
        std::sort(ages.begin() + 1, ages.end()); // without the one that was measured while the reader was starting
        state.counters["above"] = ages[ages.size() / 2] - static_cast<double>(interval.count());
    }
}

const bool registered = [] {
    benchmark::RegisterBenchmark("reader, 100 kHz x 8", cost)->Iterations(1)->UseRealTime();
    report::claim("reader, 100 kHz x 8: a bare loop", "% core", {},
                  report::counter("reader, 100 kHz x 8", "bare"));
    report::claim("reader, 100 kHz x 8: above a bare loop", "% core", 2.0,
                  report::counter("reader, 100 kHz x 8", "above"));
    report::claim("reader, 100 kHz x 8: lost frames", "", 0.0, report::largest("reader, 100 kHz x 8", "lost"));
    benchmark::RegisterBenchmark("64 readers, 10 kHz x 2", manyReaders)->Iterations(1)->UseRealTime();
    report::claim("64 readers, 10 kHz x 2, with the simulator", "% core", 50.0,
                  report::counter("64 readers, 10 kHz x 2", "share"));
    report::claim("64 readers, 10 kHz x 2: lost frames", "", 0.0,
                  report::largest("64 readers, 10 kHz x 2", "lost"));
    for (const int interval : {1, 10, 50}) {
        benchmark::RegisterBenchmark("reader, latency", latency)->Arg(interval)->Iterations(1)->UseRealTime();
        const std::string name = "reader, latency/" + std::to_string(interval);
        report::claim(name + " ms: above the interval", "ms", 5.0, report::counter(name, "above"));
    }
    return true;
}();

} // namespace
