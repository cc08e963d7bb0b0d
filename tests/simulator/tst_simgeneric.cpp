// SPDX-License-Identifier: MIT
#include "web.h"

#include <QTest>

static constexpr int wrongType = -7;
static constexpr int parameterMissing = -15;
static constexpr int unknownParameter = -16;
static constexpr int outOfRange = -17;

class TestSimGeneric : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { loadWebSensor(R"(, "rate": 2000)"); }

    void commandReadsASetting_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("number") << QByteArray("MEASRATE") << QByteArray("MEASRATE 2.0");
        QTest::newRow("whole number") << QByteArray("AVERAGINGNUMBER") << QByteArray("AVERAGINGNUMBER 0");
        QTest::newRow("empty text") << QByteArray("SENSORNAME") << QByteArray("SENSORNAME=");
        QTest::newRow("small letters") << QByteArray("measrate") << QByteArray("MEASRATE 2.0");
        QTest::newRow("line end") << QByteArray("\r\n MEASRATE \r\n\r\n") << QByteArray("MEASRATE 2.0");
        QTest::newRow("comment") << QByteArray("# rate\nMEASRATE") << QByteArray("MEASRATE 2.0");
        QTest::newRow("output") << QByteArray("OUTPUTRS422") << QByteArray("OUTPUTRS422 1");
        QTest::newRow("baud rate") << QByteArray("BAUDRATE") << QByteArray("BAUDRATE 115200");
    }
    void commandReadsASetting()
    {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, answer);
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(askGeneric(handle, command.toStdString()), answer.toStdString());
    }

    void commandWritesASetting_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("blank") << QByteArray("MEASRATE 4") << QByteArray("MEASRATE 4.0");
        QTest::newRow("blanks") << QByteArray("MEASRATE  \t 4.50 ") << QByteArray("MEASRATE 4.5");
        QTest::newRow("equals sign") << QByteArray("MEASRATE=4") << QByteArray("MEASRATE 4.0");
        QTest::newRow("blanks around it") << QByteArray("measrate = 4") << QByteArray("MEASRATE 4.0");
        QTest::newRow("whole number") << QByteArray("AVERAGINGNUMBER 16") << QByteArray("AVERAGINGNUMBER 16");
        QTest::newRow("whole number with a point")
            << QByteArray("AVERAGINGNUMBER 16.0") << QByteArray("AVERAGINGNUMBER 16");
        QTest::newRow("text") << QByteArray("SENSORNAME Line 3, left") << QByteArray("SENSORNAME Line 3, left");
        QTest::newRow("text like a number") << QByteArray("SENSORNAME 007") << QByteArray("SENSORNAME 007");
        QTest::newRow("text that begins with it") << QByteArray("SENSORNAME==x") << QByteArray("SENSORNAME==x");
        QTest::newRow("no text") << QByteArray("SENSORNAME=") << QByteArray("SENSORNAME=");
    }
    void commandWritesASetting()
    {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, answer);
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(sendGeneric(handle, "SENSORNAME before"), 0);
        QCOMPARE(askGeneric(handle, command.toStdString()), answer.toStdString());
        const std::string name = answer.left(answer.indexOf(answer.contains(' ') ? ' ' : '=')).toStdString();
        QCOMPARE(askGeneric(handle, name), answer.toStdString());
    }

    void settingsAreThoseOfTheOtherCommands()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(sendGeneric(handle, "MEASRATE 8"), 0);
        QCOMPARE(handle.command("Get_Samplerate"), 0);
        QCOMPARE(handle.getDouble("SA_Measrate"), 8.0);
        handle.command("Get_TransmittedDataInfo");
        QCOMPARE(handle.getDouble("IA_Datarate"), 8000.0);
        handle.set("SP_AveragingType", 2);
        handle.set("SP_AveragingNumber", 64);
        QCOMPARE(handle.command("Set_Averaging"), 0);
        QCOMPARE(askGeneric(handle, "AVERAGINGNUMBER"), std::string("AVERAGINGNUMBER 64"));
        QCOMPARE(sendGeneric(handle, "AVERAGINGTYPE 1"), 0);
        handle.command("Get_Averaging");
        QCOMPARE(handle.getInt("SA_AveragingType"), 1);
        QCOMPARE(handle.getInt("SA_AveragingNumber"), 64);
        QCOMPARE(sendGeneric(handle, "OUTPUTRS422 0"), 0);
        handle.command("Get_DataOutInterface");
        QCOMPARE(handle.getInt("SA_OutputRS422"), 0);
    }

    void rateOfValuesFollowsAtOnce()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 2000);
        QCOMPARE(sendGeneric(handle, "MEASRATE 1"), 0);
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 3000);
        // Initialisation discards values that were not fetched.
        QCOMPARE(sendGeneric(handle, "MEASRATE 3.5", 1), 0);
        QCOMPARE(handle.available(), 0);
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 3500);
    }

    void invalidCommandsAreRejected_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("word");
        QTest::newRow("empty") << QByteArray("") << parameterMissing << QByteArray("empty");
        QTest::newRow("blank") << QByteArray(" \r\n") << parameterMissing << QByteArray("empty");
        QTest::newRow("only a comment") << QByteArray("# x") << parameterMissing << QByteArray("empty");
        QTest::newRow("unknown") << QByteArray("NONSENSE") << unknownParameter << QByteArray("NONSENSE");
        QTest::newRow("unknown with value")
            << QByteArray("NONSENSE 3") << unknownParameter << QByteArray("NONSENSE");
        QTest::newRow("the name of the parameter")
            << QByteArray("SA_MEASRATE 4") << unknownParameter << QByteArray("SA_MEASRATE");
        QTest::newRow("only a value") << QByteArray("=4") << unknownParameter << QByteArray("setting");
        QTest::newRow("word for a number") << QByteArray("MEASRATE fast") << wrongType << QByteArray("fast");
        QTest::newRow("nothing for a number") << QByteArray("MEASRATE=") << wrongType << QByteArray("MEASRATE");
        QTest::newRow("two numbers") << QByteArray("MEASRATE 1 2") << wrongType << QByteArray("1 2");
        QTest::newRow("broken number") << QByteArray("AVERAGINGNUMBER 1.5") << wrongType << QByteArray("whole");
        QTest::newRow("too large") << QByteArray("MEASRATE 1000") << outOfRange << QByteArray("100.0");
        QTest::newRow("far too large") << QByteArray("AVERAGINGNUMBER 1e300") << wrongType
                                       << QByteArray("AVERAGING");
        QTest::newRow("too small") << QByteArray("MEASRATE 0.01") << outOfRange << QByteArray("0.05");
        QTest::newRow("no number") << QByteArray("MEASRATE nan") << outOfRange << QByteArray("MEASRATE");
        QTest::newRow("endless") << QByteArray("MEASRATE inf") << outOfRange << QByteArray("MEASRATE");
        QTest::newRow("switch") << QByteArray("OUTPUTRS422 2") << outOfRange << QByteArray("OUTPUTRS422");
        QTest::newRow("long text") << "SENSORNAME " + QByteArray(65, 'a') << outOfRange << QByteArray("64");
        QTest::newRow("letters of other languages")
            << QByteArray("SENSORNAME M\xFCll") << outOfRange << QByteArray("ASCII");
        QTest::newRow("no such rate") << QByteArray("BAUDRATE 12345") << outOfRange << QByteArray("921600");
        QTest::newRow("no rate") << QByteArray("BAUDRATE fast") << outOfRange << QByteArray("921600");
        QTest::newRow("export with a value")
            << QByteArray("EXPORT all") << unknownParameter << QByteArray("EXPORT");
    }
    void invalidCommandsAreRejected()
    {
        QFETCH(QByteArray, command);
        QFETCH(int, code);
        QFETCH(QByteArray, word);
        Handle handle(SensorType::TX270);
        handle.open();
        handle.command("Get_AllParameters");
        const std::string before = handle.allParameters();
        QCOMPARE(sendGeneric(handle, command.toStdString()), code);
        std::string text;
        QCOMPARE(handle.error(&text), code);
        QVERIFY2(QByteArray(text.c_str()).contains(word), text.c_str());
        QCOMPARE(handle.getText("SA_CompleteAnswer"), std::string("(missing)"));
        handle.command("Get_AllParameters");
        QCOMPARE(handle.allParameters(), before);
    }

    void commandNeedsItsText()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(handle.command("Cmd_Generic"), parameterMissing);
    }

    void severalLinesAreAnImport()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(
            sendGeneric(handle, "# settings of line 3\r\nMEASRATE 5\r\n\r\nAVERAGINGNUMBER=8\r\nMEASRATE 6\r\n"),
            0);
        QCOMPARE(askGeneric(handle, "MEASRATE"), std::string("MEASRATE 6.0"));
        QCOMPARE(askGeneric(handle, "AVERAGINGNUMBER"), std::string("AVERAGINGNUMBER 8"));
    }

    void importSetsAllOrNothing_data()
    {
        QTest::addColumn<QByteArray>("wrongLine");
        QTest::addColumn<int>("code");
        QTest::newRow("unknown") << QByteArray("NONSENSE 1") << unknownParameter;
        QTest::newRow("wrong type") << QByteArray("AVERAGINGNUMBER many") << wrongType;
        QTest::newRow("out of range") << QByteArray("OUTPUTRS422 7") << outOfRange;
        QTest::newRow("no value") << QByteArray("AVERAGINGNUMBER") << parameterMissing;
        QTest::newRow("another command") << QByteArray("SETDEFAULT") << parameterMissing;
        QTest::newRow("baud rate") << QByteArray("BAUDRATE 9600") << unknownParameter;
    }
    void importSetsAllOrNothing()
    {
        QFETCH(QByteArray, wrongLine);
        QFETCH(int, code);
        for (const bool last : {true, false}) {
            init();
            Handle handle(SensorType::TX270);
            handle.open();
            handle.command("Get_AllParameters");
            const std::string before = handle.allParameters();
            const std::string good = "MEASRATE 5\nSENSORNAME new\n";
            QCOMPARE(sendGeneric(handle, last ? good + "\n" + wrongLine.toStdString()
                                              : wrongLine.toStdString() + '\n' + good),
                     code);
            std::string text;
            handle.error(&text);
            QVERIFY2(text.find(last ? "Line 4: " : "Line 1: ") == 0, text.c_str());
            handle.command("Get_AllParameters");
            QCOMPARE(handle.allParameters(), before);
        }
    }

    void exportCanBeImported()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(sendGeneric(handle, "MEASRATE 5\nAVERAGINGNUMBER 8\nOUTPUTERROROUT2 1"), 0);
        QCOMPARE(sendGeneric(handle, "EXPORT"), 0);
        const std::string exported = handle.getText("SA_CompleteAnswer");
        for (const char *line :
             {"MEASRATE 5.0\r\n", "AVERAGINGNUMBER 8\r\n", "OUTPUTERROROUT2 1\r\n", "SENSORNAME=\r\n"})
            QVERIFY2(exported.find(line) != std::string::npos, exported.c_str());
        QVERIFY(exported.find("BAUDRATE") == std::string::npos);
        QCOMPARE(sendGeneric(handle, "MEASRATE 1\nAVERAGINGNUMBER 1\nOUTPUTERROROUT2 0\nSENSORNAME other"), 0);
        QCOMPARE(sendGeneric(handle, exported), 0);
        QCOMPARE(askGeneric(handle, "EXPORT"), exported);
    }

    void defaultsAreRestored()
    {
        loadWebSensor(R"(, "rate": 3000, "settings": { "SensorName": { "SA_SensorName": "from the file" } })");
        Handle handle(SensorType::TX270);
        handle.open();
        const std::string before = askGeneric(handle, "EXPORT");
        QCOMPARE(sendGeneric(handle, "MEASRATE 5\nAVERAGINGNUMBER 8\nOUTPUTRS422 0\nSENSORNAME other"), 0);
        QVERIFY(askGeneric(handle, "EXPORT") != before);
        QCOMPARE(sendGeneric(handle, "setdefault", 1), 0);
        QCOMPARE(askGeneric(handle, "EXPORT"), before);
        QCOMPARE(askGeneric(handle, "OUTPUTRS422"), std::string("OUTPUTRS422 1"));
        QCOMPARE(askGeneric(handle, "SENSORNAME"), std::string("SENSORNAME from the file"));
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 3000);
    }

    void pagesShowWhatCommandsHaveSet()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(sendGeneric(handle, "SENSORNAME Press 7\nMEASRATE 4"), 0);
        const QJsonObject values = fetch(handle, "/values.json").json();
        QCOMPARE(values[QStringLiteral("name")].toString(), QStringLiteral("Press 7"));
        QCOMPARE(values[QStringLiteral("rate")].toDouble(), 4000.0);
        const Fetched settings = fetch(handle, "/settings.json");
        QVERIFY(settings.body.find(
                    R"({"name":"MEASRATE","value":4.0,"default":2.0,"minimum":0.05,"maximum":100.0})") !=
                std::string::npos);
        QCOMPARE(settings.json()[QStringLiteral("baudrate")].toInt(), 115200);
    }

    void everyCommandOfTheSettingsPageIsKnown()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        const QByteArray page = QByteArray::fromStdString(fetch(handle, "/settings.html").body);
        int names = 0;
        for (const QByteArray &part : page.split('<')) {
            const int start = part.indexOf("data-name=\"");
            if (start < 0)
                continue;
            const QByteArray name = part.mid(start + 11).split('"').first();
            QCOMPARE(sendGeneric(handle, name.toStdString()), 0);
            ++names;
        }
        QVERIFY(names >= 6);
    }
};

QTEST_GUILESS_MAIN(TestSimGeneric)
#include "tst_simgeneric.moc"
