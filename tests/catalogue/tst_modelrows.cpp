// SPDX-License-Identifier: MIT
#include <SondixQt/SensorFeatures>

#include "catalogue/basetype_p.h"
#include "catalogue/busnames_p.h"
#include "catalogue/datatables_p.h"
#include "catalogue/modetables_p.h"
#include "catalogue/ratetables_p.h"
#include "catalogue/searchtables_p.h"
#include "catalogue/trackingtables_p.h"
#include "catalogue/videotables_p.h"

#include <QtTest>

#include <algorithm>
#include <iterator>

using namespace SondixQt;

namespace {

/// One table of the catalogue, and whether a type has a row in it.
struct Table
{
    const char *name;
    bool (*hasRow)(SensorType type);
};

bool hasRate(SensorType type)
{
    return fixedSampleRate(type) || sampleRateRow(type).rule != SampleRateRule::Unknown;
}

bool hasSearch(SensorType type)
{
    const SearchRow &row = searchRow(type);
    return row.type == type && (row.quickScan || row.addressList || row.card != NoInterface ||
                                row.alsoFinds != NoSensor || !row.companions.isEmpty());
}

bool hasNamePart(SensorType type)
{
    const auto lists = [type](ConstantList<NamePart> parts) {
        return std::any_of(parts.begin(), parts.end(), [type](const NamePart &part) { return part.type == type; });
    };
    const ConstantList<BusFamily> families = busFamilies();
    return lists(converterModels()) || std::any_of(families.begin(), families.end(),
                                                   [&](const BusFamily &family) { return lists(family.models); });
}

constexpr Table tables[] = {
    {"trigger", [](SensorType type) { return triggerRow(type) != nullptr; }},
    {"sync", [](SensorType type) { return syncRow(type) != nullptr; }},
    {"measuring modes", [](SensorType type) { return measuringModesRow(type) != nullptr; }},
    {"switched modes", [](SensorType type) { return switchedModesRow(baseType(type)) != nullptr; }},
    {"video", [](SensorType type) { return videoRow(type) != nullptr; }},
    {"sample rate", hasRate},
    {"polled", [](SensorType type) { return isPolled(baseType(type)); }},
    {"signal names", [](SensorType type) { return signalNamingRow(type) != nullptr; }},
    {"tracking", [](SensorType type) { return trackingRow(type) != nullptr; }},
    {"search", hasSearch},
    {"name parts", hasNamePart},
};

/// For each table, in the order above, whether a type needs a row in it (+) or not (-).
struct Need
{
    SensorType type;
    const char *marks;

    bool isValid() const
    {
        const QByteArrayList list = QByteArray(marks).simplified().split(' ');
        return list.size() == int(std::size(tables)) &&
               std::all_of(list.begin(), list.end(),
                           [](const QByteArray &mark) { return mark == "+" || mark == "-"; });
    }
    bool needsRow(int table) const { return QByteArray(marks).simplified().split(' ').at(table) == "+"; }
};

// clang-format off
constexpr Need needs[] = {
    //                 trigger
    //                 |   sync
    //                 |   |   measuring modes
    //                 |   |   |   switched modes
    //                 |   |   |   |   video
    //                 |   |   |   |   |   sample rate
    //                 |   |   |   |   |   |   polled
    //                 |   |   |   |   |   |   |   signal names
    //                 |   |   |   |   |   |   |   |   tracking
    //                 |   |   |   |   |   |   |   |   |   search
    // type            |   |   |   |   |   |   |   |   |   |   name parts
    {NoSensor,        "-   -   -   -   -   -   -   -   -   -   -"},
    {TX210,           "-   -   -   -   -   +   -   -   -   -   -"},
    {TX220,           "-   +   -   -   -   +   -   -   -   -   -"},
    {TX230,           "-   -   -   -   -   +   -   -   -   -   -"},
    {MC310,           "-   -   -   -   -   +   -   -   -   -   -"},
    {MC320,           "-   -   -   -   -   +   -   -   -   -   -"},
    {XA100PCI,        "-   -   -   -   -   -   -   -   -   +   -"},
    {CC410,           "-   -   -   -   -   +   -   -   -   -   -"},
    {CC420,           "-   -   -   -   -   +   -   -   -   -   -"},
    {CP710,           "+   -   -   -   -   +   -   -   -   -   -"},
    {CP720,           "-   -   -   -   -   +   -   -   -   -   -"},
    {CB910,           "+   -   -   -   -   +   -   -   -   -   -"},
    {RG4xx,           "-   -   -   -   -   +   -   -   -   -   -"},
    {RG52x,           "-   -   -   -   -   +   -   -   +   -   -"},
    {RG53x,           "-   -   -   -   -   +   -   -   +   -   -"},
    {XA200PCI,        "-   -   -   -   -   -   -   -   -   +   -"},
    {TX240,           "+   -   -   -   +   +   -   -   -   -   -"},
    {TX250,           "+   -   -   -   -   +   -   -   -   -   -"},
    {MC330,           "-   -   -   -   -   +   -   -   -   -   -"},
    {CC430,           "+   +   +   +   +   +   -   -   -   -   -"},
    {EC810,           "+   -   -   -   -   +   -   -   -   -   -"},
    {TX260,           "+   +   +   +   +   +   -   -   -   -   -"},
    {CC440,           "+   +   +   +   +   +   -   -   -   -   -"},
    {PF,              "-   -   -   -   -   -   -   -   -   -   -"},
    {UC100,           "-   -   -   -   -   -   -   -   -   -   -"},
    {CP730,           "+   -   -   -   -   +   -   -   -   -   -"},
    {XA300,           "+   -   -   -   -   +   -   -   -   -   -"},
    {PG110,           "+   +   -   -   -   +   -   -   -   -   -"},
    {XA100USB,        "-   -   -   -   -   -   -   -   -   +   -"},
    {MC340,           "+   +   -   -   +   +   -   -   -   -   -"},
    {QUnit,           "+   +   -   -   -   +   -   -   -   -   -"},
    {CC450,           "+   +   +   +   +   +   -   -   -   -   -"},
    {CP740,           "-   -   -   -   -   +   +   -   -   +   -"},
    {TX270,           "+   -   -   -   -   +   -   -   -   -   -"},
    {TX280,           "+   -   -   -   +   +   -   -   -   -   -"},
    {GenericKVBus,    "+   -   -   -   -   +   +   -   -   +   -"},
    {CC460,           "+   +   +   +   +   +   -   -   -   -   -"},
    {CB92xx,          "+   -   -   -   -   +   -   -   -   -   -"},
    {CC470,           "+   +   -   -   +   +   -   -   -   -   -"},
    {CC480,           "+   +   -   -   +   +   -   -   -   -   -"},
    {Spessa,          "+   +   -   -   -   -   -   -   -   -   -"},
    {Unnamed,         "-   -   -   -   -   -   -   -   -   -   -"},
    {EC82x_ETH,       "-   -   -   -   -   +   -   -   -   +   -"},
    {TX290,           "+   +   -   -   +   +   -   -   -   -   -"},
    {XA200ETH,        "-   -   -   -   -   -   -   -   -   +   -"},
    {HV2,             "-   -   -   -   -   +   -   -   -   +   -"},
    {CP750,           "+   -   -   -   -   +   -   -   -   -   -"},
    {WI610,           "+   +   -   -   +   +   -   -   -   -   -"},
    {TX300,           "+   -   -   -   -   +   -   -   -   -   -"},
    {MultiSensor,     "-   -   -   -   -   -   -   -   -   -   -"},
    {TX310,           "+   +   -   -   +   +   -   -   -   -   -"},
    {WI620,           "+   +   -   -   +   +   -   -   -   -   -"},
    {RG540,           "+   -   -   -   -   +   -   -   -   -   -"},
    {PG120,           "-   -   -   -   -   +   -   -   -   -   -"},
    {CC490,           "+   +   -   -   +   +   -   -   -   -   -"},
    {CC495,           "+   +   -   -   +   +   -   -   -   -   -"},
    {MV4xx_XA300ETH,  "-   -   -   -   -   +   -   -   -   -   +"},
    {EC830,           "-   -   -   -   -   +   +   -   -   +   +"},
    {HV210,           "-   -   -   -   -   +   -   -   -   -   -"},
    {GY330_XA300ETH,  "-   -   -   -   -   +   -   -   -   -   +"},
    {MV4xx,           "-   -   -   -   -   +   +   -   -   +   -"},
    {HV220,           "-   -   -   -   -   +   -   -   -   -   -"},
    {GY310_XA300ETH,  "-   -   -   -   -   +   -   -   -   -   +"},
    {GY310,           "-   -   -   -   -   +   +   +   -   +   -"},
    {CP740_XA300ETH,  "-   -   -   -   -   +   -   -   -   -   +"},
    {GY330,           "-   -   -   -   -   +   +   +   -   +   -"},
    {EC840,           "-   -   -   -   -   +   +   -   -   +   +"},
    {EC850,           "-   -   -   -   -   +   +   -   -   +   +"},
    {DVxxx,           "-   -   -   -   -   +   +   -   -   +   +"},
    {EC82x,           "-   -   -   -   -   +   +   -   -   -   -"},
    {GY320,           "-   -   -   -   -   +   +   -   -   -   -"},
    {File,            "-   -   -   -   -   -   -   -   -   -   -"},
    {MV410_XA300ETH,  "-   -   -   -   -   +   -   -   -   -   +"},
    {MV410,           "-   -   -   -   -   +   +   -   -   +   +"},
    {DVxxx_XA300ETH,  "-   -   -   -   -   +   -   -   -   -   +"},
    {MV420_XA300ETH,  "-   -   -   -   -   +   -   -   -   -   +"},
    {MV420,           "-   -   -   -   -   +   +   -   -   +   +"},
    {MV430_XA300ETH,  "-   -   -   -   -   +   -   -   -   -   +"},
    {MV430,           "-   -   -   -   -   +   +   -   -   +   +"},
};
// clang-format on

const Need *needOf(SensorType type)
{
    const auto need =
        std::find_if(std::begin(needs), std::end(needs), [type](const Need &row) { return row.type == type; });
    return need == std::end(needs) ? nullptr : need;
}

QByteArray title(SensorType type)
{
    return QByteArray::number(type) + " " + sensorName(type, true).toLatin1();
}

} // namespace

/// Every type of the catalogue has a row in each table or is listed as a type that needs none.
class ModelRowsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everyTypeOfTheListIsInTheCatalogue();
    void everyTypeHasItsRows_data();
    void everyTypeHasItsRows();
};

void ModelRowsTest::everyTypeOfTheListIsInTheCatalogue()
{
    for (const Need &need : needs) {
        QVERIFY2(getSensorFeatures().contains(need.type), QByteArray::number(need.type).constData());
        QVERIFY2(need.isValid(), title(need.type).constData());
    }
    QCOMPARE(int(std::size(needs)), getSensorFeatures().size());
}

void ModelRowsTest::everyTypeHasItsRows_data()
{
    QTest::addColumn<int>("code");
    const QList<SensorType> types = getSensorFeatures().keys();
    for (const SensorType type : types)
        QTest::newRow(title(type).constData()) << int(type);
}

void ModelRowsTest::everyTypeHasItsRows()
{
    QFETCH(int, code);
    const auto type = SensorType(code);
    const Need *need = needOf(type);
    QVERIFY2(need, "is not on the list above: say of each table whether it needs a row there");

    QStringList wrong;
    for (int position = 0; position < int(std::size(tables)); ++position) {
        const Table &table = tables[position];
        if (table.hasRow(type) != need->needsRow(position))
            wrong.append(QLatin1String(table.name) + QLatin1String(need->needsRow(position)
                                                                       ? ": no row"
                                                                       : ": has a row, listed as needing none"));
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join("; ")));
}

QTEST_GUILESS_MAIN(ModelRowsTest)
#include "tst_modelrows.moc"
