// SPDX-License-Identifier: MIT
#include "support/callrecorder.h"
#include "support/scripting.h"
#include "support/testbench.h"

using namespace SondixQt;

class TestGetMeasure : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void needIsDeterminedOnOpening_data();
    void needIsDeterminedOnOpening();
    void needIsDeterminedWhenOpeningFails();
    void fileNeedsNone();
    void membersOfAMultiSensorAreCounted_data();
    void membersOfAMultiSensorAreCounted();
    void unansweredMembersKeepOpenGoing();
    void membersAreCountedAnewButTheNeedStays();
    void handlesTakenOverAreNotAsked();
    void everyTransferAsksFirst_data();
    void everyTransferAsksFirst();
    void dataAvailDoesNotAsk();
    void failingMeasureStopsTheTransfer_data();
    void failingMeasureStopsTheTransfer();
    void failingMemberStopsTheTransfer_data();
    void failingMemberStopsTheTransfer();
};

namespace {

QStringList measureCalls()
{
    return commandCalls("Get_Measure");
}

QStringList memberCalls(const QVector<int> &members)
{
    QStringList calls;
    for (const int member : members)
        calls += QStringList(QString("SetParameterInt(\"IP_SensorIndex\", %1)").arg(member)) + measureCalls();
    return calls;
}

const QStringList &transferForms()
{
    static const QStringList all = {"vector", "buffers", "raw", "scaled"};
    return all;
}

/// The arguments and results of a transfer.
struct Transferred
{
    QVector<double> scaled = {1.5, 2.5};
    QVector<int> raw = {7, 8, 9};
    double timestamp = -1.0;
    int count = 1;
    QString errorText = "old";

    ErrorCode run(SensorInstance &sensor, const QString &form)
    {
        if (form == "vector")
            return sensor.transferData(scaled, &errorText);
        if (form == "buffers")
            return sensor.transferData(scaled.data(), raw.data(), &timestamp, count, &errorText);
        if (form == "raw")
            return sensor.transferDataRaw(raw, timestamp, &errorText);
        return sensor.transferDataScaled(scaled, timestamp, &errorText);
    }
    bool isUntouched() const
    {
        return scaled == QVector<double>{1.5, 2.5} && raw == QVector<int>{7, 8, 9} && timestamp == -1.0 &&
               count == 1;
    }
};

QStringList callsWithoutData(const QString &form)
{
    if (form == "vector")
        return {"DataAvail()", "TransferData(null, scaled, 0)"};
    if (form == "buffers")
        return {"TransferDataTS(raw, scaled, 1)"};
    return {"DataAvail()"};
}

} // namespace

void TestGetMeasure::init()
{
    loadTestBench();
}

void TestGetMeasure::cleanup()
{
    sondixsim::clearFaults();
}

void TestGetMeasure::needIsDeterminedOnOpening_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("needed");
    QTest::newRow("TX270") << int(SensorType::TX270) << false;
    QTest::newRow("CP720") << int(SensorType::CP720) << false;
    QTest::newRow("CP740") << int(SensorType::CP740) << true;
    QTest::newRow("EC830, on the bus") << int(SensorType::EC830) << true;
}

void TestGetMeasure::needIsDeterminedOnOpening()
{
    QFETCH(int, type);
    QFETCH(bool, needed);
    SensorInstance instance{SensorType(type)};
    QVERIFY(!instance.isGetMeasureNeeded());
    CallRecorder recorder;
    QCOMPARE(instance.open(testBenchParameters(SensorType(type))), NoError);
    QCOMPARE(instance.isGetMeasureNeeded(), needed);
    QVERIFY(!recorder.take().contains("SetParameterString(\"S_Command\", \"Get_DrvSetting\")"));
}

void TestGetMeasure::needIsDeterminedWhenOpeningFails()
{
    scriptFailure("OpenSensor", -5);
    SensorInstance instance(SensorType::CP740);
    QCOMPARE(instance.open(testBenchParameters(SensorType::CP740)), ErrorCode(-5));
    QVERIFY(instance.isGetMeasureNeeded());
}

void TestGetMeasure::fileNeedsNone()
{
    SensorInstance instance(SensorType::File);
    instance.open();
    QVERIFY(!instance.isGetMeasureNeeded());
}

void TestGetMeasure::membersOfAMultiSensorAreCounted_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QVector<int>>("members");
    const auto add = [](const char *what, const char *answer, const QVector<int> &members) {
        QTest::newRow(what) << QByteArray(answer) << members;
    };
    add("nothing answered", "", {});
    add("only the exact types",
        "IA_SensorCount=5 IA_SensorType#1=43 IA_SensorType#2=41 IA_SensorType#3=40 IA_SensorType#4=10043 "
        "IA_SensorType#5=40034",
        {1, 3});
    add("as many as are counted", "IA_SensorCount=1 IA_SensorType#1=43 IA_SensorType#2=43", {1});
    add("none counted", "IA_SensorCount=0 IA_SensorType#1=43", {});
    add("negative count", "IA_SensorCount=-3 IA_SensorType#1=43", {});
    add("not all described", "IA_SensorCount=3 IA_SensorType#3=40", {3});
    add("absurd count", "IA_SensorCount=2147483647 IA_SensorType#2=43", {2});
}

void TestGetMeasure::membersOfAMultiSensorAreCounted()
{
    QFETCH(QByteArray, answer);
    QFETCH(QVector<int>, members);
    scriptAnswer("Get_DrvSetting", answer);
    OpenSensorInstance sensor(SensorType::MultiSensor);
    QCOMPARE(sensor->isGetMeasureNeeded(), !members.isEmpty());

    scriptAnswer("Get_Measure", "");
    scriptCount("DataAvail", 0);
    CallRecorder recorder;
    Transferred transferred;
    QCOMPARE(transferred.run(*sensor.get(), "raw"), NoError);
    QCOMPARE(recorder.take(), memberCalls(members) + QStringList("DataAvail()"));
}

void TestGetMeasure::unansweredMembersKeepOpenGoing()
{
    scriptCommandFailure("Get_DrvSetting", -77);
    SensorInstance instance(SensorType::MultiSensor);
    QCOMPARE(instance.open(testBenchParameters(SensorType::MultiSensor)), NoError);
    QVERIFY(!instance.isGetMeasureNeeded());
}

void TestGetMeasure::membersAreCountedAnewButTheNeedStays()
{
    const int first = scriptAnswer("Get_DrvSetting", "IA_SensorCount=2 IA_SensorType#1=43 IA_SensorType#2=43");
    OpenSensorInstance sensor(SensorType::MultiSensor);
    QVERIFY(sensor->isGetMeasureNeeded());
    sondixsim::removeFault(first);

    QCOMPARE(sensor->close(), NoError);
    scriptAnswer("Get_DrvSetting", "IA_SensorCount=1 IA_SensorType#1=41");
    QCOMPARE(sensor->open(testBenchParameters(SensorType::MultiSensor)), NoError);
    QVERIFY(sensor->isGetMeasureNeeded());
    scriptCount("DataAvail", 0);
    CallRecorder recorder;
    Transferred transferred;
    QCOMPARE(transferred.run(*sensor.get(), "raw"), NoError);
    QCOMPARE(recorder.take(), QStringList("DataAvail()"));
}

void TestGetMeasure::handlesTakenOverAreNotAsked()
{
    OpenSensorInstance sensor(SensorType::CP740);
    SensorInstance adopting(SensorType::CP740, sensor->handle());
    QVERIFY(adopting.isOpen());
    QVERIFY(!adopting.isGetMeasureNeeded());
    sondixsim::advance(1.0);
    QVector<double> values;
    QCOMPARE(adopting.transferData(values), NoError);
    QVERIFY(values.isEmpty());
    QCOMPARE(sensor->transferData(values), NoError);
    QVERIFY(!values.isEmpty());

    SensorInstance target(SensorType::TX270);
    target = std::move(*sensor.get());
    QVERIFY(!target.isGetMeasureNeeded());
    QCOMPARE(target.close(), NoError);
    QCOMPARE(target.open(testBenchParameters(SensorType::CP740)), NoError);
    QVERIFY(target.isGetMeasureNeeded());
}

void TestGetMeasure::everyTransferAsksFirst_data()
{
    QTest::addColumn<QString>("form");
    for (const QString &form : transferForms())
        QTest::newRow(qPrintable(form)) << form;
}

void TestGetMeasure::everyTransferAsksFirst()
{
    QFETCH(QString, form);
    OpenSensorInstance sensor(SensorType::CP740);
    scriptAnswer("Get_Measure", "");
    scriptCount("DataAvail", 0);
    CallRecorder recorder;
    Transferred transferred;
    QCOMPARE(transferred.run(*sensor.get(), form), NoError);
    QCOMPARE(recorder.take(), measureCalls() + callsWithoutData(form));
    QCOMPARE(transferred.errorText, QString());
}

void TestGetMeasure::dataAvailDoesNotAsk()
{
    OpenSensorInstance sensor(SensorType::CP740);
    CallRecorder recorder;
    int available = 0;
    QCOMPARE(sensor->dataAvail(available), NoError);
    QCOMPARE(recorder.take(), QStringList("DataAvail()"));
}

void TestGetMeasure::failingMeasureStopsTheTransfer_data()
{
    everyTransferAsksFirst_data();
}

void TestGetMeasure::failingMeasureStopsTheTransfer()
{
    QFETCH(QString, form);
    OpenSensorInstance sensor(SensorType::EC830);
    scriptCommandFailure("Get_Measure", -33);
    QSignalSpy messages(sensor.get(), &SensorInstance::errorMessage);
    CallRecorder recorder;
    Transferred transferred;
    QCOMPARE(transferred.run(*sensor.get(), form), ErrorCode(-33));
    QVERIFY(transferred.isUntouched());
    QCOMPARE(transferred.errorText, QString(scriptedFailure));
    // Reported once by the command and once by the polling step.
    QCOMPARE(messages.size(), 2);
    const QString getError = "GetError(4096)";
    QCOMPARE(recorder.take(), measureCalls() + QStringList({getError, getError}));
}

void TestGetMeasure::failingMemberStopsTheTransfer_data()
{
    everyTransferAsksFirst_data();
}

void TestGetMeasure::failingMemberStopsTheTransfer()
{
    QFETCH(QString, form);
    scriptAnswer("Get_DrvSetting", "IA_SensorCount=3 IA_SensorType#1=43 IA_SensorType#2=43 IA_SensorType#3=40");
    OpenSensorInstance sensor(SensorType::MultiSensor);
    sondixsim::Fault second;
    second.command = "Get_Measure";
    second.from = 2;
    second.code = -34;
    second.text = scriptedFailure;
    sondixsim::inject(second);
    scriptAnswer("Get_Measure", "");

    QSignalSpy messages(sensor.get(), &SensorInstance::errorMessage);
    CallRecorder recorder;
    Transferred transferred;
    QCOMPARE(transferred.run(*sensor.get(), form), ErrorCode(-34));
    QVERIFY(transferred.isUntouched());
    QCOMPARE(transferred.errorText, QString(scriptedFailure));
    QCOMPARE(messages.size(), 2);
    const QString getError = "GetError(4096)";
    QCOMPARE(recorder.take(), memberCalls({1, 2}) + QStringList({getError, getError}));
}

QTEST_GUILESS_MAIN(TestGetMeasure)
#include "tst_getmeasure.moc"
