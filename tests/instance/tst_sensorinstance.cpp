// SPDX-License-Identifier: MIT
#include <SondixQt/SensorInstance>

#include "support/callrecorder.h"
#include "support/scripting.h"
#include "support/testbench.h"

#include <QDateTime>
#include <QtTest>

using namespace SondixQt;
using Parameters = QMap<QString, QVariant>;

/// Creation, opening, closing and release.
class SensorInstanceTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();

    void createsTheBaseTypesInstance_data();
    void createsTheBaseTypesInstance();
    void typesWithoutLibraryInstance_data();
    void typesWithoutLibraryInstance();
    void adoptsAHandle();
    void refusedCreationLeavesItInvalid();
    void destructorReleases();
    void releaseIsEarlyAndOnce();
    void moveAssignmentTakesHandleAndTypeOnly();
    void moveAssignmentToItselfKeepsTheHandle();
    void typeAccessors_data();
    void typeAccessors();
    void isOpenAsksTheLibrary();
    void opensInTheDescribedOrder();
    void openStopsWhenStagingFails();
    void openStopsWhenInformationCannotBeSwitchedOn();
    void failedOpenLeavesOneEntryForEachExpectedSensor_data();
    void failedOpenLeavesOneEntryForEachExpectedSensor();
    void openReadsTheInformationOfEverySensorOfASetup();
    void informationOfTheNextSensorTakesThePlaceOfUnreadableOne();
    void plainSensorIsNotAskedForASetup();
    void unreadableInformationDoesNotFailTheOpen();
    void openKeepsTheInterfaceParameters();
    void emptyMapLeavesTheKeptInterfaceParameters();
    void closesTheSensor();
    void closeOfAFileCallsNothing();
    void clearsStagedParameters();
    void parametersStagedBeforeAFailureStayStaged();
    void keepsACopyOfTheInterfaceParameters();
    void typesCanBeNamedByTheirText_data();
    void typesCanBeNamedByTheirText();
    void failedOpenOfASetupStillAsksForItsSensors();
    void absurdSensorCountIsHarmless_data();
    void absurdSensorCountIsHarmless();
};

void SensorInstanceTest::init()
{
    loadTestBench();
}

void SensorInstanceTest::createsTheBaseTypesInstance_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("call");
    QTest::newRow("plain") << int(TX270) << "CreateSensorInstance(41)";
    QTest::newRow("bus variant") << int(MV420) << "CreateSensorInstance(43)";
    QTest::newRow("converter variant") << int(DVxxx_XA300ETH) << "CreateSensorInstance(34)";
}

void SensorInstanceTest::createsTheBaseTypesInstance()
{
    QFETCH(int, type);
    QFETCH(QString, call);
    CallRecorder recorder;
    SensorInstance sensor{SensorType(type)};
    QVERIFY(sensor.isValid());
    QVERIFY(sensor.handle() != 0);
    // The constructor queries whether the library instance is already open.
    QCOMPARE(recorder.take(), QStringList(call) + commandCalls("Get_OpenState") +
                                  QStringList("GetParameterInt(\"IA_SensorOpen\")"));
}

void SensorInstanceTest::typesWithoutLibraryInstance_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("NoSensor") << int(NoSensor);
    QTest::newRow("File") << int(File);
}

void SensorInstanceTest::typesWithoutLibraryInstance()
{
    QFETCH(int, type);
    CallRecorder recorder;
    {
        SensorInstance sensor{SensorType(type)};
        QVERIFY(!sensor.isValid());
        QVERIFY(!sensor.isOpen());
        QCOMPARE(sensor.release(), NoError);
    }
    QCOMPARE(recorder.take(), QStringList());
}

void SensorInstanceTest::adoptsAHandle()
{
    SensorInstance first(TX270);
    const quint32 handle = first.handle();
    CallRecorder recorder;
    SensorInstance second(TX270, handle);
    QCOMPARE(second.handle(), handle);
    QCOMPARE(recorder.take().filter("CreateSensorInstance"), QStringList());
    first = SensorInstance(NoSensor); // releases the shared handle, so that it is released only once
    second = SensorInstance(NoSensor);
}

void SensorInstanceTest::refusedCreationLeavesItInvalid()
{
    scriptFailure("CreateSensorInstance", -3, "no such sensor");
    CallRecorder recorder;
    SensorInstance sensor(TX270);
    QVERIFY(!sensor.isValid());
    QCOMPARE(recorder.take(), QStringList("CreateSensorInstance(41)"));
    QString text;
    sensor.checkError(ErrorCode(-1), &text, false);
    QCOMPARE(text, "no such sensor");
}

void SensorInstanceTest::destructorReleases()
{
    CallRecorder recorder;
    {
        SensorInstance sensor(TX270);
        recorder.take();
    }
    QCOMPARE(recorder.take(), QStringList("ReleaseSensorInstance()"));
}

void SensorInstanceTest::releaseIsEarlyAndOnce()
{
    CallRecorder recorder;
    {
        SensorInstance sensor(TX270);
        recorder.take();
        QCOMPARE(sensor.release(), NoError);
        QVERIFY(!sensor.isValid());
        QCOMPARE(sensor.release(), NoError);
        QVERIFY(!sensor.isOpen());
    }
    QCOMPARE(recorder.take(), QStringList("ReleaseSensorInstance()"));
}

void SensorInstanceTest::moveAssignmentTakesHandleAndTypeOnly()
{
    SensorInstance target(CP720);
    target.addInfoParameters(Parameters{{"SA_Sensor", "old"}}, 1);
    target.storeInterfaceParameters({{"IP_Port", 3}});
    SensorInstance source(MV420);
    source.addInfoParameters(Parameters{{"SA_Sensor", "new"}}, 1);
    QCOMPARE(source.enableLogging(QDir::temp().filePath("sondixqt-move.log")), NoError);
    const quint32 handle = source.handle();
    CallRecorder recorder;
    target = std::move(source);
    QCOMPARE(recorder.take(), QStringList("ReleaseSensorInstance()"));
    QCOMPARE(target.handle(), handle);
    QCOMPARE(target.sensorTypeFull(), MV420);
    QVERIFY(!source.isValid());
    QVERIFY(!target.GetLogging());
    QCOMPARE(target.getInfoParameter("SA_Sensor", 1).toString(), "old");
    QCOMPARE(target.storedInterfaceParameters(), Parameters({{"IP_Port", 3}}));
}

void SensorInstanceTest::moveAssignmentToItselfKeepsTheHandle()
{
    SensorInstance sensor(TX270);
    const quint32 handle = sensor.handle();
    CallRecorder recorder;
    SensorInstance &same = sensor;
    sensor = std::move(same);
    QCOMPARE(sensor.handle(), handle);
    QCOMPARE(recorder.take(), QStringList());
}

void SensorInstanceTest::typeAccessors_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("base");
    QTest::newRow("plain") << int(TX270) << 41;
    QTest::newRow("variant") << int(MV430_XA300ETH) << 34;
    QTest::newRow("file") << int(File) << 99999;
    QTest::newRow("none") << 0 << 0;
}

void SensorInstanceTest::typeAccessors()
{
    QFETCH(int, type);
    SensorInstance sensor{SensorType(type)};
    QTEST(int(sensor.sensorType()), "base");
    QCOMPARE(int(sensor.sensorTypeFull()), type);
}

void SensorInstanceTest::isOpenAsksTheLibrary()
{
    SensorInstance sensor(CP720);
    QVERIFY(!sensor.isOpen());
    QCOMPARE(sensor.open(testBenchParameters(CP720)), NoError);
    QVERIFY(sensor.isOpen());
    const int number = scriptCommandFailure("Get_OpenState", -1);
    QVERIFY(!sensor.isOpen());
    sondixsim::removeFault(number);
    QCOMPARE(sensor.close(), NoError);
    QVERIFY(!sensor.isOpen());
}

void SensorInstanceTest::opensInTheDescribedOrder()
{
    // No further queries for a model without video, trigger and sync.
    SensorInstance sensor(CP720);
    QString errorText = "old";
    CallRecorder recorder;
    const Parameters parameters = testBenchParameters(CP720);
    QCOMPARE(sensor.open(parameters, &errorText), NoError);
    QCOMPARE(errorText, QString());
    const QStringList calls = recorder.take();
    const int staged = parameters.size();
    QCOMPARE(calls.size(), staged + 4);
    int index = 0;
    for (auto it = parameters.cbegin(); it != parameters.cend(); ++it, ++index)
        QVERIFY2(calls.at(index).contains(QString("(\"%1\", ").arg(it.key())), qPrintable(calls.at(index)));
    QCOMPARE(calls.at(staged), "SetParameterInt(\"CP_LogSensorInformation\", 1)");
    QCOMPARE(calls.at(staged + 1), "OpenSensor()");
    QCOMPARE(calls.at(staged + 2), "GetParameterString(\"SA_SensorInformation\", null)");
    QVERIFY(calls.at(staged + 3).startsWith("GetParameterString(\"SA_SensorInformation\", "));
    QCOMPARE(sensor.getInfoParameters().size(), 1);
    QVERIFY(!sensor.getInfoParameter("SA_SerialNumber", 1).toString().isEmpty());
    QVERIFY(QDateTime::fromString(sensor.getInfoParameter("StorageTime", 1).toString(), "yyyy-MM-dd_hh-mm-ss.zzz")
                .isValid());
}

void SensorInstanceTest::openStopsWhenStagingFails()
{
    SensorInstance sensor(CP720);
    sondixsim::Fault fault;
    fault.function = "SetParameterString";
    fault.parameter = "IP_Interface";
    fault.code = -4;
    sondixsim::inject(fault);
    CallRecorder recorder;
    QCOMPARE(int(sensor.open(testBenchParameters(CP720))), -4);
    QCOMPARE(recorder.take().filter("OpenSensor"), QStringList());
    QCOMPARE(sensor.getInfoParameters().size(), 0);
}

void SensorInstanceTest::openStopsWhenInformationCannotBeSwitchedOn()
{
    SensorInstance sensor(CP720);
    scriptParameterFailure("CP_LogSensorInformation", -6, "not known");
    QSignalSpy messages(&sensor, &SensorInstance::errorMessage);
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(int(sensor.open(testBenchParameters(CP720), &errorText)), -6);
    QCOMPARE(recorder.take().filter("OpenSensor"), QStringList());
    // Only the signal reports it: the text is that of the last parameter, which was staged successfully.
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.at(0).at(1).toString(), "not known");
    QCOMPARE(errorText, QString());
    QCOMPARE(sensor.getInfoParameters().size(), 0);
}

void SensorInstanceTest::failedOpenLeavesOneEntryForEachExpectedSensor_data()
{
    QTest::addColumn<QVariant>("count");
    QTest::addColumn<int>("entries");
    QTest::newRow("three") << QVariant(3) << 3;
    QTest::newRow("no count") << QVariant() << 1;
    QTest::newRow("none") << QVariant(0) << 0;
    QTest::newRow("negative") << QVariant(-2) << 0;
    QTest::newRow("absurd") << QVariant(0x7fffffff) << 10000;
}

void SensorInstanceTest::failedOpenLeavesOneEntryForEachExpectedSensor()
{
    QFETCH(QVariant, count);
    QFETCH(int, entries);
    SensorInstance sensor(CP720);
    scriptFailure("OpenSensor", -11, "does not answer");
    Parameters parameters = testBenchParameters(CP720);
    if (count.isValid())
        parameters.insert("IP_SensorCount", count);
    QString errorText;
    CallRecorder recorder;
    QCOMPARE(int(sensor.open(parameters, &errorText)), -11);
    QCOMPARE(errorText, "does not answer");
    QCOMPARE(withoutErrorTexts(recorder.take()).last(), "OpenSensor()");
    QCOMPARE(sensor.getInfoParameters().size(), entries);
    for (int index = 1; index <= entries; ++index)
        QCOMPARE(sensor.getInfoParameter("ST_Empty", index), QVariant(index));
}

void SensorInstanceTest::openReadsTheInformationOfEverySensorOfASetup()
{
    SensorInstance sensor(MultiSensor);
    const Parameters parameters = testBenchParameters(MultiSensor);
    CallRecorder recorder;
    QCOMPARE(sensor.open(parameters), NoError);
    const QStringList asked = recorder.take().filter("SensorInformation").filter("null");
    QCOMPARE(asked, QStringList({"GetParameterString(\"SA_SensorInformation#S1\", null)",
                                 "GetParameterString(\"SA_SensorInformation#S2\", null)",
                                 "GetParameterString(\"SA_SensorInformation\", null)"}));
    QCOMPARE(sensor.getInfoParameters().size(), 2);
    QVERIFY(sensor.getInfoParameter("SA_SerialNumber", 1) != sensor.getInfoParameter("SA_SerialNumber", 2));
}

void SensorInstanceTest::informationOfTheNextSensorTakesThePlaceOfUnreadableOne()
{
    const Parameters parameters = testBenchParameters(MultiSensor);
    QVariant serialNumber;
    {
        SensorInstance sensor(MultiSensor);
        QCOMPARE(sensor.open(parameters), NoError);
        serialNumber = sensor.getInfoParameter("SA_SerialNumber", 2);
        QVERIFY(!serialNumber.toString().isEmpty());
    }
    scriptParameterFailure("SA_SensorInformation#S1", -7);
    scriptParameterFailure("SA_SensorInformation", -7);
    SensorInstance sensor(MultiSensor);
    QCOMPARE(sensor.open(parameters), NoError);
    QCOMPARE(sensor.getInfoParameter("SA_SerialNumber", 1), serialNumber);
}

void SensorInstanceTest::plainSensorIsNotAskedForASetup()
{
    SensorInstance sensor(CP720);
    Parameters parameters = testBenchParameters(CP720);
    parameters.insert("IP_SensorCount", 2);
    CallRecorder recorder;
    QCOMPARE(sensor.open(parameters), NoError);
    QCOMPARE(recorder.take().filter("#S"), QStringList());
}

void SensorInstanceTest::unreadableInformationDoesNotFailTheOpen()
{
    SensorInstance sensor(CP720);
    scriptParameterFailure("SA_SensorInformation", -7, "no information");
    QString errorText;
    QCOMPARE(sensor.open(testBenchParameters(CP720), &errorText), NoError);
    QCOMPARE(errorText, "no information");
    QCOMPARE(sensor.getInfoParameters().size(), 0);
}

void SensorInstanceTest::openKeepsTheInterfaceParameters()
{
    SensorInstance sensor(CP720);
    scriptFailure("OpenSensor", -11);
    QCOMPARE(int(sensor.open(testBenchParameters(CP720))), -11);
    QCOMPARE(sensor.storedInterfaceParameters(), testBenchParameters(CP720));
}

void SensorInstanceTest::emptyMapLeavesTheKeptInterfaceParameters()
{
    SensorInstance sensor(CP720);
    const Parameters kept{{"IP_Port", 4}};
    sensor.storeInterfaceParameters(kept);
    scriptFailure("OpenSensor", -11);
    QCOMPARE(int(sensor.open()), -11);
    QCOMPARE(sensor.storedInterfaceParameters(), kept);
}

void SensorInstanceTest::closesTheSensor()
{
    SensorInstance sensor(CP720);
    QCOMPARE(sensor.open(testBenchParameters(CP720)), NoError);
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(sensor.close(&errorText), NoError);
    QCOMPARE(recorder.take(), QStringList("CloseSensor()"));
    QCOMPARE(errorText, QString());
    scriptFailure("CloseSensor", -2, "was never open");
    QCOMPARE(int(sensor.close(&errorText)), -2);
    QCOMPARE(errorText, "was never open");
}

void SensorInstanceTest::closeOfAFileCallsNothing()
{
    SensorInstance file(File);
    CallRecorder recorder;
    QCOMPARE(file.close(), NoError);
    QCOMPARE(recorder.take(), QStringList());
}

void SensorInstanceTest::clearsStagedParameters()
{
    SensorInstance sensor(CP720);
    CallRecorder recorder;
    QCOMPARE(sensor.clearAllParameters(), NoError);
    QCOMPARE(recorder.take(), QStringList("ClearAllParameters()"));
    scriptFailure("ClearAllParameters", -2, "no");
    QString errorText;
    QCOMPARE(int(sensor.clearAllParameters(&errorText)), -2);
    QCOMPARE(errorText, "no");
}

void SensorInstanceTest::parametersStagedBeforeAFailureStayStaged()
{
    SensorInstance sensor(TX270);
    QCOMPARE(sensor.open(testBenchParameters(TX270)), NoError);
    const auto rate = [&sensor] {
        double kilohertz = 0.0;
        sensor.sendCommandGetDouble("Get_Samplerate", "SA_Measrate", kilohertz);
        return kilohertz;
    };
    const Parameters parameters = {{"SP_Measrate", 2.5}, {"SP_Refused", 1}};
    const double before = rate();
    QVERIFY(before != 2.5);
    scriptParameterFailure("SP_Refused", -17);

    QCOMPARE(int(sensor.sendCommand("Set_Samplerate", parameters)), -17);
    QCOMPARE(sensor.clearAllParameters(), NoError);
    QVERIFY(sensor.sendCommand("Set_Samplerate") != NoError);
    QCOMPARE(rate(), before);

    QCOMPARE(int(sensor.sendCommand("Set_Samplerate", parameters)), -17);
    QCOMPARE(sensor.sendCommand("Set_Samplerate"), NoError);
    QCOMPARE(rate(), 2.5);
}

void SensorInstanceTest::keepsACopyOfTheInterfaceParameters()
{
    SensorInstance sensor(CP720);
    Parameters parameters{{"IP_Interface", "TCP/IP"}};
    sensor.storeInterfaceParameters(parameters);
    parameters.clear();
    QCOMPARE(sensor.storedInterfaceParameters().value("IP_Interface").toString(), "TCP/IP");
}

void SensorInstanceTest::typesCanBeNamedByTheirText_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text :
         {"bool *", "int *", "double *", "QString *", "QByteArray *", "QVariant *", "SondixQt::ErrorCode"})
        QTest::newRow(text) << QByteArray(text);
}

void SensorInstanceTest::typesCanBeNamedByTheirText()
{
    QFETCH(QByteArray, text);
    QVERIFY(QMetaType::type(text.constData()) != QMetaType::UnknownType);
}

void SensorInstanceTest::failedOpenOfASetupStillAsksForItsSensors()
{
    SensorInstance sensor(MultiSensor);
    scriptFailure("OpenSensor", -11, "does not answer");
    scriptCommandFailure("Get_DrvSetting", -12, "nothing to tell");
    QString errorText;
    CallRecorder recorder;
    QCOMPARE(int(sensor.open(testBenchParameters(MultiSensor), &errorText)), -11);
    QCOMPARE(errorText, "does not answer");
    QCOMPARE(withoutErrorTexts(recorder.take()).mid(4),
             QStringList("OpenSensor()") + commandCalls("Get_DrvSetting"));
}

void SensorInstanceTest::absurdSensorCountIsHarmless_data()
{
    QTest::addColumn<QVariant>("count");
    QTest::newRow("beyond int") << QVariant(1e300);
    QTest::newRow("not a number") << QVariant(qQNaN());
    QTest::newRow("text") << QVariant("many");
}

void SensorInstanceTest::absurdSensorCountIsHarmless()
{
    QFETCH(QVariant, count);
    SensorInstance sensor(CP720);
    scriptFailure("OpenSensor", -11);
    Parameters parameters = testBenchParameters(CP720);
    parameters.insert("IP_SensorCount", count);
    QCOMPARE(int(sensor.open(parameters)), -11);
    QCOMPARE(sensor.getInfoParameters().size(), 0);
}

QTEST_GUILESS_MAIN(SensorInstanceTest)
#include "tst_sensorinstance.moc"
