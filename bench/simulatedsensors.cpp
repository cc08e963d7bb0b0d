// SPDX-License-Identifier: MIT
#include "simulatedsensors.h"

#include <SondixQt/SensorInstance>
#include <SondixSimulator/control.h>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <atomic>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

using namespace SondixQt;
using namespace std::chrono_literals;

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
                   " }, \"rateRule\": { \"unit\": \"Hz\", \"parameter\": \"SA_Measrate\", \"factor\": 0.001 }, "
                   "\"settings\": { \"Samplerate\": { \"SA_Measrate\": " +
                   std::to_string(rate / 1000.0) + " } }, \"limits\": { \"SA_Measrate\": [0.001, 1000] }" +
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

namespace {

/// Of all threads of the process, in seconds.
double processTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

double coreShare(std::chrono::milliseconds time)
{
    QElapsedTimer timer;
    timer.start();
    const double before = processTime();
    QTimer end;
    end.setSingleShot(true);
    QEventLoop loop;
    QObject::connect(&end, &QTimer::timeout, &loop, &QEventLoop::quit);
    end.start(time);
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
