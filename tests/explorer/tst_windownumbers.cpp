// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "explorerwindow.h"

#include "explorer/sensor/sensorsession.h"
#include "explorer/window/numbersview.h"
#include "explorer/window/numbertile.h"
#include "explorer/window/sessionview.h"

#include <QClipboard>
#include <QLineEdit>
#include <QToolButton>

using namespace Explorer;
using namespace SondixQt;

/// The present values in large digits.
class WindowNumbersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void showsNumbersOfASensor();
    void numbersHaveLimitsAndAZero();
    void aPageIsClosedWhileALimitIsTyped();
    void aNarrowTileCutsNoNumber();
    void forgetsTheZero();
    void valuesOfAPulledSensorAreNotPresent();

private:
    std::unique_ptr<ExplorerWindow> window;
};

void WindowNumbersTest::init()
{
    QLocale::setDefault(QLocale::c());
    loadExplorerBench();
    window = std::make_unique<ExplorerWindow>();
    window->open();
    QVERIFY(QTest::qWaitForWindowExposed(&**window));
}

void WindowNumbersTest::cleanup()
{
    window.reset();
}

void WindowNumbersTest::showsNumbersOfASensor()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    sondixsim::advance(0.5);
    QTRY_COMPARE(view->session()->framesRead(), 500);
    NumberTile *const tile = view->numbers()->tile(0);
    QVERIFY(tile);
    const double present = *view->session()->values().at(0).present;
    QTRY_COMPARE(tile->exactText(), QString::number(present, 'f', 0));
    QVERIFY(view->numbers()->tile(1));
    QVERIFY(!view->numbers()->tile(2));
    window->action("copyValuesAction")->trigger();
    const double second = *view->session()->values().at(1).present;
    QCOMPARE(QApplication::clipboard()->text(), exactNumber(present) + "\n" + exactNumber(second));
    QCOMPARE(exactNumber(second).toDouble(), second);
    window->action("resetAction")->trigger();
    QVERIFY(!view->session()->values().at(0).minimum);
    // An error value shows the sensor's words.
    sondixsim::pushData("1001", {}, {-1.0e10 - 4, 3.25}, 0.6);
    QTRY_COMPARE(tile->shownText(), QString("Target out of range"));
    QTRY_COMPARE(view->numbers()->tile(1)->exactText(), QString("3.25"));
    QLocale::setDefault(QLocale(QLocale::German));
    sondixsim::pushData("1001", {}, {2.5, 1234.5}, 0.7);
    QTRY_COMPARE(tile->exactText(), QString("2.5")); // exact with a point
}

void WindowNumbersTest::numbersHaveLimitsAndAZero()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    NumberTile *const tile = view->numbers()->tile(0);
    QCOMPARE(tile->limitText(), QString());
    DisplayLimits limits;
    limits.lower = 10.0;
    limits.upper = 20.0;
    tile->setLimits(limits);
    const auto show = [&](double value) {
        sondixsim::pushData("1001", {}, {value, 0.0}, 0.0);
        return QTest::qWaitFor([&] { return tile->exactText() == exactNumber(value - tile->limits().offset); },
                               longestTestWait);
    };
    QVERIFY(show(15.0));
    QVERIFY(tile->limitText().contains("within"));
    QVERIFY(show(9.5));
    QVERIFY(tile->limitText().contains("below"));
    QVERIFY(show(20.5));
    QVERIFY(tile->limitText().contains("above"));
    window->action("zeroAction")->trigger();
    QCOMPARE(tile->exactText(), QString("0"));
    QVERIFY(tile->limitText().contains("below")); // limits apply to what is shown
    QVERIFY2(tile->zeroText().contains("20.5"), qPrintable(tile->zeroText()));
    QVERIFY2(tile->accessibleDescription().contains(tile->zeroText()), qPrintable(tile->accessibleDescription()));
    QVERIFY(show(32.0));
    QCOMPARE(tile->exactText(), QString("11.5"));
    QCOMPARE(*view->session()->values().at(0).present, 32.0); // on the screen only
    window->action("clearZeroAction")->trigger();
    QCOMPARE(tile->exactText(), QString("32"));
    QCOMPARE(tile->zeroText(), QString());
}

void WindowNumbersTest::aPageIsClosedWhileALimitIsTyped()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    QTRY_VERIFY(view->numbers()->tile(0));
    NumberTile *const tile = view->numbers()->tile(0);
    QSignalSpy changed(tile, &NumberTile::limitsChanged);
    QTest::mouseClick(tile->findChild<QToolButton *>(), Qt::LeftButton);
    auto *field = tile->findChild<QLineEdit *>("lowerLimit");
    QTRY_VERIFY(field->isVisible());
    field->setFocus();
    QTRY_VERIFY(field->hasFocus());
    QTest::keyClicks(field, "5");
    QPointer<SessionView> guard(view);
    (*window)->closePage(view);
    QTRY_VERIFY(!guard); // its fields lose the focus now
    QCOMPARE(changed.size(), 0);
}

void WindowNumbersTest::aNarrowTileCutsNoNumber()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    sondixsim::advance(2.0);
    QTRY_VERIFY(view->session()->framesRead() >= 1000);
    NumberTile *const tile = view->numbers()->tile(0);
    QTRY_VERIFY(!tile->extremesLines(1000, 1).isEmpty());
    const QStringList wide = tile->extremesLines(1000, 3);
    QCOMPARE(wide.size(), 1);
    const QStringList parts = wide.first().split("   ");
    QCOMPARE(parts.size(), 2);
    const QFontMetrics metrics(tile->font());
    const int narrow = metrics.horizontalAdvance(wide.first()) - 1;
    QCOMPARE(tile->extremesLines(narrow, 3), parts);
    // In one line without the words, which are four characters each.
    QCOMPARE(tile->extremesLines(narrow, 1),
             QStringList(QString("%1 \u2026 %2").arg(parts.first().mid(4), parts.last().mid(4))));
    QCOMPARE(tile->extremesLines(metrics.horizontalAdvance(parts.first()) - 1, 3), QStringList());
}

// Another sensor may be at the address the next time.
void WindowNumbersTest::forgetsTheZero()
{
    SessionView *view = window->openFirst();
    QVERIFY(view);
    DisplayLimits limits;
    limits.upper = 0.1;
    limits.offset = 20.5;
    view->numbers()->tile(0)->setLimits(limits);
    Q_EMIT view->numbers()->tile(0)->limitsChanged();
    (*window)->closePage(view);
    view = window->openFirst();
    QVERIFY(view);
    QTRY_VERIFY(view->numbers()->tile(0));
    QCOMPARE(view->numbers()->tile(0)->limits().upper, std::optional<double>(0.1));
    QCOMPARE(view->numbers()->tile(0)->limits().offset, 0.0);
}

// Read across the room, an old value would look like a present one.
void WindowNumbersTest::valuesOfAPulledSensorAreNotPresent()
{
    SessionView *const view = window->openFirst();
    QVERIFY(view);
    sondixsim::pushData("1001", {}, {2.5, 3.5}, 0.0);
    NumberTile *const tile = view->numbers()->tile(0);
    QTRY_COMPARE(tile->exactText(), QString("2.5"));
    sondixsim::unplug("1001");
    QTRY_COMPARE(tile->shownText(), QString("\u2013"));
    QCOMPARE(tile->exactText(), QString());
    QVERIFY(!tile->extremesLines(1000, 1).isEmpty());
    QCOMPARE(tile->limitText(), QString());
    window->action("zeroAction")->trigger();
    QCOMPARE(tile->limits().offset, 0.0);
    sondixsim::plug("1001");
    QTRY_COMPARE(view->session()->state(), SensorReader::Reading);
    sondixsim::pushData("1001", {}, {4.5, 3.5}, 0.5);
    QTRY_COMPARE(tile->exactText(), QString("4.5"));
}

QTEST_MAIN(WindowNumbersTest)
#include "tst_windownumbers.moc"
