// SPDX-License-Identifier: MIT
#include "historydata.h"

#include "explorer/history/signalhistory.h"
#include "explorer/plot/curvesplot.h"
#include "explorer/plot/plotcursors.h"
#include "explorer/plot/plotview.h"
#include "explorer/plot/signallegend.h"
#include "explorer/plot/statisticspanel.h"
#include "explorer/plot/timeplot.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QToolButton>
#include <QtTest>
#include <QWheelEvent>

#include <qwt_scale_map.h>

using namespace Explorer;
using namespace HistoryData;
using namespace SondixQt;

/// The plot as a person uses it, with mouse and keys.
class TestPlotView : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void hasAllActions();
    void needsNoHistory();
    void growsAndThenFollows();
    void drawsByItself();
    void pauseStopsTheWindow();
    void pauseKeepsWhatIsShown();
    void draggingZooms();
    void draggingWithShiftZoomsTheValues();
    void theWheelZoomsAroundThePointer();
    void theWheelKeepsTheEndWhileFollowing();
    void draggingWithCtrlMoves();
    void doubleClickShowsEverything();
    void keysMoveAndZoom();
    void zoomEndsAtAFewFrames();
    void zoomOfValuesHasBounds();
    void theLegendHidesSignals();
    void axesHaveUnits();
    void thePointerReadsValues();
    void cursorsAreComparedAndMoved();
    void errorsAndGapsHaveNotes();
    void statisticsAreOfWhatIsVisible();
    void statisticsAreCopiedExactly();
    void histogramAndSpectrumTellWhatTheyShow();
    void showsTheTimeOfDay();
    void takesAnotherDescription();
    void followsThePalette();
    void manySignalsStayUsable();

private:
    void fillSeconds(double seconds);
    void show(double seconds);
    QWidget *canvas() const { return m_view->plot().canvas(); }
    void act(const char *name) { m_view->plotAction(QLatin1String(name))->trigger(); }
    void drag(const QPoint &from, const QPoint &to, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void turnWheel(const QPoint &at, int steps, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    int pixelOf(double position) const
    {
        return qRound(m_view->plot().canvasMap(QwtPlot::xBottom).transform(position));
    }

    std::unique_ptr<SignalHistory> m_history;
    std::unique_ptr<PlotView> m_view;
    qint64 m_frames = 0;
};

namespace {

constexpr double sampleDistance = 0.001;

double valueAt(qint64 frame)
{
    return std::sin(static_cast<double>(frame) * 0.01);
}

} // namespace

void TestPlotView::init()
{
    QLocale::setDefault(QLocale::c());
    m_frames = 0;
    m_history = std::make_unique<SignalHistory>();
    m_history->begin(frameOf(2));
    m_view = std::make_unique<PlotView>();
    m_view->resize(800, 600);
}

void TestPlotView::cleanup()
{
    m_view.reset();
    m_history.reset();
}

// The second signal is the first one times ten.
void TestPlotView::fillSeconds(double seconds)
{
    constexpr int perBlock = 100;
    for (double done = 0.0; done < seconds - 1.0e-9; done += perBlock * sampleDistance) {
        QVector<double> values;
        for (int i = 0; i < perBlock; ++i)
            values << valueAt(m_frames + i) << 10.0 * valueAt(m_frames + i);
        m_history->append(DataBlock(0, m_frames, 2, values, QVector<qint32>(values.size()),
                                    100.0 + static_cast<double>(m_frames) * sampleDistance, sampleDistance));
        m_frames += perBlock;
    }
}

void TestPlotView::show(double seconds)
{
    fillSeconds(seconds);
    m_view->setHistory(m_history.get());
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    m_view->refresh();
    canvas()->setFocus();
}

void TestPlotView::drag(const QPoint &from, const QPoint &to, Qt::KeyboardModifiers modifiers)
{
    QTest::mousePress(canvas(), Qt::LeftButton, modifiers, from);
    for (const QPoint &at : {(from + to) / 2, to}) {
        QMouseEvent move(QEvent::MouseMove, at, canvas()->mapToGlobal(at), Qt::NoButton, Qt::LeftButton,
                         modifiers);
        QApplication::sendEvent(canvas(), &move);
    }
    QTest::mouseRelease(canvas(), Qt::LeftButton, modifiers, to);
}

void TestPlotView::turnWheel(const QPoint &at, int steps, Qt::KeyboardModifiers modifiers)
{
    QWheelEvent wheel(at, canvas()->mapToGlobal(at), QPoint(), QPoint(0, 120 * steps), Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(canvas(), &wheel);
}

void TestPlotView::hasAllActions()
{
    QStringList names;
    for (const QAction *action : m_view->plotActions()) {
        names << action->objectName();
        QVERIFY(!action->text().isEmpty() && !action->toolTip().isEmpty());
    }
    QCOMPARE(names, (QStringList{"followAction", "pauseAction", "cursorsAction", "crosshairAction",
                                 "showAllAction", "zoomInAction", "zoomOutAction", "clockTimeAction",
                                 "statisticsAction", "histogramAction", "spectrumAction", "exportAction"}));
    QVERIFY(!m_view->accessibleName().isEmpty());
    QVERIFY(!canvas()->accessibleName().isEmpty());
}

void TestPlotView::needsNoHistory()
{
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    for (int round = 0; round < 2; ++round)
        for (QAction *action : m_view->plotActions())
            if (!action->menu())
                action->trigger();
    for (const int key : {int(Qt::Key_Plus), int(Qt::Key_Minus), int(Qt::Key_Left), int(Qt::Key_Home),
                          int(Qt::Key_End), int(Qt::Key_0), int(Qt::Key_Up)})
        QTest::keyClick(canvas(), static_cast<Qt::Key>(key));
    drag({100, 100}, {300, 200});
    turnWheel({50, 50}, 3);
    QVERIFY(!m_view->grab().isNull());
    // A history that has a description and no values.
    m_view->setHistory(m_history.get());
    for (QAction *action : m_view->plotActions())
        if (!action->menu())
            action->trigger();
    QVERIFY(!m_view->grab().isNull());
    m_view->setHistory(nullptr);
    QCOMPARE(m_view->plot().signalCount(), 0);
}

void TestPlotView::growsAndThenFollows()
{
    show(4.0);
    QCOMPARE(m_view->window().from, 0.0);
    QCOMPARE(m_view->window().to, 10.0);
    fillSeconds(10.0);
    m_view->refresh();
    QCOMPARE(m_view->mode(), PlotView::Follow);
    QVERIFY(std::abs(m_view->window().to - m_history->endPosition()) < 1.0e-9);
    QVERIFY(std::abs(m_view->window().width() - 10.0) < 1.0e-9);
    m_view->setSpan(2.0);
    QVERIFY(std::abs(m_view->window().from - (m_history->endPosition() - 2.0)) < 1.0e-9);
}

void TestPlotView::drawsByItself()
{
    show(20.0);
    const double before = m_view->window().to;
    fillSeconds(1.0);
    QTRY_VERIFY(m_view->window().to > before + 0.9);
}

void TestPlotView::pauseStopsTheWindow()
{
    show(20.0);
    act("pauseAction");
    QVERIFY(m_view->isPaused());
    const TimeWindow before = m_view->window();
    fillSeconds(5.0);
    m_view->refresh();
    QCOMPARE(m_view->window(), before);
    QTest::keyClick(canvas(), Qt::Key_Plus); // one can look around
    QVERIFY(m_view->window().width() < before.width());
    QTest::keyClick(canvas(), Qt::Key_Space);
    QVERIFY(!m_view->isPaused());
    QTest::keyClick(canvas(), Qt::Key_End);
    QVERIFY(std::abs(m_view->window().to - m_history->endPosition()) < 1.0e-9);
}

void TestPlotView::pauseKeepsWhatIsShown()
{
    show(3.0); // of the 10 s that are shown
    act("statisticsAction");
    act("pauseAction");
    const auto isAsBefore = [this] {
        const TimePlot &plot = m_view->plot();
        const double right = plot.curve(0).boundingRect().right();
        return plot.shownFrames().end == 3000 && std::abs(right - 2.999) < 2.0 * plot.pixelWidth();
    };
    QVERIFY(isAsBefore());
    fillSeconds(2.0);
    m_history->append(gapOf(10));
    m_frames += 10;
    fillSeconds(2.0);
    act("cursorsAction"); // draws at once
    QVERIFY(isAsBefore());
    QVERIFY(m_view->plot().gapMarks().empty());
    m_view->cursors().setPosition(0, 6.0);
    QVERIFY(!m_view->cursors().value(0, 0));
    QCOMPARE(m_view->plot().readingAt(6.0).split('\n').size(), 1);
    QTest::keyClick(canvas(), Qt::Key_0); // everything, until the pause began
    QVERIFY(isAsBefore());
    QVERIFY(std::abs(m_view->window().to - 2.999) < 1.0e-9);
    m_view->setWindow({2.9, 3.1}); // few frames, each of which is drawn
    QVERIFY(isAsBefore());
    act("pauseAction");
    QCOMPARE(m_view->plot().shownFrames().end, m_history->framesBetween(2.9, 3.1).end);
    QTest::keyClick(canvas(), Qt::Key_0);
    QCOMPARE(m_view->plot().shownFrames().end, qint64(7000));
    QCOMPARE(m_view->plot().gapMarks().size(), std::size_t(1));
}

void TestPlotView::draggingZooms()
{
    show(20.0);
    const double from = m_view->plot().positionAt(200);
    const double to = m_view->plot().positionAt(400);
    drag({400, 100}, {200, 110});
    QVERIFY(std::abs(m_view->window().from - from) < 2.0 * 10.0 / canvas()->width());
    QVERIFY(std::abs(m_view->window().to - to) < 2.0 * 10.0 / canvas()->width());
    QCOMPARE(m_view->mode(), PlotView::Fixed);
    QVERIFY(!m_view->plotAction("followAction")->isChecked());
    QVERIFY(!m_view->plot().hasValueRange());
    const TimeWindow before = m_view->window();
    fillSeconds(1.0);
    m_view->refresh();
    QCOMPARE(m_view->window(), before);
    // A click is no selection.
    drag({300, 100}, {301, 101});
    QCOMPARE(m_view->window(), before);
    act("followAction");
    QVERIFY(std::abs(m_view->window().to - m_history->endPosition()) < 1.0e-9);
    QVERIFY(std::abs(m_view->window().width() - before.width()) < 1.0e-9);
}

void TestPlotView::draggingWithShiftZoomsTheValues()
{
    show(20.0);
    const QwtScaleMap map = m_view->plot().canvasMap(QwtPlot::yLeft);
    const double top = map.invTransform(100);
    const double bottom = map.invTransform(200);
    drag({100, 100}, {500, 200}, Qt::ShiftModifier);
    const QwtInterval range = m_view->plot().axisInterval(QwtPlot::yLeft);
    QVERIFY(std::abs(range.maxValue() - top) < 0.1 && std::abs(range.minValue() - bottom) < 0.1);
    act("showAllAction");
    QVERIFY(!m_view->plot().hasValueRange());
    QVERIFY(m_view->plot().axisInterval(QwtPlot::yLeft).maxValue() >= 10.0);
}

void TestPlotView::theWheelZoomsAroundThePointer()
{
    show(20.0);
    m_view->setWindow({5.0, 15.0});
    const QPoint pointer(canvas()->width() / 4, 100);
    const double position = m_view->plot().positionAt(pointer.x());
    turnWheel(pointer, 3);
    QVERIFY(std::abs(m_view->window().width() - 10.0 * 0.8 * 0.8 * 0.8) < 1.0e-9);
    QVERIFY(std::abs(m_view->plot().positionAt(pointer.x()) - position) < 1.0e-6);
    turnWheel(pointer, -3);
    QVERIFY(std::abs(m_view->window().width() - 10.0) < 1.0e-9);
    const double before = m_view->plot().axisInterval(QwtPlot::yLeft).width();
    turnWheel(pointer, 1, Qt::ControlModifier);
    QVERIFY(std::abs(m_view->plot().axisInterval(QwtPlot::yLeft).width() - 0.8 * before) < 1.0e-9);
    turnWheel(pointer, 1, Qt::ShiftModifier);
    QVERIFY(m_view->window().from < 5.0);
    for (int i = 0; i < 100; ++i)
        turnWheel(pointer, -1);
    QVERIFY(m_view->window().width() <= m_history->endPosition() + 1.0e-9);
}

void TestPlotView::theWheelKeepsTheEndWhileFollowing()
{
    show(20.0);
    turnWheel({100, 100}, 2);
    QCOMPARE(m_view->mode(), PlotView::Follow);
    QVERIFY(std::abs(m_view->window().to - m_history->endPosition()) < 1.0e-9);
    QVERIFY(std::abs(m_view->window().width() - 6.4) < 1.0e-9);
}

void TestPlotView::draggingWithCtrlMoves()
{
    show(20.0);
    m_view->setWindow({5.0, 15.0});
    const double distance = 100 * m_view->plot().pixelWidth();
    drag({300, 100}, {400, 100}, Qt::ControlModifier);
    QVERIFY(std::abs(m_view->window().from - (5.0 - distance)) < 1.0e-6);
    QVERIFY(std::abs(m_view->window().width() - 10.0) < 1.0e-9);
}

void TestPlotView::doubleClickShowsEverything()
{
    show(20.0);
    m_view->setWindow({5.0, 6.0});
    QTest::mouseDClick(canvas(), Qt::LeftButton, Qt::NoModifier, {100, 100});
    QCOMPARE(m_view->mode(), PlotView::Everything);
    QCOMPARE(m_view->window().from, 0.0);
    fillSeconds(5.0);
    m_view->refresh();
    QCOMPARE(m_view->window().from, 0.0);
    QVERIFY(std::abs(m_view->window().to - m_history->endPosition()) < 1.0e-9);
}

void TestPlotView::keysMoveAndZoom()
{
    show(30.0);
    m_view->setWindow({10.0, 20.0});
    QTest::keyClick(canvas(), Qt::Key_Plus);
    QCOMPARE(m_view->window(), (TimeWindow{12.5, 17.5}));
    QTest::keyClick(canvas(), Qt::Key_Minus);
    QCOMPARE(m_view->window(), (TimeWindow{10.0, 20.0}));
    QTest::keyClick(canvas(), Qt::Key_Right);
    QCOMPARE(m_view->window(), (TimeWindow{11.0, 21.0}));
    QTest::keyClick(canvas(), Qt::Key_Left);
    QCOMPARE(m_view->window(), (TimeWindow{10.0, 20.0}));
    QTest::keyClick(canvas(), Qt::Key_Home);
    QCOMPARE(m_view->window(), (TimeWindow{0.0, 10.0}));
    const QwtInterval values = m_view->plot().axisInterval(QwtPlot::yLeft);
    QTest::keyClick(canvas(), Qt::Key_Up);
    QVERIFY(m_view->plot().axisInterval(QwtPlot::yLeft).minValue() > values.minValue());
    QTest::keyClick(canvas(), Qt::Key_Up, Qt::ControlModifier);
    QVERIFY(m_view->plot().axisInterval(QwtPlot::yLeft).width() < values.width());
    QTest::keyClick(canvas(), Qt::Key_End);
    QCOMPARE(m_view->mode(), PlotView::Follow);
    QVERIFY(std::abs(m_view->window().to - m_history->endPosition()) < 1.0e-9);
    QTest::keyClick(canvas(), Qt::Key_0);
    QCOMPARE(m_view->mode(), PlotView::Everything);
    QVERIFY(!m_view->plot().hasValueRange());
}

void TestPlotView::zoomEndsAtAFewFrames()
{
    show(20.0);
    m_view->setWindow({10.0, 10.5});
    for (int i = 0; i < 60; ++i)
        act("zoomInAction");
    QVERIFY(std::abs(m_view->window().width() - 4.0 * sampleDistance) < 1.0e-9);
    QVERIFY(m_view->plot().curve(0).series().size() >= 4);
    for (int i = 0; i < 60; ++i)
        act("zoomOutAction");
    QCOMPARE(m_view->window(), (TimeWindow{0.0, m_history->endPosition()}));
}

void TestPlotView::zoomOfValuesHasBounds()
{
    show(20.0);
    const auto scale = [this] { return m_view->plot().canvasMap(QwtPlot::yLeft); };
    for (const int steps : {100, -100}) {
        for (int i = 0; i < 50; ++i) // far beyond what a double can hold
            turnWheel(canvas()->rect().center(), steps, Qt::ControlModifier);
        const double width = std::abs(scale().s2() - scale().s1());
        QVERIFY2(std::isfinite(scale().s1()) && std::isfinite(scale().s2()), qPrintable(QString::number(width)));
        QVERIFY2(width > 0.0 && width < 1.0e19, qPrintable(QString::number(width)));
        // The numbers at both ends of the axis differ.
        QVERIFY2(width >= 1.0e-13 * std::abs(scale().s1()), qPrintable(QString::number(width)));
    }
    QTest::keyClick(canvas(), Qt::Key_0);
    QVERIFY(!m_view->plot().hasValueRange());
}

void TestPlotView::theLegendHidesSignals()
{
    show(20.0);
    QToolButton *button = m_view->legend().button(1);
    QVERIFY(button && button->isVisible() && button->isChecked());
    QCOMPARE(button->accessibleName(), "Signal 2 [mm]");
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(!m_view->plot().isShown(1));
    QVERIFY(m_view->plot().isShown(0));
    // The axis fits to what is left.
    QVERIFY(m_view->plot().axisInterval(QwtPlot::yLeft).maxValue() < 2.0);
    button->setFocus();
    QTest::keyClick(button, Qt::Key_Space);
    QVERIFY(m_view->plot().isShown(1));
    QVERIFY(m_view->plot().axisInterval(QwtPlot::yLeft).maxValue() >= 10.0);
}

void TestPlotView::axesHaveUnits()
{
    TransmittedDataInfo frame = frameOf(4, 1000.0, {"mm", "V", "mm", "mV"});
    frame.signals[3].scaledRangeMax = 9.0e3;
    frame.signals[1].scaledRangeMax = 1.0e4;
    m_history->begin(frame);
    m_view->setHistory(m_history.get());
    const TimePlot &plot = m_view->plot();
    QCOMPARE(plot.axisOf(0), int(QwtPlot::yLeft));
    QCOMPARE(plot.axisOf(1), int(QwtPlot::yRight));
    QCOMPARE(plot.axisOf(2), int(QwtPlot::yLeft));
    QCOMPARE(plot.axisOf(3), int(QwtPlot::yRight)); // its range is like that of V
    QCOMPARE(plot.axisTitle(QwtPlot::yLeft).text(), "mm");
    QCOMPARE(plot.axisTitle(QwtPlot::yRight).text(), "V, mV");
    QVERIFY(m_view->legend().button(1)->accessibleName().contains("right axis"));
    QVERIFY(m_view->legend().button(1)->toolTip().contains("right axis"));

    // The shown signals have the axes for themselves as soon as they have only two units.
    QTest::mouseClick(m_view->legend().button(1), Qt::LeftButton);
    QCOMPARE(plot.axisTitle(QwtPlot::yRight).text(), "mV");
    QTest::mouseClick(m_view->legend().button(1), Qt::LeftButton);
    QTest::mouseClick(m_view->legend().button(0), Qt::LeftButton);
    QTest::mouseClick(m_view->legend().button(2), Qt::LeftButton);
    QCOMPARE(plot.axisOf(1), int(QwtPlot::yLeft));
    QCOMPARE(plot.axisOf(3), int(QwtPlot::yRight));
    QCOMPARE(plot.axisTitle(QwtPlot::yLeft).text(), "V");
    QCOMPARE(plot.axisTitle(QwtPlot::yRight).text(), "mV");
    QCOMPARE(plot.axisOf(0), plot.axisOf(2));
    QVERIFY(!m_view->legend().button(1)->accessibleName().contains("right axis"));
    QVERIFY(m_view->legend().button(3)->accessibleName().contains("right axis"));
    m_history->begin(frameOf(1));
    m_view->refresh();
    QVERIFY(!plot.axisEnabled(QwtPlot::yRight));
}

void TestPlotView::thePointerReadsValues()
{
    show(20.0);
    const QStringList lines = m_view->plot().readingAt(12.3454).split('\n');
    QCOMPARE(lines.size(), 3);
    QVERIFY2(lines.at(0).startsWith("12.35 s") || lines.at(0).startsWith("12.345 s"), qPrintable(lines.at(0)));
    QCOMPARE(lines.at(1), "Signal 1: " + QLocale().toString(valueAt(12345), 'g', 7) + " mm");
    QCOMPARE(m_view->plot().readingAt(21.0).split('\n').size(), 1); // nothing was measured there
    QCOMPARE(m_view->plot().readingAt(-1.0).split('\n').size(), 1);
    act("crosshairAction");
    QTest::mouseMove(canvas(), {200, 200});
    QVERIFY(!m_view->grab().isNull());
}

void TestPlotView::cursorsAreComparedAndMoved()
{
    show(20.0);
    m_view->setWindow({5.0, 15.0});
    act("cursorsAction");
    PlotCursors &cursors = m_view->cursors();
    QVERIFY(cursors.isVisible());
    QVERIFY(cursors.position(0) > 5.0 && cursors.position(1) > cursors.position(0) && cursors.position(1) < 15.0);
    drag({pixelOf(cursors.position(0)), 100}, {pixelOf(6.0), 120});
    QVERIFY(std::abs(cursors.position(0) - 6.0) < 2.0 * m_view->plot().pixelWidth());
    QCOMPARE(m_view->window(), (TimeWindow{5.0, 15.0})); // no zoom
    drag({pixelOf(cursors.position(1)), 100}, {pixelOf(8.0), 90});
    const double distance = cursors.position(1) - cursors.position(0);
    QVERIFY(std::abs(distance - 2.0) < 4.0 * m_view->plot().pixelWidth());
    QVERIFY2(cursors.summary().contains("1/Δt: " + QLocale().toString(1.0 / distance, 'g', 6) + " Hz"),
             qPrintable(cursors.summary()));
    const SignalStatistics &row = m_view->statistics().model().rows().at(1);
    QCOMPARE(*row.atA, 10.0 * valueAt(*m_history->nearestFrame(cursors.position(0))));
    QCOMPARE(
        m_view->statistics().model().exactText(m_view->statistics().model().index(1, StatisticsModel::Difference)),
        QString::number(*row.atB - *row.atA, 'g', QLocale::FloatingPointShortest));
    // The keyboard moves the active one, Tab chooses the other one.
    const double before = cursors.position(1);
    QCOMPARE(cursors.active(), 1);
    QTest::keyClick(canvas(), Qt::Key_Right, Qt::ControlModifier);
    QVERIFY(std::abs(cursors.position(1) - before - m_view->plot().pixelWidth()) < 1.0e-9);
    QTest::keyClick(canvas(), Qt::Key_Backtab);
    QCOMPARE(cursors.active(), 0);
    QTest::keyClick(canvas(), Qt::Key_Left, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(cursors.position(0) < 6.0);
    act("cursorsAction");
    QVERIFY(!cursors.isVisible());
}

void TestPlotView::errorsAndGapsHaveNotes()
{
    fillSeconds(2.0);
    m_history->append(DataBlock(0, m_frames, 2, {-1.0e10 - 3.0, 1.0, std::nan(""), 2.0}, QVector<qint32>(4),
                                100.0 + static_cast<double>(m_frames) * sampleDistance, sampleDistance));
    m_frames += 2;
    DataGap gap = gapOf(1500);
    m_history->append(gap);
    m_frames += 1500;
    m_view->setErrorText([](double value) { return value > -2.0e10 ? QString("Too far") : QString(); });
    show(2.0);
    m_view->setWindow({1.99, 2.02});
    QCOMPARE(m_view->plot().errorMarks().size(), std::size_t(2));
    QCOMPARE(m_view->plot().noteAt({pixelOf(2.0), 300}), "Signal 1: Too far");
    QCOMPARE(m_view->plot().noteAt({pixelOf(1.995), 300}), QString());
    QVERIFY(m_view->plot().readingAt(2.0).contains("Signal 1: Too far"));
    const auto timeTitle = [this] { return m_view->plot().axisTitle(QwtPlot::xBottom).text(); };
    QCOMPARE(timeTitle(), QString("Time in s    \u25b2 Too far \u00b7 no value"));
    const QString longText(200, 'x');
    m_view->setErrorText([longText](double value) { return value > -2.0e10 ? QString("Too far") : longText; });
    m_view->setWindow({1.98, 2.02});
    QCOMPARE(timeTitle(), QString("Time in s    \u25b2 Too far \u00b7 \u2026")); // what does not fit is left out
    m_view->setWindow({0.0, 1.0});
    QCOMPARE(timeTitle(), QString("Time in s"));
    m_view->setWindow({0.0, 5.0});
    QCOMPARE(m_view->plot().gapMarks().size(), std::size_t(1));
    const QString note = m_view->plot().noteAt({pixelOf(2.8), 100});
    QVERIFY2(note.contains("1500") && note.contains(gapReasonText(gap.reason)), qPrintable(note));
    QVERIFY(m_view->plot().readingAt(2.8).contains(gapReasonText(gap.reason)));
    QVERIFY(!m_view->cursors().value(0, 0) || m_view->cursors().position(0) < 2.1);
    m_view->setErrorText({});
    QCOMPARE(m_view->plot().errorText(-3), "error -3");
}

void TestPlotView::statisticsAreOfWhatIsVisible()
{
    show(20.0);
    m_view->setWindow({5.0, 7.0});
    act("statisticsAction");
    QVERIFY(m_view->statistics().isVisible());
    const FrameRange range = m_view->plot().shownFrames();
    QCOMPARE(range.begin, qint64(5000));
    QVERIFY(std::abs(range.count() - 2001) <= 1);
    const Moments &moments = m_view->statistics().model().rows().at(0).moments;
    double sum = 0.0;
    for (qint64 frame = range.begin; frame < range.end; ++frame)
        sum += valueAt(frame);
    QVERIFY(std::abs(moments.mean - sum / static_cast<double>(range.count())) < 1.0e-12);
    QCOMPARE(moments.count, range.count());
    QVERIFY2(m_view->statistics().summary().contains("1,000 frames per second") ||
                 m_view->statistics().summary().contains("1000 frames per second"),
             qPrintable(m_view->statistics().summary()));
    m_view->plot().setShown(0, false);
    QCOMPARE(m_view->statistics().model().rowCount(), 1);
}

void TestPlotView::statisticsAreCopiedExactly()
{
    QLocale::setDefault(QLocale(QLocale::German));
    show(20.0);
    act("statisticsAction");
    m_view->statistics().copy();
    const QStringList rows = QApplication::clipboard()->text().split('\n');
    QCOMPARE(rows.size(), 2);
    const QStringList cells = rows.at(0).split('\t');
    QCOMPARE(cells.at(StatisticsModel::Name), "Signal 1");
    bool ok = false;
    QCOMPARE(cells.at(StatisticsModel::Mean).toDouble(&ok),
             m_view->statistics().model().rows().at(0).moments.mean);
    QVERIFY(ok);
    const QModelIndex mean = m_view->statistics().model().index(0, StatisticsModel::Mean);
    QVERIFY(mean.data().toString().contains(','));
    QLocale::setDefault(QLocale::c());
}

void TestPlotView::histogramAndSpectrumTellWhatTheyShow()
{
    show(20.0);
    m_view->setWindow({5.0, 7.0});
    act("histogramAction");
    act("spectrumAction");
    QVERIFY(m_view->histogramPlot().isVisible() && m_view->spectrumPlot().isVisible());
    QVERIFY2(m_view->histogramPlot().note().contains("values"), qPrintable(m_view->histogramPlot().note()));
    QVERIFY(m_view->spectrumPlot().note().contains("1024 values"));
    m_history->append(gapOf(10));
    m_frames += 10;
    fillSeconds(1.0);
    m_view->setWindow({19.5, 20.5});
    QVERIFY(m_view->spectrumPlot().note().contains("values are missing"));
    QVERIFY(!m_view->grab().isNull());
    act("spectrumAction");
    QVERIFY(!m_view->spectrumPlot().isVisible());
}

void TestPlotView::showsTheTimeOfDay()
{
    show(20.0);
    QAction *clock = m_view->plotAction("clockTimeAction");
    QVERIFY(!clock->isEnabled()); // these blocks have no relation to the clock of the computer
    const QDateTime noon(QDate(2026, 3, 1), QTime(12, 0, 0));
    m_view->setWallClockOffset(static_cast<double>(noon.toSecsSinceEpoch()));
    QVERIFY(clock->isEnabled());
    clock->trigger();
    QCOMPARE(m_view->plot().axisTitle(QwtPlot::xBottom).text(), "Time of day");
    QVERIFY(m_view->plot().readingAt(15.0).contains("12:00:15"));
    m_view->setWallClockOffset(std::nullopt);
    QCOMPARE(m_view->plot().axisTitle(QwtPlot::xBottom).text(), "Time in s");
}

void TestPlotView::takesAnotherDescription()
{
    show(20.0);
    m_history->begin(frameOf(5));
    m_view->refresh();
    QCOMPARE(m_view->plot().signalCount(), 5);
    QVERIFY(m_view->legend().button(4));
    m_history->append(DataBlock(0, 0, 5, {1, 2, 3, 4, 5}, QVector<qint32>(5), 1.0, 0.1));
    m_view->refresh();
    QCOMPARE(m_view->plot().shownFrames().count(), qint64(1));
    // Without times.
    m_history->begin(frameOf(1));
    m_history->append(blockOf(QVector<double>(500, 1.0), 0, std::nullopt, std::nullopt));
    m_view->refresh();
    QCOMPARE(m_view->plot().axisTitle(QwtPlot::xBottom).text(), "Frame");
    QVERIFY(!m_view->grab().isNull());
}

void TestPlotView::followsThePalette()
{
    show(5.0);
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(20, 20, 20));
    dark.setColor(QPalette::Text, Qt::white);
    const QColor before = m_view->plot().colourOf(0);
    m_view->setPalette(dark);
    QVERIFY(m_view->plot().colourOf(0) != before);
    const QImage picture = canvas()->grab().toImage();
    QCOMPARE(picture.pixelColor(picture.width() - 3, 3), QColor(20, 20, 20));
}

void TestPlotView::manySignalsStayUsable()
{
    m_history->begin(frameOf(2000));
    const QVector<double> values(2000 * 100, 1.0);
    m_history->append(DataBlock(0, 0, 2000, values, QVector<qint32>(values.size()), 1.0, 0.001));
    m_view->setHistory(m_history.get());
    QCOMPARE(m_view->plot().signalCount(), TimePlot::maxSignals);
    int shown = 0;
    for (int signal = 0; signal < m_view->plot().signalCount(); ++signal)
        shown += m_view->plot().isShown(signal) ? 1 : 0;
    QCOMPARE(shown, TimePlot::maxShownAtFirst);
    m_view->plot().setShown(100, true);
    QVERIFY(m_view->plot().isShown(100));
}

QTEST_MAIN(TestPlotView)
#include "tst_plotview.moc"
