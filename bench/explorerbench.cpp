// SPDX-License-Identifier: MIT
// The plot of the explorer with eight signals at 100 kHz. SONDIXQT_BENCH_SECONDS is the time that is kept: 10 if it is
// not set. `./run bench` sets ten minutes, for which 4.5 GB are needed.
#include "report.h"

#include "explorer/history/signalhistory.h"
#include "explorer/plot/plotview.h"
#include "explorer/plot/signalcolours.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>

#include <qwt_plot.h>
#include <qwt_plot_curve.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <memory>
#include <random>
#include <vector>

using namespace Explorer;
using namespace SondixQt;

namespace {

constexpr int signalNumber = 8;
constexpr double rate = 1.0e5;
constexpr double drawInterval = 1.0 / 30.0;
constexpr int drawings = 100; // per repetition, so that the slowest of a hundred is known
// Plain curves need all points in arrays and a walk over all of them for every drawing: they get fewer seconds.
constexpr double plainSeconds = 10.0;
constexpr QSize viewSize(1280, 800);

double secondsKept()
{
    bool ok = false;
    const double seconds = qEnvironmentVariable("SONDIXQT_BENCH_SECONDS").toDouble(&ok);
    return ok && seconds > 0.0 ? seconds : 10.0;
}

TransmittedDataInfo frameDescription()
{
    TransmittedDataInfo frame;
    frame.datarate = rate;
    frame.valuesPerFrame = signalNumber;
    for (int i = 0; i < signalNumber; ++i) {
        SignalInfo info;
        info.scaledName = QStringLiteral("Signal %1").arg(i + 1);
        info.scaledUnit = QStringLiteral("mm");
        frame.signals.append(info);
    }
    return frame;
}

/// One block of the length of \a seconds, over and over: sines with noise, which fill most of the height.
class Source
{
public:
    explicit Source(double seconds)
        : m_frames(static_cast<int>(std::lround(seconds * rate)))
        , m_values(m_frames * signalNumber)
        , m_raw(m_values.size(), 0)
    {
        std::mt19937 random(1);
        std::normal_distribution<double> noise(0.0, 0.1);
        for (int frame = 0; frame < m_frames; ++frame)
            for (int signal = 0; signal < signalNumber; ++signal)
                m_values[frame * signalNumber + signal] =
                    signal + std::sin(6.283 * frame / m_frames * (signal + 1)) + noise(random);
    }
    DataBlock next()
    {
        const DataBlock block(0, m_next, signalNumber, m_values, m_raw, static_cast<double>(m_next) / rate,
                              1.0 / rate);
        m_next += m_frames;
        return block;
    }

private:
    int m_frames;
    QVector<double> m_values;
    QVector<qint32> m_raw;
    qint64 m_next = 0;
};

/// A history and a view of it, in a window that is shown.
struct Shown
{
    explicit Shown(double seconds)
        : source(drawInterval)
        , history(seconds)
    {
        history.begin(frameDescription());
        while (history.endPosition() < seconds)
            history.append(source.next());
        view.resize(viewSize);
        view.setHistory(&history);
        view.show();
        view.showEverything();
        QApplication::processEvents();
    }
    /// The time in ms until what is new has been painted.
    double draw()
    {
        QElapsedTimer timer;
        timer.start();
        view.refresh();
        QApplication::processEvents();
        return static_cast<double>(timer.nsecsElapsed()) * 1.0e-6;
    }

    Source source;
    SignalHistory history;
    PlotView view;
};

Shown &longHistory()
{
    static std::unique_ptr<Shown> shown;
    if (!shown) {
        shown = std::make_unique<Shown>(secondsKept());
        qAddPostRoutine([] { shown.reset(); }); // before the application goes
    }
    return *shown;
}

/// The time that this thread has computed, in seconds: other programs do not count.
double threadTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double percentile(std::vector<double> &times, double share)
{
    std::sort(times.begin(), times.end());
    return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
}

void append(benchmark::State &state)
{
    SignalHistory history(1.0);
    history.begin(frameDescription());
    Source source(drawInterval);
    for (int i = 0; i < 60; ++i)
        history.append(source.next());
    for (auto _ : state)
        history.append(source.next());
}

// Values arrive, and all that are kept are drawn.
void live(benchmark::State &state)
{
    Shown &shown = longHistory();
    shown.view.showEverything();
    for (auto _ : state) {
        std::vector<double> times;
        const double before = threadTime();
        for (int i = 0; i < drawings; ++i) {
            shown.history.append(shown.source.next());
            times.push_back(shown.draw());
        }
        state.counters["share"] = 100.0 * (threadTime() - before) / (drawings * drawInterval);
        state.counters["median"] = percentile(times, 0.5);
        state.counters["slowest"] = percentile(times, 0.99);
        state.counters["bytes"] = static_cast<double>(shown.history.bytes());
    }
}

void zoom(benchmark::State &state)
{
    Shown &shown = longHistory();
    std::mt19937 random(3);
    for (auto _ : state) {
        std::vector<double> times;
        for (int i = 0; i < 20; ++i) {
            shown.view.showEverything();
            QApplication::processEvents();
            const TimeWindow all = shown.view.window();
            const double from = all.from + (all.width() - 1.0) * static_cast<double>(random() % 1000) / 1000.0;
            QElapsedTimer timer;
            timer.start();
            shown.view.setWindow({from, from + 0.001});
            QApplication::processEvents();
            times.push_back(static_cast<double>(timer.nsecsElapsed()) * 1.0e-6);
        }
        state.counters["median"] = percentile(times, 0.5);
        state.counters["slowest"] = percentile(times, 1.0);
    }
}

// The same points in a plain curve with Qwt's own point filter.
void plain(benchmark::State &state)
{
    Shown shown(plainSeconds);
    const auto frames = static_cast<int>(shown.history.endFrame() - shown.history.firstFrame());
    QwtPlot plot;
    plot.setAutoReplot(false);
    plot.setCanvasBackground(plot.palette().brush(QPalette::Base));
    std::vector<double> positions(static_cast<std::size_t>(frames));
    std::vector<std::vector<double>> values(signalNumber, positions);
    for (int frame = 0; frame < frames; ++frame) {
        positions[static_cast<std::size_t>(frame)] =
            shown.history.timeLine().position(shown.history.firstFrame() + frame);
        for (int signal = 0; signal < signalNumber; ++signal)
            values[static_cast<std::size_t>(signal)][static_cast<std::size_t>(frame)] =
                shown.history.value(signal, shown.history.firstFrame() + frame);
    }
    for (int signal = 0; signal < signalNumber; ++signal) {
        auto *curve = new QwtPlotCurve;
        curve->setPen(signalColour(signal, plot.palette()), 1.0);
        curve->setPaintAttribute(QwtPlotCurve::FilterPoints, true);
        curve->setRawSamples(positions.data(), values[static_cast<std::size_t>(signal)].data(), frames);
        curve->attach(&plot);
    }
    plot.resize(viewSize);
    plot.show();
    QApplication::processEvents();
    for (auto _ : state) {
        std::vector<double> times;
        std::vector<double> ours;
        for (int i = 0; i < 5; ++i) {
            QElapsedTimer timer;
            timer.start();
            plot.replot();
            QApplication::processEvents();
            times.push_back(static_cast<double>(timer.nsecsElapsed()) * 1.0e-6);
            ours.push_back(shown.draw());
        }
        state.counters["plain"] = percentile(times, 0.5);
        state.counters["ours"] = percentile(ours, 0.5);
        state.counters["ratio"] = percentile(ours, 0.5) / percentile(times, 0.5);
    }
}

BENCHMARK(append);
BENCHMARK(live)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(zoom)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(plain)->Iterations(1)->Unit(benchmark::kMillisecond);

const bool areClaimed = [] {
    using namespace report;
    claim("Time that is kept of 8 signals at 100 kHz", "s", std::nullopt,
          [](const Results &) { return std::optional(secondsKept()); });
    claim("Memory of that", "MB", std::nullopt, [](const Results &results) {
        const auto bytes = counter("live", "bytes")(results);
        return bytes ? std::optional(*bytes * 1.0e-6) : std::nullopt;
    });
    claim("Memory of that, told beforehand", "MB", std::nullopt, [](const Results &) {
        return std::optional(static_cast<double>(SignalHistory::bytesFor(secondsKept(), rate, signalNumber)) *
                             1.0e-6);
    });
    claim("Append, part of a core", "%", std::nullopt, [](const Results &results) {
        const auto nanoseconds = results.time("append");
        return nanoseconds ? std::optional(*nanoseconds * 1.0e-9 / drawInterval * 100.0) : std::nullopt;
    });
    claim("Draw all that is kept, median", "ms", 40.0, counter("live", "median"));
    claim("Draw all that is kept, 99 of 100, worst repetition", "ms", 40.0, largest("live", "slowest"));
    claim("Append and draw 30 times a second, part of a core", "%", 100.0, counter("live", "share"));
    claim("Zoom from all to a millisecond, median", "ms", 50.0, counter("zoom", "median"));
    claim("Zoom from all to a millisecond, worst", "ms", 50.0, largest("zoom", "slowest"));
    claim("Draw 10 s", "ms", std::nullopt, counter("plain", "ours"));
    claim("Draw 10 s with plain curves that filter their points", "ms", std::nullopt, counter("plain", "plain"));
    claim("Ratio to the plain curves", "", std::nullopt, counter("plain", "ratio"));
    return true;
}();

} // namespace
