// SPDX-License-Identifier: MIT
#include "sensorfeatures.h"
#include "sensorfeatures_p.h"
#include "tablewords_p.h"

#include <initializer_list>

namespace SondixQt {

namespace {

/// A row of the table below.
struct ModelRow
{
    SensorType type;
    qint32 number;
    qint32 order;
    bool hasHelp;
    bool hasGetAllParameters;
    bool hasASCIIProtocol;
    bool hidden;
    SensorGroups group;
    QString name;
    QString shortName;
    QString image;
    WebInterface web;
};

struct ModelTables
{
    ModelTables(std::initializer_list<ModelRow> rows);

    QMap<SensorType, SensorFeatures> features;
    QMap<SensorType, WebInterface> webInterfaces;
};

ModelTables::ModelTables(std::initializer_list<ModelRow> rows)
{
    for (const ModelRow &row : rows) {
        features.insert(row.type,
                        {static_cast<SensorType>(row.number), row.order, row.hasHelp, row.hasGetAllParameters,
                         row.hasASCIIProtocol, row.hidden, row.group, row.name, row.shortName, row.image});
        if (row.web != NoWebInterface)
            webInterfaces.insert(row.type, row.web);
    }
}

constexpr WebInterface none = NoWebInterface;
constexpr WebInterface native = NativeWebInterface;
constexpr WebInterface serial = SerialWebInterface;

// clang-format off
#define S QStringLiteral

const ModelTables &modelTables()
{
    // "number" becomes SensorFeatures::type. For RG540, PG120 and DVxxx_XA300ETH it differs from the key of the
    // row; the library itself does not use it.
    static const ModelTables tables = {
        // type           number  order help all  ASCII hidden group           name                             shortName             image                            web
        {NoSensor,            0,     0, no,  no,  no,   no,    NoGroup,        S("No Sensor"),                  S("No Sensor"),       S(":/images/All-groups.png"),    none},
        {TX210,               1,    11, no,  no,  no,   no,    Tavrin,         S("Tavrin TX210"),               S("TX210"),           S(":/images/TX210.png"),         none},
        {TX220,               2,    16, no,  no,  no,   no,    Tavrin,         S("Tavrin TX220"),               S("TX220"),           S(":/images/TX220.png"),         none},
        {TX230,               5,    19, no,  no,  no,   no,    Tavrin,         S("Tavrin TX230"),               S("TX230"),           S(":/images/TX230.png"),         none},
        {MC310,               8,    61, no,  no,  no,   no,    Silvant,        S("Silvant MC310"),              S("MC310"),           S(":/images/MC310.png"),         none},
        {MC320,               9,    63, yes, yes, no,   no,    Silvant,        S("Silvant MC320"),              S("MC320"),           S(":/images/MC320.png"),         none},
        {XA100PCI,           10,   100, no,  no,  no,   no,    Interfaces,     S("XA100/PCI"),                  S("XA100/PCI"),       S(":/images/XA100 (PCI).png"),   none},
        {CC410,              12,    40, no,  no,  no,   no,    Oscura,         S("Oscura CC410"),               S("CC410"),           S(":/images/CC410.png"),         none},
        {CC420,              13,    43, no,  no,  no,   no,    Oscura,         S("Oscura CC420"),               S("CC420"),           S(":/images/CC420.png"),         none},
        {CP710,              15,    83, no,  no,  yes,  no,    Delmar,         S("Delmar CP710"),               S("CP710"),           S(":/images/CP710.png"),         native},
        {CP720,              16,    80, no,  no,  no,   no,    Delmar,         S("Delmar CP720"),               S("CP720"),           S(":/images/CP720.png"),         native},
        {CB910,              18,    85, no,  no,  no,   no,    Delmar,         S("Dualis CB910"),               S("CB910"),           S(":/images/CB910.png"),         native},
        {RG4xx,              19,    30, no,  no,  no,   no,    TavrinRG,       S("Tavrin RG4xx"),               S("RG4xx"),           S(":/images/RG4xx.png"),         none},
        {RG52x,              20,    31, no,  no,  yes,  no,    TavrinRG,       S("Tavrin RG52x"),               S("RG52x"),           S(":/images/RG52x.png"),         none},
        {RG53x,              21,    32, no,  no,  yes,  no,    TavrinRG,       S("Tavrin RG53x"),               S("RG53x"),           S(":/images/RG531.png"),         none},
        {XA200PCI,           22,   102, no,  no,  no,   no,    Interfaces,     S("XA200/PCI"),                  S("XA200/PCI"),       S(":/images/XA200.png"),         none},
        {TX240,              23,    12, no,  no,  no,   no,    Tavrin,         S("Tavrin TX240"),               S("TX240"),           S(":/images/TX240.png"),         none},
        {TX250,              24,    13, no,  no,  no,   no,    Tavrin,         S("Tavrin TX250"),               S("TX250"),           S(":/images/TX250.png"),         none},
        {MC330,              25,    60, no,  no,  no,   no,    Silvant,        S("Silvant MC330"),              S("MC330"),           S(":/images/MC330.png"),         none},
        {CC430,              26,    49, yes, yes, yes,  no,    Oscura,         S("Oscura CC430"),               S("CC430"),           S(":/images/CC430.png"),         native},
        {EC810,              28,    75, no,  no,  no,   no,    Korrin,         S("Korrin EC810"),               S("EC810"),           S(":/images/EC810.png"),         none},
        {TX260,              29,    20, yes, yes, yes,  no,    Tavrin,         S("Tavrin TX260"),               S("TX260"),           S(":/images/TX260.png"),         native},
        {CC440,              30,    45, yes, yes, yes,  no,    Oscura,         S("Oscura CC440"),               S("CC440"),           S(":/images/CC440.png"),         native},
        {PF,                 31,   110, no,  no,  no,   no,    Profax,         S("Profax"),                     S("PF"),              S(":/images/PF7xx.png"),         native},
        {UC100,              32,   106, no,  no,  no,   no,    Interfaces,     S("Universal controller UC100"), S("UC100"),           S(":/images/UC100.png"),         native},
        {CP730,              33,    82, no,  no,  yes,  no,    Delmar,         S("Delmar CP730"),               S("CP730"),           S(":/images/CP730.png"),         native},
        {XA300,              34,   105, no,  no,  yes,  no,    Interfaces,     S("XA300/ETH"),                  S("XA300"),           S(":/images/XA300.png"),         native},
        {MV4xx_XA300ETH,  10034,   140, no,  no,  yes,  yes,   Morvik | KVBus, S("XA300/Morvik_MV4xx"),         S("MV4xx_XA300ETH"),  S(":/images/MV410.png"),         none},
        {MV410_XA300ETH, 110034,   141, no,  no,  yes,  yes,   Morvik | KVBus, S("XA300/Morvik MV410"),         S("MV410_XA300ETH"),  S(":/images/MV410.png"),         none},
        {MV420_XA300ETH, 210034,   142, no,  no,  yes,  yes,   Morvik | KVBus, S("XA300/Morvik MV420"),         S("MV420_XA300ETH"),  S(":/images/MV420.png"),         none},
        {MV430_XA300ETH, 310034,   143, no,  no,  yes,  yes,   Morvik | KVBus, S("XA300/Morvik MV430"),         S("MV430_XA300ETH"),  S(":/images/MV430.png"),         none},
        {GY330_XA300ETH,  20034,   144, no,  no,  yes,  yes,   Gyrant | KVBus, S("XA300/Gyrant GY330"),         S("GY330_XA300ETH"),  S(":/images/KV-BUS_Gyrant.png"), none},
        {GY310_XA300ETH,  30034,   134, no,  no,  yes,  yes,   Gyrant | KVBus, S("XA300/Gyrant GY310"),         S("GY310_XA300ETH"),  S(":/images/KV-BUS_Gyrant.png"), none},
        {CP740_XA300ETH,  40034,   145, no,  no,  no,   yes,   Delmar | KVBus, S("XA300/Delmar CP740"),         S("CP740_XA300ETH"),  S(":/images/CP740.png"),         none},
        {DVxxx_XA300ETH,  10034,   146, no,  no,  yes,  yes,   Morvik | KVBus, S("XA300/Morvik DV"),            S("DV-xxx_XA300ETH"), S(":/images/DVxxx.png"),         none},
        {PG110,              35,    90, yes, yes, yes,  no,    Color,          S("Pigmar PG"),                  S("PG110"),           S(":/images/PG110.png"),         native},
        {XA100USB,           36,   101, no,  no,  no,   no,    Interfaces,     S("XA100/USB"),                  S("XA100/USB"),       S(":/images/XA100 (USB).png"),   none},
        {MC340,              37,    62, yes, yes, yes,  no,    Silvant,        S("Silvant MC340"),              S("MC340"),           S(":/images/MC340.png"),         native},
        {QUnit,              38,   107, no,  yes, yes,  no,    Interfaces,     S("Q-Unit"),                     S("Q-Unit"),          S(":/images/Q-Unit.png"),        native},
        {CC450,              39,    44, yes, yes, yes,  no,    Oscura,         S("Oscura CC450"),               S("CC450"),           S(":/images/CC450.png"),         native},
        {CP740,              40,    81, no,  no,  no,   no,    Delmar | KVBus, S("Delmar CP740"),               S("CP740"),           S(":/images/CP740.png"),         native},
        {TX270,              41,    14, yes, yes, yes,  no,    Tavrin,         S("Tavrin TX270"),               S("TX270"),           S(":/images/TX270.png"),         serial},
        {TX280,              42,    15, yes, yes, yes,  no,    Tavrin,         S("Tavrin TX280"),               S("TX280"),           S(":/images/TX280.png"),         serial},
        {GenericKVBus,       43,   130, no,  no,  no,   no,    KVBus | Other,  S("Generic KV-BUS sensor"),      S("KV-BUS"),          S(":/images/genericSensor.png"), none},
        {CC460,              44,    46, yes, yes, yes,  no,    Oscura,         S("Oscura CC460"),               S("CC460"),           S(":/images/CC460.png"),         native},
        {CB92xx,             45,    86, no,  no,  no,   no,    Delmar,         S("Dualis CB92xx"),              S("CB92xx"),          S(":/images/CB92xx.png"),        native},
        {CC470,              46,    41, yes, yes, yes,  no,    Oscura,         S("Oscura CC470"),               S("CC470"),           S(":/images/CC470.png"),         native},
        {CC480,              47,    42, yes, yes, yes,  no,    Oscura,         S("Oscura CC480"),               S("CC480"),           S(":/images/CC480.png"),         native},
        {CC490,              62,    47, yes, yes, yes,  no,    Oscura,         S("Oscura CC490"),               S("CC490"),           S(":/images/CC49x.png"),         native},
        {CC495,              63,    48, yes, yes, yes,  no,    Oscura,         S("Oscura CC495"),               S("CC495"),           S(":/images/CC49x.png"),         native},
        {Spessa,             48,   120, no,  yes, yes,  no,    Other,          S("Spessa"),                     S("Spessa"),          S(":/images/Spessa.png"),        native},
        {Unnamed,            49,    -1, no,  no,  yes,  no,    NoGroup,        S(""),                           S(""),                S(":/images/All-groups.png"),    none},
        {EC82x_ETH,          50,    73, no,  no,  yes,  no,    Korrin | KVBus, S("Korrin EC82x"),               S("EC82x_ETH"),       S(":/images/EC82x.png"),         native},
        {TX290,              51,    17, yes, yes, yes,  no,    Tavrin,         S("Tavrin TX290"),               S("TX290"),           S(":/images/TX290.png"),         serial},
        {XA200ETH,           52,   104, yes, yes, yes,  no,    Interfaces,     S("XA200/ETH"),                  S("XA200/ETH"),       S(":/images/XA200_ETH.png"),     native},
        {HV2,                53,    91, no,  no,  no,   no,    Color,          S("Huvar HV2"),                  S("HV2"),             S(":/images/HV220.png"),         native},
        {CP750,              54,    84, no,  no,  yes,  no,    Delmar,         S("Delmar CP750"),               S("CP750"),           S(":/images/CP710.png"),         native},
        {WI610,              55,   131, yes, yes, yes,  no,    Wavlen,         S("Wavlen WI610"),               S("WI610"),           S(":/images/WI610.png"),         native},
        {TX300,              56,    10, yes, yes, yes,  no,    Tavrin,         S("Tavrin TX300"),               S("TX300"),           S(":/images/TX270.png"),         serial},
        {MultiSensor,        57,     0, no,  no,  no,   no,    NoGroup,        S("MULTI_SENSOR"),               S("MULTI_SENSOR"),    S(":/images/All-groups.png"),    none},
        {TX310,              58,    18, yes, yes, yes,  no,    Tavrin,         S("Tavrin TX310"),               S("TX310"),           S(":/images/TX310.png"),         serial},
        {WI620,              59,   132, yes, yes, yes,  no,    Wavlen,         S("Wavlen WI620"),               S("WI620"),           S(":/images/WI610.png"),         native},
        {RG540,              70,    33, yes, yes, yes,  no,    TavrinRG,       S("Tavrin RG540"),               S("RG540"),           S(":/images/RG540.png"),         none},
        {PG120,              71,    94, yes, yes, yes,  no,    Color,          S("Pigmar PG120"),               S("PG120"),           S(":/images/PG120.png"),         none},
        {DVxxx,           70043,   154, no,  no,  no,   no,    Morvik | KVBus, S("Morvik DV"),                  S("DV-xxx"),          S(":/images/DVxxx.png"),         none},
        {EC830,           10043,    72, no,  no,  no,   no,    Korrin | KVBus, S("Korrin EC830"),               S("EC830"),           S(":/images/EC830.png"),         none},
        {HV210,           10053,    92, no,  no,  yes,  no,    Color,          S("Huvar HV210"),                S("HV210"),           S(":/images/HV210.png"),         native},
        {MV4xx,           20043,   150, no,  no,  no,   no,    Morvik | KVBus, S("Morvik MV4xx"),               S("MV4xx"),           S(":/images/MV410.png"),         none},
        {MV410,          120043,   151, no,  no,  no,   yes,   Morvik | KVBus, S("Morvik MV410"),               S("MV410"),           S(":/images/MV410.png"),         none},
        {MV420,          220043,   152, no,  no,  no,   yes,   Morvik | KVBus, S("Morvik MV420"),               S("MV420"),           S(":/images/MV420.png"),         none},
        {MV430,          320043,   153, no,  no,  no,   yes,   Morvik | KVBus, S("Morvik MV430"),               S("MV430"),           S(":/images/MV430.png"),         none},
        {HV220,           20053,    93, no,  no,  yes,  no,    Color,          S("Huvar HV220"),                S("HV220"),           S(":/images/HV220.png"),         native},
        {GY310,           30043,   155, no,  no,  no,   no,    Gyrant | KVBus, S("Gyrant GY310"),               S("GY310"),           S(":/images/KV-BUS_Gyrant.png"), none},
        {GY320,           90043,   156, no,  no,  no,   no,    Gyrant | KVBus, S("Gyrant GY320"),               S("GY320"),           S(":/images/GY32x.png"),         none},
        {GY330,           40043,   157, no,  no,  no,   no,    Gyrant | KVBus, S("Gyrant GY330"),               S("GY330"),           S(":/images/KV-BUS_Gyrant.png"), none},
        {EC840,           50043,    70, no,  no,  no,   no,    Korrin | KVBus, S("Korrin EC840"),               S("EC840"),           S(":/images/EC830.png"),         none},
        {EC850,           60043,    76, no,  no,  no,   no,    Korrin | KVBus, S("Korrin EC850"),               S("EC850"),           S(":/images/EC830.png"),         none},
        {EC82x,           80043,    74, no,  no,  no,   yes,   Korrin | KVBus, S("Korrin EC82x"),               S("EC82x"),           S(":/images/EC82x.png"),         none},
        {File,            99999, 99999, no,  no,  no,   no,    NoGroup,        S("File"),                       S("File"),            S(":/images/All-groups.png"),    none},
    };
    return tables;
}

#undef S
// clang-format on

/// Builds the tables when the library is loaded, unless another static initialiser has used them before.
[[maybe_unused]] const ModelTables &builtAtLoadTime = modelTables();

} // namespace

const QMap<SensorType, SensorFeatures> &getSensorFeatures()
{
    return modelTables().features;
}

const QMap<SensorType, WebInterface> &webInterfaceTable()
{
    return modelTables().webInterfaces;
}

} // namespace SondixQt
