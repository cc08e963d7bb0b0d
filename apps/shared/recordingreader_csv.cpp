// SPDX-License-Identifier: MIT
#include "recordingreader_p.h"

#include <QRegularExpression>

#include <algorithm>
#include <charconv>
#include <cmath>

using namespace SondixQt;

namespace SondixApp {

namespace {

const QByteArray timeColumn = QByteArrayLiteral("time [s]");
constexpr int maxSignals = 16384;

/// CSV as CsvWriter writes it. Separator and decimal mark are found in the file.
class CsvParser : public RecordingParser
{
public:
    explicit CsvParser(QIODevice &device)
        : m_lines(device)
    {
    }

    bool open() override;
    Step next(RecordedFrame &frame, DataGap &gap) override;

private:
    void readComment(const QString &text);
    bool readSensor(const QString &name, const QString &value);
    bool readColumns(QByteArray line);
    bool findSeparator(const QByteArray &line);
    void setRanges();
    bool readGapComment(const QByteArray &line, DataGap &gap) const;
    bool readFrame(const QByteArray &line, RecordedFrame &frame);
    bool takeCell(const QByteArray &line, int &position, QByteArray &cell);
    bool readNumber(const QByteArray &cell, double &value) const;
    bool readScaled(const QByteArray &cell, double &value);
    bool refuse(const QString &text);

    LineReader m_lines;
    char m_separator = ',';
    bool m_hasNumber = false;
    QMap<QString, std::pair<double, double>> m_ranges; // by the name of the column
    QStringList m_columnNames;
    NamedErrors m_errors;
    QByteArray m_unquoted;
};

bool CsvParser::refuse(const QString &text)
{
    problem = lineProblem(m_lines.number(), text);
    return false;
}

bool CsvParser::open()
{
    QByteArray line;
    for (;;) {
        const LineReader::Result result = m_lines.next(line);
        if (result != LineReader::Result::Line) {
            if (endOfLines(*this, result, m_lines) == Step::End)
                problem =
                    QStringLiteral("it is no recording, or cut: a line with the names of the columns is missing");
            warning.clear();
            return false;
        }
        if (m_lines.number() == 1 && line.startsWith("\xEF\xBB\xBF")) // of an editor
            line = line.mid(3);
        if (!line.startsWith('#'))
            return readColumns(line);
        readComment(QString::fromUtf8(line.mid(1)).trimmed());
    }
}

bool CsvParser::readSensor(const QString &name, const QString &value)
{
    static const QMap<QString, QString> answers{
        {QStringLiteral("sensor"), QStringLiteral("SA_Sensor")},
        {QStringLiteral("serial number"), QStringLiteral("SA_SerialNumber")},
        {QStringLiteral("article number"), QStringLiteral("SA_ArticleNumber")},
        {QStringLiteral("firmware"), QStringLiteral("SA_Softwareversion")},
    };
    const QString answer = answers.value(name);
    if (answer.isEmpty())
        return false;
    // Each member of a multi-sensor begins anew.
    if (head.sensors.isEmpty() || head.sensors.last().contains(answer))
        head.sensors.append(QMap<QString, QVariant>());
    head.sensors.last().insert(answer, value);
    return true;
}

void CsvParser::readComment(const QString &text)
{
    const int colon = text.lastIndexOf(QLatin1String(": "));
    const QString rangeWord = QStringLiteral("range of ");
    if (text.startsWith(rangeWord) && colon > 0) {
        static const QRegularExpression range(QStringLiteral("^(\\S+) to (\\S+)$"));
        const QRegularExpressionMatch match = range.match(text.mid(colon + 2));
        if (match.hasMatch())
            m_ranges.insert(text.mid(rangeWord.size(), colon - rangeWord.size()),
                            {match.captured(1).toDouble(), match.captured(2).toDouble()});
        return;
    }
    const int first = text.indexOf(QLatin1String(": "));
    const QString name = text.left(first);
    const QString value = first > 0 ? text.mid(first + 2) : QString();
    if (value.isEmpty() || readSensor(name, value))
        return;
    if (name == QLatin1String("address")) {
        head.address = value;
    } else if (name == QLatin1String("written by")) {
        head.program = value;
    } else if (name == QLatin1String("start")) {
        head.start = QDateTime::fromString(value, Qt::ISODateWithMs);
    } else if (name == QLatin1String("rate")) {
        bool isNumber = false;
        const double rate = value.section(QLatin1Char(' '), 0, 0).toDouble(&isNumber);
        if (isNumber)
            head.rate = rate;
    } else if (name == QLatin1String("time")) {
        head.isWallClock = value.contains(QLatin1String("1970-01-01"));
        static const QRegularExpression uncertainty(QStringLiteral("uncertain by (\\S+) s$"));
        const QRegularExpressionMatch match = uncertainty.match(value);
        if (match.hasMatch())
            head.uncertainty = match.captured(1).toDouble();
    }
}

// The columns begin with "frame" and "time [s]", or with "time [s]" alone.
bool CsvParser::findSeparator(const QByteArray &line)
{
    const QByteArray number = QByteArrayLiteral("frame");
    m_hasNumber = line.startsWith(number);
    const int first = m_hasNumber ? number.size() : timeColumn.size();
    if (first >= line.size() || (!m_hasNumber && !line.startsWith(timeColumn)))
        return false;
    m_separator = line.at(first);
    const char forbidden[] = "\"#+-.";
    const bool isPossible = m_separator == '\t' || (m_separator > ' ' && m_separator < 0x7f);
    return isPossible &&
           std::find(std::begin(forbidden), std::end(forbidden), m_separator) == std::end(forbidden) &&
           (!m_hasNumber || line.mid(first + 1).startsWith(timeColumn) ||
            line.mid(first + 2).startsWith(timeColumn));
}

bool CsvParser::readColumns(QByteArray line)
{
    const auto foreign = [this, &line] {
        return refuse(QStringLiteral("'%1' are not the columns of a recording").arg(excerpt(line)));
    };
    line.detach();
    // A name may contain line breaks.
    for (QByteArray more; line.count('"') % 2 != 0; line += '\n' + more)
        if (m_lines.next(more) != LineReader::Result::Line || line.size() > (1 << 20))
            return foreign();
    if (!findSeparator(line))
        return foreign();
    QByteArray cell;
    for (int position = 0; position <= line.size();) {
        if (!takeCell(line, position, cell) || m_columnNames.size() > 2 * maxSignals + 2)
            return foreign();
        m_columnNames += QString::fromUtf8(cell);
    }
    const int leading = m_hasNumber ? 2 : 1;
    if (m_columnNames.value(leading - 1) != QLatin1String(timeColumn) ||
        !columnsFromNames(m_columnNames.mid(leading), std::nullopt, columns))
        return foreign();
    columns.number = m_hasNumber;
    columns.frame.datarate = head.rate.value_or(-1.0);
    m_columnNames = m_columnNames.mid(leading);
    setRanges();
    return true;
}

void CsvParser::setRanges()
{
    int column = 0;
    for (SignalInfo &info : columns.frame.signals) {
        for (const bool isRaw : {false, true}) {
            if (isRaw ? !columns.raw : !columns.scaled)
                continue;
            const auto range = m_ranges.value(m_columnNames.value(column++));
            (isRaw ? info.rawRangeMin : info.scaledRangeMin) = range.first;
            (isRaw ? info.rawRangeMax : info.scaledRangeMax) = range.second;
        }
    }
}

// Reads the cell at \a position and moves behind its separator, which is behind the end of the line for the last cell.
// The cell is valid until the next call.
bool CsvParser::takeCell(const QByteArray &line, int &position, QByteArray &cell)
{
    if (position < line.size() && line.at(position) == '"') {
        m_unquoted.clear();
        int i = position + 1;
        for (; i < line.size(); ++i) {
            if (line.at(i) == '"') {
                if (i + 1 >= line.size() || line.at(i + 1) != '"')
                    break;
                ++i;
            }
            m_unquoted += line.at(i);
        }
        ++i; // behind the closing quote
        if (i > line.size() || (i < line.size() && line.at(i) != m_separator))
            return false;
        cell = m_unquoted;
        position = i + 1;
        return true;
    }
    int end = line.indexOf(m_separator, position);
    end = end < 0 ? line.size() : end;
    cell = QByteArray::fromRawData(line.constData() + position, end - position);
    position = end + 1;
    return true;
}

bool CsvParser::readNumber(const QByteArray &cell, double &value) const
{
    constexpr int longest = 40;
    if (cell.isEmpty() || cell.size() > longest)
        return false;
    char digits[longest];
    std::copy(cell.cbegin(), cell.cend(), digits);
    if (m_separator != ',')
        std::replace(digits, digits + cell.size(), ',', '.');
    const auto result = std::from_chars(digits, digits + cell.size(), value);
    return result.ec == std::errc() && result.ptr == digits + cell.size();
}

bool CsvParser::readScaled(const QByteArray &cell, double &value)
{
    if (cell.isEmpty()) {
        value = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    if (readNumber(cell, value))
        return true;
    const auto error = m_errors.valueOf(cell, errorTexts);
    if (!error)
        return refuse(QStringLiteral("'%1' is no value, and too many others are none").arg(excerpt(cell)));
    value = *error;
    return true;
}

bool CsvParser::readGapComment(const QByteArray &line, DataGap &gap) const
{
    static const QRegularExpression known(
        QStringLiteral("^# gap: (\\d{1,15}) frames from number (\\d{1,15}) on are missing: (.*)$"));
    static const QRegularExpression unknown(
        QStringLiteral("^# gap: an unknown number of frames from number (\\d{1,15}) on is missing; "
                       "frames are counted from 0 again: (.*)$"));
    const QString text = QString::fromUtf8(line);
    gap = {};
    QString reason;
    if (const QRegularExpressionMatch match = known.match(text); match.hasMatch()) {
        gap.frames = match.captured(1).toLongLong();
        gap.firstFrame = match.captured(2).toLongLong();
        reason = match.captured(3);
    } else if (const QRegularExpressionMatch other = unknown.match(text); other.hasMatch()) {
        gap.firstFrame = other.captured(1).toLongLong();
        reason = other.captured(2);
    } else {
        return false;
    }
    for (const DataGap::Reason candidate :
         {DataGap::LibraryOverrun, DataGap::ConsumerOverrun, DataGap::Disconnected, DataGap::Restarted})
        if (reason == gapReasonText(candidate))
            gap.reason = candidate;
    return true;
}

bool CsvParser::readFrame(const QByteArray &line, RecordedFrame &frame)
{
    int position = 0;
    QByteArray cell;
    const auto isMissing = [&] { return position > line.size() || !takeCell(line, position, cell); };
    const QString incomplete = QStringLiteral("it has not the %1 columns of the file").arg(columns.names().size());
    const auto readInteger = [&cell](auto &value) {
        const char *end = cell.constData() + cell.size();
        const auto result = std::from_chars(cell.constData(), end, value);
        return result.ec == std::errc() && result.ptr == end;
    };
    if (m_hasNumber) {
        qint64 number = 0;
        if (isMissing())
            return refuse(incomplete);
        if (!readInteger(number) || number < 0 || number > maxFrameNumber)
            return refuse(QStringLiteral("'%1' is no number of a frame").arg(excerpt(cell)));
        frame.number = number;
    }
    if (isMissing())
        return refuse(incomplete);
    frame.time = std::numeric_limits<double>::quiet_NaN();
    if (!cell.isEmpty() && !(readNumber(cell, frame.time) && std::isfinite(frame.time)))
        return refuse(QStringLiteral("'%1' is no time").arg(excerpt(cell)));
    for (int i = 0; i < columns.frame.valuesPerFrame; ++i) {
        if (columns.scaled && (isMissing() || !readScaled(cell, frame.scaled[i])))
            return problem.isEmpty() ? refuse(incomplete) : false;
        if (!columns.raw)
            continue;
        if (isMissing())
            return refuse(incomplete);
        if (!readInteger(frame.raw[i]))
            return refuse(QStringLiteral("'%1' is no raw value").arg(excerpt(cell)));
        if (!columns.scaled)
            frame.scaled[i] = frame.raw[i];
    }
    return position > line.size() || refuse(incomplete);
}

RecordingParser::Step CsvParser::next(RecordedFrame &frame, DataGap &gap)
{
    frame.scaled.resize(columns.frame.valuesPerFrame);
    frame.raw.resize(columns.frame.valuesPerFrame);
    QByteArray line;
    for (;;) {
        const LineReader::Result result = m_lines.next(line);
        if (result != LineReader::Result::Line)
            return endOfLines(*this, result, m_lines);
        if (line.isEmpty())
            continue;
        if (!line.startsWith('#'))
            return readFrame(line, frame) ? Step::Frame : Step::Failed;
        if (readGapComment(line, gap))
            return Step::Gap;
    }
}

} // namespace

std::unique_ptr<RecordingParser> makeCsvParser(QIODevice &device)
{
    return std::make_unique<CsvParser>(device);
}

} // namespace SondixApp
