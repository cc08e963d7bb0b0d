// SPDX-License-Identifier: MIT
#include "everyfunction.h"
#include "SondixSimulator/control.h"

#include <cstdlib>
#include <new>
#include <QTest>

namespace {

/// Lets an allocation of this thread fail.
struct ExhaustedMemory
{
    int after = -1;        ///< allocations that still succeed; negative: all
    bool forGood = false;  ///< whether the ones after the first failing one fail, too
    bool happened = false; ///< whether one has failed

    bool strikes()
    {
        if (after > 0)
            --after;
        else if (after == 0) {
            happened = true;
            after = forGood ? 0 : -1;
            return true;
        }
        return false;
    }
};

thread_local ExhaustedMemory exhausted;

} // namespace

// The simulator uses these, too.
void *operator new(std::size_t size)
{
    void *const memory = exhausted.strikes() ? nullptr : std::malloc(size > 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

// The sanitizer's own version would not fit the operators below.
void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return exhausted.strikes() ? nullptr : std::malloc(size > 0 ? size : 1);
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

class TestCapiMemory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exhaustedMemoryIsAResult_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<bool>("forGood");
        QTest::addColumn<bool>("recorded");
        for (std::size_t i = 0; i < everyFunction().size(); ++i) {
            for (const bool forGood : {false, true}) {
                for (const bool recorded : {false, true}) {
                    QTest::addRow("%s, %s, %s", everyFunction()[i].name, forGood ? "for good" : "once",
                                  recorded ? "recorded" : "not recorded")
                        << int(i) << forGood << recorded;
                }
            }
        }
    }
    void exhaustedMemoryIsAResult()
    {
        QFETCH(int, index);
        QFETCH(bool, forGood);
        QFETCH(bool, recorded);
        const EveryFunction &function = everyFunction()[std::size_t(index)];
        constexpr std::int32_t outOfMemory = -23;
        for (unsigned seed = 1; seed <= 6; ++seed) {
            sondixsim::loadBuiltInBench();
            sondixsim::useVirtualClock();
            bool happened = true;
            for (int after = 0; happened; ++after) {
                const std::uint32_t handle = CreateSensorInstance(41);
                QVERIFY(handle != 0);
                Arguments arguments(seed);
                arguments.add(handle);
                QCOMPARE(OpenSensor(handle), 0);
                sondixsim::advance(0.1);
                SetParameterString(handle, "S_Command", "Get_AllParameters");
                SensorCommand(handle);
                sondixsim::recordCalls(recorded);

                std::int32_t result = 0;
                exhausted = {after, forGood, false};
                try {
                    result = function.call(arguments, handle);
                } catch (...) {
                    exhausted.after = -1;
                    QFAIL("an exception left the C interface");
                }
                happened = exhausted.happened;
                exhausted = {};
                sondixsim::recordCalls(false);
                if (happened && QByteArray(function.name) != "CreateSensorInstance")
                    QCOMPARE(result, outOfMemory);

                // The handle goes on working.
                if (QByteArray(function.name) != "ReleaseSensorInstance") {
                    ClearAllParameters(handle);
                    OpenSensor(handle);
                    sondixsim::advance(0.1);
                    std::int32_t count = 0;
                    QCOMPARE(DataAvail(handle, &count), 0);
                    QVERIFY(count > 0);
                    QCOMPARE(ReleaseSensorInstance(handle), 0);
                } else {
                    ReleaseSensorInstance(handle);
                }
                for (const std::uint32_t created : arguments.takeHandles())
                    ReleaseSensorInstance(created);
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestCapiMemory)
#include "tst_capimemory.moc"
