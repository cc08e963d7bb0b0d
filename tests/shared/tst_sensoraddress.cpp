// SPDX-License-Identifier: MIT
#include "shared/sensoraddress.h"

#include <QtTest>

using namespace SondixQt;
using namespace SondixApp;

using Parameters = QMap<QString, QVariant>;

class TestSensorAddress : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void showsModelInterfaceAndParameters();
    void leavesOutWhatOnlyDescribes();
    void readsWhatItShows_data();
    void readsWhatItShows();
    void textsThatLookLikeNumbersStayTexts();
    void needsNoQuotesInAShell();
    void takesEveryNameOfModelsAndInterfaces();
    void explainsWhatIsWrong_data();
    void explainsWhatIsWrong();
    void describesThePlace_data();
    void describesThePlace();

private:
    static SensorAddress parsed(const QString &text)
    {
        QString problem;
        const auto address = SensorAddress::parse(text, problem);
        if (!address)
            qFatal("%s", qPrintable(problem));
        return *address;
    }
};

void TestSensorAddress::showsModelInterfaceAndParameters()
{
    const SensorAddress address{TX270, {{"IP_Interface", "RS232"}, {"IP_Baudrate", 115200}, {"IP_Port", "COM3"}}};
    QCOMPARE(address.toString(), QStringLiteral("TX270@RS232,port=COM3,baudrate=115200"));
}

void TestSensorAddress::leavesOutWhatOnlyDescribes()
{
    const SensorInfo info({{"IP_SensorType", CC480},
                           {"IP_SensorTypeName", "CC480"},
                           {"IP_InterfaceIdx", 3},
                           {"IP_Interface", "TCP/IP"},
                           {"IP_RemoteAddr", "192.168.0.10"},
                           {"SA_MacAddress", "00:11:22:33:44:55"},
                           {"SA_Softwareversion", "1.2 (test)"},
                           {"SA_Range", 10}},
                          NoSensor);
    QCOMPARE(SensorAddress::of(info).toString(), QStringLiteral("CC480@TCP/IP,address=192.168.0.10"));
}

void TestSensorAddress::readsWhatItShows_data()
{
    QTest::addColumn<SensorType>("type");
    QTest::addColumn<Parameters>("parameters");
    const auto row = [](const char *name, SensorType type, const char *iface, Parameters parameters) {
        parameters.insert("IP_Interface", QString::fromLatin1(iface));
        QTest::newRow(name) << type << parameters;
    };
    row("serial line", TX270, "RS232",
        {{"IP_Port", "COM3"},
         {"IP_Baudrate", 921600},
         {"IP_Stopbits", 1},
         {"IP_ByteSize", 8},
         {"IP_Parity", 0},
         {"IP_SensorAddress", 126}});
    row("device file", TX270, "RS232", {{"IP_Port", "/dev/serial/by id, 1=2&3"}});
    row("network", CC480, "TCP/IP", {{"IP_RemoteAddr", "fe80::1%eth0"}, {"IP_RemotePort", 23}});
    row("card", CC420, "XA200", {{"IP_CardInstance", 0}, {"IP_ChannelNumber", 1}});
    row("model with a hyphen", DVxxx, "RS232", {{"IP_Port", "COM1"}});
    row("model with a slash", XA100USB, "XA100_USB", {{"IP_DeviceInstance", 0}});
    row("model with a blank in its name", TX270, "WinUSB",
        {{"IP_DeviceInstance", 0}, {"SA_SerialNumber", "0012"}});
    row("further parameters", TX270, "RS232", {{"IP_Timeout", 1.5}, {"IP_Odd Name", "µ"}});
}

void TestSensorAddress::readsWhatItShows()
{
    QFETCH(SensorType, type);
    QFETCH(Parameters, parameters);
    const QString text = SensorAddress{type, parameters}.toString();
    const SensorAddress address = parsed(text);
    QCOMPARE(address.type, type);
    QCOMPARE(address.parameters.keys(), parameters.keys());
    for (auto it = parameters.cbegin(); it != parameters.cend(); ++it) {
        QCOMPARE(address.parameters.value(it.key()), it.value());
        QCOMPARE(address.parameters.value(it.key()).type(), it.value().type());
    }
}

void TestSensorAddress::textsThatLookLikeNumbersStayTexts()
{
    const Parameters parameters{{"IP_Interface", "RS232"}, {"IP_Port", "3"}, {"IP_SerialNumber", "0815"}};
    const SensorAddress address = parsed(SensorAddress{TX270, parameters}.toString());
    QCOMPARE(address.parameters.value("IP_Port").type(), QVariant::String);
    QCOMPARE(address.parameters.value("IP_SerialNumber").type(), QVariant::String);
    QCOMPARE(address.parameters.value("IP_SerialNumber").toString(), QStringLiteral("0815"));
}

void TestSensorAddress::needsNoQuotesInAShell()
{
    const SensorAddress address{
        TX270, {{"IP_Interface", "RS232"}, {"IP_Port", "a b;c|d&e$f*g?h'i\"j\\k(l)<m>`n`#~!{}[]"}}};
    const QRegularExpression harmless("^[A-Za-z0-9@/:+,.=_%~-]*$");
    const QString text = address.toString();
    QVERIFY2(harmless.match(text).hasMatch(), qPrintable(text));
}

void TestSensorAddress::takesEveryNameOfModelsAndInterfaces()
{
    const SensorAddress address = parsed("tx270@ethernet,ADDRESS=10.0.0.1");
    QCOMPARE(address.type, TX270);
    QCOMPARE(address.parameters.value("IP_Interface").toString(), QStringLiteral("TCP/IP"));
    QCOMPARE(address.parameters.value("IP_RemoteAddr").toString(), QStringLiteral("10.0.0.1"));
    QCOMPARE(interfaceOf(address.parameters), TCPIP);
}

void TestSensorAddress::explainsWhatIsWrong_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no @") << "TX270"
                          << "'TX270' is no sensor address; one reads <model>@<interface>";
    QTest::newRow("no model") << "@RS232"
                              << "'@RS232' is no sensor address";
    QTest::newRow("unknown model") << "TX277@RS232"
                                   << "there is no model 'TX277'; did you mean";
    QTest::newRow("unknown interface") << "TX270@RS242"
                                       << "there is no interface 'RS242'; did you mean RS232";
    QTest::newRow("no interface") << "TX270@"
                                  << "there is no interface ''";
    QTest::newRow("no value") << "TX270@RS232,port"
                              << "'port' in a sensor's address is no <name>=<value>";
    QTest::newRow("trailing comma") << "TX270@RS232,"
                                    << "'' in a sensor's address is no <name>=<value>";
    QTest::newRow("misspelt name") << "TX270@RS232,prot=COM1"
                                   << "there is no interface parameter 'prot'; did you mean port";
    QTest::newRow("unknown name") << "TX270@RS232,colour=red"
                                  << "there is no interface parameter 'colour'; they are";
}

void TestSensorAddress::explainsWhatIsWrong()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QString problem;
    QVERIFY(!SensorAddress::parse(text, problem));
    QVERIFY2(problem.startsWith(expected), qPrintable(problem));
}

void TestSensorAddress::describesThePlace_data()
{
    QTest::addColumn<Parameters>("parameters");
    QTest::addColumn<QString>("place");
    QTest::newRow("serial port") << Parameters{{"IP_Port", "COM3"}, {"IP_Baudrate", 9600}} << "COM3";
    QTest::newRow("bus") << Parameters{{"IP_Port", "COM3"}, {"IP_SensorAddress", 126}} << "COM3, bus address 126";
    QTest::newRow("network") << Parameters{{"IP_RemoteAddr", "10.1.2.3"}} << "10.1.2.3";
    QTest::newRow("card") << Parameters{{"IP_CardInstance", 0}, {"IP_ChannelNumber", 1}} << "card 0, channel 1";
    QTest::newRow("nothing known") << Parameters{} << "";
}

void TestSensorAddress::describesThePlace()
{
    QFETCH(Parameters, parameters);
    QFETCH(QString, place);
    QCOMPARE(placeOf(parameters), place);
}

QTEST_GUILESS_MAIN(TestSensorAddress)
#include "tst_sensoraddress.moc"
