// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtnamespace.h>

#include <QString>
#include <QVector>

/// \file
/// The expected source of the frame rate of every model, independent of the library's tables.

namespace reference {

enum Kind {
    Constant,     ///< rates[0] kHz; no command is sent
    Index,        ///< rates[answer]
    Kilohertz,    ///< the answer
    Hertz,        ///< the answer / 1000
    Microseconds, ///< 1000 / the answer
    Distance,     ///< the rule of RG52x
    Frequency,    ///< the rule of RG53x
    Averaged,     ///< the rule of EC810
};

struct Model
{
    int code;
    Kind kind;
    QVector<double> rates;
    QString command;
    QString answer;
};

inline Model constant(int code, double rate)
{
    return {code, Constant, {rate}, {}, {}};
}

inline Model indexed(int code, const char *command, const char *answer, const QVector<double> &rates)
{
    return {code, Index, rates, QLatin1String(command), QLatin1String(answer)};
}

inline Model asked(int code, Kind kind)
{
    if (kind == Microseconds)
        return {code, kind, {}, "Get_SampleTime", "SA_SampleTime"};
    return {code, kind, {}, "Get_Samplerate", "SA_Measrate"};
}

inline QVector<Model> models()
{
    using namespace SondixQt;
    const QVector<double> cp = {0.0026, 0.00521, 0.01042, 0.01563, 0.02604, 0.03125, 0.05208,
                                0.0625, 0.10417, 0.52083, 1.04167, 2.08333, 3.90625, 7.8125};
    const QVector<double> tx24 = {1.5, 1.0, 0.75, 0.375, 0.05};
    QVector<Model> all = {
        constant(NoSensor, 0.0),
        constant(TX210, 1.0),
        indexed(TX220, "Get_Settings", "SA_Speed", {2.5, 1.25, 0.625, 0.3125}),
        indexed(TX230, "Get_Settings", "SA_Speed", {10.0, 5.0, 2.5, 20.0}),
        constant(MC310, 2.3),
        constant(MC320, 2.3),
        constant(XA100PCI, 0.0),
        indexed(CC410, "Get_Status", "SA_SRIndex", {0.0, 0.1, 0.2, 0.4, 1.0, 2.0}),
        indexed(CC420, "Get_Status", "SA_SRIndex", {0.0, 0.5, 1.0, 2.0, 5.0, 10.0, 15.625, 20.0, 25.0, 31.25}),
        indexed(CP710, "Get_SRIndex", "SA_SRIndex", cp),
        indexed(CP720, "Get_SRIndex", "SA_SRIndex", cp),
        indexed(CB910, "Get_SRIndex", "SA_SRIndex", {0.0026, 0.104, 0.52, 1.04}),
        constant(RG4xx, 0.0),
        {RG52x, Distance, {}, {}, {}},
        {RG53x, Frequency, {}, {}, {}},
        constant(XA200PCI, 0.0),
        indexed(TX240, "Get_Settings", "SA_Speed", tx24),
        indexed(TX250, "Get_Settings", "SA_Speed", tx24),
        constant(MC330, 0.0),
        {EC810, Averaged, {3.6, 7.2, 14.4}, "Get_Settings", {}},
        constant(PF, 0.0),
        constant(UC100, 0.0),
        constant(XA100USB, 0.0),
        constant(MC340, 2.5),
        constant(Spessa, 0.0),
        constant(Unnamed, 0.0),
        constant(XA200ETH, 0.0),
        constant(HV2, 0.02),
        constant(MultiSensor, 0.0),
        constant(RG540, 0.02),
        constant(HV210, 0.02),
        constant(HV220, 0.02),
        constant(MV4xx, 0.0),
        constant(DVxxx, 0.0),
        constant(MV410, 0.0),
        constant(MV420, 0.0),
        constant(MV430, 0.0),
        constant(File, 0.0),
    };
    for (const int code : {CC430, TX260, CC440, QUnit, CC450, TX270, TX280, CC460, CC470, CC480, TX290, WI610,
                           TX300, TX310, WI620, CC490, CC495})
        all.append(asked(code, Kilohertz));
    for (const int code : {PG110, CP740, GenericKVBus, PG120, EC830, GY310, GY330, EC840, EC850, EC82x, GY320})
        all.append(asked(code, Hertz));
    for (const int code : {CP730, XA300, CB92xx, EC82x_ETH, CP750, MV4xx_XA300ETH, GY330_XA300ETH, GY310_XA300ETH,
                           CP740_XA300ETH, MV410_XA300ETH, DVxxx_XA300ETH, MV420_XA300ETH, MV430_XA300ETH})
        all.append(asked(code, Microseconds));
    return all;
}

} // namespace reference
