// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

#include <QMetaType>
#include <QString>

namespace expected {

/// The expected catalogue entry of one model, independent of the library's table.
struct Model
{
    SondixQt::SensorType type;
    int value;
    int order;
    const char *capabilities; ///< H: help, G: all parameters at once, A: ASCII protocol, V: hidden variant
    int group;
    const char *name;
    const char *shortName;
    const char *picture; ///< without folder and ".png"
    int web;

    bool can(char capability) const { return QLatin1String(capabilities).contains(QLatin1Char(capability)); }
    QString picturePath() const { return QLatin1String(":/images/") + QLatin1String(picture) + ".png"; }
};

// clang-format off
inline constexpr Model models[] = {
    {SondixQt::NoSensor,            0,     0, "----", 0,           "No Sensor",                  "No Sensor",       "All-groups",    0},
    {SondixQt::TX210,               1,    11, "----", 1,           "Tavrin TX210",               "TX210",           "TX210",         0},
    {SondixQt::TX220,               2,    16, "----", 1,           "Tavrin TX220",               "TX220",           "TX220",         0},
    {SondixQt::TX230,               5,    19, "----", 1,           "Tavrin TX230",               "TX230",           "TX230",         0},
    {SondixQt::MC310,               8,    61, "----", 16,          "Silvant MC310",              "MC310",           "MC310",         0},
    {SondixQt::MC320,               9,    63, "HG--", 16,          "Silvant MC320",              "MC320",           "MC320",         0},
    {SondixQt::XA100PCI,           10,   100, "----", 2048,        "XA100/PCI",                  "XA100/PCI",       "XA100 (PCI)",   0},
    {SondixQt::CC410,              12,    40, "----", 4,           "Oscura CC410",               "CC410",           "CC410",         0},
    {SondixQt::CC420,              13,    43, "----", 4,           "Oscura CC420",               "CC420",           "CC420",         0},
    {SondixQt::CP710,              15,    83, "--A-", 64,          "Delmar CP710",               "CP710",           "CP710",         1},
    {SondixQt::CP720,              16,    80, "----", 64,          "Delmar CP720",               "CP720",           "CP720",         1},
    {SondixQt::CB910,              18,    85, "----", 64,          "Dualis CB910",               "CB910",           "CB910",         1},
    {SondixQt::RG4xx,              19,    30, "----", 2,           "Tavrin RG4xx",               "RG4xx",           "RG4xx",         0},
    {SondixQt::RG52x,              20,    31, "--A-", 2,           "Tavrin RG52x",               "RG52x",           "RG52x",         0},
    {SondixQt::RG53x,              21,    32, "--A-", 2,           "Tavrin RG53x",               "RG53x",           "RG531",         0},
    {SondixQt::XA200PCI,           22,   102, "----", 2048,        "XA200/PCI",                  "XA200/PCI",       "XA200",         0},
    {SondixQt::TX240,              23,    12, "----", 1,           "Tavrin TX240",               "TX240",           "TX240",         0},
    {SondixQt::TX250,              24,    13, "----", 1,           "Tavrin TX250",               "TX250",           "TX250",         0},
    {SondixQt::MC330,              25,    60, "----", 16,          "Silvant MC330",              "MC330",           "MC330",         0},
    {SondixQt::CC430,              26,    49, "HGA-", 4,           "Oscura CC430",               "CC430",           "CC430",         1},
    {SondixQt::EC810,              28,    75, "----", 32,          "Korrin EC810",               "EC810",           "EC810",         0},
    {SondixQt::TX260,              29,    20, "HGA-", 1,           "Tavrin TX260",               "TX260",           "TX260",         1},
    {SondixQt::CC440,              30,    45, "HGA-", 4,           "Oscura CC440",               "CC440",           "CC440",         1},
    {SondixQt::PF,                 31,   110, "----", 1024,        "Profax",                     "PF",              "PF7xx",         1},
    {SondixQt::UC100,              32,   106, "----", 2048,        "Universal controller UC100", "UC100",           "UC100",         1},
    {SondixQt::CP730,              33,    82, "--A-", 64,          "Delmar CP730",               "CP730",           "CP730",         1},
    {SondixQt::XA300,              34,   105, "--A-", 2048,        "XA300/ETH",                  "XA300",           "XA300",         1},
    {SondixQt::PG110,              35,    90, "HGA-", 128,         "Pigmar PG",                  "PG110",           "PG110",         1},
    {SondixQt::XA100USB,           36,   101, "----", 2048,        "XA100/USB",                  "XA100/USB",       "XA100 (USB)",   0},
    {SondixQt::MC340,              37,    62, "HGA-", 16,          "Silvant MC340",              "MC340",           "MC340",         1},
    {SondixQt::QUnit,              38,   107, "-GA-", 2048,        "Q-Unit",                     "Q-Unit",          "Q-Unit",        1},
    {SondixQt::CC450,              39,    44, "HGA-", 4,           "Oscura CC450",               "CC450",           "CC450",         1},
    {SondixQt::CP740,              40,    81, "----", 64 + 4096,   "Delmar CP740",               "CP740",           "CP740",         1},
    {SondixQt::TX270,              41,    14, "HGA-", 1,           "Tavrin TX270",               "TX270",           "TX270",         2},
    {SondixQt::TX280,              42,    15, "HGA-", 1,           "Tavrin TX280",               "TX280",           "TX280",         2},
    {SondixQt::GenericKVBus,       43,   130, "----", 4096 + 8192, "Generic KV-BUS sensor",      "KV-BUS",          "genericSensor", 0},
    {SondixQt::CC460,              44,    46, "HGA-", 4,           "Oscura CC460",               "CC460",           "CC460",         1},
    {SondixQt::CB92xx,             45,    86, "----", 64,          "Dualis CB92xx",              "CB92xx",          "CB92xx",        1},
    {SondixQt::CC470,              46,    41, "HGA-", 4,           "Oscura CC470",               "CC470",           "CC470",         1},
    {SondixQt::CC480,              47,    42, "HGA-", 4,           "Oscura CC480",               "CC480",           "CC480",         1},
    {SondixQt::Spessa,             48,   120, "-GA-", 8192,        "Spessa",                     "Spessa",          "Spessa",        1},
    {SondixQt::Unnamed,            49,    -1, "--A-", 0,           "",                           "",                "All-groups",    0},
    {SondixQt::EC82x_ETH,          50,    73, "--A-", 32 + 4096,   "Korrin EC82x",               "EC82x_ETH",       "EC82x",         1},
    {SondixQt::TX290,              51,    17, "HGA-", 1,           "Tavrin TX290",               "TX290",           "TX290",         2},
    {SondixQt::XA200ETH,           52,   104, "HGA-", 2048,        "XA200/ETH",                  "XA200/ETH",       "XA200_ETH",     1},
    {SondixQt::HV2,                53,    91, "----", 128,         "Huvar HV2",                  "HV2",             "HV220",         1},
    {SondixQt::CP750,              54,    84, "--A-", 64,          "Delmar CP750",               "CP750",           "CP710",         1},
    {SondixQt::WI610,              55,   131, "HGA-", 8,           "Wavlen WI610",               "WI610",           "WI610",         1},
    {SondixQt::TX300,              56,    10, "HGA-", 1,           "Tavrin TX300",               "TX300",           "TX270",         2},
    {SondixQt::MultiSensor,        57,     0, "----", 0,           "MULTI_SENSOR",               "MULTI_SENSOR",    "All-groups",    0},
    {SondixQt::TX310,              58,    18, "HGA-", 1,           "Tavrin TX310",               "TX310",           "TX310",         2},
    {SondixQt::WI620,              59,   132, "HGA-", 8,           "Wavlen WI620",               "WI620",           "WI610",         1},
    {SondixQt::RG540,              60,    33, "HGA-", 2,           "Tavrin RG540",               "RG540",           "RG540",         0},
    {SondixQt::PG120,              61,    94, "HGA-", 128,         "Pigmar PG120",               "PG120",           "PG120",         0},
    {SondixQt::CC490,              62,    47, "HGA-", 4,           "Oscura CC490",               "CC490",           "CC49x",         1},
    {SondixQt::CC495,              63,    48, "HGA-", 4,           "Oscura CC495",               "CC495",           "CC49x",         1},
    {SondixQt::MV4xx_XA300ETH,  10034,   140, "--AV", 512 + 4096,  "XA300/Morvik_MV4xx",         "MV4xx_XA300ETH",  "MV410",         0},
    {SondixQt::EC830,           10043,    72, "----", 32 + 4096,   "Korrin EC830",               "EC830",           "EC830",         0},
    {SondixQt::HV210,           10053,    92, "--A-", 128,         "Huvar HV210",                "HV210",           "HV210",         1},
    {SondixQt::GY330_XA300ETH,  20034,   144, "--AV", 256 + 4096,  "XA300/Gyrant GY330",         "GY330_XA300ETH",  "KV-BUS_Gyrant", 0},
    {SondixQt::MV4xx,           20043,   150, "----", 512 + 4096,  "Morvik MV4xx",               "MV4xx",           "MV410",         0},
    {SondixQt::HV220,           20053,    93, "--A-", 128,         "Huvar HV220",                "HV220",           "HV220",         1},
    {SondixQt::GY310_XA300ETH,  30034,   134, "--AV", 256 + 4096,  "XA300/Gyrant GY310",         "GY310_XA300ETH",  "KV-BUS_Gyrant", 0},
    {SondixQt::GY310,           30043,   155, "----", 256 + 4096,  "Gyrant GY310",               "GY310",           "KV-BUS_Gyrant", 0},
    {SondixQt::CP740_XA300ETH,  40034,   145, "---V", 64 + 4096,   "XA300/Delmar CP740",         "CP740_XA300ETH",  "CP740",         0},
    {SondixQt::GY330,           40043,   157, "----", 256 + 4096,  "Gyrant GY330",               "GY330",           "KV-BUS_Gyrant", 0},
    {SondixQt::EC840,           50043,    70, "----", 32 + 4096,   "Korrin EC840",               "EC840",           "EC830",         0},
    {SondixQt::EC850,           60043,    76, "----", 32 + 4096,   "Korrin EC850",               "EC850",           "EC830",         0},
    {SondixQt::DVxxx,           70043,   154, "----", 512 + 4096,  "Morvik DV",                  "DV-xxx",          "DVxxx",         0},
    {SondixQt::EC82x,           80043,    74, "---V", 32 + 4096,   "Korrin EC82x",               "EC82x",           "EC82x",         0},
    {SondixQt::GY320,           90043,   156, "----", 256 + 4096,  "Gyrant GY320",               "GY320",           "GY32x",         0},
    {SondixQt::File,            99999, 99999, "----", 0,           "File",                       "File",            "All-groups",    0},
    {SondixQt::MV410_XA300ETH, 110034,   141, "--AV", 512 + 4096,  "XA300/Morvik MV410",         "MV410_XA300ETH",  "MV410",         0},
    {SondixQt::MV410,          120043,   151, "---V", 512 + 4096,  "Morvik MV410",               "MV410",           "MV410",         0},
    {SondixQt::DVxxx_XA300ETH, 170034,   146, "--AV", 512 + 4096,  "XA300/Morvik DV",            "DV-xxx_XA300ETH", "DVxxx",         0},
    {SondixQt::MV420_XA300ETH, 210034,   142, "--AV", 512 + 4096,  "XA300/Morvik MV420",         "MV420_XA300ETH",  "MV420",         0},
    {SondixQt::MV420,          220043,   152, "---V", 512 + 4096,  "Morvik MV420",               "MV420",           "MV420",         0},
    {SondixQt::MV430_XA300ETH, 310034,   143, "--AV", 512 + 4096,  "XA300/Morvik MV430",         "MV430_XA300ETH",  "MV430",         0},
    {SondixQt::MV430,          320043,   153, "---V", 512 + 4096,  "Morvik MV430",               "MV430",           "MV430",         0},
};
// clang-format on

} // namespace expected

Q_DECLARE_METATYPE(expected::Model)
