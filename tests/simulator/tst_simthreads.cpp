// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <atomic>
#include <QTest>
#include <thread>

static const char *const threadsBench = R"({
    "sensors": [
        { "model": "TX270", "serialNumber": "0", "place": { "interface": "WinUSB", "device": 0 }, "rate": 20000 },
        { "model": "TX270", "serialNumber": "1", "place": { "interface": "WinUSB", "device": 1 }, "rate": 20000 },
        { "model": "TX270", "serialNumber": "2", "place": { "interface": "WinUSB", "device": 2 }, "rate": 20000 }
    ]
})";

class TestSimThreads : public QObject
{
    Q_OBJECT

private:
    static constexpr int rounds = 400;

private Q_SLOTS:
    void init() { sondixsim::loadBench(threadsBench); }

    void severalThreadsUseOneHandle()
    {
        // A build with sanitizers computes the values more slowly than at 100 times the speed, and falls ever further behind.
        sondixsim::useRealClock(10.0);
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.open(), 0);
        std::atomic<int> failures{0};
        std::atomic<std::uint64_t> values{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 2; ++i) {
            threads.emplace_back([&] {
                for (int round = 0; round < rounds; ++round) {
                    std::int32_t count = 0;
                    failures += DataAvail(handle, &count) != 0;
                    values += takeBlock(handle, 5000).raw.size();
                }
            });
        }
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                handle.set("SP_Measrate", round % 2 == 0 ? 10.0 : 20.0);
                failures += handle.command("Set_Samplerate") != 0;
                failures += handle.command("Get_TransmittedDataInfo") != 0;
                failures += handle.allParameters().empty();
            }
        });
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                sondixsim::pushData("0", {1, 2, 3}, {}, 0.0);
                sondixsim::lostFrames("0");
            }
        });
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(failures.load(), 0);
        QVERIFY(values > 0);
    }

    void threadsOpenSearchAndCloseSideBySide()
    {
        sondixsim::useRealClock(1000.0);
        std::atomic<int> failures{0};
        std::vector<std::thread> threads;
        for (int device = 0; device < 3; ++device) {
            threads.emplace_back([&, device] {
                for (int round = 0; round < rounds / 4; ++round) {
                    Handle handle(SensorType::TX270);
                    handle.set("IP_DeviceInstance", device);
                    failures += handle.open() != 0;
                    failures += handle.command("Start_FindSensor") != 0;
                    failures += handle.command("Get_FindSensorProgress") != 0;
                    handle.available();
                    failures += handle.command("Abort_FindSensor") != 0;
                    failures += CloseSensor(handle) != 0;
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(failures.load(), 0);
    }

    // Each sensor exists in one bench only: what is open then is not of the bench before.
    void aSensorThatIsOpenedWhileItsBenchIsLoadedStaysOpen()
    {
        const int first = 100; // the bench before has none there
        std::atomic<int> loaded{0};
        std::atomic<int> checked{0};
        std::atomic<int> closed{0};
        std::thread opener([&] {
            Handle handle(SensorType::TX270);
            const auto opens = [&handle](int device) {
                handle.set("IP_DeviceInstance", device);
                return handle.open() == 0;
            };
            for (int device = first; device < first + rounds; ++device) {
                while (!opens(device))
                    std::this_thread::yield();
                while (loaded < device)
                    std::this_thread::yield();
                closed += handle.command("Get_Info") != 0;
                checked = device;
            }
        });
        for (int device = first; device < first + rounds; ++device) {
            sondixsim::loadBench(R"({ "sensors": [ { "model": "TX270", "serialNumber": "0",
                "place": { "interface": "WinUSB", "device": )" +
                                 std::to_string(device) + " } } ] }");
            loaded = device;
            while (checked < device)
                std::this_thread::yield();
        }
        opener.join();
        QCOMPARE(closed.load(), 0);
    }

    void benchesAreReplacedWhileSensorsAreRead()
    {
        sondixsim::useRealClock(10.0);
        std::atomic<bool> stop{false};
        std::atomic<int> reads{0};
        std::thread reader([&] {
            Handle handle(SensorType::TX270);
            while (!stop) {
                handle.open();
                takeBlock(handle, 100);
                handle.command("Get_Info");
                ++reads;
            }
        });
        std::thread breaker([&] {
            while (!stop) {
                sondixsim::Fault fault;
                fault.function = "DataAvail";
                fault.code = -1;
                sondixsim::removeFault(sondixsim::inject(fault));
                sondixsim::recordCalls(true);
                sondixsim::calls();
                sondixsim::clearCalls();
                sondixsim::unplug("0");
                sondixsim::plug("0");
            }
        });
        for (int round = 0; round < 30; ++round) {
            sondixsim::loadBench(threadsBench);
            sondixsim::advance(0.1);
        }
        QTRY_VERIFY(reads > 10);
        stop = true;
        reader.join();
        breaker.join();
        sondixsim::loadBench(threadsBench);
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.open(), 0);
    }
};

QTEST_GUILESS_MAIN(TestSimThreads)
#include "tst_simthreads.moc"
