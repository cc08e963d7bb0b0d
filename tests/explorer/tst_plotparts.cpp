// SPDX-License-Identifier: MIT
#include "historydata.h"

#include "explorer/plot/historycurve.h"
#include "explorer/plot/signalcolours.h"
#include "explorer/plot/timescale.h"
#include "explorer/plot/timewindow.h"

#include <QtTest>

#include <qwt_scale_div.h>

using namespace Explorer;
using namespace HistoryData;
using namespace SondixQt;

/// The parts of a plot that need no window.
class TestPlotParts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void coloursHaveContrast_data();
    void coloursHaveContrast();
    void zoomKeepsItsAnchor();
    void windowsStayWithinLimits();
    void stepsOfATimeAxis_data();
    void stepsOfATimeAxis();
    void ticksAreInTheRange();
    void timesAreWrittenAsNeeded();
    void timesOfDay();
    void fewFramesAreDrawnEach();
    void manyFramesAreDrawnByColumn();
    void errorsAreNeverDrawn();
    void gapsInterruptTheCurve();
};

namespace {

double luminance(const QColor &colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const double x = luminance(a) + 0.05;
    const double y = luminance(b) + 0.05;
    return std::max(x, y) / std::min(x, y);
}

/// The colour as people without working red or green receptors see it (Viénot, Brettel and Mollon 1999).
QColor seenWithout(bool red, const QColor &colour)
{
    const auto linear = [](double part) { return std::pow(part, 2.2); };
    const auto screen = [](double part) { return std::pow(std::clamp(part, 0.0, 1.0), 1.0 / 2.2); };
    const double r = linear(colour.redF());
    const double g = linear(colour.greenF());
    const double b = linear(colour.blueF());
    const double same = red ? 0.11238 * r + 0.88762 * g : 0.29275 * r + 0.70725 * g;
    const double blue = red ? 0.00401 * r - 0.00401 * g + b : -0.02234 * r + 0.02234 * g + b;
    return QColor::fromRgbF(screen(same), screen(same), screen(blue));
}

double distanceOf(const QColor &a, const QColor &b)
{
    return std::hypot(std::hypot(a.red() - b.red(), a.green() - b.green()), a.blue() - b.blue());
}

QPalette paletteOf(bool dark)
{
    QPalette palette;
    palette.setColor(QPalette::Base, dark ? QColor(30, 30, 30) : Qt::white);
    palette.setColor(QPalette::Text, dark ? Qt::white : Qt::black);
    return palette;
}

/// A history of one signal.
class HistoryOf : public SignalHistory
{
public:
    explicit HistoryOf(const QVector<double> &values)
    {
        begin(frameOf(1));
        append(blockOf(values, 0, 50.0));
    }
};

HistorySeries seriesOf(const SignalHistory &history, double from, double to, int columns,
                       std::vector<ErrorMark> &errors)
{
    HistorySeries series;
    series.load(history, 0, PlotColumns::of(history, from, to, columns, history.endFrame()), errors);
    return series;
}

} // namespace

void TestPlotParts::coloursHaveContrast_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void TestPlotParts::coloursHaveContrast()
{
    QFETCH(bool, dark);
    const QPalette palette = paletteOf(dark);
    QCOMPARE(isDark(palette), dark);
    for (int i = 0; i < 8; ++i) {
        const QColor colour = signalColour(i, palette);
        QVERIFY2(contrast(colour, palette.color(QPalette::Base)) >= 3.0, qPrintable(colour.name()));
        for (int j = 0; j < i; ++j) {
            const QColor other = signalColour(j, palette);
            QVERIFY(distanceOf(colour, other) > 40.0);
            for (const bool red : {true, false})
                QVERIFY2(distanceOf(seenWithout(red, colour), seenWithout(red, other)) > 22.0,
                         qPrintable(colour.name() + ' ' + other.name()));
        }
        QVERIFY(signalColour(i + 8, palette) != colour);
    }
}

void TestPlotParts::zoomKeepsItsAnchor()
{
    const TimeWindow zoomed = TimeWindow{10.0, 20.0}.zoomed(12.0, 0.5, 0.0);
    QCOMPARE(zoomed.from, 11.0);
    QCOMPARE(zoomed.to, 16.0);
    QCOMPARE((TimeWindow{10.0, 20.0}.zoomed(15.0, 1.0e-9, 0.5).width()), 0.5);
    TimeWindow deep{599.0, 600.0};
    for (int i = 0; i < 1000; ++i)
        deep = deep.zoomed(599.5, 0.5, 0.0);
    QVERIFY(deep.width() > 0.0);
}

void TestPlotParts::windowsStayWithinLimits()
{
    const TimeWindow limits{0.0, 10.0};
    QCOMPARE((TimeWindow{-2.0, 1.0}.within(limits)), (TimeWindow{0.0, 3.0}));
    QCOMPARE((TimeWindow{9.0, 12.0}.within(limits)), (TimeWindow{7.0, 10.0}));
    QCOMPARE((TimeWindow{-5.0, 50.0}.within(limits)), limits);
    QCOMPARE((TimeWindow{2.0, 3.0}.within(limits)), (TimeWindow{2.0, 3.0}));
}

void TestPlotParts::stepsOfATimeAxis_data()
{
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("step");
    QTest::newRow("10 s") << 10.0 << 2.0;
    QTest::newRow("1 ms") << 0.001 << 0.0002;
    QTest::newRow("40 us") << 4.0e-5 << 1.0e-5;
    QTest::newRow("1 min") << 60.0 << 15.0;
    QTest::newRow("10 min") << 600.0 << 120.0;
    QTest::newRow("1 h") << 3600.0 << 900.0;
    QTest::newRow("10 days") << 864000.0 << 172800.0;
}

void TestPlotParts::stepsOfATimeAxis()
{
    QFETCH(double, width);
    QFETCH(double, step);
    QVERIFY(std::abs(timeStep(width, 5) / step - 1.0) < 1.0e-9);
}

void TestPlotParts::ticksAreInTheRange()
{
    TimeScaleEngine engine;
    for (const double width : {1.0e-4, 0.37, 12.0, 600.0, 1.0e6}) {
        const QwtScaleDiv div = engine.divideScale(123.4, 123.4 + width, 8, 5);
        const QList<double> ticks = div.ticks(QwtScaleDiv::MajorTick);
        QVERIFY(ticks.size() >= 3 && ticks.size() <= 9);
        for (const double tick : ticks)
            QVERIFY(tick >= 123.4 && tick <= 123.4 + width);
    }
}

void TestPlotParts::timesAreWrittenAsNeeded()
{
    QLocale::setDefault(QLocale(QLocale::German));
    const TimeFormat seconds;
    QCOMPARE(seconds.text(12.3456789, 0.1), "12,3");
    QCOMPARE(seconds.text(12.3456789, 0.00002), "12,34568");
    QCOMPARE(seconds.text(-1.0e-12, 0.01), "0,00");
    TimeFormat frames;
    frames.isInFrames = true;
    QCOMPARE(frames.text(1234.0, 0.01), "1.234");
    QLocale::setDefault(QLocale::c());
}

void TestPlotParts::timesOfDay()
{
    const QDateTime noon(QDate(2026, 3, 1), QTime(12, 0, 0));
    TimeFormat clock;
    clock.clockOffset = static_cast<double>(noon.toSecsSinceEpoch()) + 0.25;
    QCOMPARE(clock.text(0.0, 1.0), "12:00:00");
    QCOMPARE(clock.text(59.7501, 0.001), "12:01:00.000");
    QCOMPARE(clock.text(0.5, 0.01), "12:00:00.75");
    QVERIFY(clock.longText(0.5, 0.01).contains(QLocale().toString(noon.date(), QLocale::ShortFormat)));
    TimeScaleEngine engine;
    engine.setFormat(clock);
    for (const double tick : engine.divideScale(0.0, 600.0, 5, 5).ticks(QwtScaleDiv::MajorTick))
        QVERIFY(clock.text(tick, 0.001).endsWith(":00.000")); // full minutes
}

void TestPlotParts::fewFramesAreDrawnEach()
{
    QVector<double> values;
    for (int i = 0; i < 100; ++i)
        values << std::sin(i * 0.3);
    const HistoryOf history(values);
    std::vector<ErrorMark> errors;
    const HistorySeries series = seriesOf(history, 0.0205, 0.0495, 300, errors);
    // The frames inside, and one at each side.
    QCOMPARE(series.size(), size_t(31));
    for (int i = 0; i < 31; ++i)
        QCOMPARE(series.sample(static_cast<size_t>(i)).y(), values.at(20 + i));
    QVERIFY(series.breaks().empty());
    QVERIFY(errors.empty());
}

void TestPlotParts::manyFramesAreDrawnByColumn()
{
    QVector<double> values = randomValues(200000, 0.0, 4);
    values[123456] = 99.0; // one frame among 1000 in its column
    const HistoryOf history(values);
    std::vector<ErrorMark> errors;
    const HistorySeries series = seriesOf(history, 0.0, 200.0, 200, errors);
    QVERIFY(series.size() <= 400);
    QCOMPARE(series.maximum(), 99.0);
    const auto highest = std::max_element(values.begin(), values.end()) - values.begin();
    bool isFound = false;
    for (size_t i = 0; i < series.size(); ++i)
        if (series.sample(i).y() == 99.0) {
            isFound = true;
            QVERIFY(std::abs(series.sample(i).x() - static_cast<double>(highest) * 0.001) <= 1.0);
        }
    QVERIFY(isFound);
    qint64 sum = 0;
    for (const ErrorMark &mark : errors)
        sum += mark.count;
    QCOMPARE(sum, history.moments(0, {0, 200000}).errors);
}

void TestPlotParts::errorsAreNeverDrawn()
{
    QVector<double> values(1000, 5.0);
    std::fill(values.begin() + 300, values.begin() + 400, -1.0e10 - 4.0);
    values[700] = std::nan("");
    const HistoryOf history(values);
    for (const int columns : {50, 5000}) {
        std::vector<ErrorMark> errors;
        const HistorySeries series = seriesOf(history, 0.0, 0.999, columns, errors);
        for (size_t i = 0; i < series.size(); ++i)
            QCOMPARE(series.sample(i).y(), 5.0);
        qint64 count = 0;
        for (const ErrorMark &mark : errors) {
            count += mark.count;
            QCOMPARE(mark.key, mark.position > 0.6 ? 0 : -4);
        }
        QCOMPARE(count, qint64(101));
        QVERIFY(!series.breaks().empty());
        const auto after = static_cast<size_t>(series.breaks().front());
        QVERIFY(series.sample(after - 1).x() < 0.301 && series.sample(after).x() > 0.399);
    }
}

void TestPlotParts::gapsInterruptTheCurve()
{
    SignalHistory history;
    history.begin(frameOf(1));
    for (int i = 0; i < 10; ++i) {
        history.append(blockOf(QVector<double>(1000, i), 2000 * i, 2.0 * i));
        history.append(gapOf(1000));
    }
    for (const int columns : {95, 30000}) {
        std::vector<ErrorMark> errors;
        const HistorySeries series = seriesOf(history, 0.0, 20.0, columns, errors);
        QCOMPARE(series.breaks().size(), std::size_t(9));
        for (const int index : series.breaks()) {
            const auto next = static_cast<size_t>(index);
            QCOMPARE(series.sample(next).y() - series.sample(next - 1).y(), 1.0);
        }
    }
}

QTEST_GUILESS_MAIN(TestPlotParts)
#include "tst_plotparts.moc"
