// SPDX-License-Identifier: MIT
#pragma once

#include "errorvalues.h"
#include "recordcolumns.h"
#include "recordhead.h"
#include "textbuffer.h"

#include <SondixQt/datablock.h>

#include <QFile>
#include <QString>

#include <memory>
#include <optional>

namespace SondixApp {

enum class RecordFormat { Csv, JsonLines, Npy };

/// How error values are written.
enum class ErrorStyle {
    Text,  ///< as the text that the sensor has for them
    NaN,   ///< as "nan", in JSON as null
    Empty, ///< as nothing, in JSON as null
};

struct FormatOptions
{
    char separator = ',';   ///< of the columns in CSV
    char decimalMark = '.'; ///< in CSV
    ErrorStyle errors = ErrorStyle::Text;
};

/// Formats frames and gaps for one file. Without access to files except for checking an existing one.
class FrameWriter
{
public:
    /// Where the data of an existing file end and new data can be appended.
    struct Resumption
    {
        qint64 end = 0;
        bool hasColumns = false; ///< the file has its columns line already
        QByteArray lead;         ///< what has to be written at the end before anything else
        QString repair;          ///< what was wrong with the file, for users; empty: nothing
    };

    virtual ~FrameWriter() = default;

    /// What a file begins with. \a head may be null. \a withColumns is false if the file has its columns already.
    virtual void begin(TextBuffer &out, const RecordHead *head, bool withColumns) = 0;
    virtual void addFrames(TextBuffer &out, const SondixQt::DataBlock &block, int first, int count) = 0;
    /// Writes nothing in a format that cannot hold gaps.
    virtual void addGap(TextBuffer &out, const SondixQt::DataGap &gap) = 0;
    /// The first bytes of a file whose size is \a size, in a format in which they depend on the size.
    virtual QByteArray preamble(qint64 size) const
    {
        Q_UNUSED(size)
        return {};
    }
    /// Checks whether frames can be appended to \a file, which is open for reading. Nothing and the reason in \a
    /// problem if not.
    virtual std::optional<Resumption> resume(QFile &file, QString &problem) = 0;

    /// The approximate size of a frame in bytes.
    virtual int frameSize() const = 0;
    /// The end of the frame that begins at \a begin in \a data, which addFrames() has made.
    virtual int frameEnd(const QByteArray &data, int begin) const { return data.indexOf('\n', begin) + 1; }

    TimeAxis &timeAxis() { return m_axis; }

protected:
    TimeAxis m_axis;
};

/// \a errors must outlive the writer.
std::unique_ptr<FrameWriter> makeFrameWriter(RecordFormat format, const RecordColumns &columns,
                                             const FormatOptions &options, ErrorValues &errors);

/// Where the whole lines of a file end, and the incomplete line behind them.
struct LastLine
{
    qint64 end = 0;
    QByteArray incomplete;
};

/// nullopt and the reason in \a problem if the file cannot be read or has no lines.
std::optional<LastLine> lastLine(QFile &file, QString &problem);

/// The key of \a reason in JSON, such as "disconnected".
QString gapReasonKey(SondixQt::DataGap::Reason reason);

} // namespace SondixApp
