// SPDX-License-Identifier: MIT
#include "recordingreader_p.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace SondixQt;

namespace SondixApp {

namespace {

constexpr int magicSize = 8; // with the version
constexpr quint32 maxHeaderSize = 1 << 22;
constexpr int leadingSize = 4 + 8 + 8; // run, frame and time

struct Field
{
    QString name;
    bool isRaw = false;
};

/// An array as NpyWriter writes it, with the head and the gaps beside it.
class NpyParser : public RecordingParser
{
public:
    NpyParser(QIODevice &device, QIODevice *notes)
        : m_device(device)
        , m_notes(notes != nullptr ? std::make_unique<LineReader>(*notes) : nullptr)
    {
    }

    bool open() override;
    Step next(RecordedFrame &frame, DataGap &gap) override;

private:
    bool readHeader(QByteArray &header);
    bool readFields(const QString &description);
    void takeNames(const RecordColumns &described);
    void readNote();
    bool isGapNext() const;
    Step readRecord();
    void convert(RecordedFrame &frame) const;

    QIODevice &m_device;
    std::unique_ptr<LineReader> m_notes;
    std::optional<DataGap> m_gap; // the next one
    bool m_hasHead = false;
    int m_runs = 0; // of the sessions whose notes have been read
    int m_firstRun = 0;
    QVector<Field> m_fields;
    qint64 m_told = 0;
    qint64 m_records = 0;
    QByteArray m_record; // the next one, if it has been read
    bool m_isRead = false;
    int m_run = 0;
    qint64 m_number = 0;
    bool m_isEnd = false;
};

/// The text of a literal of Python as NpyWriter writes it.
QString unescaped(const QString &literal)
{
    QString text;
    for (int i = 0; i < literal.size(); ++i) {
        if (literal[i] != QLatin1Char('\\') || i + 1 >= literal.size()) {
            text += literal[i];
            continue;
        }
        ++i;
        constexpr int digits = 8;
        bool isCode = false;
        const uint code = literal.mid(i + 1, digits).toUInt(&isCode, 16);
        if (literal[i] == QLatin1Char('U') && isCode && code <= QChar::LastValidCodePoint) {
            text += QString::fromUcs4(&code, 1);
            i += digits;
        } else {
            text += literal[i];
        }
    }
    return text;
}

bool NpyParser::readHeader(QByteArray &header)
{
    const QByteArray begin = m_device.read(magicSize);
    const int version = begin.size() == magicSize ? begin.at(magicSize - 2) : 0;
    if (version != 1 && version != 2)
        return false;
    const QByteArray length = m_device.read(version == 1 ? 2 : 4);
    if (length.size() != (version == 1 ? 2 : 4))
        return false;
    const quint32 size = version == 1 ? qFromLittleEndian<quint16>(length.constData())
                                      : qFromLittleEndian<quint32>(length.constData());
    if (size > maxHeaderSize)
        return false;
    header = m_device.read(size);
    return static_cast<quint32>(header.size()) == size;
}

bool NpyParser::readFields(const QString &description)
{
    static const QRegularExpression field(QStringLiteral("\\('((?:[^'\\\\]|\\\\.)*+)', '<([if])([48])'\\)"));
    QStringList types;
    QRegularExpressionMatchIterator matches = field.globalMatch(description);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        types += match.captured(2) + match.captured(3);
        m_fields.append({unescaped(match.captured(1)), types.last() == QLatin1String("i4")});
    }
    const QStringList leading{QStringLiteral("i4"), QStringLiteral("i8"), QStringLiteral("f8")};
    if (types.size() <= leading.size() || types.mid(0, leading.size()) != leading ||
        m_fields[0].name != QLatin1String("run") || m_fields[1].name != QLatin1String("frame"))
        return false;
    QStringList names;
    for (int i = leading.size(); i < m_fields.size(); ++i) {
        if (types[i] != QLatin1String("i4") && types[i] != QLatin1String("f8"))
            return false;
        names += m_fields[i].name;
    }
    m_fields = m_fields.mid(leading.size());
    const auto raw = std::count_if(m_fields.cbegin(), m_fields.cend(), [](const Field &f) { return f.isRaw; });
    const ColumnKinds kinds{raw<m_fields.size(), raw> 0};
    for (int i = 0; kinds.scaled && kinds.raw && i < m_fields.size(); ++i)
        if (m_fields[i].isRaw != (i % 2 == 1))
            return false;
    return columnsFromNames(names, kinds, columns);
}

bool NpyParser::open()
{
    QByteArray header;
    static const QRegularExpression shape(
        QStringLiteral("^\\{'descr': \\[(.*)\\], 'fortran_order': False, 'shape': \\((\\d{1,18}),\\), \\}\\s*$"),
        QRegularExpression::DotMatchesEverythingOption);
    if (!readHeader(header)) {
        problem = QStringLiteral("the header of the array is cut or no header of .npy");
        return false;
    }
    const QRegularExpressionMatch match = shape.match(QString::fromLatin1(header));
    if (!match.hasMatch() || !readFields(match.captured(1))) {
        problem = QStringLiteral("the array has not the columns of a recording");
        return false;
    }
    m_told = match.captured(2).toLongLong();
    int size = leadingSize;
    for (const Field &field : qAsConst(m_fields))
        size += field.isRaw ? 4 : 8;
    m_record.resize(size);
    readNote();
    return true;
}

/// Names and units come from the head beside the array if it fits; the array has them in one text.
void NpyParser::takeNames(const RecordColumns &described)
{
    RecordColumns named = described;
    named.scaled = columns.scaled;
    named.raw = columns.raw;
    named.run = columns.run = named.number = columns.number = true;
    if (described.scaled != columns.scaled || described.raw != columns.raw || named.names() != columns.names())
        return;
    columns.frame.signals = described.frame.signals;
}

/// Reads the notes up to the next gap.
void NpyParser::readNote()
{
    m_gap.reset();
    QByteArray line;
    while (m_notes && m_notes->next(line) == LineReader::Result::Line) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        if (object.contains(QLatin1String("head"))) {
            // Every session that has appended to the file has a head, and its runs follow those before it.
            if (m_hasHead) {
                m_firstRun = ++m_runs;
                continue;
            }
            m_hasHead = true;
            RecordColumns described;
            readHead(object.value(QLatin1String("head")).toObject(), head, described);
            takeNames(described);
            columns.frame.datarate = head.rate.value_or(-1.0);
            continue;
        }
        DataGap gap;
        if (!readGap(object.value(QLatin1String("gap")).toObject(), gap))
            continue;
        if (gap.run > maxRunNumber - m_firstRun)
            continue;
        gap.run += m_firstRun;
        if (!gap.frames)
            m_runs = gap.run + 1;
        m_gap = gap;
        return;
    }
}

RecordingParser::Step NpyParser::readRecord()
{
    if (m_isRead)
        return Step::Frame;
    if (m_isEnd)
        return Step::End;
    const QByteArray bytes = m_device.read(m_record.size());
    // The header lags behind the data. Records of zeros behind those that it counts are none: a file can end in them
    // after a power failure.
    const bool isWhole = bytes.size() == m_record.size();
    if (!isWhole || (m_records >= m_told && bytes.count('\0') == bytes.size())) {
        m_isEnd = true;
        if (bytes.isEmpty() && !m_device.atEnd()) {
            problem = m_device.errorString();
            return Step::Failed;
        }
        if (m_records < m_told)
            warning = QStringLiteral("the file is cut: it has only %1 of the %2 frames that its header tells of")
                          .arg(m_records)
                          .arg(m_told);
        else if (!bytes.isEmpty())
            warning = QStringLiteral("the last frame is incomplete and is left out");
        return Step::End;
    }
    m_record = bytes;
    m_run = qFromLittleEndian<qint32>(m_record.constData());
    m_number = qFromLittleEndian<qint64>(m_record.constData() + 4);
    ++m_records;
    if (m_run < 0 || m_run > maxRunNumber || m_number < 0 || m_number > maxFrameNumber) {
        problem =
            QStringLiteral("frame %1 of the file: '%2' is no number of a frame").arg(m_records).arg(m_number);
        m_isEnd = true;
        return Step::Failed;
    }
    m_isRead = true;
    return Step::Frame;
}

bool NpyParser::isGapNext() const
{
    return m_gap && (!m_isRead || m_run > m_gap->run || (m_run == m_gap->run && m_number >= m_gap->firstFrame));
}

void NpyParser::convert(RecordedFrame &frame) const
{
    const char *from = m_record.constData() + 4 + 8;
    const auto number = [&from] {
        double value = 0.0;
        const quint64 bits = qFromLittleEndian<quint64>(from);
        static_assert(sizeof bits == sizeof value);
        std::memcpy(&value, &bits, sizeof value);
        from += sizeof value;
        return value;
    };
    frame.run = m_run;
    frame.number = m_number;
    frame.time = number();
    if (!std::isfinite(frame.time))
        frame.time = std::numeric_limits<double>::quiet_NaN();
    for (int i = 0; i < columns.frame.valuesPerFrame; ++i) {
        if (columns.scaled)
            frame.scaled[i] = number();
        if (!columns.raw)
            continue;
        frame.raw[i] = qFromLittleEndian<qint32>(from);
        from += sizeof(qint32);
        if (!columns.scaled)
            frame.scaled[i] = frame.raw[i];
    }
}

RecordingParser::Step NpyParser::next(RecordedFrame &frame, DataGap &gap)
{
    frame.scaled.resize(columns.frame.valuesPerFrame);
    frame.raw.resize(columns.frame.valuesPerFrame);
    const Step step = readRecord();
    if (step == Step::Failed)
        return step;
    if (isGapNext()) {
        gap = *m_gap;
        readNote();
        return Step::Gap;
    }
    if (step != Step::Frame)
        return step;
    m_isRead = false;
    convert(frame);
    return Step::Frame;
}

} // namespace

std::unique_ptr<RecordingParser> makeNpyParser(QIODevice &device, QIODevice *notes)
{
    return std::make_unique<NpyParser>(device, notes);
}

} // namespace SondixApp
