// SPDX-License-Identifier: MIT
#include <SondixQt/namelookup.h>
#include <SondixQt/sensoraddress.h>
#include <SondixQt/sensorfeatures.h>
#include <SondixQt/sensorinfo.h>

#include <QtTest>

#include <limits>

using namespace SondixQt;

using Parameters = QMap<QString, QVariant>;

class TestSensorAddress : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void showsModelInterfaceAndParameters();
    void leavesOutWhatOnlyDescribes();
    void aFoundSensorEqualsItsText();
    void readsWhatItShows_data();
    void readsWhatItShows();
    void textsThatLookLikeNumbersStayTexts();
    void needsNoQuotesInAShell();
    void takesEveryNameOfModelsAndInterfaces();
    void explainsWhatIsWrong_data();
    void explainsWhatIsWrong();
    void describesThePlace_data();
    void describesThePlace();
    void everyModelAndInterfaceCanBeRead();
    void switchesAndDecimalNumbersBecomeIntegers();
    void whatIsNotInTheCatalogueIsShown();
    void keysAreTheNamesOfTheTextForm();
    void valuesAreParsedByTheirParameter_data();
    void valuesAreParsedByTheirParameter();
    void equalAddressesReachTheSameSensor();
    void isAMetaType();

private:
    static SensorAddress parsed(const QString &text)
    {
        QString problem;
        const auto address = SensorAddress::parse(text, &problem);
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

void TestSensorAddress::aFoundSensorEqualsItsText()
{
    const SensorInfo info({{"IP_SensorType", TX270},
                           {"IP_InterfaceIdx", 8},
                           {"IP_Interface", "XA100_USB"},
                           {"IP_Port", 3},
                           {"IP_Baudrate", 115200},
                           {"SA_SerialNumber", 1001}},
                          NoSensor);
    const SensorAddress address = SensorAddress::of(info);
    QCOMPARE(parsed(address.toString()), address);
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
    row("signs of the text form", TX270, "RS232", {{"IP_Port", "a,b=c@d%e%20f"}, {"IP_x=y,z@%", "=,@%"}});
    row("decimal numbers", TX270, "RS232",
        {{"IP_A", 2.0}, {"IP_B", -1e300}, {"IP_C", 1.0 / 3.0}, {"IP_D", 4294967296.0}, {"IP_E", 0.0}});
    row("line ends and zero characters", TX270, "RS232", {{"IP_Port", QString::fromLatin1("a\r\n\0b", 5)}});
    row("limits of int", TX270, "RS232",
        {{"IP_Parity", std::numeric_limits<int>::min()}, {"IP_Stopbits", std::numeric_limits<int>::max()}});
    row("long text", TX270, "RS232", {{"IP_Port", QString(100000, ' ')}});
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
    QCOMPARE(address, (SensorAddress{type, parameters}));
}

void TestSensorAddress::everyModelAndInterfaceCanBeRead()
{
    for (const SensorType type : getSensorFeatures().keys()) {
        if (type == NoSensor || type == Unnamed)
            continue;
        for (const SensorInterface iface : sensorInterfaces()) {
            const SensorAddress address{type, {{"IP_Interface", interfaceName(iface, true)}}};
            QCOMPARE(address.interfaceType(), iface);
            QCOMPARE(parsed(address.toString()), address);
        }
    }
}

void TestSensorAddress::switchesAndDecimalNumbersBecomeIntegers()
{
    const SensorAddress address{TX270, {{"IP_Interface", "RS232"}, {"IP_Echo", true}, {"IP_Slow", false}}};
    QCOMPARE(address.toString(), "TX270@RS232,IP_Echo=1,IP_Slow=0");
    const SensorAddress decimal{TX270, {{"IP_Interface", "RS232"}, {"IP_Baudrate", 9600.0}}};
    QCOMPARE(decimal.toString(), "TX270@RS232,baudrate=9600");
}

void TestSensorAddress::whatIsNotInTheCatalogueIsShown()
{
    QCOMPARE((SensorAddress{TX270, {{"IP_Interface", "carrier pigeon"}}}).toString(), "TX270@carrier%20pigeon");
    QCOMPARE((SensorAddress{SensorType(27), {{"IP_Interface", "RS232"}}}).toString(), "@RS232");
    QCOMPARE(SensorAddress().toString(), "No%20Sensor@");
    QCOMPARE(SensorAddress().interfaceType(), NoInterface);
    QVERIFY(!SensorAddress::parse(SensorAddress().toString()));
}

void TestSensorAddress::textsThatLookLikeNumbersStayTexts()
{
    const Parameters parameters{{"IP_Interface", "RS232"}, {"IP_Port", "3"}, {"IP_SerialNumber", "0815"},
                                {"IP_Baudrate", "9600"},   {"IP_A", "nan"},  {"IP_B", "\u00a07"},
                                {"IP_C", "+1e3"},          {"IP_D", ""}};
    const SensorAddress address = parsed(SensorAddress{TX270, parameters}.toString());
    QCOMPARE(address, (SensorAddress{TX270, parameters}));
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
    QCOMPARE(address.interfaceType(), TCPIP);
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
    QTest::newRow("empty") << ""
                           << "'' is no sensor address";
    QTest::newRow("no number") << "TX270@RS232,baudrate=fast"
                               << "the baudrate 'fast' is no whole number";
    QTest::newRow("no whole number") << "TX270@RS232,baudrate=9600.0"
                                     << "the baudrate '9600.0' is no whole number";
    QTest::newRow("number beyond int") << "TX270@RS232,channel=2147483648"
                                       << "the channel '2147483648' is no whole number";
    QTest::newRow("number below the range") << "TX270@RS232,baudrate=0"
                                            << "the baudrate 0 is not from 1 to 100000000";
    QTest::newRow("number above the range") << "CC480@TCP/IP,remote-port=65536"
                                            << "the remote-port 65536 is not from 0 to 65535";
    QTest::newRow("name twice") << "TX270@RS232,port=COM1,PORT=COM2"
                                << "the sensor's address has two values of 'PORT'";
    QTest::newRow("both names") << "TX270@RS232,port=COM1,IP_Port=COM1"
                                << "the sensor's address has two values of 'IP_Port'";
    QTest::newRow("second interface") << "TX270@RS232,IP_Interface=TCP/IP"
                                      << "the sensor's address has two values of 'IP_Interface'";
    QTest::newRow("placeholders") << "%1@%2,%3=%4"
                                  << "there is no model '";
    QTest::newRow("long part") << "TX270@RS232," + QString(1 << 20, 'p') << "'ppp";
    QTest::newRow("long name") << "TX270@RS232," + QString(1 << 20, 'p') + "=1"
                               << "there is no interface parameter 'ppp";
    QTest::newRow("signs alone") << QString(1000, '@') << "'@@@";
}

void TestSensorAddress::explainsWhatIsWrong()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QString problem;
    QVERIFY(!SensorAddress::parse(text, &problem));
    QVERIFY2(problem.startsWith(expected), qPrintable(problem.left(200)));
    QVERIFY(!SensorAddress::parse(text));
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
    QCOMPARE((SensorAddress{TX270, parameters}).place(), place);
}

void TestSensorAddress::keysAreTheNamesOfTheTextForm()
{
    QStringList names;
    for (const SensorAddress::Key &key : SensorAddress::keys()) {
        names += key.name;
        const SensorAddress address{TX270, {{"IP_Interface", "RS232"}, {key.parameter, 1}}};
        QCOMPARE(address.toString(), "TX270@RS232," + key.name + "=1");
    }
    QCOMPARE(names, QStringList({"port", "baudrate", "stopbits", "bytesize", "parity", "sensor-address", "address",
                                 "remote-port", "data-port", "address-family", "card", "device", "channel",
                                 "serial-number"}));
}

void TestSensorAddress::valuesAreParsedByTheirParameter_data()
{
    QTest::addColumn<QString>("parameter");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char *name, const char *parameter, const char *text, const QVariant &value) {
        QTest::newRow(name) << parameter << text << value;
    };
    row("text", "IP_Port", "3", "3");
    row("serial number", "SA_SerialNumber", "0815", "0815");
    row("integer", "IP_Baudrate", "115200", 115200);
    row("interface", "IP_Interface", "3", "3");
    row("unknown, integer", "IP_Timeout", "-7", -7);
    row("unknown, decimal", "IP_Timeout", "1.5", 1.5);
    row("unknown, beyond int", "IP_Timeout", "4294967296", 4294967296.0);
    row("unknown, text", "IP_Timeout", "long", "long");
    row("empty text", "IP_Port", "", "");
    row("percent sign", "IP_Port", "%31", "%31");
    row("another letter case", "ip_port", "3", 3);
}

void TestSensorAddress::valuesAreParsedByTheirParameter()
{
    QFETCH(QString, parameter);
    QFETCH(QString, text);
    QFETCH(QVariant, value);
    QString problem = "as before";
    const std::optional<QVariant> parsedValue = SensorAddress::parseValue(parameter, text, &problem);
    QVERIFY(parsedValue);
    QCOMPARE(*parsedValue, value);
    QCOMPARE(parsedValue->type(), value.type());
    QCOMPARE(problem, "as before");
}

void TestSensorAddress::equalAddressesReachTheSameSensor()
{
    const SensorAddress address{TX270, {{"IP_Interface", "RS232"}, {"IP_Port", "3"}}};
    const SensorAddress same[] = {
        {TX270, {{"IP_Port", "3"}, {"IP_Interface", "RS232"}}},
        {TX270, {{"IP_Port", 3}, {"IP_Interface", "RS232"}}}, // as a search may report it
        {TX270, {{"IP_Port", "3"}, {"IP_Interface", "RS232"}, {"SA_Softwareversion", "1.2"}}},
    };
    for (const SensorAddress &other : same) {
        QVERIFY2(address == other, qPrintable(other.toString()));
        QVERIFY2(other == address, qPrintable(other.toString()));
    }
    QVERIFY(
        (SensorAddress{SensorType(27), address.parameters} != SensorAddress{SensorType(70), address.parameters}));
    QVERIFY((SensorAddress{TX270, {{"IP_Baudrate", 9600}}} != SensorAddress{TX270, {{"IP_Baudrate", "9600"}}}));
    const SensorAddress others[] = {
        {TX280, address.parameters},
        {TX270, {{"IP_Interface", "RS232"}, {"IP_Port", "4"}}},
        {TX270, {{"IP_Interface", "RS232"}, {"IP_Baudrate", "3"}}},
        {TX270, {{"IP_Interface", "RS232"}}},
        {SensorType(27), address.parameters},
        {SensorType(70), address.parameters},
        {},
    };
    for (const SensorAddress &other : others) {
        QVERIFY2(address != other, qPrintable(other.toString()));
        QVERIFY2(other != address, qPrintable(other.toString()));
    }
}

void TestSensorAddress::isAMetaType()
{
    const SensorAddress address{TX270, {{"IP_Interface", "RS232"}, {"IP_Port", "3"}}};
    QCOMPARE(QVariant::fromValue(address).value<SensorAddress>(), address);
    QCOMPARE(QMetaType::type("SondixQt::SensorAddress"), qMetaTypeId<SensorAddress>());
    QCOMPARE(QMetaType::type("SensorAddress"), qMetaTypeId<SensorAddress>());
}

QTEST_GUILESS_MAIN(TestSensorAddress)
#include "tst_sensoraddress.moc"
