// SPDX-License-Identifier: MIT
#pragma once

#include "shared/errorvalues.h"
#include "shared/recordcolumns.h"
#include "shared/textbuffer.h"

#include <SondixQt/datablock.h>

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

/// What the tests of the writers have in common.
namespace Recordings {

using namespace SondixApp;
using namespace SondixQt;

inline SignalInfo signalInfo(const QString &name, const QString &unit = "mm")
{
    SignalInfo info;
    info.scaledName = info.rawName = name;
    info.scaledUnit = unit;
    info.rawUnit = "Digits";
    info.scaledRangeMax = 10.0;
    info.rawRangeMax = 65535.0;
    return info;
}

/// Columns for the signals "A" in mm and "B" in %.
inline RecordColumns columns(bool scaled = true, bool raw = false, bool number = true)
{
    RecordColumns columns;
    columns.frame.valuesPerFrame = 2;
    columns.frame.signals = {signalInfo("A"), signalInfo("B", "%")};
    columns.scaled = scaled;
    columns.raw = raw;
    columns.number = number;
    return columns;
}

constexpr double errorValue = -1.0e10 - 3.0;

/// Frames of two values, which are derived from their number: n + 0.5 and 2 n, raw 10 n and 20 n.
inline DataBlock block(qint64 first, int count, std::optional<double> time = 1.0,
                       std::optional<double> interval = 0.001, int run = 0)
{
    QVector<double> scaled;
    QVector<qint32> raw;
    for (qint64 n = first; n < first + count; ++n) {
        const auto value = static_cast<double>(n);
        scaled << value + 0.5 << 2.0 * value;
        raw << static_cast<qint32>(10 * n) << static_cast<qint32>(20 * n);
    }
    return DataBlock(run, first, 2, scaled, raw, time, interval);
}

inline DataBlock blockOf(const QVector<double> &scaled)
{
    return DataBlock(0, 0, 2, scaled, QVector<qint32>(scaled.size(), 7), 1.0, 0.001);
}

inline DataGap gap(qint64 first, std::optional<qint64> frames, DataGap::Reason reason)
{
    DataGap gap;
    gap.firstFrame = first;
    gap.frames = frames;
    gap.reason = reason;
    return gap;
}

inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("unreadable");
}

inline void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

/// What Python prints with NumPy as "numpy" and the array in \a path as "a".
inline QByteArray python(const QString &path, const QByteArray &code)
{
    QProcess process;
    // Debian's, which has the package python3-numpy.
    process.start("/usr/bin/python3",
                  {"-c", "import numpy, sys; a = numpy.load(sys.argv[1])\n" + QString::fromUtf8(code), path});
    if (!process.waitForFinished(60000))
        return "there is no Python";
    return (process.readAllStandardOutput() + process.readAllStandardError()).trimmed();
}

} // namespace Recordings
