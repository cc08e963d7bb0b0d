// SPDX-License-Identifier: MIT
#include "historydata.h"

#include "explorer/plot/curvesplot.h"
#include "explorer/plot/timeplot.h"

#include <QLocale>
#include <QtTest>

#include <qwt_scale_draw.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>

using namespace Explorer;
using namespace HistoryData;
using namespace SondixQt;

Q_DECLARE_METATYPE(Explorer::TimeWindow)

/// The labels of the axes can be read at every size, at every zoom and in every language.
class TestPlotLabels : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { QLocale::setDefault(QLocale::c()); }
    void cleanup() { QLocale::setDefault(QLocale::c()); }
    void timesDoNotOverlap_data();
    void timesDoNotOverlap();
    void frameNumbersDoNotOverlap();
    void aWideAxisHasManyLabels();
    void smallPlotsDoNotOverlap_data();
    void smallPlotsDoNotOverlap();
    void theAxisOfASpectrumEndsWithIt();
    void labelsAtTheEndsHaveRoom();
};

namespace {

constexpr int sizes[] = {130, 200, 320, 500, 900};

/// Names the first two labels between which there is no space; empty if there are none.
QString overlapOn(const QwtPlot &plot, int axis)
{
    const bool isVertical = axis != QwtPlot::xBottom;
    const QwtScaleDraw *draw = plot.axisScaleDraw(axis);
    const QwtScaleMap map = plot.canvasMap(axis);
    const auto halfOf = [&](double tick) {
        const QSizeF size = draw->labelSize(plot.axisFont(axis), tick);
        return (isVertical ? size.height() : size.width()) / 2.0;
    };
    const QList<double> ticks = draw->scaleDiv().ticks(QwtScaleDiv::MajorTick);
    for (int i = 1; i < ticks.size(); ++i) {
        const double from = ticks.at(i - 1);
        const double to = ticks.at(i);
        const double space = std::abs(map.transform(to) - map.transform(from)) - halfOf(from) - halfOf(to);
        if (space < 2.0)
            return QStringLiteral("axis %1: %2 and %3, %4 px apart")
                .arg(axis)
                .arg(draw->label(from).text(), draw->label(to).text())
                .arg(space);
    }
    return {};
}

int labelsOn(const QwtPlot &plot, int axis)
{
    return plot.axisScaleDiv(axis).ticks(QwtScaleDiv::MajorTick).size();
}

/// Shows \a window of \a plot at every size.
void checkAtEverySize(TimePlot &plot, const TimeWindow &window)
{
    plot.show(); // the layout of hidden widgets is not that of their size
    for (const int width : sizes) {
        plot.resize(width, 200);
        plot.setWindow(window);
        plot.load();
        QCOMPARE(overlapOn(plot, QwtPlot::xBottom), QString());
        QVERIFY2(labelsOn(plot, QwtPlot::xBottom) > 0, qPrintable(QString::number(width)));
    }
}

} // namespace

void TestPlotLabels::timesDoNotOverlap_data()
{
    QTest::addColumn<bool>("isTimeOfDay");
    QTest::addColumn<TimeWindow>("window");
    for (const bool isTimeOfDay : {false, true})
        for (const TimeWindow &window : {TimeWindow{0.0, 20.0}, TimeWindow{7.3, 17.3}, TimeWindow{0.0, 600.0},
                                         TimeWindow{19.0, 19.01}, TimeWindow{19.9999, 20.0}})
            QTest::addRow("%s, %g s to %g s", isTimeOfDay ? "time of day" : "seconds", window.from, window.to)
                << isTimeOfDay << window;
}

void TestPlotLabels::timesDoNotOverlap()
{
    QFETCH(bool, isTimeOfDay);
    QFETCH(TimeWindow, window);
    SignalHistory history;
    history.begin(frameOf(1));
    history.append(blockOf(randomValues(20000, 0.0, 3), 0, 50.0));
    TimePlot plot;
    plot.setHistory(&history);
    if (isTimeOfDay)
        plot.setClockOffset(1.8e9);
    checkAtEverySize(plot, window);
}

void TestPlotLabels::frameNumbersDoNotOverlap()
{
    QLocale::setDefault(QLocale(QLocale::German)); // it separates thousands
    SignalHistory history;
    history.begin(frameOf(1, 0.0));
    constexpr qint64 first = 123456789000;
    history.append(blockOf(randomValues(20000, 0.0, 5), first, std::nullopt, std::nullopt));
    TimePlot plot;
    plot.setHistory(&history);
    checkAtEverySize(plot, {history.beginPosition(), history.endPosition()});
}

void TestPlotLabels::aWideAxisHasManyLabels()
{
    SignalHistory history;
    history.begin(frameOf(1));
    history.append(blockOf(randomValues(20000, 0.0, 3), 0, 50.0));
    TimePlot plot;
    plot.setHistory(&history);
    plot.show();
    plot.resize(900, 400);
    plot.setWindow({0.0, 20.0});
    plot.load();
    QCOMPARE(labelsOn(plot, QwtPlot::xBottom), 5); // each 5 s
    QVERIFY(labelsOn(plot, QwtPlot::yLeft) >= 4);
}

void TestPlotLabels::smallPlotsDoNotOverlap_data()
{
    QTest::addColumn<int>("shape");
    QTest::newRow("histogram") << int(CurvesPlot::Classes);
    QTest::newRow("spectrum") << int(CurvesPlot::Amplitudes);
}

void TestPlotLabels::smallPlotsDoNotOverlap()
{
    QFETCH(int, shape);
    QLocale::setDefault(QLocale(QLocale::German));
    CurvesPlot plot(static_cast<CurvesPlot::Shape>(shape), "Name");
    QVector<QPointF> points;
    for (int i = 0; i <= 100; ++i)
        points.append({i * 493.27, 1.0e-7 + i * 123.4});
    plot.setCurves({{Qt::blue, points}});
    plot.setAxisTitles("Hz", "mm");
    plot.show();
    for (const int width : sizes) {
        for (const int height : {150, 250, 600}) {
            plot.resize(width, height);
            QCoreApplication::sendPostedEvents(); // the layout of the new size
            plot.plot()->replot();
            for (const int axis : {int(QwtPlot::xBottom), int(QwtPlot::yLeft)}) {
                QCOMPARE(overlapOn(*plot.plot(), axis), QString());
                QVERIFY(labelsOn(*plot.plot(), axis) > 0);
            }
        }
    }
}

void TestPlotLabels::theAxisOfASpectrumEndsWithIt()
{
    CurvesPlot plot(CurvesPlot::Amplitudes, "Name");
    plot.show();
    plot.resize(300, 250);
    plot.setCurves({{Qt::blue, {{0.15, 1.0}, {1300.0, 2.0}, {2430.0, 0.1}}}});
    QCOMPARE(plot.plot()->axisScaleDiv(QwtPlot::xBottom).lowerBound(), 0.0);
    QCOMPARE(plot.plot()->axisScaleDiv(QwtPlot::xBottom).upperBound(), 2430.0);
}

// At fractional scales digits are up to one pixel higher than at scale 1.
void TestPlotLabels::labelsAtTheEndsHaveRoom()
{
    BasePlot plot;
    plot.show();
    plot.resize(400, 300);
    plot.setAxisScale(QwtPlot::yLeft, 0.0, 1000.0);
    plot.replot();
    const QwtScaleWidget *scale = plot.axisWidget(QwtPlot::yLeft);
    const QRect lowest = scale->scaleDraw()->boundingLabelRect(scale->font(), 0.0);
    const QRect highest = scale->scaleDraw()->boundingLabelRect(scale->font(), 1000.0);
    QVERIFY2(highest.top() >= 1, qPrintable(QString::number(highest.top())));
    QVERIFY2(lowest.bottom() < scale->height() - 1, qPrintable(QString::number(lowest.bottom())));
}

QTEST_MAIN(TestPlotLabels)
#include "tst_plotlabels.moc"
