// SPDX-License-Identifier: MIT
#include <SondixQt/ParameterPresentation>
#include <SondixQt/SensorInfo>

#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QtTest>

#include <memory>
#include <thread>
#include <vector>

using namespace SondixQt;
using Parameters = QMap<QString, QVariant>;

class TestParameterPresentation : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void friendlyNames_data();
    void friendlyNames();
    void otherTextsHaveNoFriendlyName_data();
    void otherTextsHaveNoFriendlyName();
    void friendlyNamesFromManyThreads();

    void basicParameters_data();
    void basicParameters();
    void basicParametersAreThosePresent();
    void basicParametersNeedAValidValue();
    void withoutKnownInterfaceAllParametersAreBasic_data();
    void withoutKnownInterfaceAllParametersAreBasic();

    void nullLayoutIsIgnored();
    void noParametersAddNothing();
    void unnamedParameterIsLeftOut();
    void keyIsTheCaptionWithoutFriendlyNames();
    void interfaceAndPortComeFirst();
    void rowsOfInterfaceAndPortStayReserved_data();
    void rowsOfInterfaceAndPortStayReserved();
    void othersFollowInKeyOrder();
    void labelsAreSetUp();
    void cellsSpanOneRowAndColumn();
    void secondTableFollowsTheFirst();
    void tableFollowsWhatTheLayoutHolds();
    void labelsDieWithTheWidget();
    void layoutWithoutWidgetHandsLabelsOverLater();
    void valuesAsText_data();
    void valuesAsText();
    void everyTypeIsShownAsItsText();
    void tableOfASensor();
};

namespace {

const QString interfaceKey = "IP_Interface";
const QString portKey = "IP_Port";
const QString serialKey = "SA_SerialNumber";

QLabel *labelAt(const QGridLayout &layout, int row, int column)
{
    const QLayoutItem *item = layout.itemAtPosition(row, column);
    return item ? qobject_cast<QLabel *>(const_cast<QLayoutItem *>(item)->widget()) : nullptr;
}

/// The table as lines "row: caption | value"; empty rows are left out.
QStringList rowsOf(const QGridLayout &layout)
{
    QStringList rows;
    for (int row = 0; row < layout.rowCount(); ++row) {
        const QLabel *name = labelAt(layout, row, 0);
        const QLabel *value = labelAt(layout, row, 1);
        if (name || value)
            rows.append(QString("%1: %2 | %3")
                            .arg(QString::number(row), name ? name->text() : "no caption",
                                 value ? value->text() : "no value"));
    }
    return rows;
}

/// A widget with a grid layout.
struct Grid
{
    QWidget widget;
    QGridLayout *layout = new QGridLayout(&widget);
};

/// All parameters that occur in a list of basic parameters and some others, each with its key as its value.
Parameters everyParameter(int interfaceIndex)
{
    static const char *const keys[] = {
        "IP_SensorTypeName",  "IP_Interface",     "IP_Port",       "IP_Baudrate",
        "IP_Stopbits",        "IP_Parity",        "IP_ByteSize",   "IP_CardInstance",
        "IP_ChannelNumber",   "IP_SerialNumber",  "IP_RemoteAddr", "IP_RemotePort",
        "IP_DataPort",        "IP_SensorAddress", "SA_Baudrate",   "SA_Parity",
        "IP_DeviceInstance",  "SA_SerialNumber",  "SA_MacAddress", "SA_ControllerSerialNumber",
        "SA_Softwareversion", "SA_SubnetMask",    "SA_DHCPName",   "SA_LocalAdapterDescription",
        "SA_Sensor",          "IP_AddressFamily"};
    Parameters parameters;
    for (const char *key : keys)
        parameters.insert(QLatin1String(key), QLatin1String(key));
    parameters.insert("IP_InterfaceIdx", interfaceIndex);
    return parameters;
}

} // namespace

void TestParameterPresentation::friendlyNames_data()
{
    QTest::addColumn<QString>("friendly");
    const auto row = [](const char *parameter, const char *friendly) {
        QTest::newRow(parameter) << QString::fromLatin1(friendly);
    };
    row("$RecordingDate$", "$RecordingDate$");
    row("$Unknown$", "$Unknown$");
    row("IP_Baudrate", "$Baudrate$");
    row("IP_ByteSize", "$Byte Size$");
    row("IP_CardInstance", "$Card Instance$");
    row("IP_ChannelNumber", "$Channel Number$");
    row("IP_DeviceInstance", "$Device Instance$");
    row("IP_Interface", "$Interface$");
    row("IP_Parity", "$Parity$");
    row("IP_Port", "$Port Number$");
    row("IP_RemoteAddr", "$IP Address$");
    row("IP_SensorAddress", "Sensor Address");
    row("IP_SensorTypeName", "$SensorType$");
    row("IP_SerialNumber", "$Serial Number (Interface)$");
    row("IP_Stopbits", "$Stopbits$");
    row("SA_ControllerSerialNumber", "$Serial Number (Controller)$");
    row("SA_DHCPName", "$Host Name$");
    row("SA_LocalAdapterDescription", "$Network Adapter$");
    row("SA_MacAddress", "$MAC Address$");
    row("SA_SerialNumber", "$Serial Number (Controller)$");
    row("SA_Softwareversion", "$Software Version$");
    row("SA_SubnetMask", "$Subnet Mask$");
}

void TestParameterPresentation::friendlyNames()
{
    QFETCH(QString, friendly);
    QCOMPARE(friendlyParameterName(QString::fromLatin1(QTest::currentDataTag())), friendly);
}

void TestParameterPresentation::otherTextsHaveNoFriendlyName_data()
{
    QTest::addColumn<QString>("parameter");
    QTest::newRow("empty") << QString();
    QTest::newRow("not in the table") << "SA_Sensor";
    QTest::newRow("number of the interface") << "IP_InterfaceIdx";
    QTest::newRow("answer with the name of a setting") << "SA_Baudrate";
    QTest::newRow("other case") << "ip_port";
    QTest::newRow("part of a name") << "IP_Por";
    QTest::newRow("longer than a name") << "IP_Port ";
    QTest::newRow("without its marks") << "Unknown";
    QTest::newRow("a friendly name") << "$Port Number$";
}

void TestParameterPresentation::otherTextsHaveNoFriendlyName()
{
    QFETCH(QString, parameter);
    QCOMPARE(friendlyParameterName(parameter), QString());
}

void TestParameterPresentation::friendlyNamesFromManyThreads()
{
    constexpr int calls = 2000;
    std::vector<int> correct(4, 0);
    std::vector<std::thread> threads;
    for (int &count : correct) {
        threads.emplace_back([&count] {
            for (int i = 0; i < calls; ++i)
                count += friendlyParameterName(portKey) == "$Port Number$" ? 1 : 0;
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(correct, std::vector<int>(4, calls));
}

void TestParameterPresentation::basicParameters_data()
{
    QTest::addColumn<int>("interfaceIndex");
    QTest::addColumn<QString>("basic");
    const auto row = [](const char *iface, int interfaceIndex, const char *basic) {
        QTest::newRow(iface) << interfaceIndex << QString::fromLatin1(basic);
    };
    row("RS232", 1, "IP_Baudrate IP_Port IP_SensorAddress SA_SerialNumber SA_Softwareversion");
    row("XA100", 2, "IP_Baudrate IP_CardInstance IP_Interface IP_SerialNumber SA_SerialNumber");
    row("TCPIP", 3, "IP_RemoteAddr IP_SerialNumber SA_MacAddress SA_SerialNumber SA_Softwareversion");
    row("XA200", 6,
        "IP_Baudrate IP_CardInstance IP_ChannelNumber IP_Interface IP_SerialNumber SA_SerialNumber "
        "SA_Softwareversion");
    row("WinUSB", 7, "IP_DeviceInstance IP_Interface SA_SerialNumber");
    row("XA100_USB", 8,
        "IP_Baudrate IP_ChannelNumber IP_DeviceInstance IP_Interface IP_SerialNumber SA_SerialNumber "
        "SA_Softwareversion");
    row("XA200_ETH", 10,
        "IP_CardInstance IP_ChannelNumber IP_Interface IP_RemoteAddr IP_SensorTypeName IP_SerialNumber "
        "SA_Baudrate SA_MacAddress SA_Parity SA_SerialNumber");
}

void TestParameterPresentation::basicParameters()
{
    QFETCH(int, interfaceIndex);
    QFETCH(QString, basic);
    const Parameters extracted = extractBasicParameters(SensorInfo(everyParameter(interfaceIndex), TX270));
    QCOMPARE(QStringList(extracted.keys()).join(' '), basic);
    for (auto parameter = extracted.begin(); parameter != extracted.end(); ++parameter)
        QCOMPARE(parameter->toString(), parameter.key());
}

void TestParameterPresentation::basicParametersAreThosePresent()
{
    const Parameters parameters{
        {"IP_InterfaceIdx", 1}, {portKey, "COM3"}, {serialKey, 4711}, {"IP_RemoteAddr", "192.168.0.1"}};
    const Parameters basic{{portKey, "COM3"}, {serialKey, 4711}};
    QCOMPARE(extractBasicParameters(SensorInfo(parameters, TX270)), basic);

    const Parameters none{{"IP_InterfaceIdx", 1}, {"SA_Sensor", 5}};
    QCOMPARE(extractBasicParameters(SensorInfo(none, TX270)), Parameters());
}

void TestParameterPresentation::basicParametersNeedAValidValue()
{
    Parameters parameters = everyParameter(1);
    parameters.insert(portKey, QVariant());
    parameters.insert(serialKey, QString());
    const Parameters extracted = extractBasicParameters(SensorInfo(parameters, TX270));
    QVERIFY(!extracted.contains(portKey));
    QVERIFY2(extracted.contains(serialKey), "an empty text is a valid value");
    QCOMPARE(extracted.size(), 4);
}

void TestParameterPresentation::withoutKnownInterfaceAllParametersAreBasic_data()
{
    QTest::addColumn<Parameters>("parameters");
    Parameters withoutInterface = everyParameter(0);
    withoutInterface.remove("IP_InterfaceIdx");
    withoutInterface.insert("SA_NoValue", QVariant());
    QTest::newRow("no interface number") << withoutInterface;
    QTest::newRow("interface 0") << everyParameter(0);
    QTest::newRow("an unknown interface") << everyParameter(4);
    QTest::newRow("empty") << Parameters();
}

void TestParameterPresentation::withoutKnownInterfaceAllParametersAreBasic()
{
    QFETCH(Parameters, parameters);
    QCOMPARE(extractBasicParameters(SensorInfo(parameters, TX270)), parameters);
}

void TestParameterPresentation::nullLayoutIsIgnored()
{
    const int before = QApplication::allWidgets().size();
    createParameterTable(nullptr, everyParameter(1), false);
    createParameterTable(nullptr, {}, true);
    QCOMPARE(QApplication::allWidgets().size(), before);
}

void TestParameterPresentation::noParametersAddNothing()
{
    Grid grid;
    createParameterTable(grid.layout, {}, false);
    createParameterTable(grid.layout, {}, true);
    QCOMPARE(grid.layout->count(), 0);
    QVERIFY(grid.widget.findChildren<QWidget *>().isEmpty());
}

void TestParameterPresentation::unnamedParameterIsLeftOut()
{
    Grid grid;
    const Parameters parameters{{"SA_Sensor", "TX270"}};
    createParameterTable(grid.layout, parameters, true);
    QCOMPARE(grid.layout->count(), 0);
    QVERIFY(grid.widget.findChildren<QWidget *>().isEmpty());

    createParameterTable(grid.layout, {{QString(), "a value without a key"}}, false);
    QCOMPARE(grid.layout->count(), 0);
}

void TestParameterPresentation::keyIsTheCaptionWithoutFriendlyNames()
{
    Grid grid;
    createParameterTable(grid.layout, {{"SA_Sensor", "TX270"}}, false);
    QCOMPARE(rowsOf(*grid.layout), QStringList("2: SA_Sensor | TX270"));
    QCOMPARE(grid.layout->count(), 2);
    QCOMPARE(grid.layout->rowCount(), 3);
    QCOMPARE(grid.layout->columnCount(), 2);
}

void TestParameterPresentation::interfaceAndPortComeFirst()
{
    Grid grid;
    const Parameters parameters{{interfaceKey, "RS232"}, {portKey, "COM3"}, {serialKey, 4711}};
    createParameterTable(grid.layout, parameters, true);
    const QStringList rows{"0: $Interface$ | RS232", "1: $Port Number$ | COM3",
                           "2: $Serial Number (Controller)$ | 4711"};
    QCOMPARE(rowsOf(*grid.layout), rows);
}

void TestParameterPresentation::rowsOfInterfaceAndPortStayReserved_data()
{
    QTest::addColumn<Parameters>("parameters");
    QTest::addColumn<QStringList>("rows");
    const QString baudrate = "IP_Baudrate";
    QTest::newRow("neither") << Parameters{{serialKey, 1}} << QStringList{"2: SA_SerialNumber | 1"};
    QTest::newRow("interface only") << Parameters{{interfaceKey, 1}, {serialKey, 2}}
                                    << QStringList{"0: IP_Interface | 1", "2: SA_SerialNumber | 2"};
    QTest::newRow("port only") << Parameters{{portKey, 1}, {serialKey, 2}}
                               << QStringList{"1: IP_Port | 1", "2: SA_SerialNumber | 2"};
    QTest::newRow("port alone") << Parameters{{portKey, 1}} << QStringList{"1: IP_Port | 1"};
    QTest::newRow("a key before both") << Parameters{{baudrate, 9600}, {interfaceKey, 1}, {portKey, 2}}
                                       << QStringList{"0: IP_Interface | 1", "1: IP_Port | 2",
                                                      "2: IP_Baudrate | 9600"};
    QTest::newRow("other case is another key") << Parameters{{"ip_port", 1}} << QStringList{"2: ip_port | 1"};
}

void TestParameterPresentation::rowsOfInterfaceAndPortStayReserved()
{
    QFETCH(Parameters, parameters);
    QFETCH(QStringList, rows);
    Grid grid;
    createParameterTable(grid.layout, parameters, false);
    QCOMPARE(rowsOf(*grid.layout), rows);
}

void TestParameterPresentation::othersFollowInKeyOrder()
{
    Grid grid;
    createParameterTable(grid.layout, everyParameter(3), true);
    const QStringList rows{
        "0: $Interface$ | IP_Interface",
        "1: $Port Number$ | IP_Port",
        "2: $Baudrate$ | IP_Baudrate",
        "3: $Byte Size$ | IP_ByteSize",
        "4: $Card Instance$ | IP_CardInstance",
        "5: $Channel Number$ | IP_ChannelNumber",
        "6: $Device Instance$ | IP_DeviceInstance",
        "7: $Parity$ | IP_Parity",
        "8: $IP Address$ | IP_RemoteAddr",
        "9: Sensor Address | IP_SensorAddress",
        "10: $SensorType$ | IP_SensorTypeName",
        "11: $Serial Number (Interface)$ | IP_SerialNumber",
        "12: $Stopbits$ | IP_Stopbits",
        "13: $Serial Number (Controller)$ | SA_ControllerSerialNumber",
        "14: $Host Name$ | SA_DHCPName",
        "15: $Network Adapter$ | SA_LocalAdapterDescription",
        "16: $MAC Address$ | SA_MacAddress",
        "17: $Serial Number (Controller)$ | SA_SerialNumber",
        "18: $Software Version$ | SA_Softwareversion",
        "19: $Subnet Mask$ | SA_SubnetMask",
    };
    QCOMPARE(rowsOf(*grid.layout), rows);
}

void TestParameterPresentation::labelsAreSetUp()
{
    Grid grid;
    createParameterTable(grid.layout, {{interfaceKey, "RS232"}, {serialKey, 4711}}, true);
    const QSizePolicy maximum(QSizePolicy::Maximum, QSizePolicy::Maximum);
    for (const int row : {0, 2}) {
        const QLabel *name = labelAt(*grid.layout, row, 0);
        QVERIFY(name);
        QCOMPARE(name->objectName(), "name");
        QCOMPARE(name->sizePolicy().horizontalPolicy(), maximum.horizontalPolicy());
        QCOMPARE(name->sizePolicy().verticalPolicy(), maximum.verticalPolicy());
        QCOMPARE(name->textInteractionFlags(), QLabel().textInteractionFlags());
        QCOMPARE(name->cursor().shape(), Qt::ArrowCursor);

        const QLabel *value = labelAt(*grid.layout, row, 1);
        QVERIFY(value);
        QCOMPARE(value->objectName(), "value");
        QCOMPARE(value->sizePolicy().horizontalPolicy(), maximum.horizontalPolicy());
        QCOMPARE(value->sizePolicy().verticalPolicy(), maximum.verticalPolicy());
        QCOMPARE(value->textInteractionFlags(), Qt::TextInteractionFlags(Qt::TextBrowserInteraction));
        QCOMPARE(value->cursor().shape(), Qt::IBeamCursor);
    }
    QCOMPARE(grid.widget.findChildren<QLabel *>("name").size(), 2);
    QCOMPARE(grid.widget.findChildren<QLabel *>("value").size(), 2);
}

void TestParameterPresentation::cellsSpanOneRowAndColumn()
{
    Grid grid;
    createParameterTable(grid.layout, everyParameter(1), true);
    QCOMPARE(grid.layout->count(), 40);
    for (int index = 0; index < grid.layout->count(); ++index) {
        int row = 0;
        int column = 0;
        int rowSpan = 0;
        int columnSpan = 0;
        grid.layout->getItemPosition(index, &row, &column, &rowSpan, &columnSpan);
        QCOMPARE(column, index % 2);
        QCOMPARE(rowSpan, 1);
        QCOMPARE(columnSpan, 1);
        QCOMPARE(grid.layout->itemAt(index)->alignment(), Qt::Alignment());
    }
}

void TestParameterPresentation::secondTableFollowsTheFirst()
{
    Grid grid;
    createParameterTable(grid.layout, {{portKey, "COM3"}, {serialKey, 1}}, true);
    QCOMPARE(grid.layout->rowCount(), 3);
    createParameterTable(grid.layout, {{"IP_Baudrate", 9600}, {serialKey, 2}}, true);
    QCOMPARE(grid.layout->rowCount(), 5);
    const QStringList rows{"1: $Port Number$ | COM3", "2: $Serial Number (Controller)$ | 1",
                           "3: $Baudrate$ | 9600", "4: $Serial Number (Controller)$ | 2"};
    QCOMPARE(rowsOf(*grid.layout), rows);

    createParameterTable(grid.layout, {{interfaceKey, "RS232"}, {portKey, "COM4"}}, true);
    QCOMPARE(grid.layout->rowCount(), 5);
    QCOMPARE(grid.layout->count(), 12);
    int row = -1;
    int column = -1;
    int rowSpan = 0;
    int columnSpan = 0;
    grid.layout->getItemPosition(11, &row, &column, &rowSpan, &columnSpan);
    QCOMPARE(qobject_cast<QLabel *>(grid.layout->itemAt(11)->widget())->text(), "COM4");
    QCOMPARE(row, 1);
    QCOMPARE(column, 1);
}

void TestParameterPresentation::tableFollowsWhatTheLayoutHolds()
{
    Grid grid;
    grid.layout->addWidget(new QLabel("heading"), 6, 0);
    createParameterTable(grid.layout, {{interfaceKey, "RS232"}, {serialKey, 1}}, true);
    const QStringList rows{"0: $Interface$ | RS232", "6: heading | no value",
                           "7: $Serial Number (Controller)$ | 1"};
    QCOMPARE(rowsOf(*grid.layout), rows);
}

void TestParameterPresentation::labelsDieWithTheWidget()
{
    auto grid = std::make_unique<Grid>();
    createParameterTable(grid->layout, {{portKey, 1}, {serialKey, 2}}, true);
    QList<QPointer<QLabel>> labels;
    for (QLabel *label : grid->widget.findChildren<QLabel *>()) {
        QCOMPARE(label->parentWidget(), &grid->widget);
        labels.append(label);
    }
    QCOMPARE(labels.size(), 4);
    grid.reset();
    for (const QPointer<QLabel> &label : qAsConst(labels))
        QVERIFY(label.isNull());
}

void TestParameterPresentation::layoutWithoutWidgetHandsLabelsOverLater()
{
    auto layout = std::make_unique<QGridLayout>();
    createParameterTable(layout.get(), {{serialKey, 1}}, true);
    QPointer<QLabel> name = labelAt(*layout, 2, 0);
    QPointer<QLabel> value = labelAt(*layout, 2, 1);
    QVERIFY(name && value);
    QVERIFY(!name->parentWidget());
    QVERIFY(!value->parentWidget());

    auto widget = std::make_unique<QWidget>();
    widget->setLayout(layout.release());
    QCOMPARE(name->parentWidget(), widget.get());
    QCOMPARE(value->parentWidget(), widget.get());
    widget.reset();
    QVERIFY(name.isNull());
    QVERIFY(value.isNull());
}

void TestParameterPresentation::valuesAsText_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *title, const QVariant &value, const QString &text) {
        QTest::newRow(title) << value << text;
    };
    row("invalid", QVariant(), QString());
    row("bool", true, "true");
    row("int", -2147483647 - 1, "-2147483648");
    row("unsigned", 4294967295U, "4294967295");
    row("long long", Q_INT64_C(-9223372036854775807), "-9223372036854775807");
    row("unsigned long long", Q_UINT64_C(18446744073709551615), "18446744073709551615");
    row("double", 0.25, "0.25");
    row("float", 0.5F, "0.5");
    row("character", QChar(0x00b5), QString(QChar(0x00b5)));
    row("text", "XA100/PCI", "XA100/PCI");
    row("text beyond Latin-1", QString::fromUtf8("Řez 2"), QString::fromUtf8("Řez 2"));
    row("bytes are UTF-8", QByteArray("5 \xc2\xb5m"), QString::fromUtf8("5 µm"));
    row("date", QDate(2026, 2, 3), "2026-02-03");
    row("time", QTime(4, 5, 6), "04:05:06.000");
    row("address", QUrl("http://192.168.0.1/a"), "http://192.168.0.1/a");
    row("list of one text", QStringList("one"), "one");
    row("list of texts", QStringList({"one", "two"}), QString());
    row("list", QVariantList({1, 2}), QString());
    row("map", QVariantMap({{"a", 1}}), QString());
    row("size", QSize(1, 2), QString());
}

void TestParameterPresentation::valuesAsText()
{
    QFETCH(QVariant, value);
    QFETCH(QString, text);
    Grid grid;
    createParameterTable(grid.layout, {{serialKey, value}}, true);
    const QLabel *label = labelAt(*grid.layout, 2, 1);
    QVERIFY(label);
    QCOMPARE(label->text(), text);
}

void TestParameterPresentation::everyTypeIsShownAsItsText()
{
    int types = 0;
    for (int type = 1; type <= QMetaType::HighestInternalId; ++type) {
        if (!QMetaType::isRegistered(type) || type == QMetaType::Void)
            continue;
        const QVariant value(type, nullptr);
        Grid grid;
        createParameterTable(grid.layout, {{"SA_Value", value}}, false);
        const QLabel *label = labelAt(*grid.layout, 2, 1);
        QVERIFY2(label, QMetaType::typeName(type));
        QCOMPARE(label->text(), value.toString());
        ++types;
    }
    QVERIFY2(types > 50, "Qt knows more types than these");
}

void TestParameterPresentation::tableOfASensor()
{
    const SensorInfo sensor({{"IP_InterfaceIdx", 6},
                             {"IP_SensorType", 41},
                             {interfaceKey, "XA200"},
                             {"IP_CardInstance", 0},
                             {"IP_ChannelNumber", 1},
                             {"IP_Baudrate", 921600},
                             {"IP_SerialNumber", 1203},
                             {"IP_Parity", 0},
                             {serialKey, "18050123"},
                             {"SA_Softwareversion", "001.004"}},
                            NoSensor);
    Grid grid;
    createParameterTable(grid.layout, extractBasicParameters(sensor), true);
    const QStringList rows{
        "0: $Interface$ | XA200",
        "2: $Baudrate$ | 921600",
        "3: $Card Instance$ | 0",
        "4: $Channel Number$ | 1",
        "5: $Serial Number (Interface)$ | 1203",
        "6: $Serial Number (Controller)$ | 18050123",
        "7: $Software Version$ | 001.004",
    };
    QCOMPARE(rowsOf(*grid.layout), rows);

    grid.widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&grid.widget));
    const QLabel *first = labelAt(*grid.layout, 0, 1);
    const QLabel *last = labelAt(*grid.layout, 7, 1);
    QVERIFY(first->isVisible() && last->isVisible());
    QVERIFY2(first->geometry().bottom() < last->geometry().top(), "the rows stand one below the other");
}

QTEST_MAIN(TestParameterPresentation)
#include "tst_parameterpresentation.moc"
