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

/// Sensors of the base type \a type tell these texts from now on.
int texts(int type, const char *lines)
{
    sondixsim::Fault fault;
    fault.command = "Get_SensorErrorValueText";
    fault.sensorType = type;
    fault.answer = std::string("SA_SensorErrorValueText=\"") + lines + '"';
    return sondixsim::inject(fault);
}

/// The setup's sensor number \a number is of the type \a type.
QString member(int number, int type)
{
    return name("IA_SensorType#%1=%2 ").arg(number).arg(type);
}

void members(const QString &pairs)
{
    answer("Get_DrvSetting", pairs.toLatin1().constData());
}

QMap<QString, QVariant> count(const QVariant &sensors)
{
    return {{name("IP_SensorCount"), sensors}};
}

QMap<QString, QVariant> recorded(int type)
{
    return {{name("IP_SensorType"), type}};
}

/// The calls that ask one instance for its texts, sizes left out.
QStringList asking()
{
    return commandCalls(name("Get_SensorErrorValueText")) +
           QStringList{name("GetParameterString(\"SA_SensorErrorValueText\", null)"),
                       name("GetParameterString(\"SA_SensorErrorValueText\", n)")};
}

/// The calls that ask for the texts of a type through an instance of its own.
QStringList askingType(int baseType)
{
    return QStringList(name("CreateSensorInstance(%1)").arg(baseType)) + askInt("Get_OpenState", "IA_SensorOpen") +
           asking() + QStringList(name("ReleaseSensorInstance()"));
}

QStringList askingMember(int number)
{
    return commandCalls(name("Get_DrvSetting")) + QStringList(getInt(name("IA_SensorType#%1").arg(number)));
}

QStringList withoutSizes(QStringList calls)
{
    calls.replaceInStrings(QRegularExpression(name("(ErrorValueText\", )\\d+")), name("\\1n"));
    return calls;
}

} // namespace

/// The words for error values, of one sensor, of a recording and of a setup of several sensors.
class ErrorTextsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { load({26}); }

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
    QTest::newRow("measured value") << 3.25 << name("fine");
    QTest::newRow("first error value") << -1.0e10 << name("fine");
    QTest::newRow("error 5") << error(-5) << name("too far");
    QTest::newRow("error 5 and a bit") << -1.0e10 - 5.7 << name("too far");
    QTest::newRow("error 6") << error(-6) << name("too near");
    QTest::newRow("error without a text") << error(-7) << name("fine");
    QTest::newRow("lowest key") << error(std::numeric_limits<int>::min()) << name("lowest");
    QTest::newRow("key that no int can hold") << -1.0e10 - 4294967296.0 << name("fine");
    QTest::newRow("key whose low bits are error 5") << -1.0e10 - 4294967301.0 << name("fine");
    QTest::newRow("lowest double") << Limits::lowest() << name("fine");
    QTest::newRow("minus infinity") << -Limits::infinity() << name("fine");
    QTest::newRow("infinity") << Limits::infinity() << name("fine");
    QTest::newRow("not a number") << Limits::quiet_NaN() << name("fine");
}

void ErrorTextsTest::textOfAValue()
{
    QFETCH(double, value);
    texts(26, "0: fine\r\n-5: too far\r\n-6: too near\r\n12: above\r\n-2147483648: lowest\r\n: none\r\nnone");
    SensorInstance sensor(CC430);
    QTEST(sensor.getErrorValueText(value), "text");
}

void ErrorTextsTest::textOfError0IsGivenWhereThereIsNone()
{
    texts(26, "-5: too far");
    SensorInstance sensor(CC430);
    QCOMPARE(sensor.getErrorValueText(error(-5)), name("too far"));
    QCOMPARE(sensor.getErrorValueText(error(-9)), QString());
    QCOMPARE(sensor.getErrorValueText(1.0), QString());
}

void ErrorTextsTest::sensorIsAskedOnceAtTheFirstLookup()
{
    texts(26, "0: fine\r\n-1: no peak");
    CallRecorder recorder;
    SensorInstance sensor(CC430);
    QCOMPARE(recorder.take().filter(name("ErrorValueText")), QStringList());
    QCOMPARE(sensor.getErrorValueText(error(-1)), name("no peak"));
    QCOMPARE(withoutSizes(recorder.take()), asking());
    QCOMPARE(sensor.getErrorValueText(error(-1)), name("no peak"));
    QCOMPARE(sensor.getErrorValueText(error(-2)), name("fine"));
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::measuredValueAsksAsWell()
{
    texts(26, "0: fine");
    SensorInstance sensor(CC430);
    CallRecorder recorder;
    QCOMPARE(sensor.getErrorValueText(0.0), name("fine"));
    QCOMPARE(withoutSizes(recorder.take()), asking());
}

void ErrorTextsTest::sensorWithoutTextsIsAskedOnce()
{
    texts(26, "");
    SensorInstance sensor(CC430);
    CallRecorder recorder;
    QCOMPARE(sensor.getErrorValueText(error(-3)), QString());
    QCOMPARE(withoutSizes(recorder.take()), asking());
    QCOMPARE(sensor.getErrorValueText(error(-3)), QString());
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::failingSensorIsAskedOnce()
{
    failCommand("Get_SensorErrorValueText", -71);
    SensorInstance sensor(CC430);
    CallRecorder recorder;
    QCOMPARE(sensor.getErrorValueText(error(-3)), QString());
    QCOMPARE(withoutErrorTexts(recorder.take()), commandCalls(name("Get_SensorErrorValueText")));
    sondixsim::clearFaults();
    texts(26, "-3: too late");
    QCOMPARE(sensor.getErrorValueText(error(-3)), QString());
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::slotOnTheFailureMayAskForATextItself()
{
    failCommand("Get_SensorErrorValueText", -71);
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
    texts(26, "-1: first\r\n-2: second");
    SensorInstance sensor(CC430);
    const QString &first = sensor.getErrorValueText(error(-1));
    const QString &second = sensor.getErrorValueText(error(-2));
    const QString &none = sensor.getErrorValueText(5.0);
    QCOMPARE(&sensor.getErrorValueText(error(-1)), &first);
    QCOMPARE(&sensor.getErrorValueText(error(-2)), &second);
    QCOMPARE(&sensor.getErrorValueText(error(-99)), &none);
    QCOMPARE(first, name("first"));
    QCOMPARE(second, name("second"));
    QCOMPARE(none, QString());
}

void ErrorTextsTest::closingKeepsTheTexts()
{
    const int before = texts(26, "-1: first");
    Sensor sensor(26);
    QCOMPARE(sensor->getErrorValueText(error(-1)), name("first"));
    sondixsim::removeFault(before);
    texts(26, "-1: other");
    QCOMPARE(sensor->close(), NoError);
    QCOMPARE(sensor->getErrorValueText(error(-1)), name("first"));
    QCOMPARE(sensor->open(parameters(26, Ethernet)), NoError);
    QCOMPARE(sensor->getErrorValueText(error(-1)), name("first"));
}

void ErrorTextsTest::busVariantIsAskedItself()
{
    texts(43, "-1: bus");
    SensorInstance sensor(GY330);
    QCOMPARE(sensor.getErrorValueText(error(-1)), name("bus"));
}

void ErrorTextsTest::recordingUnitesTheTextsOfItsSensors()
{
    texts(40, "0: fine\r\n-1: of 40\r\n-2: also of 40");
    texts(43, "-1: of 43\r\n-3: also of 43");
    SensorInstance file(File);
    file.addInfoParameters(recorded(40), 1);
    file.addInfoParameters(recorded(40043), 2);
    CallRecorder recorder;
    QCOMPARE(file.getErrorValueText(error(-1)), name("of 43"));
    QCOMPARE(withoutSizes(recorder.take()), askingType(40) + askingType(43));
    QCOMPARE(file.getErrorValueText(error(-2)), name("also of 40"));
    QCOMPARE(file.getErrorValueText(error(-3)), name("also of 43"));
    QCOMPARE(file.getErrorValueText(error(-4)), name("fine"));
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::recordingSkipsWhatIsNoSensor()
{
    texts(40, "-1: of 40");
    SensorInstance file(File);
    file.addInfoParameters(recorded(57), 1);
    file.addInfoParameters(recorded(0), 2);
    file.addInfoParameters(recorded(99999), 3);
    file.addInfoParameters({{name("SA_Sensor"), name("no type")}}, 4);
    file.addInfoParameters(recorded(40), 5);
    file.addInfoParameters({{name("IP_SensorType"), 1.0e300}}, 6);
    CallRecorder recorder;
    QCOMPARE(file.getErrorValueText(error(-1)), name("of 40"));
    QCOMPARE(withoutSizes(recorder.take()), askingType(40));
}

void ErrorTextsTest::recordingWithoutSensorsAsksNobody()
{
    SensorInstance file(File);
    CallRecorder recorder;
    QCOMPARE(file.getErrorValueText(error(-1)), QString());
    file.addInfoParameters(recorded(40), 1);
    QCOMPARE(file.getErrorValueText(error(-1)), QString());
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::setupUnitesTheTextsOfItsSensors()
{
    texts(40, "0: fine\r\n-1: of 40\r\n-2: also of 40");
    texts(43, "-1: of 43\r\n-3: also of 43");
    members(member(1, 40) + member(2, 43));
    SensorInstance setup(MultiSensor);
    setup.storeInterfaceParameters(count(2));
    CallRecorder recorder;
    QCOMPARE(setup.getErrorValueText(error(-1)), name("of 43"));
    QCOMPARE(withoutSizes(recorder.take()), askingMember(1) + askingType(40) + askingMember(2) + askingType(43));
    QCOMPARE(setup.getErrorValueText(error(-2)), name("also of 40"));
    QCOMPARE(setup.getErrorValueText(error(-3)), name("also of 43"));
    QCOMPARE(setup.getErrorValueText(1.0), name("fine"));
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::setupSkipsWhatIsNoSensor()
{
    texts(40, "-1: of 40");
    members(member(1, 57) + member(2, 0) + member(3, 99999) + member(4, 40));
    SensorInstance setup(MultiSensor);
    setup.storeInterfaceParameters(count(4));
    CallRecorder recorder;
    QCOMPARE(setup.getErrorValueText(error(-1)), name("of 40"));
    QCOMPARE(withoutSizes(recorder.take()),
             askingMember(1) + askingMember(2) + askingMember(3) + askingMember(4) + askingType(40));
}

void ErrorTextsTest::setupSkipsSensorsThatItCannotName()
{
    texts(40, "-1: of 40");
    members(member(1, 40) + member(3, 40));
    sondixsim::Fault fault;
    fault.command = "Get_DrvSetting";
    fault.code = -72;
    fault.times = 1;
    sondixsim::inject(fault);
    SensorInstance setup(MultiSensor);
    setup.storeInterfaceParameters(count(3));
    CallRecorder recorder;
    QCOMPARE(setup.getErrorValueText(error(-1)), name("of 40"));
    // The first command fails, the second has no such answer.
    QCOMPARE(withoutSizes(withoutErrorTexts(recorder.take())),
             commandCalls(name("Get_DrvSetting")) + askingMember(2) + askingMember(3) + askingType(40));
}

void ErrorTextsTest::setupOfUnknownSizeAsksNobody_data()
{
    QTest::addColumn<QVariantMap>("stored");
    QTest::newRow("no count") << QVariantMap();
    QTest::newRow("0") << count(0);
    QTest::newRow("negative") << count(-3);
    QTest::newRow("no number") << count(name("many"));
    QTest::newRow("number that no int can hold") << count(1.0e300);
}

void ErrorTextsTest::setupOfUnknownSizeAsksNobody()
{
    QFETCH(QVariantMap, stored);
    members(member(1, 40));
    SensorInstance setup(MultiSensor);
    setup.storeInterfaceParameters(stored);
    CallRecorder recorder;
    QCOMPARE(setup.getErrorValueText(error(-1)), QString());
    QCOMPARE(recorder.take(), QStringList());
}

void ErrorTextsTest::absurdSizeOfASetupDoesNoHarm()
{
    texts(40, "-1: of 40");
    members(member(1, 40));
    SensorInstance setup(MultiSensor);
    setup.storeInterfaceParameters(count(std::numeric_limits<int>::max()));
    // Most sensors do not exist, which is logged of each.
    QLoggingCategory::setFilterRules(name("SondixQt.*.debug=false"));
    CallRecorder recorder;
    QCOMPARE(setup.getErrorValueText(error(-1)), name("of 40"));
    const int commands = recorder.take().filter(name("Get_DrvSetting")).size();
    QLoggingCategory::setFilterRules(QString());
    QVERIFY2(commands <= 10000, qPrintable(name("%1 commands").arg(commands)));
}

void ErrorTextsTest::sizeOfASetupIsThatOfTheOpen()
{
    texts(40, "-1: of 40");
    members(member(1, 40));
    SensorInstance setup(MultiSensor);
    // Whether it can be opened does not matter: there is no such sensor on the bench.
    QVERIFY(setup.open(count(1)) != NoError);
    QCOMPARE(setup.getErrorValueText(error(-1)), name("of 40"));
}

QTEST_GUILESS_MAIN(ErrorTextsTest)
#include "tst_errortexts.moc"
