// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"
#include "SondixSimulator/controlcall.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <thread>

static const char *const controlBench = R"({
    "name": "control",
    "clock": { "virtual": true },
    "sensors": [
        { "model": "TX270", "serialNumber": "one", "rate": 1000, "place": { "interface": "RS232", "port": "3" } },
        { "model": "TX270", "serialNumber": "zwölf", "place": { "interface": "WinUSB", "device": 2 } }
    ]
})";

/// The function for applications that look the simulator's control up at run time.
class TestControlCall : public QObject
{
    Q_OBJECT

private:
    static QJsonObject parsed(const QByteArray &answer) { return QJsonDocument::fromJson(answer).object(); }

    static QByteArray callRaw(const char *request, std::uint32_t size = 1 << 16)
    {
        QByteArray answer(static_cast<int>(size) + 1, '#');
        const std::uint32_t needed = SondixSimControl(request, answer.data(), size);
        return answer.left(static_cast<int>(std::min(needed, size))).chopped(1);
    }

    static QJsonObject ask(const QJsonObject &request)
    {
        return parsed(callRaw(QJsonDocument(request).toJson().constData()));
    }

    static QJsonObject sensor(int index)
    {
        return ask({{"do", "sensors"}})["sensors"].toArray().at(index).toObject();
    }

private Q_SLOTS:
    void tellsWhatTheBenchExpects()
    {
        QVERIFY(ask({{"do", "expectations"}})["expectations"].toArray().isEmpty());
        sondixsim::loadBench(R"({ "sensors": [
            { "model": "TX270", "serialNumber": "zwölf", "place": { "interface": "WinUSB" },
              "expect": [ { "function": "OpenSensor", "exactly": 1 }, { "frames": "lost", "atMost": 3 } ] } ] })");
        const QJsonObject answer = ask({{"do", "expectations"}});
        QVERIFY(answer["ok"].toBool());
        QCOMPARE(answer["expectations"].toArray().at(0).toObject(), QJsonObject({{"name", "calls of OpenSensor"},
                                                                                 {"sensor", "zwölf"},
                                                                                 {"model", "TX270"},
                                                                                 {"expected", "exactly 1"},
                                                                                 {"found", "0"},
                                                                                 {"met", false},
                                                                                 {"line", 3}}));
        QVERIFY(answer["expectations"].toArray().at(1).toObject()["met"].toBool());
        QVERIFY(!answer.contains("users")); // only a session has them
        QVERIFY(ask({{"do", "expectations"}, {"sensor", "one"}}).contains("error"));
    }

    void init() { sondixsim::loadBench(controlBench); }
    void cleanup()
    {
        sondixsim::clearFaults();
        sondixsim::releaseHangs();
    }

    void listsTheSensors()
    {
        const QJsonObject answer = ask({{"do", "sensors"}});
        QVERIFY(answer["ok"].toBool());
        QCOMPARE(answer["bench"].toString(), QString("control"));
        QCOMPARE(answer["sensors"].toArray().size(), 2);
        const QJsonObject first = sensor(0);
        QCOMPARE(first["serialNumber"].toString(), QString("one"));
        QCOMPARE(first["model"].toString(), QString("TX270"));
        QVERIFY(first["place"].toString().contains("3"));
        QVERIFY(first["plugged"].toBool());
        QVERIFY(!first["open"].toBool());
        QVERIFY(!first["silent"].toBool());
        QCOMPARE(sensor(1)["serialNumber"].toString(), QString::fromUtf8("zwölf"));
    }

    void tellsWhatIsOpen()
    {
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.openAt("3"), 0);
        QVERIFY(sensor(0)["open"].toBool());
        QVERIFY(!sensor(1)["open"].toBool());
    }

    void pullsAndPlugsCables()
    {
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.openAt("3"), 0);
        QVERIFY(ask({{"do", "unplug"}, {"sensor", "one"}})["ok"].toBool());
        QVERIFY(!sensor(0)["plugged"].toBool());
        QVERIFY(handle.command("Get_Info") != 0);
        QVERIFY(ask({{"do", "plug"}, {"sensor", "one"}})["ok"].toBool());
        QVERIFY(sensor(0)["plugged"].toBool());
        QCOMPARE(handle.command("Get_Info"), 0);
        QVERIFY(ask({{"do", "unplug"}, {"sensor", QString::fromUtf8("zwölf")}})["ok"].toBool());
        QVERIFY(!sensor(1)["plugged"].toBool());
    }

    void silencesSensors()
    {
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.openAt("3"), 0);
        QVERIFY(ask({{"do", "silent"}, {"sensor", "one"}, {"silent", true}})["ok"].toBool());
        QVERIFY(sensor(0)["silent"].toBool());
        sondixsim::advance(1.0);
        std::int32_t available = -1;
        QCOMPARE(DataAvail(handle, &available), 0);
        QCOMPARE(available, 0);
        QVERIFY(ask({{"do", "silent"}, {"sensor", "one"}, {"silent", false}})["ok"].toBool());
        QVERIFY(!sensor(0)["silent"].toBool());
        sondixsim::advance(1.0);
        QCOMPARE(DataAvail(handle, &available), 0);
        QVERIFY(available > 0);
    }

    void triggersSensors()
    {
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.openAt("3"), 0);
        handle.set("SP_TriggerMode", 1);
        QCOMPARE(handle.command("Set_TriggerMode"), 0);
        sondixsim::advance(1.0);
        const auto before = sondixsim::generatedFrames("one");
        QVERIFY(ask({{"do", "trigger"}, {"sensor", "one"}})["ok"].toBool());
        QCOMPARE(sondixsim::generatedFrames("one"), before + 1);
    }

    void loadsBenches()
    {
        QVERIFY(ask({{"do", "load"}})["ok"].toBool());
        QVERIFY(ask({{"do", "sensors"}})["sensors"].toArray().size() > 10);
        QTemporaryDir folder;
        const QString path = folder.filePath(QString::fromUtf8("Prüfstand.json"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(controlBench);
        file.close();
        QVERIFY(ask({{"do", "load"}, {"file", path}})["ok"].toBool());
        QCOMPARE(ask({{"do", "sensors"}})["bench"].toString(), QString("control"));
    }

    void aWrongBenchKeepsThePresentOne()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath("wrong.json");
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\n\"sensors\": [ {} ]\n}");
        file.close();
        const QJsonObject answer = ask({{"do", "load"}, {"file", path}});
        QVERIFY(!answer.contains("ok"));
        QVERIFY2(answer["error"].toString().contains("wrong.json:2"), qPrintable(answer["error"].toString()));
        QCOMPARE(ask({{"do", "sensors"}})["bench"].toString(), QString("control"));
    }

    void injectsListsAndClearsFaults()
    {
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.openAt("3"), 0);
        const QJsonObject fault{{"do", "inject"}, {"command", "Get_Samplerate"}, {"sensor", "one"},
                                {"code", -321},   {"text", "Broken on purpose"}, {"from", 2},
                                {"times", 5},     {"probability", 1.0},          {"delay", 0.0}};
        const QJsonObject answer = ask(fault);
        QVERIFY(answer["ok"].toBool());
        QCOMPARE(handle.command("Get_Samplerate"), 0);
        QCOMPARE(handle.command("Get_Samplerate"), -321);
        const QJsonArray faults = ask({{"do", "faults"}})["faults"].toArray();
        QCOMPARE(faults.size(), 1);
        QCOMPARE(faults[0].toObject()["fault"], answer["fault"]);
        QCOMPARE(faults[0].toObject()["command"].toString(), QString("Get_Samplerate"));
        QCOMPARE(faults[0].toObject()["code"].toInt(), -321);
        QCOMPARE(faults[0].toObject()["text"].toString(), QString("Broken on purpose"));
        QVERIFY(ask({{"do", "clear"}, {"fault", answer["fault"]}})["ok"].toBool());
        QCOMPARE(handle.command("Get_Samplerate"), 0);
        ask(fault);
        QVERIFY(ask({{"do", "clear"}})["ok"].toBool());
        QCOMPARE(ask({{"do", "faults"}})["faults"].toArray().size(), 0);
    }

    void refusesWhatItDoesNotUnderstand_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QString>("part");
        QTest::newRow("empty") << QByteArray("") << "JSON object";
        QTest::newRow("no JSON") << QByteArray("{\"do\":") << "JSON object";
        QTest::newRow("array") << QByteArray("[]") << "JSON object";
        QTest::newRow("no action") << QByteArray("{}") << "\"do\"";
        QTest::newRow("action is a number") << QByteArray(R"({"do":1})") << "must be a text";
        QTest::newRow("unknown action") << QByteArray(R"({"do":"explode"})") << "explode";
        QTest::newRow("no sensor") << QByteArray(R"({"do":"unplug"})") << "\"sensor\"";
        QTest::newRow("other sensor") << QByteArray(R"({"do":"unplug","sensor":"two"})") << "two";
        QTest::newRow("character") << QByteArray(R"({"do":"unplug","sensor":"☃"})") << "windows-1250";
        QTest::newRow("unknown member") << QByteArray(R"({"do":"unplug","sensor":"one","now":1})") << "\"now\"";
        QTest::newRow("silent") << QByteArray(R"({"do":"silent","sensor":"one","silent":1})") << "true or false";
        QTest::newRow("fault of everything") << QByteArray(R"({"do":"inject","code":-1})") << "needs";
        QTest::newRow("negative delay") << QByteArray(R"({"do":"inject","command":"x","delay":-1})") << "delay";
        QTest::newRow("large number") << QByteArray(R"({"do":"inject","command":"x","code":1e99})") << "code";
        QTest::newRow("missing file") << QByteArray(R"({"do":"load","file":"/no/such"})") << "/no/such";
        QTest::newRow("bad UTF-8") << QByteArray("{\"do\":\"\xff\xfe\"}") << "JSON";
        QTest::newRow("deep") << QByteArray(1 << 14, '[') << "JSON";
        QTest::newRow("deep and whole") << QByteArray(1 << 14, '[') + QByteArray(1 << 14, ']') << "JSON";
    }
    void refusesWhatItDoesNotUnderstand()
    {
        QFETCH(QByteArray, request);
        QFETCH(QString, part);
        const QJsonObject answer = parsed(callRaw(request.constData()));
        QVERIFY(!answer.contains("ok"));
        QVERIFY2(answer["error"].toString().contains(part), qPrintable(answer["error"].toString()));
        QVERIFY(sensor(0)["plugged"].toBool());
        QCOMPARE(ask({{"do", "faults"}})["faults"].toArray().size(), 0);
    }

    void aSmallBufferGetsTheBeginAndTheRestLater()
    {
        const QByteArray whole = callRaw(R"({"do":"sensors"})");
        char small[8];
        std::fill(std::begin(small), std::end(small), '#');
        const std::uint32_t needed = SondixSimControl(R"({"do":"sensors"})", small, 5);
        QCOMPARE(needed, static_cast<std::uint32_t>(whole.size() + 1));
        QCOMPARE(QByteArray(small), whole.left(4));
        QCOMPARE(small[5], '#');
        QCOMPARE(callRaw(nullptr), whole);
        QCOMPARE(SondixSimControl(nullptr, nullptr, 0), needed);
        // Another thread has no last answer.
        std::thread([] { QCOMPARE(SondixSimControl(nullptr, nullptr, 0), 1U); }).join();
    }
};

QTEST_APPLESS_MAIN(TestControlCall)
#include "tst_controlcall.moc"
