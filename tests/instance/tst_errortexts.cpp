// SPDX-License-Identifier: MIT
#include "modesbench.h"

#include <QLoggingCategory>
#include <QtTest>

#include <limits>

using namespace SondixQt;
using namespace modesbench;

namespace {

constexpr double error(int key)
{
    return -1.0e10 + key;
}

/// From now on sensors of the base type \a type return the error texts \a lines.
int texts(int type, const char *lines)
{
    sondixsim::Fault fault;
    fault.command = "Get_SensorErrorValueText";
    fault.sensorType = type;
    fault.answer = std::string("SA_SensorErrorValueText=\"") + lines + '"';
    return sondixsim::inject(fault);
}

/// The answer for the sensor number \a number of the setup, of the type \a type.
QString member(int number, int type)
{
    return QString("IA_SensorType#%1=%2 ").arg(number).arg(type);
}

void members(const QString &pairs)
{
    scriptAnswer("Get_DrvSetting", pairs.toLatin1());
}

QMap<QString, QVariant> count(const QVariant &sensors)
{
    return {{"IP_SensorCount", sensors}};
}

QMap<QString, QVariant> recorded(int type)
{
    return {{"IP_SensorType", type}};
}

/// The calls that read the texts of one instance, without sizes.
QStringList asking()
{
    return commandCalls("Get_SensorErrorValueText") +
           QStringList{"GetParameterString(\"SA_SensorErrorValueText\", null)",
                       "GetParameterString(\"SA_SensorErrorValueText\", n)"};
}

/// The calls that read the texts of a type with a temporary instance.
QStringList askingType(int baseType)
{
    return QStringList(QString("CreateSensorInstance(%1)").arg(baseType)) +
           readInt("Get_OpenState", "IA_SensorOpen") + asking() + QStringList("ReleaseSensorInstance()");
}

QStringList askingMember(int number)
{
    return commandCalls("Get_DrvSetting") + QStringList(getInt(QString("IA_SensorType#%1").arg(number)));
}

QStringList withoutTextSizes(QStringList calls)
{
    calls.replaceInStrings(QRegularExpression("(ErrorValueText\", )\\d+"), QString("\\1n"));
    return calls;
}

} // namespace

/// The texts of error values for a sensor, a recording and a setup of several sensors.
class ErrorTextsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { load({CC430}); }

    void textOfAValue_data();
    void textOfAValue();
    void textOfError0IsGivenWhereThereIsNone();
    void sensorIsAskedOnceAtTheFirstLookup();
    void measuredValueAsksAsWell();
    void sensorWithoutTextsIsAskedOnce();
    void failingSensorIsAskedOnce();
    void slotOnTheFailureMayAskForATextItself();
    void referencesStayValid();
    void closingKeepsTheTexts();
    void busVariantIsAskedItself();

    void recordingUnitesTheTextsOfItsSensors();
    void recordingSkipsWhatIsNoSensor();
    void recordingWithoutSensorsAsksNobody();
    void setupUnitesTheTextsOfItsSensors();
    void setupSkipsWhatIsNoSensor();
    void setupSkipsSensorsThatItCannotName();
    void setupOfUnknownSizeAsksNobody_data();
    void setupOfUnknownSizeAsksNobody();
    void absurdSizeOfASetupDoesNoHarm();
    void sizeOfASetupIsThatOfTheOpen();
};

void ErrorTextsTest::textOfAValue_data()
{
    using Limits = std::numeric_limits<double>;
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("measured value") << 3.25 << "fine";
    QTest::newRow("first error value") << -1.0e10 << "fine";
    QTest::newRow("error 5") << error(-5) << "too far";
    QTest::newRow("error 5 and a bit") << -1.0e10 - 5.7 << "too far";
    QTest::newRow("error 6") << error(-6) << "too near";
    QTest::newRow("error without a text") << error(-7) << "fine";
    QTest::newRow("lowest key") << error(std::numeric_limits<int>::min()) << "lowest";
    QTest::newRow("key that no int can hold") << -1.0e10 - 4294967296.0 << "fine";
    QTest::newRow("key whose low bits are error 5") << -1.0e10 - 4294967301.0 << "fine";
    QTest::newRow("lowest double") << Limits::lowest() << "fine";
    QTest::newRow("minus infinity") << -Limits::infinity() << "fine";
    QTest::newRow("infinity") << Limits::infinity() << "fine";
    QTest::newRow("not a number") << Limits::quiet_NaN() << "fine";
}

void ErrorTextsTest::textOfAValue()
{
    QFETCH(double, value);
    texts(CC430, "0: fine\r\n-5: too far\r\n-6: too near\r\n12: above\r\n-2147483648: lowest\r\n: none\r\nnone");
    SensorInstance sensor(CC430);
    QTEST(sensor.getErrorValueText(value), "text");
}

void ErrorTextsTest::textOfError0IsGivenWhereThereIsNone()
{
    texts(CC430, "-5: too far");
    SensorInstance sensor(CC430);
    QCOMPARE(sensor.getErrorValueText(error(-5)), "too far");
    QCOMPARE(sensor.getErrorValueText(error(-9)), QString());
    QCOMPARE(sensor.getErrorValueText(1.0), QString());
}

void ErrorTextsTest::sensorIsAskedOnceAtTheFirstLookup()
{
    texts(CC430, "0: fine\r\n-1: no peak");
    CallRecorder recorder;
    SensorInstance sensor(CC430);
    QCOMPARE(recorder.take().filter("ErrorValueText"), QStringList());
    QCOMPARE(sensor.getErrorValueText(error(-1)), "no peak");
    QCOMPARE(withoutTextSizes(recorder.take()), asking());
    QCOMPARE(sensor.getErrorValueText(error(-1)), "no peak");
    QCOMPARE(sensor.getErrorValueText(error(-2)), "fine");
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::measuredValueAsksAsWell()
{
    texts(CC430, "0: fine");
    SensorInstance sensor(CC430);
    CallRecorder recorder;
    QCOMPARE(sensor.getErrorValueText(0.0), "fine");
    QCOMPARE(withoutTextSizes(recorder.take()), asking());
}

void ErrorTextsTest::sensorWithoutTextsIsAskedOnce()
{
    texts(CC430, "");
    SensorInstance sensor(CC430);
    CallRecorder recorder;
    QCOMPARE(sensor.getErrorValueText(error(-3)), QString());
    QCOMPARE(withoutTextSizes(recorder.take()), asking());
    QCOMPARE(sensor.getErrorValueText(error(-3)), QString());
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::failingSensorIsAskedOnce()
{
    scriptCommandFailure("Get_SensorErrorValueText", -71);
    SensorInstance sensor(CC430);
    CallRecorder recorder;
    QCOMPARE(sensor.getErrorValueText(error(-3)), QString());
    QCOMPARE(withoutErrorTexts(recorder.take()), commandCalls("Get_SensorErrorValueText"));
    sondixsim::clearFaults();
    texts(CC430, "-3: too late");
    QCOMPARE(sensor.getErrorValueText(error(-3)), QString());
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::slotOnTheFailureMayAskForATextItself()
{
    scriptCommandFailure("Get_SensorErrorValueText", -71);
    SensorInstance sensor(CC430);
    QStringList texts;
    connect(&sensor, &SensorInstance::errorMessage, this, [&] {
        QVERIFY(texts.size() < 10);
        texts.append(sensor.getErrorValueText(error(-3)));
    });
    QCOMPARE(sensor.getErrorValueText(error(-3)), QString());
    QCOMPARE(texts, QStringList(QString()));
}

void ErrorTextsTest::referencesStayValid()
{
    texts(CC430, "-1: first\r\n-2: second");
    SensorInstance sensor(CC430);
    const QString &first = sensor.getErrorValueText(error(-1));
    const QString &second = sensor.getErrorValueText(error(-2));
    const QString &none = sensor.getErrorValueText(5.0);
    QCOMPARE(&sensor.getErrorValueText(error(-1)), &first);
    QCOMPARE(&sensor.getErrorValueText(error(-2)), &second);
    QCOMPARE(&sensor.getErrorValueText(error(-99)), &none);
    QCOMPARE(first, "first");
    QCOMPARE(second, "second");
    QCOMPARE(none, QString());
}

void ErrorTextsTest::closingKeepsTheTexts()
{
    const int before = texts(CC430, "-1: first");
    Sensor sensor(CC430);
    QCOMPARE(sensor->getErrorValueText(error(-1)), "first");
    sondixsim::removeFault(before);
    texts(CC430, "-1: other");
    QCOMPARE(sensor->close(), NoError);
    QCOMPARE(sensor->getErrorValueText(error(-1)), "first");
    QCOMPARE(sensor->open(parameters(CC430, Ethernet)), NoError);
    QCOMPARE(sensor->getErrorValueText(error(-1)), "first");
}

void ErrorTextsTest::busVariantIsAskedItself()
{
    texts(GenericKVBus, "-1: bus");
    SensorInstance sensor(GY330);
    QCOMPARE(sensor.getErrorValueText(error(-1)), "bus");
}

void ErrorTextsTest::recordingUnitesTheTextsOfItsSensors()
{
    texts(CP740, "0: fine\r\n-1: of 40\r\n-2: also of 40");
    texts(GenericKVBus, "-1: of 43\r\n-3: also of 43");
    SensorInstance file(File);
    file.addInfoParameters(recorded(CP740), 1);
    file.addInfoParameters(recorded(GY330), 2);
    CallRecorder recorder;
    QCOMPARE(file.getErrorValueText(error(-1)), "of 43");
    QCOMPARE(withoutTextSizes(recorder.take()), askingType(CP740) + askingType(GenericKVBus));
    QCOMPARE(file.getErrorValueText(error(-2)), "also of 40");
    QCOMPARE(file.getErrorValueText(error(-3)), "also of 43");
    QCOMPARE(file.getErrorValueText(error(-4)), "fine");
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::recordingSkipsWhatIsNoSensor()
{
    texts(CP740, "-1: of 40");
    SensorInstance file(File);
    file.addInfoParameters(recorded(MultiSensor), 1);
    file.addInfoParameters(recorded(NoSensor), 2);
    file.addInfoParameters(recorded(File), 3);
    file.addInfoParameters(QMap<QString, QVariant>{{"SA_Sensor", "no type"}}, 4);
    file.addInfoParameters(recorded(CP740), 5);
    file.addInfoParameters(QMap<QString, QVariant>{{"IP_SensorType", 1.0e300}}, 6);
    CallRecorder recorder;
    QCOMPARE(file.getErrorValueText(error(-1)), "of 40");
    QCOMPARE(withoutTextSizes(recorder.take()), askingType(CP740));
}

void ErrorTextsTest::recordingWithoutSensorsAsksNobody()
{
    SensorInstance file(File);
    CallRecorder recorder;
    QCOMPARE(file.getErrorValueText(error(-1)), QString());
    file.addInfoParameters(recorded(CP740), 1);
    QCOMPARE(file.getErrorValueText(error(-1)), QString());
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::setupUnitesTheTextsOfItsSensors()
{
    texts(CP740, "0: fine\r\n-1: of 40\r\n-2: also of 40");
    texts(GenericKVBus, "-1: of 43\r\n-3: also of 43");
    members(member(1, CP740) + member(2, GenericKVBus));
    SensorInstance setup(MultiSensor);
    setup.storeInterfaceParameters(count(2));
    CallRecorder recorder;
    QCOMPARE(setup.getErrorValueText(error(-1)), "of 43");
    QCOMPARE(withoutTextSizes(recorder.take()),
             askingMember(1) + askingType(CP740) + askingMember(2) + askingType(GenericKVBus));
    QCOMPARE(setup.getErrorValueText(error(-2)), "also of 40");
    QCOMPARE(setup.getErrorValueText(error(-3)), "also of 43");
    QCOMPARE(setup.getErrorValueText(1.0), "fine");
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::setupSkipsWhatIsNoSensor()
{
    texts(CP740, "-1: of 40");
    members(member(1, MultiSensor) + member(2, NoSensor) + member(3, File) + member(4, CP740));
    SensorInstance setup(MultiSensor);
    setup.storeInterfaceParameters(count(4));
    CallRecorder recorder;
    QCOMPARE(setup.getErrorValueText(error(-1)), "of 40");
    QCOMPARE(withoutTextSizes(recorder.take()),
             askingMember(1) + askingMember(2) + askingMember(3) + askingMember(4) + askingType(CP740));
}

void ErrorTextsTest::setupSkipsSensorsThatItCannotName()
{
    texts(CP740, "-1: of 40");
    members(member(1, CP740) + member(3, CP740));
    sondixsim::Fault fault;
    fault.command = "Get_DrvSetting";
    fault.code = -72;
    fault.times = 1;
    sondixsim::inject(fault);
    SensorInstance setup(MultiSensor);
    setup.storeInterfaceParameters(count(3));
    CallRecorder recorder;
    QCOMPARE(setup.getErrorValueText(error(-1)), "of 40");
    // The first command fails; the answer to the second one lacks the parameter.
    QCOMPARE(withoutTextSizes(withoutErrorTexts(recorder.take())),
             commandCalls("Get_DrvSetting") + askingMember(2) + askingMember(3) + askingType(CP740));
}

void ErrorTextsTest::setupOfUnknownSizeAsksNobody_data()
{
    QTest::addColumn<QVariantMap>("stored");
    QTest::newRow("no count") << QVariantMap();
    QTest::newRow("0") << count(0);
    QTest::newRow("negative") << count(-3);
    QTest::newRow("no number") << count("many");
    QTest::newRow("number that no int can hold") << count(1.0e300);
}

void ErrorTextsTest::setupOfUnknownSizeAsksNobody()
{
    QFETCH(QVariantMap, stored);
    members(member(1, CP740));
    SensorInstance setup(MultiSensor);
    setup.storeInterfaceParameters(stored);
    CallRecorder recorder;
    QCOMPARE(setup.getErrorValueText(error(-1)), QString());
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::absurdSizeOfASetupDoesNoHarm()
{
    texts(CP740, "-1: of 40");
    members(member(1, CP740));
    SensorInstance setup(MultiSensor);
    setup.storeInterfaceParameters(count(std::numeric_limits<int>::max()));
    // Suppresses the debug output about each sensor that does not exist.
    QLoggingCategory::setFilterRules("SondixQt.*.debug=false");
    CallRecorder recorder;
    QCOMPARE(setup.getErrorValueText(error(-1)), "of 40");
    const int commands = recorder.take().filter("Get_DrvSetting").size();
    QLoggingCategory::setFilterRules(QString());
    QVERIFY2(commands <= 10000, qPrintable(QString("%1 commands").arg(commands)));
}

void ErrorTextsTest::sizeOfASetupIsThatOfTheOpen()
{
    texts(CP740, "-1: of 40");
    members(member(1, CP740));
    SensorInstance setup(MultiSensor);
    // open() fails because there is no such sensor on the bench, but it stores the parameters.
    QVERIFY(setup.open(count(1)) != NoError);
    QCOMPARE(setup.getErrorValueText(error(-1)), "of 40");
}

QTEST_GUILESS_MAIN(ErrorTextsTest)
#include "tst_errortexts.moc"
