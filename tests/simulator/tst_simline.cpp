// SPDX-License-Identifier: MIT
#include "support/scripting.h"
#include "web.h"

#include <atomic>
#include <QElapsedTimer>
#include <QTest>
#include <thread>

/// Size of a request without a tag.
static std::size_t requestSize(const std::string &path)
{
    return ("GET " + path + " HTTP/1.1\r\n\r\n").size();
}

static std::size_t answerSize(const Fetched &fetched)
{
    return fetched.header.size() + fetched.body.size();
}

class TestSimLine : public QObject
{
    Q_OBJECT

private:
    static void switchOutput(Handle &handle, int on)
    {
        handle.set("SP_OutputRS422", on);
        QCOMPARE(handle.command("Set_DataOutInterface"), 0);
    }

private Q_SLOTS:
    void cleanup()
    {
        sondixsim::releaseHangs();
        sondixsim::useRealClock();
    }

    void pageTakesTenBitsAByte_data()
    {
        QTest::addColumn<int>("baudrate");
        QTest::newRow("9600") << 9600;
        QTest::newRow("115200") << 115200;
        QTest::newRow("4000000") << 4000000;
    }
    void pageTakesTenBitsAByte()
    {
        QFETCH(int, baudrate);
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        if (baudrate != 115200) {
            QCOMPARE(sendGeneric(handle, "BAUDRATE " + std::to_string(baudrate)), 0);
            handle.set("IP_Baudrate", baudrate);
            QCOMPARE(handle.open(), 0);
        }
        switchOutput(handle, 0);
        const double before = sondixsim::lineTime("1");
        const double clock = sondixsim::now();
        const Fetched page = fetch(handle, "/style.css");
        const double expected =
            static_cast<double>(requestSize("/style.css") + answerSize(page)) * 10.0 / baudrate;
        QVERIFY(qAbs(sondixsim::lineTime("1") - before - expected) < 1.0e-9);
        QCOMPARE(sondixsim::now(), clock); // nothing waits on a virtual clock
    }

    void unchangedPageTakesLittleTime()
    {
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        switchOutput(handle, 0);
        const std::string tag = fetch(handle, "/style.css").tag();
        const double before = sondixsim::lineTime("1");
        const Fetched again = fetch(handle, "/style.css", tag);
        const std::size_t bytes =
            requestSize("/style.css") + ("If-None-Match: \"" + tag + "\"\r\n").size() + again.header.size();
        QVERIFY(qAbs(sondixsim::lineTime("1") - before - static_cast<double>(bytes) * 10.0 / 115200) < 1.0e-9);
    }

    void measuredValuesTakeHalfOfTheLine()
    {
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        const Fetched page = fetch(handle, "/");
        const double with = sondixsim::lineTime("1");
        QVERIFY(qAbs(with - static_cast<double>(requestSize("/") + answerSize(page)) * 20.0 / 115200) < 1.0e-9);
        switchOutput(handle, 0);
        fetch(handle, "/");
        QVERIFY(qAbs(sondixsim::lineTime("1") - 1.5 * with) < 1.0e-9);
    }

    void genericCommandTakesTimeOnTheLine()
    {
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        switchOutput(handle, 0);
        QCOMPARE(askGeneric(handle, "MEASRATE"), std::string("MEASRATE 2.0"));
        const double bytes = 8 + 12;
        QVERIFY(qAbs(sondixsim::lineTime("1") - bytes * 10.0 / 115200) < 1.0e-9);
    }

    void callLastsAsLongAsItsBytes()
    {
        constexpr double speed = 50.0;
        loadWebSensor("", R"("clock": { "speed": 50.0 },)");
        Handle handle(SensorType::TX270);
        handle.open();
        const double start = sondixsim::now();
        QElapsedTimer timer;
        timer.start();
        fetch(handle, "/style.css");
        const double real = static_cast<double>(timer.nsecsElapsed()) * 1.0e-9;
        const double line = sondixsim::lineTime("1");
        QVERIFY(line > 0.5);
        QVERIFY(sondixsim::now() - start >= line);
        QVERIFY(real >= 0.99 * line / speed);
    }

    void lineSpeedCanBeSwitchedOff_data()
    {
        QTest::addColumn<bool>("inTheFile");
        QTest::newRow("bench file") << true;
        QTest::newRow("control") << false;
    }
    void lineSpeedCanBeSwitchedOff()
    {
        QFETCH(bool, inTheFile);
        // At this speed one page would take minutes.
        loadWebSensor("", inTheFile ? R"("clock": { "speed": 0.001 }, "lineSpeed": false,)"
                                    : R"("clock": { "speed": 0.001 },)");
        if (!inTheFile)
            sondixsim::setLineSpeedEffect(false);
        Handle handle(SensorType::TX270);
        handle.open();
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(fetch(handle, "/style.css").result, 0);
        QVERIFY(timer.elapsed() < 60000);
        QVERIFY(sondixsim::lineTime("1") / 0.001 > 60.0);
    }

    void loadingSwitchesItOnAgain()
    {
        loadWebSensor("", R"("lineSpeed": false,)");
        loadWebSensor("", R"("clock": { "speed": 100.0 },)");
        Handle handle(SensorType::TX270);
        handle.open();
        const double start = sondixsim::now();
        fetch(handle, "/style.css");
        QVERIFY(sondixsim::now() - start >= sondixsim::lineTime("1"));
    }

    void waitingEndsWhenTheClockChanges_data()
    {
        QTest::addColumn<int>("how");
        QTest::newRow("virtual") << 0;
        QTest::newRow("faster") << 1;
        QTest::newRow("another bench") << 2;
    }
    void waitingEndsWhenTheClockChanges()
    {
        QFETCH(int, how);
        loadWebSensor("", R"("clock": { "speed": 0.001 },)");
        Handle handle(SensorType::TX270);
        handle.open();
        std::atomic<bool> done{false};
        std::thread slow([&] {
            fetch(handle, "/style.css");
            done = true;
        });
        QTRY_VERIFY(sondixsim::lineTime("1") > 0.0);
        QVERIFY(!done);
        if (how == 0)
            sondixsim::useVirtualClock();
        else if (how == 1)
            sondixsim::useRealClock(1000.0);
        else
            loadWebSensor("", R"("clock": { "speed": 1.0 },)");
        QTRY_VERIFY(done);
        slow.join();
    }

    void slowPageBlocksNoOtherCall()
    {
        sondixsim::loadBench(R"({ "clock": { "speed": 0.001 }, "sensors": [
            { "model": "TX270", "serialNumber": "1", "place": { "interface": "RS232", "port": "COM1" } },
            { "model": "TX270", "serialNumber": "2", "place": { "interface": "RS232", "port": "COM2" } } ] })");
        Handle slowHandle(SensorType::TX270);
        QCOMPARE(slowHandle.openAt("COM1"), 0);
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.openAt("COM2"), 0);
        std::atomic<bool> done{false};
        std::thread slow([&] {
            fetch(slowHandle, "/style.css");
            done = true;
        });
        QTRY_VERIFY(sondixsim::lineTime("1") > 0.0);
        QCOMPARE(handle.command("Get_Info"), 0);
        QCOMPARE(handle.command("Get_Samplerate"), 0);
        QVERIFY(handle.available() >= 0);
        Handle third(SensorType::TX270);
        QVERIFY(third != 0);
        QCOMPARE(third.command("Start_FindSensor"), 0);
        // Not even other calls to the same sensor.
        QVERIFY(slowHandle.available() >= 0);
        QCOMPARE(slowHandle.command("Get_Info"), 0);
        QVERIFY(!done);
        sondixsim::useVirtualClock();
        slow.join();
    }

    void pagesTakeTurnsOnTheLine()
    {
        loadWebSensor("", R"("clock": { "speed": 50.0 },)");
        Handle handle(SensorType::TX270);
        handle.open();
        const double start = sondixsim::now();
        std::thread other([&] { fetch(handle, "/sensor.svg"); });
        fetch(handle, "/sensor.svg");
        other.join();
        QVERIFY(sondixsim::now() - start >= sondixsim::lineTime("1"));
    }

    void unpluggingDuringACallFailsIt()
    {
        loadWebSensor("", R"("clock": { "speed": 0.001 },)");
        Handle handle(SensorType::TX270);
        handle.open();
        std::atomic<int> result{1};
        std::thread slow([&] { result = fetch(handle, "/style.css").result; });
        QTRY_VERIFY(sondixsim::lineTime("1") > 0.0);
        sondixsim::unplug("1");
        sondixsim::useRealClock(1000.0);
        slow.join();
        QVERIFY(result < 0);
        std::string text;
        handle.error(&text);
        QVERIFY(!text.empty());
        QCOMPARE(binaryAnswer(handle, "SA_HTTPBody"), std::string("(missing)"));
    }

    void testCanReplaceAPage()
    {
        loadWebSensor();
        std::string body(1u << 20, '\0');
        for (std::size_t i = 0; i < body.size(); ++i)
            body[i] = static_cast<char>(i * 7);
        const std::string header = "HTTP/1.1 200 OK\r\nX-Odd: \"\\";
        sondixsim::setPage("1", "/big", header, body);
        sondixsim::setPage("1", "/", "", "plain");
        Handle handle(SensorType::TX270);
        handle.open();
        const Fetched page = fetch(handle, "/big?query", "anything", 10);
        QCOMPARE(page.result, 0);
        QCOMPARE(page.header, header);
        QVERIFY(page.body == body);
        QCOMPARE(fetch(handle, "/").header, std::string());
        QCOMPARE(fetch(handle, "/").body, std::string("plain"));
        QVERIFY_EXCEPTION_THROWN(sondixsim::setPage("none", "/", "", ""), std::invalid_argument);
        loadWebSensor("", "", "TX240");
        QVERIFY_EXCEPTION_THROWN(sondixsim::setPage("1", "/", "", ""), std::invalid_argument);
    }

    void faultsHitTheWebCommands()
    {
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        sondixsim::Fault failure;
        failure.command = "Get_HTTP";
        failure.code = -500;
        failure.text = "The line <is> broken";
        failure.times = 1;
        sondixsim::inject(failure);
        QCOMPARE(fetch(handle, "/").result, -500);
        std::string text;
        handle.error(&text);
        QCOMPARE(text, failure.text);
        sondixsim::Fault answer;
        answer.command = "Get_HTTP";
        answer.times = 1;
        answer.answer = R"(SA_HTTPHeader="HTTP/1.1 418 Odd" SA_HTTPBody="short")";
        sondixsim::inject(answer);
        const Fetched odd = fetch(handle, "/");
        QCOMPARE(odd.header, std::string("HTTP/1.1 418 Odd"));
        QCOMPARE(odd.body, std::string("short"));
        scriptCommandFailure("Cmd_Generic", -501);
        QCOMPARE(sendGeneric(handle, "MEASRATE 5"), -501);
        sondixsim::clearFaults();
        QCOMPARE(askGeneric(handle, "MEASRATE"), std::string("MEASRATE 2.0"));
        QCOMPARE(fetch(handle, "/").statusLine(), std::string("HTTP/1.1 200 OK"));
    }
};

QTEST_GUILESS_MAIN(TestSimLine)
#include "tst_simline.moc"
