// SPDX-License-Identifier: MIT
#include "monkey.h"

#include <cstdio>

/// Random events, see Monkey. SONDIXQT_MONKEY_EVENTS and SONDIXQT_MONKEY_SEED change their number and the seed, as
/// "./run soak explorer" does.
class MonkeyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingBreaks();
};

void MonkeyTest::nothingBreaks()
{
    constexpr int briefly = 1500;
    const int events = qEnvironmentVariableIsSet("SONDIXQT_MONKEY_EVENTS")
                           ? qEnvironmentVariableIntValue("SONDIXQT_MONKEY_EVENTS")
                           : briefly;
    const int seed = qMax(1, qEnvironmentVariableIntValue("SONDIXQT_MONKEY_SEED"));
    Monkey monkey(static_cast<quint64>(seed), events);
    monkey.run();
    const RecordingWatch &recordings = monkey.recordings();
    std::printf(
        "%d events from seed %d, %d windows; %d recordings with %lld frames and %lld told lost; longest pause "
        "%.0f ms, of processor time %.0f ms after %s\n",
        events, seed, monkey.windows(), recordings.finished(), static_cast<long long>(recordings.frames()),
        static_cast<long long>(recordings.lost()), monkey.longestSeconds() * 1e3,
        monkey.longestProcessorSeconds() * 1e3, qPrintable(monkey.longestAction()));
    QVERIFY2(recordings.problems().isEmpty(), qPrintable(recordings.problems().join('\n')));
    QVERIFY(recordings.finished() > 0);
    QVERIFY(recordings.frames() > 0);
    QCOMPARE(monkey.unfinishedFiles(), QStringList());
    // Debug builds and sanitizers are slow; what may block for how long is the matter of another test.
    QVERIFY2(monkey.longestProcessorSeconds() < 2.0, qPrintable(monkey.longestAction()));
}

QTEST_MAIN(MonkeyTest)
#include "tst_monkey.moc"
