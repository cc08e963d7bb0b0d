// SPDX-License-Identifier: MIT
#include "recordings.h"

#include "shared/csvwriter.h"
#include "shared/jsonwriter.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <limits>

using namespace Recordings;

/// CSV and JSON lines.
class TestTextWriters : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void csvHasAColumnForEachValue_data();
    void csvHasAColumnForEachValue();
    void csvTakesSeparatorAndDecimalMark();
    void csvQuotesWhatTheSeparatorNeeds();
    void columnNamesAreUnique();
    void numbersAreReadAsTheSame_data();
    void numbersAreReadAsTheSame();
    void secondsHaveSixDecimals_data();
    void secondsHaveSixDecimals();
    void unknownTimesStayUnknown_data();
    void unknownTimesStayUnknown();
    void errorValuesHaveAStyle_data();
    void errorValuesHaveAStyle();
    void gapsStandBetweenTheFrames();
    void theHeadTellsWhatMustBeKnown();
    void jsonHasOnlyNumbersThatExist();

private:
    static QByteArray text(FrameWriter &writer, const DataBlock &block)
    {
        TextBuffer buffer;
        writer.addFrames(buffer, block, 0, block.frameCount());
        return QByteArray(buffer.data().constData(), buffer.data().size());
    }
    static QByteArray beginning(FrameWriter &writer, const RecordHead *head = nullptr)
    {
        TextBuffer buffer;
        writer.begin(buffer, head, true);
        return QByteArray(buffer.data().constData(), buffer.data().size());
    }
    ErrorValues m_errors{[](double) { return QStringLiteral("Too dark,\n or \"fog\""); }};
};

void TestTextWriters::csvHasAColumnForEachValue_data()
{
    QTest::addColumn<bool>("scaled");
    QTest::addColumn<bool>("raw");
    QTest::addColumn<bool>("number");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("scaled") << true << false << false
                            << QByteArray("time [s],A [mm],B [%]\n1.000000,4.5,8\n1.001000,5.5,10\n");
    QTest::newRow("raw") << false << true << false
                         << QByteArray(
                                "time [s],A raw [Digits],B raw [Digits]\n1.000000,40,80\n1.001000,50,100\n");
    QTest::newRow("all") << true << true << true
                         << QByteArray("frame,time [s],A [mm],A raw [Digits],B [%],B raw [Digits]\n"
                                       "4,1.000000,4.5,40,8,80\n5,1.001000,5.5,50,10,100\n");
}

void TestTextWriters::csvHasAColumnForEachValue()
{
    QFETCH(bool, scaled);
    QFETCH(bool, raw);
    QFETCH(bool, number);
    QFETCH(QByteArray, expected);
    CsvWriter writer(columns(scaled, raw, number), {}, m_errors);
    QCOMPARE(beginning(writer) + text(writer, block(4, 2)), expected);
}

void TestTextWriters::csvTakesSeparatorAndDecimalMark()
{
    FormatOptions options;
    options.separator = ';';
    options.decimalMark = ',';
    CsvWriter writer(columns(), options, m_errors);
    QCOMPARE(beginning(writer) + text(writer, block(4, 1)),
             QByteArray("frame;time [s];A [mm];B [%]\n4;1,000000;4,5;8\n"));
}

void TestTextWriters::csvQuotesWhatTheSeparatorNeeds()
{
    RecordColumns named = columns(true, false, false);
    named.frame.signals = {signalInfo("A, mean"), signalInfo("B; \"C\"", "")};
    CsvWriter comma(named, {}, m_errors);
    QCOMPARE(beginning(comma), QByteArray("time [s],\"A, mean [mm]\",\"B; \"\"C\"\"\"\n"));
    FormatOptions options;
    options.separator = ';';
    CsvWriter semicolon(named, options, m_errors);
    QCOMPARE(beginning(semicolon), QByteArray("time [s];A, mean [mm];\"B; \"\"C\"\"\"\n"));
}

void TestTextWriters::columnNamesAreUnique()
{
    RecordColumns named = columns();
    named.frame.signals = {signalInfo("A"), signalInfo("A"), signalInfo("time", "s"), signalInfo("frame", "")};
    QCOMPARE(named.names(),
             (QStringList{"frame", "time [s]", "A [mm]", "A [mm] (2)", "time [s] (2)", "frame (2)"}));
}

void TestTextWriters::numbersAreReadAsTheSame_data()
{
    QTest::addColumn<double>("number");
    for (const double number : {0.0, -0.0, 0.1, 1.0 / 3.0, 1e-300, 1e300, 5e-324, 123456789.125, -2.5,
                                std::numeric_limits<double>::max()})
        QTest::newRow(qPrintable(QString::number(number, 'g', 17))) << number;
}

void TestTextWriters::numbersAreReadAsTheSame()
{
    QFETCH(double, number);
    TextBuffer buffer;
    buffer.addNumber(number);
    QCOMPARE(buffer.data().toDouble(), number);
}

void TestTextWriters::secondsHaveSixDecimals_data()
{
    QTest::addColumn<qint64>("microseconds");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("zero") << qint64(0) << QByteArray("0.000000");
    QTest::newRow("small") << qint64(1) << QByteArray("0.000001");
    QTest::newRow("today") << qint64(1795335983123456) << QByteArray("1795335983.123456");
    QTest::newRow("before") << qint64(-1500000) << QByteArray("-1.500000");
    QTest::newRow("first") << std::numeric_limits<qint64>::min() << QByteArray("-9223372036854.775808");
}

void TestTextWriters::secondsHaveSixDecimals()
{
    QFETCH(qint64, microseconds);
    QFETCH(QByteArray, expected);
    TextBuffer buffer;
    buffer.addSeconds(microseconds);
    QCOMPARE(buffer.data(), expected);
}

void TestTextWriters::unknownTimesStayUnknown_data()
{
    QTest::addColumn<bool>("hasTime");
    QTest::addColumn<QByteArray>("csv");
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("no time") << false << QByteArray(",0.5,0\n,1.5,2\n")
                             << QByteArray("{\"frame\":0,\"time\":null,\"values\":[0.5,0]}\n"
                                           "{\"frame\":1,\"time\":null,\"values\":[1.5,2]}\n");
    QTest::newRow("no rate") << true << QByteArray("1.000000,0.5,0\n,1.5,2\n")
                             << QByteArray("{\"frame\":0,\"time\":1.000000,\"values\":[0.5,0]}\n"
                                           "{\"frame\":1,\"time\":null,\"values\":[1.5,2]}\n");
}

void TestTextWriters::unknownTimesStayUnknown()
{
    QFETCH(bool, hasTime);
    QFETCH(QByteArray, csv);
    QFETCH(QByteArray, json);
    const DataBlock frames = block(0, 2, hasTime ? std::optional(1.0) : std::nullopt, std::nullopt);
    CsvWriter csvWriter(columns(true, false, false), {}, m_errors);
    QCOMPARE(text(csvWriter, frames), csv);
    JsonWriter jsonWriter(columns(true, false, false), {}, m_errors);
    QCOMPARE(text(jsonWriter, frames), json);
}

void TestTextWriters::errorValuesHaveAStyle_data()
{
    QTest::addColumn<int>("style");
    QTest::addColumn<QByteArray>("csv");
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("text") << static_cast<int>(ErrorStyle::Text)
                          << QByteArray("1.000000,\"Too dark, or \"\"fog\"\"\",8\n")
                          << QByteArray(R"([{"error":-3,"text":"Too dark, or \"fog\""},8])");
    QTest::newRow("nan") << static_cast<int>(ErrorStyle::NaN) << QByteArray("1.000000,nan,8\n")
                         << QByteArray("[null,8]");
    QTest::newRow("empty") << static_cast<int>(ErrorStyle::Empty) << QByteArray("1.000000,,8\n")
                           << QByteArray("[null,8]");
}

void TestTextWriters::errorValuesHaveAStyle()
{
    QFETCH(int, style);
    QFETCH(QByteArray, csv);
    QFETCH(QByteArray, json);
    FormatOptions options;
    options.errors = static_cast<ErrorStyle>(style);
    ErrorValues errors([](double) { return QStringLiteral("Too dark,\n or \"fog\""); });
    CsvWriter csvWriter(columns(true, false, false), options, errors);
    QCOMPARE(text(csvWriter, blockOf({errorValue, 8.0})), csv);
    JsonWriter jsonWriter(columns(true, false, false), options, errors);
    QVERIFY(text(jsonWriter, blockOf({errorValue, 8.0})).contains("\"values\":" + json + "}\n"));
    QCOMPARE(errors.counts(), (QMap<QString, qint64>{{"Too dark, or \"fog\"", 2}}));
}

void TestTextWriters::gapsStandBetweenTheFrames()
{
    TextBuffer buffer;
    CsvWriter csv(columns(), {}, m_errors);
    csv.addGap(buffer, gap(500, 120, DataGap::Disconnected));
    csv.addGap(buffer, gap(620, {}, DataGap::Restarted));
    QList<QByteArray> lines = QByteArray(buffer.data()).split('\n');
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines[0],
             "# gap: 120 frames from number 500 on are missing: " + gapReasonText(DataGap::Disconnected).toUtf8());
    QCOMPARE(lines[1],
             "# gap: an unknown number of frames from number 620 on is missing; frames are counted from 0 "
             "again: " +
                 gapReasonText(DataGap::Restarted).toUtf8());

    buffer.clear();
    JsonWriter json(columns(), {}, m_errors);
    DataGap known = gap(500, 120, DataGap::LibraryOverrun);
    known.beginTime = 0.499;
    known.endTime = 0.62;
    json.addGap(buffer, known);
    QCOMPARE(QJsonDocument::fromJson(buffer.data()).object().value("gap").toObject(),
             (QJsonObject{{"run", 0},
                          {"firstFrame", 500},
                          {"frames", 120},
                          {"reason", "libraryOverrun"},
                          {"begin", 0.499},
                          {"end", 0.62}}));
    buffer.clear();
    json.addGap(buffer, gap(7, {}, DataGap::Unknown));
    QCOMPARE(
        QJsonDocument::fromJson(buffer.data()).object().value("gap").toObject(),
        (QJsonObject{
            {"run", 0}, {"firstFrame", 7}, {"frames", {}}, {"reason", "unknown"}, {"begin", {}}, {"end", {}}}));
}

void TestTextWriters::theHeadTellsWhatMustBeKnown()
{
    RecordHead head;
    head.program = "sondixqt 1.2.3";
    head.address = "TX270@RS232,port=COM3";
    head.sensors = {
        {{"SA_Sensor", "TX270"}, {"SA_SerialNumber", "1001"}, {"SA_Softwareversion", "4.1 (simulator)"}}};
    head.rate = 2000.0;
    head.start = QDateTime({2026, 11, 22}, {9, 30, 0, 250}, Qt::UTC);
    head.isWallClock = true;
    head.uncertainty = 0.0515;
    CsvWriter csv(columns(true, true), {}, m_errors);
    const QList<QByteArray> lines = beginning(csv, &head).split('\n');
    for (const char *line :
         {"# sensor: TX270", "# serial number: 1001", "# firmware: 4.1 (simulator)",
          "# address: TX270@RS232,port=COM3", "# range of A [mm]: 0 to 10",
          "# range of B raw [Digits]: 0 to 65535", "# rate: 2000 Hz",
          "# time: seconds since 1970-01-01T00:00:00Z, uncertain by 0.0515 s", "# written by: sondixqt 1.2.3"})
        QVERIFY2(lines.contains(line), line);
    QCOMPARE(lines[lines.size() - 2], QByteArray("frame,time [s],A [mm],A raw [Digits],B [%],B raw [Digits]"));
    const QString start = QString::fromUtf8(beginning(csv, &head)).section("# start: ", 1).section('\n', 0, 0);
    QVERIFY2(QRegularExpression("^2026-11-2\\dT.*([+-]\\d\\d:\\d\\d|Z)$").match(start).hasMatch(),
             qPrintable(start));
    QCOMPARE(QDateTime::fromString(start, Qt::ISODateWithMs), head.start);

    JsonWriter json(columns(), {}, m_errors);
    const QJsonObject object = QJsonDocument::fromJson(beginning(json, &head)).object().value("head").toObject();
    QCOMPARE(object.value("sensors").toArray().at(0).toObject(),
             (QJsonObject{{"sensor", "TX270"}, {"serialNumber", "1001"}, {"firmware", "4.1 (simulator)"}}));
    QCOMPARE(object.value("values").toArray().at(1).toObject(),
             (QJsonObject{{"name", "B"}, {"unit", "%"}, {"minimum", 0.0}, {"maximum", 10.0}}));
    QCOMPARE(object.value("rateHz").toDouble(), 2000.0);
    QVERIFY(!object.contains("raw"));
    head.rate.reset();
    QVERIFY(beginning(csv, &head).contains("# rate: not reported\n"));
}

void TestTextWriters::jsonHasOnlyNumbersThatExist()
{
    JsonWriter writer(columns(true, true, false), {}, m_errors);
    const double infinity = std::numeric_limits<double>::infinity();
    const QByteArray line = text(writer, blockOf({infinity, 8.0}));
    QCOMPARE(line, QByteArray("{\"frame\":0,\"time\":1.000000,\"values\":[null,8],\"raw\":[7,7]}\n"));
}

QTEST_GUILESS_MAIN(TestTextWriters)
#include "tst_textwriters.moc"
