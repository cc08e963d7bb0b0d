// SPDX-License-Identifier: MIT
#include "recordingreader_p.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>

using namespace SondixQt;

namespace SondixApp {

namespace {

const QLatin1String headMember("head");
const QLatin1String gapMember("gap");
const QLatin1String frameMember("frame");
const QLatin1String valuesMember("values");
const QLatin1String rawMember("raw");

/// JSON lines as JsonWriter writes them.
class JsonParser : public RecordingParser
{
public:
    explicit JsonParser(QIODevice &device)
        : m_lines(device)
    {
    }

    bool open() override;
    Step next(RecordedFrame &frame, DataGap &gap) override;

private:
    LineReader::Result readObject();
    bool refuse(const QString &text);
    bool describe();
    bool readFrame(RecordedFrame &frame);
    bool readScaled(const QJsonArray &values, RecordedFrame &frame);
    bool readRaw(const QJsonArray &values, RecordedFrame &frame);

    LineReader m_lines;
    QJsonObject m_object; // of the present line
    bool m_isRead = false;
    bool m_isBad = false;
};

bool JsonParser::refuse(const QString &text)
{
    problem = lineProblem(m_lines.number(), text);
    return false;
}

/// Reads the next object, unless the present one has not yet been used.
LineReader::Result JsonParser::readObject()
{
    if (m_isRead) {
        m_isRead = false;
        return LineReader::Result::Line;
    }
    QByteArray line;
    LineReader::Result result = LineReader::Result::Line;
    do
        result = m_lines.next(line);
    while (result == LineReader::Result::Line && line.isEmpty());
    if (result != LineReader::Result::Line)
        return result;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(line, &error);
    m_isBad = !document.isObject();
    m_object = document.object();
    if (m_isBad)
        refuse(QStringLiteral("'%1' is no JSON object").arg(excerpt(line)));
    return result;
}

bool JsonParser::open()
{
    for (;;) {
        const LineReader::Result result = readObject();
        if (result != LineReader::Result::Line) {
            if (endOfLines(*this, result, m_lines) == Step::Failed)
                return false;
            if (columns.frame.valuesPerFrame > 0)
                return true;
            problem = QStringLiteral("it is no recording, or cut: there are neither a head nor frames");
            warning.clear();
            return false;
        }
        if (m_isBad)
            return false;
        if (m_object.contains(headMember)) {
            readHead(m_object.value(headMember).toObject(), head, columns);
            if (columns.frame.valuesPerFrame < 1)
                return refuse(QStringLiteral("the head describes no signals"));
            columns.frame.datarate = head.rate.value_or(-1.0);
            return true;
        }
        m_isRead = m_object.contains(frameMember);
        if (m_isRead)
            return describe();
        if (!m_object.contains(gapMember) && !m_object.contains(QLatin1String("incomplete")))
            return refuse(QStringLiteral("it is no recording: the object has no 'head' and no 'frame'"));
    }
}

/// The signals of a file without a head have only numbers.
bool JsonParser::describe()
{
    columns.scaled = m_object.contains(valuesMember);
    columns.raw = m_object.contains(rawMember);
    const int count = m_object.value(columns.scaled ? valuesMember : rawMember).toArray().size();
    if (count < 1)
        return refuse(QStringLiteral("the frame has no values"));
    columns.frame.signals.clear();
    for (int i = 0; i < count; ++i) {
        SignalInfo info;
        info.index = i;
        info.majorSignal = true;
        info.scaledName = info.rawName = QStringLiteral("Signal %1").arg(i + 1);
        columns.frame.signals.append(info);
    }
    columns.frame.valuesPerFrame = columns.frame.maxValuesPerFrame = count;
    return true;
}

bool JsonParser::readScaled(const QJsonArray &values, RecordedFrame &frame)
{
    if (values.size() != columns.frame.valuesPerFrame)
        return refuse(QStringLiteral("the frame has %1 instead of %2 values")
                          .arg(values.size())
                          .arg(columns.frame.valuesPerFrame));
    for (int i = 0; i < values.size(); ++i) {
        const QJsonValue value = values.at(i);
        double &scaled = frame.scaled[i];
        if (value.isDouble()) {
            scaled = value.toDouble();
        } else if (value.isNull()) {
            scaled = std::numeric_limits<double>::quiet_NaN();
        } else {
            const QJsonObject error = value.toObject();
            const QJsonValue key = error.value(QLatin1String("error"));
            if (!key.isDouble() || key.toDouble() > 0.0)
                return refuse(QStringLiteral("the value %1 is neither a number nor an error value").arg(i + 1));
            const int number = key.toInt();
            scaled = -1.0e10 + number;
            errorTexts.insert(number, error.value(QLatin1String("text")).toString());
        }
    }
    return true;
}

bool JsonParser::readRaw(const QJsonArray &values, RecordedFrame &frame)
{
    if (values.size() != columns.frame.valuesPerFrame)
        return refuse(QStringLiteral("the frame has %1 instead of %2 raw values")
                          .arg(values.size())
                          .arg(columns.frame.valuesPerFrame));
    for (int i = 0; i < values.size(); ++i) {
        const double value = values.at(i).toDouble(std::numeric_limits<double>::quiet_NaN());
        if (!(value >= std::numeric_limits<qint32>::min() && value <= std::numeric_limits<qint32>::max()) ||
            std::floor(value) != value)
            return refuse(QStringLiteral("the raw value %1 is no whole number").arg(i + 1));
        frame.raw[i] = static_cast<qint32>(value);
        if (!columns.scaled)
            frame.scaled[i] = value;
    }
    return true;
}

bool JsonParser::readFrame(RecordedFrame &frame)
{
    constexpr auto maxNumber = static_cast<double>(maxFrameNumber);
    const double number = m_object.value(frameMember).toDouble(-1.0);
    if (!(number >= 0.0 && number <= maxNumber))
        return refuse(QStringLiteral("the number of the frame is none"));
    frame.number = static_cast<qint64>(number);
    const QJsonValue time = m_object.value(QLatin1String("time"));
    if (!time.isDouble() && !time.isNull())
        return refuse(QStringLiteral("the frame has no time"));
    frame.time = time.toDouble(std::numeric_limits<double>::quiet_NaN());
    return (!columns.scaled || readScaled(m_object.value(valuesMember).toArray(), frame)) &&
           (!columns.raw || readRaw(m_object.value(rawMember).toArray(), frame));
}

RecordingParser::Step JsonParser::next(RecordedFrame &frame, DataGap &gap)
{
    frame.scaled.resize(columns.frame.valuesPerFrame);
    frame.raw.resize(columns.frame.valuesPerFrame);
    for (;;) {
        const LineReader::Result result = readObject();
        if (result != LineReader::Result::Line)
            return endOfLines(*this, result, m_lines);
        if (m_isBad)
            return Step::Failed;
        if (m_object.contains(frameMember))
            return readFrame(frame) ? Step::Frame : Step::Failed;
        if (!m_object.contains(gapMember))
            continue;
        if (readGap(m_object.value(gapMember).toObject(), gap))
            return Step::Gap;
        refuse(QStringLiteral("the gap is described incompletely"));
        return Step::Failed;
    }
}

} // namespace

std::unique_ptr<RecordingParser> makeJsonParser(QIODevice &device)
{
    return std::make_unique<JsonParser>(device);
}

} // namespace SondixApp
