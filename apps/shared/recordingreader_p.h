// SPDX-License-Identifier: MIT
#pragma once

#include "recordhead.h"

#include <SondixQt/datablock.h>

#include <QHash>
#include <QIODevice>
#include <QJsonObject>

#include <limits>
#include <memory>
#include <optional>

namespace SondixApp {

/// One frame of a recording.
struct RecordedFrame
{
    std::optional<int> run;       ///< in .npy
    std::optional<qint64> number; ///< in its run
    double time = std::numeric_limits<double>::quiet_NaN();
    QVector<double> scaled; ///< the values that the file does not have are 0
    QVector<qint32> raw;
};

/// Reads one format. A parser knows the content of its file; the reader makes blocks of it.
class RecordingParser
{
public:
    enum class Step { Frame, Gap, End, Failed };

    virtual ~RecordingParser() = default;

    /// Reads what precedes the first frame: sets columns and, if the file has it, head. Returns false and sets problem if
    /// the file does not have this format.
    virtual bool open() = 0;
    /// Reads the next frame or gap.
    virtual Step next(RecordedFrame &frame, SondixQt::DataGap &gap) = 0;

    RecordColumns columns;
    RecordHead head;
    QString problem;
    QString warning;
    QHash<int, QString> errorTexts;
};

/// The lines of a file. Memory for one line of bounded length.
class LineReader
{
public:
    explicit LineReader(QIODevice &device);

    enum class Result {
        Line,
        End,     ///< the file ends with a whole line
        Cut,     ///< a line without an end: the file is cut or still written
        TooLong, ///< no text file
        Failed,  ///< the device failed
    };
    /// Reads the next line without its end. \a line is valid until the next call.
    Result next(QByteArray &line);
    /// The number of the line that was read last, from 1.
    qint64 number() const { return m_number; }
    QString errorString() const { return m_device.errorString(); }

private:
    QIODevice &m_device;
    QByteArray m_buffer;
    int m_begin = 0;
    qint64 m_number = 0;
};

/// The scaled value for an error text without a number, the same for the same text.
class NamedErrors
{
public:
    /// nullopt if there are too many different texts for a recording.
    std::optional<double> valueOf(const QByteArray &text, QHash<int, QString> &texts);

private:
    QHash<QByteArray, double> m_values;
};

/// \name Parts of the formats
/// \{
std::unique_ptr<RecordingParser> makeCsvParser(QIODevice &device);
std::unique_ptr<RecordingParser> makeJsonParser(QIODevice &device);
/// \a notes may be null.
std::unique_ptr<RecordingParser> makeNpyParser(QIODevice &device, QIODevice *notes);

/// A problem with its place in the file.
QString lineProblem(qint64 line, const QString &text);
/// \a bytes for a message: shortened, without control characters.
QString excerpt(const QByteArray &bytes);
/// Sets warning or problem for the end of a file whose lines \a lines has read. For a \a result other than Line.
RecordingParser::Step endOfLines(RecordingParser &parser, LineReader::Result result, const LineReader &lines);

/// The largest number of a frame or a run; anything larger is no recording.
constexpr qint64 maxFrameNumber = 9'000'000'000'000'000;
constexpr int maxRunNumber = 1'000'000'000;

/// What the columns of the signals are.
struct ColumnKinds
{
    bool scaled = true;
    bool raw = false;
};
/// Sets the signals that \a names stand for, the names of their columns. Without \a kinds the names show what is raw.
/// False if there are none.
bool columnsFromNames(const QStringList &names, std::optional<ColumnKinds> kinds, RecordColumns &columns);
/// Takes over the head of JSON lines.
void readHead(const QJsonObject &object, RecordHead &head, RecordColumns &columns);
/// The gap that an object of JSON lines describes. False if it is none.
bool readGap(const QJsonObject &object, SondixQt::DataGap &gap);
/// \}

} // namespace SondixApp
