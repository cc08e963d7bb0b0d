// SPDX-License-Identifier: MIT
#include "csvwriter.h"

#include <SondixQt/errorvalue.h>

using namespace SondixQt;

namespace SondixApp {

namespace {

void addComment(TextBuffer &out, const QByteArray &text)
{
    out.add("# ");
    out.add(text);
    out.add('\n');
}

} // namespace

CsvWriter::CsvWriter(const RecordColumns &columns, const FormatOptions &options, ErrorValues &errors)
    : m_columns(columns)
    , m_options(options)
    , m_errors(errors)
{
}

QByteArray CsvWriter::quoted(const QByteArray &text) const
{
    if (text.contains(m_options.separator) || text.contains('"') || text.contains('\n') || text.contains('\r'))
        return '"' + QByteArray(text).replace('"', "\"\"") + '"';
    return text;
}

QByteArray CsvWriter::columnLine() const
{
    QByteArray line;
    for (const QString &name : m_columns.names()) {
        if (!line.isEmpty())
            line += m_options.separator;
        line += quoted(name.toUtf8());
    }
    return line;
}

void CsvWriter::begin(TextBuffer &out, const RecordHead *head, bool withColumns)
{
    if (head)
        for (const QString &line : head->lines(m_columns))
            addComment(out, line.toUtf8());
    if (!withColumns)
        return;
    out.add(columnLine());
    out.add('\n');
}

void CsvWriter::addScaled(TextBuffer &out, double value)
{
    if (!isErrorValue(value)) {
        out.addNumber(value, m_options.decimalMark);
        return;
    }
    const ErrorValues::Error &error = m_errors.count(value);
    if (m_options.errors == ErrorStyle::Text)
        out.add(quoted(error.text));
    else if (m_options.errors == ErrorStyle::NaN)
        out.add("nan");
}

void CsvWriter::addFrames(TextBuffer &out, const DataBlock &block, int first, int count)
{
    const FrameTimes times(block, m_axis);
    const int values = block.valuesPerFrame();
    const qint64 number = block.firstFrame();
    const auto begin = static_cast<std::ptrdiff_t>(first) * values;
    const double *scaled = block.scaledData().constData() + begin;
    const qint32 *raw = block.rawData().constData() + begin;
    for (int frame = first; frame < first + count; ++frame) {
        if (m_columns.number) {
            out.addInteger(number + frame);
            out.add(m_options.separator);
        }
        if (times.isKnown(frame))
            out.addSeconds(times.microseconds(frame), m_options.decimalMark);
        for (int i = 0; i < values; ++i, ++scaled, ++raw) {
            if (m_columns.scaled) {
                out.add(m_options.separator);
                addScaled(out, *scaled);
            } else if (isErrorValue(*scaled)) {
                m_errors.count(*scaled);
            }
            if (m_columns.raw) {
                out.add(m_options.separator);
                out.addInteger(*raw);
            }
        }
        out.add('\n');
    }
}

void CsvWriter::addGap(TextBuffer &out, const DataGap &gap)
{
    QString text = gap.frames ? QStringLiteral("gap: %1 frames from number %2 on are missing").arg(*gap.frames)
                              : QStringLiteral("gap: an unknown number of frames from number %2 on is missing; "
                                               "frames are counted from 0 again");
    addComment(out, QStringLiteral("%1: %2").arg(text.arg(gap.firstFrame), gapReasonText(gap.reason)).toUtf8());
}

std::optional<FrameWriter::Resumption> CsvWriter::resume(QFile &file, QString &problem)
{
    const std::optional<LastLine> last = lastLine(file, problem);
    if (!last)
        return std::nullopt;
    Resumption resumption;
    resumption.end = last->end;
    if (!last->incomplete.isEmpty()) {
        // Kept as a comment, because it can be the last line of a file that somebody has edited.
        resumption.lead = "# incomplete: " + last->incomplete.simplified() + '\n';
        resumption.repair = QStringLiteral("its last line was incomplete and is a comment now");
    }
    constexpr qint64 longest = 1 << 20;
    file.seek(0);
    while (file.pos() < last->end) {
        const QByteArray line = file.readLine(longest);
        if (line.startsWith('#'))
            continue;
        if (!resumption.hasColumns) {
            if (line != columnLine() + '\n') {
                problem =
                    QStringLiteral("it has other columns: %1").arg(QString::fromUtf8(line.left(200)).trimmed());
                return std::nullopt;
            }
            resumption.hasColumns = true;
        } else if (hasOtherDecimalMark(line)) {
            problem = QStringLiteral("its numbers have another decimal mark");
            return std::nullopt;
        } else if (line.contains(m_options.decimalMark)) {
            break;
        }
    }
    return resumption;
}

bool CsvWriter::hasOtherDecimalMark(const QByteArray &line) const
{
    const char other = m_options.decimalMark == '.' ? ',' : '.';
    if (other == m_options.separator)
        return false;
    for (const QByteArray &cell : line.trimmed().split(m_options.separator)) {
        bool isNumber = false;
        QByteArray(cell).replace(other, '.').toDouble(&isNumber);
        if (isNumber && cell.contains(other))
            return true;
    }
    return false;
}

int CsvWriter::frameSize() const
{
    constexpr int cell = 18;
    return cell * m_columns.names().size();
}

} // namespace SondixApp
