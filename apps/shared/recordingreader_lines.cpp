// SPDX-License-Identifier: MIT
#include "recordingreader_p.h"

#include "framewriter.h"

#include <SondixQt/errorvalue.h>

#include <QJsonArray>
#include <QRegularExpression>
#include <QSet>

using namespace SondixQt;

namespace SondixApp {

namespace {

constexpr int pieceSize = 1 << 18;
constexpr int longestLine = 1 << 23; // 16,384 signals with raw values have less than 1 MiB
constexpr int maxNamedErrors = 1000;
constexpr double firstNamedError = -1.0e9; // the numbers of sensors are small
constexpr int longestExcerpt = 60;

struct IdentityKey
{
    const char *key;
    const char *answer;
};

constexpr IdentityKey jsonIdentities[] = {
    {"sensor", "SA_Sensor"},
    {"serialNumber", "SA_SerialNumber"},
    {"articleNumber", "SA_ArticleNumber"},
    {"firmware", "SA_Softwareversion"},
};

/// Removes the number that RecordColumns::names() adds to a name that was used before.
QString withoutNumber(const QString &name, const QSet<QString> &used)
{
    static const QRegularExpression numbered(QStringLiteral("^(.*) \\((\\d{1,6})\\)$"),
                                             QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = numbered.match(name);
    return match.hasMatch() && match.captured(2).toInt() > 1 && used.contains(match.captured(1))
               ? match.captured(1)
               : name;
}

struct NameAndUnit
{
    QString name;
    QString unit;
};

NameAndUnit splitName(const QString &column)
{
    const int bracket = column.lastIndexOf(QLatin1String(" ["));
    if (bracket < 0 || !column.endsWith(QLatin1Char(']')))
        return {column, {}};
    return {column.left(bracket), column.mid(bracket + 2, column.size() - bracket - 3)};
}

const QLatin1String rawSuffix(" raw");

bool isRawName(const QString &column)
{
    return splitName(column).name.endsWith(rawSuffix);
}

ColumnKinds kindsOf(const QStringList &columns)
{
    int raw = 0;
    bool alternates = columns.size() % 2 == 0;
    for (int i = 0; i < columns.size(); ++i) {
        const bool isRaw = isRawName(columns[i]);
        raw += isRaw ? 1 : 0;
        alternates = alternates && (i % 2 == 0 || isRaw);
    }
    if (raw == columns.size())
        return {false, true};
    return {true, alternates};
}

void setSignal(SignalInfo &info, const QString &column, bool isRaw)
{
    NameAndUnit parts = splitName(column);
    if (isRaw && parts.name.endsWith(rawSuffix))
        parts.name.chop(rawSuffix.size());
    (isRaw ? info.rawName : info.scaledName) = parts.name;
    (isRaw ? info.rawUnit : info.scaledUnit) = parts.unit;
}

} // namespace

LineReader::LineReader(QIODevice &device)
    : m_device(device)
{
}

LineReader::Result LineReader::next(QByteArray &line)
{
    int searched = m_begin;
    for (;;) {
        const int end = m_buffer.indexOf('\n', searched);
        if (end >= 0) {
            ++m_number;
            const int length = end > m_begin && m_buffer.at(end - 1) == '\r' ? end - m_begin - 1 : end - m_begin;
            line = QByteArray::fromRawData(m_buffer.constData() + m_begin, length);
            m_begin = end + 1;
            return Result::Line;
        }
        m_buffer.remove(0, m_begin);
        m_begin = 0;
        searched = m_buffer.size();
        if (searched > longestLine) {
            ++m_number;
            return Result::TooLong;
        }
        const QByteArray piece = m_device.read(pieceSize);
        if (piece.isEmpty()) {
            if (!m_device.atEnd())
                return Result::Failed;
            if (m_buffer.isEmpty())
                return Result::End;
            ++m_number;
            return Result::Cut;
        }
        m_buffer += piece;
    }
}

std::optional<double> NamedErrors::valueOf(const QByteArray &text, QHash<int, QString> &texts)
{
    if (const auto known = m_values.constFind(text); known != m_values.constEnd())
        return *known;
    if (m_values.size() >= maxNamedErrors)
        return std::nullopt;
    // The text of an error for which the sensor has none.
    static const QRegularExpression numbered(QStringLiteral("^error (-?\\d{1,9})$"));
    const QString name = QString::fromUtf8(text);
    const QRegularExpressionMatch match = numbered.match(name);
    const int number = match.captured(1).toInt();
    const double key = match.hasMatch() && number <= 0 ? number : firstNamedError - m_values.size();
    const double value = -1.0e10 + key;
    texts.insert(errorValueKey(value), name);
    m_values.insert(QByteArray(text.constData(), text.size()), value);
    return value;
}

QString lineProblem(qint64 line, const QString &text)
{
    return QStringLiteral("line %1: %2").arg(line).arg(text);
}

QString excerpt(const QByteArray &bytes)
{
    const QString text = QString::fromUtf8(bytes.left(4 * longestExcerpt)).simplified();
    QString shown = text.left(longestExcerpt);
    for (QChar &character : shown)
        if (!character.isPrint())
            character = QLatin1Char('?');
    return shown.size() < text.size() ? shown + QStringLiteral("...") : shown;
}

RecordingParser::Step endOfLines(RecordingParser &parser, LineReader::Result result, const LineReader &lines)
{
    switch (result) {
    case LineReader::Result::Cut:
        parser.warning = QStringLiteral("the last line is incomplete and is left out");
        [[fallthrough]];
    case LineReader::Result::End:
    case LineReader::Result::Line:
        return RecordingParser::Step::End;
    case LineReader::Result::TooLong:
        parser.problem = lineProblem(lines.number(), QStringLiteral("it is too long for a recording"));
        break;
    case LineReader::Result::Failed:
        parser.problem = lines.errorString();
        break;
    }
    return RecordingParser::Step::Failed;
}

bool columnsFromNames(const QStringList &names, std::optional<ColumnKinds> kinds, RecordColumns &columns)
{
    QStringList signalNames;
    QSet<QString> used;
    for (const QString &name : names) {
        signalNames += withoutNumber(name, used);
        used += name;
    }
    const int count = signalNames.size();
    if (!kinds)
        kinds = kindsOf(signalNames);
    columns.scaled = kinds->scaled;
    columns.raw = kinds->raw;
    const int step = columns.raw && columns.scaled ? 2 : 1;
    if (count % step != 0)
        return false;
    columns.frame.signals.clear();
    for (int i = 0; i < count; i += step) {
        SignalInfo info;
        info.index = i / step;
        info.majorSignal = true;
        setSignal(info, signalNames[i], !columns.scaled);
        if (step == 2)
            setSignal(info, signalNames[i + 1], true);
        columns.frame.signals.append(info);
    }
    columns.frame.valuesPerFrame = columns.frame.maxValuesPerFrame = columns.frame.signals.size();
    return count > 0;
}

void readHead(const QJsonObject &object, RecordHead &head, RecordColumns &columns)
{
    head = {};
    head.program = object.value(QLatin1String("program")).toString();
    head.address = object.value(QLatin1String("address")).toString();
    const QJsonArray sensors = object.value(QLatin1String("sensors")).toArray();
    for (const QJsonValue &sensor : sensors) {
        QMap<QString, QVariant> answers;
        for (const IdentityKey &identity : jsonIdentities)
            if (const QString value = sensor.toObject().value(QLatin1String(identity.key)).toString();
                !value.isEmpty())
                answers.insert(QLatin1String(identity.answer), value);
        head.sensors.append(answers);
    }
    if (const QJsonValue rate = object.value(QLatin1String("rateHz")); rate.isDouble())
        head.rate = rate.toDouble();
    if (const QJsonValue uncertainty = object.value(QLatin1String("timeUncertainty")); uncertainty.isDouble())
        head.uncertainty = uncertainty.toDouble();
    head.start = QDateTime::fromString(object.value(QLatin1String("start")).toString(), Qt::ISODateWithMs);
    head.isWallClock = object.value(QLatin1String("time")).toString().contains(QLatin1String("1970-01-01"));
    columns.scaled = object.contains(QLatin1String("values"));
    columns.raw = object.contains(QLatin1String("raw"));
    const QJsonArray scaled = object.value(QLatin1String("values")).toArray();
    const QJsonArray raw = object.value(QLatin1String("raw")).toArray();
    columns.frame.signals.clear();
    for (int i = 0; i < std::max(scaled.size(), raw.size()); ++i) {
        const QJsonObject scaledInfo = scaled.at(i).toObject();
        const QJsonObject rawInfo = raw.at(i).toObject();
        SignalInfo info;
        info.index = i;
        info.majorSignal = true;
        info.scaledName = scaledInfo.value(QLatin1String("name")).toString();
        info.scaledUnit = scaledInfo.value(QLatin1String("unit")).toString();
        info.scaledRangeMin = scaledInfo.value(QLatin1String("minimum")).toDouble();
        info.scaledRangeMax = scaledInfo.value(QLatin1String("maximum")).toDouble();
        info.rawName = rawInfo.value(QLatin1String("name")).toString();
        info.rawUnit = rawInfo.value(QLatin1String("unit")).toString();
        info.rawRangeMin = rawInfo.value(QLatin1String("minimum")).toDouble();
        info.rawRangeMax = rawInfo.value(QLatin1String("maximum")).toDouble();
        columns.frame.signals.append(info);
    }
    columns.frame.valuesPerFrame = columns.frame.maxValuesPerFrame = columns.frame.signals.size();
}

bool readGap(const QJsonObject &object, DataGap &gap)
{
    constexpr auto maxCount = static_cast<double>(maxFrameNumber);
    const auto isCount = [](const QJsonValue &value) {
        return value.isDouble() && value.toDouble() >= 0.0 && value.toDouble() <= maxCount;
    };
    const QJsonValue first = object.value(QLatin1String("firstFrame"));
    const QJsonValue frames = object.value(QLatin1String("frames"));
    const QJsonValue run = object.value(QLatin1String("run"));
    if (!isCount(first) || run.toInt(-1) < 0 || run.toInt() > maxRunNumber ||
        !(isCount(frames) || frames.isNull()))
        return false;
    gap = {};
    gap.run = run.toInt();
    gap.firstFrame = static_cast<qint64>(first.toDouble());
    if (frames.isDouble())
        gap.frames = static_cast<qint64>(frames.toDouble());
    const QString reason = object.value(QLatin1String("reason")).toString();
    for (const DataGap::Reason known :
         {DataGap::LibraryOverrun, DataGap::ConsumerOverrun, DataGap::Disconnected, DataGap::Restarted})
        if (reason == gapReasonKey(known))
            gap.reason = known;
    if (const QJsonValue begin = object.value(QLatin1String("begin")); begin.isDouble())
        gap.beginTime = begin.toDouble();
    if (const QJsonValue end = object.value(QLatin1String("end")); end.isDouble())
        gap.endTime = end.toDouble();
    return true;
}

} // namespace SondixApp
