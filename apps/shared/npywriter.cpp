// SPDX-License-Identifier: MIT
#include "npywriter.h"

#include <SondixQt/errorvalue.h>

#include <QRegularExpression>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

using namespace SondixQt;

namespace SondixApp {

namespace {

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "records are written as they are in memory");

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

constexpr int prefixSize = sizeof(qint32) + sizeof(qint64) + sizeof(double); // run, frame and time

// \a text as a literal of Python. The header is in Latin-1, so other characters are escaped.
QByteArray literal(const QString &text)
{
    QByteArray out = "'";
    for (const uint character : text.toUcs4()) {
        if (character == '\'' || character == '\\')
            out += '\\';
        if (character >= ' ' && character < 0x7f)
            out += static_cast<char>(character);
        else
            out += "\\U" + QByteArray::number(character, 16).rightJustified(8, '0');
    }
    return out + "'";
}

template<typename T>
char *put(char *to, T value)
{
    std::memcpy(to, &value, sizeof value);
    return to + sizeof value;
}

inline char *putPrefix(char *to, qint32 run, qint64 number, const FrameTimes &times, int frame)
{
    to = put(to, run);
    to = put(to, number);
    return put(to, times.isKnown(frame) ? times.seconds(frame) : nan);
}

// Whether there may be error values among \a values. It has no branches, so that the compiler can use vector instructions.
// Error values, infinities and NaN have an exponent of at least 0x420, like all numbers from 2^33 on. For such exponents the
// addition sets the highest bit.
bool mayHaveErrorValue(const double *values, std::ptrdiff_t count)
{
    constexpr quint64 magnitude = 0x7fffffffffffffff;
    constexpr quint64 carry = quint64(0x800 - 0x420) << 52;
    quint64 sum = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        quint64 bits = 0;
        std::memcpy(&bits, values + i, sizeof bits);
        sum |= (bits & magnitude) + carry;
    }
    return sum > magnitude;
}

// Copies eight values at a time: their size is then known to the compiler.
inline char *putValues(char *to, const double *values, int count)
{
    constexpr int many = 8;
    for (; count >= many; count -= many, values += many, to += many * sizeof *values)
        std::memcpy(to, values, many * sizeof *values);
    for (; count > 0; --count)
        to = put(to, *values++);
    return to;
}

} // namespace

NpyWriter::NpyWriter(RecordColumns columns, ErrorValues &errors)
    : m_columns(std::move(columns))
    , m_errors(errors)
{
    const int signalSize = (m_columns.scaled ? static_cast<int>(sizeof(double)) : 0) +
                           (m_columns.raw ? static_cast<int>(sizeof(qint32)) : 0);
    m_columns.run = m_columns.number = true;
    m_recordSize = prefixSize + signalSize * m_columns.frame.signalList().size();
}

QByteArray NpyWriter::description() const
{
    const QStringList names = m_columns.names();
    QByteArray fields = "('run', '<i4'), ('frame', '<i8'), (" + literal(names.value(2)) + ", '<f8'), ";
    constexpr int firstSignal = 3;
    for (int i = firstSignal; i < names.size(); ++i) {
        const bool isRaw = m_columns.raw && (!m_columns.scaled || (i - firstSignal) % 2 == 1);
        fields += '(' + literal(names[i]) + (isRaw ? ", '<i4'), " : ", '<f8'), ");
    }
    return fields;
}

QByteArray NpyWriter::header(qint64 records) const
{
    constexpr int alignment = 64;
    constexpr int longestCount = 20;
    const QByteArray count = QByteArray::number(records);
    const QByteArray dictionary = "{'descr': [" + description() + "], 'fortran_order': False, 'shape': (" + count +
                                  ",), }" + QByteArray(longestCount - count.size(), ' ');
    // Version 2.0 differs only in the size of the length.
    const bool isLong = dictionary.size() + alignment > std::numeric_limits<quint16>::max();
    QByteArray header = QByteArray("\x93NUMPY") + (isLong ? '\2' : '\1') + '\0';
    const int begin = header.size() + (isLong ? 4 : 2);
    const int size = (begin + dictionary.size() + 1 + alignment - 1) / alignment * alignment;
    for (int length = size - begin; header.size() < begin; length >>= 8)
        header += static_cast<char>(length & 0xff);
    header += dictionary;
    return header + QByteArray(size - header.size() - 1, ' ') + '\n';
}

void NpyWriter::begin(TextBuffer &out, const RecordHead *, bool withColumns)
{
    if (withColumns)
        out.add(header(0));
}

QByteArray NpyWriter::preamble(qint64 size) const
{
    const int headerSize = header(0).size();
    return size < headerSize ? QByteArray() : header((size - headerSize) / m_recordSize);
}

void NpyWriter::addFrames(TextBuffer &out, const DataBlock &block, int first, int count)
{
    char *to = out.extend(static_cast<size_t>(count) * static_cast<size_t>(m_recordSize));
    if (m_columns.raw || !m_columns.scaled || !copyFrames(to, block, first, count))
        convertFrames(to, block, first, count);
}

// Fast path for scaled values alone. False if there may be error values among them.
bool NpyWriter::copyFrames(char *to, const DataBlock &block, int first, int count) const
{
    const FrameTimes times(block, m_axis);
    const qint32 run = m_firstRun + block.run();
    const qint64 number = block.firstFrame();
    const int values = block.valuesPerFrame();
    const double *scaled = block.scaledData().constData() + static_cast<std::ptrdiff_t>(first) * values;
    if (mayHaveErrorValue(scaled, static_cast<std::ptrdiff_t>(count) * values))
        return false;
    for (int frame = first; frame < first + count; ++frame, scaled += values) {
        to = putPrefix(to, run, number + frame, times, frame);
        to = putValues(to, scaled, values);
    }
    return true;
}

void NpyWriter::convertFrames(char *to, const DataBlock &block, int first, int count)
{
    const FrameTimes times(block, m_axis);
    for (int frame = first; frame < first + count; ++frame) {
        to = putPrefix(to, m_firstRun + block.run(), block.firstFrame() + frame, times, frame);
        for (int i = 0; i < block.valuesPerFrame(); ++i) {
            const double value = block.scaled(frame, i);
            const bool isError = isErrorValue(value);
            if (isError)
                m_errors.count(value);
            if (m_columns.scaled)
                to = put<double>(to, isError ? nan : value);
            if (m_columns.raw)
                to = put<qint32>(to, block.raw(frame, i));
        }
    }
}

std::optional<FrameWriter::Resumption> NpyWriter::resume(QFile &file, QString &problem)
{
    Resumption resumption;
    const qint64 size = file.size();
    if (size == 0)
        return resumption;
    file.seek(0);
    const QByteArray found = file.read(header(0).size());
    static const QRegularExpression shape(QStringLiteral("'shape': \\((\\d{1,18}),\\)"));
    const QRegularExpressionMatch match = shape.match(QString::fromLatin1(found.constData(), found.size()));
    const qint64 told = match.captured(1).toLongLong();
    if (!match.hasMatch() || found != header(told)) {
        problem = QStringLiteral("it is no .npy file with these columns, written by this program");
        return std::nullopt;
    }
    const qint64 records = wholeRecords(file, told);
    resumption.hasColumns = true;
    resumption.end = found.size() + records * m_recordSize;
    if (records < told)
        resumption.repair =
            QStringLiteral("it had only %1 of the %2 frames that its header tells of").arg(records).arg(told);
    else if (records > told)
        resumption.repair = QStringLiteral("its header told of %1 of its %2 frames").arg(told).arg(records);
    else if (resumption.end < size)
        resumption.repair =
            QStringLiteral("%1 bytes behind its last frame were removed").arg(size - resumption.end);
    if (records > 0) {
        file.seek(resumption.end - m_recordSize);
        const QByteArray run = file.read(sizeof(qint32));
        m_firstRun = qFromLittleEndian<qint32>(run.constData()) + 1;
    }
    return resumption;
}

// The header lags behind the data, so that it never counts records that are not on the disk. Records of zeros are none:
// a file can end in them after a power failure.
qint64 NpyWriter::wholeRecords(QFile &file, qint64 told) const
{
    const qint64 begin = header(0).size();
    const qint64 whole = (file.size() - begin) / m_recordSize;
    if (whole <= told)
        return whole;
    const QByteArray zeros(m_recordSize, '\0');
    file.seek(begin + told * m_recordSize);
    for (qint64 record = told; record < whole; ++record)
        if (file.read(m_recordSize) == zeros)
            return record;
    return whole;
}

} // namespace SondixApp
