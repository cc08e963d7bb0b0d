// SPDX-License-Identifier: MIT
#include "explorerbench.h"

#include "explorer/extras/videoview.h"
#include "explorer/plot/baseplot.h"
#include "explorer/sensor/sensorsession.h"
#include "support/scripting.h"

#include <QAction>
#include <QCheckBox>

#include <qwt_plot_curve.h>
#include <qwt_plot_marker.h>
#include <qwt_plot_zoneitem.h>

using namespace Explorer;
using namespace SondixQt;

/// The video line, live.
class ExtrasVideoTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        loadExplorerBench();
        sondixsim::useRealClock();
        m_session = std::make_unique<SensorSession>(secondAddress());
    }
    void cleanup()
    {
        m_session.reset();
        sondixsim::clearFaults();
    }

    void showsLines();
    void switchesSignals();
    void showsThresholdAndRegion();
    void fetchesNothingWhileItIsHidden();
    void tellsWhatIsMissing();
    void recoversFromFailures();
    void sensorsWithoutVideoAreTold();
    void answersAreUnderstood();

private:
    /// Opens the sensor and switches its video on.
    void openWithVideo(VideoView &view);

    std::unique_ptr<SensorSession> m_session;
};

void ExtrasVideoTest::openWithVideo(VideoView &view)
{
    view.resize(700, 400);
    view.show();
    m_session->open();
    QTRY_COMPARE(m_session->state(), SensorReader::Reading);
    auto *mode = view.findChild<QCheckBox *>("videoMode");
    QTRY_VERIFY(mode->isEnabled());
    if (!view.state().isVideoMode)
        mode->click();
    QTRY_VERIFY(view.state().isVideoMode);
    auto *raw = view.findChild<QCheckBox *>("OutputVideoRaw");
    QTRY_VERIFY(raw = view.findChild<QCheckBox *>("OutputVideoRaw"));
    if (!raw->isChecked())
        raw->click();
    QTRY_VERIFY(view.fetched() > 0);
}

void ExtrasVideoTest::showsLines()
{
    VideoView view(m_session->reader());
    openWithVideo(view);
    QCOMPARE(view.lines().size(), view.state().enabled.size());
    QCOMPARE(view.lines().first().size(), 512);
    QCOMPARE(view.message(), QString());
    const auto curves = view.plot()->itemList(QwtPlotItem::Rtti_PlotCurve);
    QCOMPARE(curves.size(), view.state().enabled.size());
    const auto *curve = static_cast<QwtPlotCurve *>(curves.first());
    QCOMPARE(int(curve->dataSize()), 512);
    QCOMPARE(view.plot()->axisScaleDiv(QwtPlot::xBottom).upperBound(), 511.0);
    QCOMPARE(view.plot()->axisScaleDiv(QwtPlot::yLeft).upperBound(), 16383.0);
    // It goes on by itself, and the sensor is still being read.
    const int before = view.fetched();
    QTRY_VERIFY(view.fetched() > before + 3);
    QCOMPARE(m_session->state(), SensorReader::Reading);
    view.liveAction()->trigger();
    QTest::qWait(150);
    const int stopped = view.fetched();
    QTest::qWait(200);
    QCOMPARE(view.fetched(), stopped);
}

void ExtrasVideoTest::switchesSignals()
{
    VideoView view(m_session->reader());
    openWithVideo(view);
    const int before = view.state().enabled.size();
    view.findChild<QCheckBox *>("OutputVideoDark")->click();
    QTRY_COMPARE(view.state().enabled.size(), before + 1);
    QTRY_COMPARE(view.lines().size(), before + 1);
    QCOMPARE(view.plot()->itemList(QwtPlotItem::Rtti_PlotCurve).size(), before + 1);
    view.findChild<QCheckBox *>("OutputVideoDark")->click();
    QTRY_COMPARE(view.state().enabled.size(), before);
}

void ExtrasVideoTest::showsThresholdAndRegion()
{
    QLocale::setDefault(QLocale::German);
    const auto restore = qScopeGuard([] { QLocale::setDefault(QLocale::c()); });
    scriptAnswer("Get_Threshold", "SA_Threshold=1200.5");
    scriptAnswer("Get_ROI", "SA_ROIStart=100 SA_ROIEnd=400");
    VideoView view(m_session->reader());
    openWithVideo(view);
    QCOMPARE(view.state().threshold, std::optional<double>(1200.5));
    const auto *marker =
        static_cast<QwtPlotMarker *>(view.plot()->itemList(QwtPlotItem::Rtti_PlotMarker).value(0));
    QVERIFY(marker && marker->isVisible());
    QCOMPARE(marker->yValue(), 1200.5);
    QVERIFY2(marker->label().text().endsWith(" 1.200,5"), qPrintable(marker->label().text()));
    const auto *zone = static_cast<QwtPlotZoneItem *>(view.plot()->itemList(QwtPlotItem::Rtti_PlotZone).value(0));
    QVERIFY(zone && zone->isVisible());
    QCOMPARE(zone->interval().minValue(), 100.0);
    QCOMPARE(zone->interval().maxValue(), 400.0);
    if (qEnvironmentVariableIsSet("SONDIXQT_PICTURES"))
        view.grab().save(qEnvironmentVariable("SONDIXQT_PICTURES") + "/video.png");
}

void ExtrasVideoTest::fetchesNothingWhileItIsHidden()
{
    VideoView view(m_session->reader());
    openWithVideo(view);
    view.hide();
    QTest::qWait(150); // what has been asked for arrives
    const int hidden = view.fetched();
    QTest::qWait(200);
    QCOMPARE(view.fetched(), hidden);
    view.show();
    QTRY_VERIFY(view.fetched() > hidden);
}

void ExtrasVideoTest::tellsWhatIsMissing()
{
    VideoView view(m_session->reader());
    view.show();
    QTRY_VERIFY(view.message().contains("not being read"));
    openWithVideo(view);
    view.findChild<QCheckBox *>("OutputVideoRaw")->click();
    for (QCheckBox *box : view.findChildren<QCheckBox *>())
        if (box->objectName().startsWith("OutputVideo") && box->isChecked() && view.state().enabled.size() > 1)
            box->click();
    QTRY_VERIFY(view.state().enabled.isEmpty());
    QTRY_VERIFY2(view.message().contains("switched on"), qPrintable(view.message()));
}

void ExtrasVideoTest::recoversFromFailures()
{
    VideoView view(m_session->reader());
    openWithVideo(view);
    const int fault = scriptCommandFailure("Get_Video", -5, "No light");
    QTRY_VERIFY2(view.message().contains("No light"), qPrintable(view.message()));
    sondixsim::removeFault(fault);
    const int before = view.fetched();
    QTRY_VERIFY(view.fetched() > before);
    QCOMPARE(view.message(), QString());
    sondixsim::unplug("1002");
    QTRY_VERIFY(m_session->state() == SensorReader::Reconnecting);
    QTRY_VERIFY(view.message().contains("not being read"));
    sondixsim::plug("1002");
    QTRY_COMPARE(m_session->state(), SensorReader::Reading);
    const int plugged = view.fetched();
    QTRY_VERIFY(view.fetched() > plugged);
}

void ExtrasVideoTest::sensorsWithoutVideoAreTold()
{
    SensorSession session(firstAddress());
    VideoView view(session.reader());
    view.show();
    session.open();
    QTRY_VERIFY2(view.message().contains("no video"), qPrintable(view.message()));
    QVERIFY(!view.findChild<QCheckBox *>("videoMode")->isEnabled());
}

void ExtrasVideoTest::answersAreUnderstood()
{
    QCOMPARE(thresholdOf({{"SA_MinimumThreshold", 7.5}}), std::optional<double>(7.5));
    QVERIFY(!thresholdOf({{"SA_Threshold", "off"}}));
    QVERIFY(!thresholdOf({}));
    QVERIFY(regionOf({{"SA_ROIStart", 1}, {"SA_ROIEnd", 9}}).has_value());
    QVERIFY(!regionOf({{"SA_ROIStart", 9}, {"SA_ROIEnd", 1}}));
    QVERIFY(!regionOf({{"SA_ROIStart", 9}}));
}

QTEST_MAIN(ExtrasVideoTest)
#include "tst_extrasvideo.moc"
