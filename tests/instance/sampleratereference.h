// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVector>

/// \file
/// Where the frame rate of every model comes from, written down independently of the library's own
/// tables.

namespace reference {

enum Kind {
    Constant,     ///< rates[0] kHz, whatever the sensor says; nothing is sent
    Index,        ///< rates[answer]
    Kilohertz,    ///< the answer
    Hertz,        ///< the answer / 1000
    Microseconds, ///< 1000 / the answer
    Distance,     ///< rule of 20
    Frequency,    ///< rule of 21
    Averaged,     ///< rule of 28
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
        return {code, kind, {}, QStringLiteral("Get_SampleTime"), QStringLiteral("SA_SampleTime")};
    return {code, kind, {}, QStringLiteral("Get_Samplerate"), QStringLiteral("SA_Measrate")};
}

inline QVector<Model> models()
{
    const QVector<double> cp = {0.0026, 0.00521, 0.01042, 0.01563, 0.02604, 0.03125, 0.05208,
                                0.0625, 0.10417, 0.52083, 1.04167, 2.08333, 3.90625, 7.8125};
    const QVector<double> tx24 = {1.5, 1.0, 0.75, 0.375, 0.05};
    QVector<Model> all = {
        constant(0, 0.0),
        constant(1, 1.0),
        indexed(2, "Get_Settings", "SA_Speed", {2.5, 1.25, 0.625, 0.3125}),
        indexed(5, "Get_Settings", "SA_Speed", {10.0, 5.0, 2.5, 20.0}),
        constant(8, 2.3),
        constant(9, 2.3),
        constant(10, 0.0),
        indexed(12, "Get_Status", "SA_SRIndex", {0.0, 0.1, 0.2, 0.4, 1.0, 2.0}),
        indexed(13, "Get_Status", "SA_SRIndex", {0.0, 0.5, 1.0, 2.0, 5.0, 10.0, 15.625, 20.0, 25.0, 31.25}),
        indexed(15, "Get_SRIndex", "SA_SRIndex", cp),
        indexed(16, "Get_SRIndex", "SA_SRIndex", cp),
        indexed(18, "Get_SRIndex", "SA_SRIndex", {0.0026, 0.104, 0.52, 1.04}),
        constant(19, 0.0),
        {20, Distance, {}, {}, {}},
        {21, Frequency, {}, {}, {}},
        constant(22, 0.0),
        indexed(23, "Get_Settings", "SA_Speed", tx24),
        indexed(24, "Get_Settings", "SA_Speed", tx24),
        constant(25, 0.0),
        {28, Averaged, {3.6, 7.2, 14.4}, QStringLiteral("Get_Settings"), {}},
        constant(31, 0.0),
        constant(32, 0.0),
        constant(36, 0.0),
        constant(37, 2.5),
        constant(48, 0.0),
        constant(49, 0.0),
        constant(52, 0.0),
        constant(53, 0.02),
        constant(57, 0.0),
        constant(60, 0.02),
        constant(10053, 0.02),
        constant(20053, 0.02),
        constant(20043, 0.0),
        constant(70043, 0.0),
        constant(120043, 0.0),
        constant(220043, 0.0),
        constant(320043, 0.0),
        constant(99999, 0.0),
    };
    for (const int code : {26, 29, 30, 38, 39, 41, 42, 44, 46, 47, 51, 55, 56, 58, 59, 62, 63})
        all.append(asked(code, Kilohertz));
    for (const int code : {35, 40, 43, 61, 10043, 30043, 40043, 50043, 60043, 80043, 90043})
        all.append(asked(code, Hertz));
    for (const int code : {33, 34, 45, 50, 54, 10034, 20034, 30034, 40034, 110034, 170034, 210034, 310034})
        all.append(asked(code, Microseconds));
    return all;
}

} // namespace reference
