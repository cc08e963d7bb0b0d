// SPDX-License-Identifier: MIT
// The way of values from a sensor to the screen: reader, session and plot of the explorer.
#include "report.h"
#include "simulatedsensors.h"

#include "explorer/plot/plotview.h"
#include "explorer/plot/timeplot.h"
#include "explorer/sensor/sensorsession.h"

#include <QEvent>

#include <qwt_plot.h>

#include <algorithm>

using namespace Explorer;
using namespace SondixQt;
using namespace std::chrono_literals;

namespace {

constexpr int liveSignals = 8;
constexpr int liveRate = 100000;
constexpr QSize liveSize(1280, 800);
constexpr std::chrono::seconds measuredTime(3);

/// Counts how often a widget is painted.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget *widget) { widget->installEventFilter(this); }
    int count() const { return m_count; }
    bool eventFilter(QObject *, QEvent *event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

private:
    int m_count = 0;
};

/// A sensor is read and drawn. The work of the simulator is that of a bare loop that fetches the same values.
void readAndDraw(benchmark::State &state)
{
    loadSensors(1, liveRate, liveSignals);
    for (auto _ : state) {
        const double simulator = shareOfBareLoop();
        SensorSession session(addressOf(0), QString());
        PlotView view;
        view.resize(liveSize);
        view.setHistory(&session.history());
        view.show();
        session.open();
        if (!waitFor([&] { return session.framesRead() > liveRate; })) {
            state.SkipWithError("the session does not read");
            return;
        }
        const PaintCounter paintings(view.plot().canvas());
        const qint64 before = session.framesRead();
        const double share = coreShare(measuredTime);
        const double seconds = std::chrono::duration<double>(measuredTime).count();
        state.counters["share"] = 100.0 * (share - simulator);
        state.counters["simulator"] = 100.0 * simulator;
        state.counters["drawing interval"] = 1000.0 * seconds / std::max(paintings.count(), 1);
        state.counters["frames"] = static_cast<double>(session.framesRead() - before) / seconds;
        const auto lost = static_cast<double>(lostFrames(1)) + static_cast<double>(session.reader().framesLost());
        state.counters["lost"] = session.reader().hasUnknownGaps() ? std::max(lost, 1.0) : lost;
    }
}

const bool isLiveClaimed = [] {
    using namespace report;
    const char *const name = "read and draw 100 kHz x 8";
    benchmark::RegisterBenchmark(name, readAndDraw)->Iterations(1)->UseRealTime();
    claim("Read and draw 8 signals at 100 kHz, without the simulator", "% core", 100.0, counter(name, "share"));
    claim("The simulator meanwhile", "% core", std::nullopt, counter(name, "simulator"));
    claim("Frames a second", "", std::nullopt, counter(name, "frames"));
    claim("From drawing to drawing, mean", "ms", 40.0, counter(name, "drawing interval"));
    claim("Read and draw 8 signals at 100 kHz: lost frames", "", 0.0, largest(name, "lost"));
    return true;
}();

} // namespace
