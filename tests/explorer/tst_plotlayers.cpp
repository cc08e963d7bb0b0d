// SPDX-License-Identifier: MIT
#include "historydata.h"

#include "explorer/history/signalhistory.h"
#include "explorer/plot/plotview.h"
#include "explorer/plot/statisticspanel.h"
#include "explorer/plot/timeplot.h"

#include <QAction>
#include <QtTest>

#include <qwt_plot_legenditem.h>

using namespace Explorer;
using namespace HistoryData;
using namespace SondixQt;

/// What stands in front of what in a plot, and that the panels show what the plot shows.
class PlotLayersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noiseIsDrawnBehindALine_data();
    void noiseIsDrawnBehindALine();
    void thePictureLegendHasTheOrderOfTheSignals();
    void statisticsCatchUpWhenTheSensorIsSilent();

private:
    static void show(PlotView &view, SignalHistory &history)
    {
        view.resize(800, 600);
        view.setHistory(&history);
        view.show();
    }
};

void PlotLayersTest::noiseIsDrawnBehindALine_data()
{
    QTest::addColumn<int>("noisy");
    QTest::newRow("the first signal is noisy") << 0;
    QTest::newRow("the second signal is noisy") << 1;
}

void PlotLayersTest::noiseIsDrawnBehindALine()
{
    QFETCH(int, noisy);
    constexpr int frames = 20000;
    SignalHistory history;
    PlotView view;
    show(view, history);
    history.begin(frameOf(2));
    QVector<double> values;
    for (int i = 0; i < frames; ++i) {
        const double line = 5.0 + 4.0 * std::sin(i * 6.28 / frames);
        const double noise = 1.0 + (i * 7919 % 97) / 97.0 * 8.0;
        values << (noisy == 0 ? noise : line) << (noisy == 1 ? noise : line);
    }
    history.append(DataBlock(0, 0, 2, values, QVector<qint32>(values.size()), 0.0, 0.001));
    view.showEverything();
    const TimePlot &plot = view.plot();
    QVERIFY(plot.curve(1 - noisy).z() > plot.curve(noisy).z());
    // The line is seen all over the plot.
    const QImage image = view.plot().canvas()->grab().toImage();
    const QRgb colour = plot.colourOf(1 - noisy).rgb();
    int columns = 0;
    for (int x = 0; x < image.width(); ++x) {
        bool isSeen = false;
        for (int y = 0; y < image.height() && !isSeen; ++y)
            isSeen = (image.pixel(x, y) | 0xff000000) == colour;
        columns += isSeen ? 1 : 0;
    }
    QVERIFY2(columns > image.width() * 9 / 10, qPrintable(QString("%1 of %2").arg(columns).arg(image.width())));
}

void PlotLayersTest::thePictureLegendHasTheOrderOfTheSignals()
{
    SignalHistory history;
    PlotView view;
    show(view, history);
    history.begin(frameOf(3));
    history.append(DataBlock(0, 0, 3, {1, 2, 3, 4, 5, 6}, QVector<qint32>(6), 0.0, 0.001));
    view.showEverything();
    TimePlot &plot = view.plot();
    plot.setPictureLegend(true);
    plot.canvas()->grab();
    const QwtPlotItemList items = plot.itemList(QwtPlotItem::Rtti_PlotLegend);
    QCOMPARE(items.size(), 1);
    const auto *legend = static_cast<const QwtPlotLegendItem *>(items.first());
    QVector<double> places;
    for (int signal = 0; signal < 3; ++signal) {
        const QList<QRect> rects = legend->legendGeometries(&plot.curve(signal));
        QCOMPARE(rects.size(), 1);
        places << rects.first().x();
    }
    QVERIFY(places.at(0) < places.at(1) && places.at(1) < places.at(2));
    plot.setPictureLegend(false);
}

// The panels are updated less often than the plot; the last values count as well.
void PlotLayersTest::statisticsCatchUpWhenTheSensorIsSilent()
{
    SignalHistory history;
    PlotView view;
    show(view, history);
    view.plotAction("statisticsAction")->trigger();
    history.begin(frameOf(1));
    for (int i = 0; i < 20; ++i) {
        history.append(blockOf(QVector<double>(100, 1.0), i * 100, i * 0.1, 0.001));
        view.refresh();
    }
    QTRY_VERIFY2(view.statistics().summary().startsWith("2,000 frames"), qPrintable(view.statistics().summary()));
}

QTEST_MAIN(PlotLayersTest)
#include "tst_plotlayers.moc"
