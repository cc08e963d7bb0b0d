// SPDX-License-Identifier: MIT
#include "week.h"

#include "readerstand.h"

#include <QElapsedTimer>
#include <QFile>

#include <cstdio>
#include <random>

using namespace SondixQt;

namespace {

constexpr double rate = 1000.0;
constexpr int ring = 32768;
constexpr double longestStep = 30.0; // seconds; what the ring can keep

/// Of the process, in bytes; 0 where it cannot be read, and where a sanitizer keeps what was freed.
qint64 residentMemory()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return 0;
#else
    QFile file(QStringLiteral("/proc/self/statm"));
    constexpr qint64 pageSize = 4096;
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() * pageSize : 0;
#endif
}

class Week
{
public:
    explicit Week(const WeekPlan &plan)
        : m_plan(plan)
        , m_random(plan.seed)
        , m_stand({rate, ring, spanOf(plan)}, ReaderWatch::Exact)
    {
    }

    bool play();

private:
    static double spanOf(const WeekPlan &plan)
    {
        double span = 1024.0;
        while (span < 1.2 * plan.seconds)
            span *= 2.0;
        return span;
    }
    double part() { return static_cast<double>(m_random() >> 11) * 0x1.0p-53; }
    void step(double seconds);
    void letFramesArrive();
    void pull();
    void overflow();
    void trigger();
    void changeRate();
    bool account();

    const WeekPlan m_plan;
    std::mt19937_64 m_random;
    ReaderStand m_stand;
    int m_pulls = 0;
    int m_overflows = 0;
    int m_triggers = 0;
    int m_rates = 0;
};

void Week::step(double seconds)
{
    m_stand.advance(seconds);
    m_stand.settle();
}

/// After an opening with settings or a command, a loss can be noticed when the library has been emptied twice.
void Week::letFramesArrive()
{
    for (int i = 0; i < 2; ++i)
        step(3.0 / m_stand.setup().rate);
}

void Week::pull()
{
    m_stand.pullCable(5.0 * part());
    letFramesArrive();
    ++m_pulls;
}

void Week::overflow()
{
    step((1.1 + 3.0 * part()) * ring / m_stand.setup().rate);
    ++m_overflows;
}

void Week::trigger()
{
    const QString command = QStringLiteral("Update_TriggerMode");
    const QString parameter = QStringLiteral("SP_TriggerMode");
    m_stand.set(command, parameter, 1);
    for (int i = 0; i < 20; ++i) {
        sondixsim::trigger(soakbench::serialNumber);
        m_stand.advance(part());
        ++m_triggers;
    }
    m_stand.settle();
    m_stand.set(command, parameter, 0);
    letFramesArrive();
}

void Week::changeRate()
{
    constexpr double rates[] = {500.0, 800.0, 2000.0};
    m_stand.setRate(rates[m_random() % std::size(rates)]);
    letFramesArrive();
    for (int i = 0; i < 3; ++i)
        step(part() * 0.9 * ring / m_stand.setup().rate);
    m_stand.setRate(rate);
    letFramesArrive();
    ++m_rates;
}

bool Week::play()
{
    QElapsedTimer timer;
    timer.start();
    m_stand.newReader(std::chrono::milliseconds(1));
    m_stand.start();
    qint64 memoryBefore = 0;
    while (sondixsim::now() < m_plan.seconds && !m_stand.failed()) {
        if (memoryBefore == 0 && sondixsim::now() > 0.1 * m_plan.seconds)
            memoryBefore = residentMemory();
        // The pulls are evenly distributed; between two of them there are some steps.
        const double nextPull = m_plan.seconds * (m_pulls + 1) / (m_plan.pulls + 1);
        step(qBound(0.001, nextPull - sondixsim::now(), longestStep) * (0.5 + 0.5 * part()));
        const double what = part();
        if (what < 0.02)
            overflow();
        else if (what < 0.03)
            trigger();
        else if (what < 0.04)
            changeRate();
        if (sondixsim::now() + 1.0 >= nextPull && m_pulls < m_plan.pulls)
            pull();
    }
    m_stand.settle();
    const qint64 memoryAfter = residentMemory();
    m_stand.finish();
    std::printf("%.0f s of the bench in %.1f s: %d pulled cables, %d overflows, %d triggers, %d other rates\n",
                sondixsim::now(), static_cast<double>(timer.elapsed()) / 1000.0, m_pulls, m_overflows, m_triggers,
                m_rates);
    constexpr double mebibyte = 1024.0 * 1024.0;
    constexpr qint64 allowedGrowth = 4 * 1024 * 1024;
    std::printf("memory: %.1f MiB after a tenth of the time, %.1f MiB in the end\n",
                static_cast<double>(memoryBefore) / mebibyte, static_cast<double>(memoryAfter) / mebibyte);
    if (memoryAfter > memoryBefore + allowedGrowth)
        m_stand.problem(QStringLiteral("the memory has grown"));
    return account();
}

bool Week::account()
{
    const sondixsim::FrameCounts counts = sondixsim::totalFrameCounts(soakbench::serialNumber);
    const ReaderWatch &watch = m_stand.watch();
    const auto print = [](const char *what, auto frames) {
        std::printf("%14llu frames %s\n", static_cast<unsigned long long>(frames), what);
    };
    print("generated", counts.generated);
    print("fetched", counts.fetched);
    print("lost by full rings", counts.lost);
    print("discarded", counts.discarded);
    print("delivered", watch.delivered());
    print("reported as lost by full rings", watch.told(DataGap::LibraryOverrun));
    print("before the first one of an opening", watch.beforeFirst());
    if (static_cast<quint64>(watch.delivered() + watch.told(DataGap::ConsumerOverrun)) != counts.fetched)
        m_stand.problem(QStringLiteral("not all frames that were fetched have been delivered"));
    print("in gaps of unknown length", watch.inUnknownGaps());
    // Rings may also have lost the first frames of an opening, and frames around a command.
    if (static_cast<quint64>(watch.told(DataGap::LibraryOverrun) + watch.beforeFirst() + watch.inUnknownGaps()) !=
        counts.lost)
        m_stand.problem(QStringLiteral("other losses by full rings were reported"));
    if (counts.generated != counts.fetched + counts.lost + counts.unsent + counts.discarded)
        m_stand.problem(QStringLiteral("the account of the bench is wrong"));
    for (const QString &text : m_stand.problems())
        std::printf("WRONG: %s\n", qPrintable(text));
    return !m_stand.failed();
}

} // namespace

bool playWeek(const WeekPlan &plan)
{
    return Week(plan).play();
}
