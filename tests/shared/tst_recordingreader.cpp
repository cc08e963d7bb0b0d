// SPDX-License-Identifier: MIT
#include "recordings.h"

#include "shared/framewriter.h"
#include "shared/recorder.h"
#include "shared/recordingreader.h"

#include <SondixQt/errorvalue.h>

#include <QBuffer>

using namespace Recordings;

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct Way
{
    RecordFormat format = RecordFormat::Csv;
    FormatOptions options;
    bool scaled = true;
    bool raw = false;
    bool withHead = true;
    bool number = true;
};

/// One frame as a recording should have it.
struct FlatFrame
{
    int run = 0;
    qint64 number = 0;
    double time = nan;
    QVector<double> scaled;
    QVector<qint32> raw;
};

/// All that a reader has delivered: frames one by one, and gaps with the number of frames before them.
struct Content
{
    QVector<FlatFrame> frames;
    QVector<std::pair<int, DataGap>> gaps;
    int largestBlock = 0;
};

void addItem(Content &content, const DataBlock &block)
{
    content.largestBlock = std::max(content.largestBlock, block.frameCount());
    for (int i = 0; i < block.frameCount(); ++i) {
        FlatFrame frame;
        frame.run = block.run();
        frame.number = block.firstFrame() + i;
        frame.time = block.frameTime(i).value_or(nan);
        for (int s = 0; s < block.valuesPerFrame(); ++s) {
            frame.scaled += block.scaled(i, s);
            frame.raw += block.raw(i, s);
        }
        content.frames += frame;
    }
}

void addItem(Content &content, const DataGap &gap)
{
    content.gaps += {content.frames.size(), gap};
}

Content contentOf(RecordingReader &reader)
{
    Content content;
    while (const auto item = reader.next())
        std::visit([&content](const auto &part) { addItem(content, part); }, *item);
    return content;
}

std::unique_ptr<QIODevice> bufferOf(const QByteArray &data)
{
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(data);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

QString textOf(double value)
{
    return QStringLiteral("Text; of, %1").arg(errorValueKey(value));
}

DataBlock awkwardBlock()
{
    return DataBlock(
        0, 3, 2,
        {-0.0, 1.0e300, 5.0e-324, 0.1, -12345.678901234567, errorValue, -1.0e10 - 4.0, 7.0,
         std::numeric_limits<double>::infinity(), -9.9e9},
        {std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max(), 0, -1, 5, 6, 7, 8, 9, 10},
        1000.25, 0.0005);
}

/// The blocks and gaps of a run with all that can happen.
QVector<RecordingReader::Item> eventfulRun()
{
    DataGap reported = gap(8, 4, DataGap::LibraryOverrun);
    reported.beginTime = 1000.252;
    reported.endTime = 1000.254;
    DataGap unknown = gap(112, std::nullopt, DataGap::Disconnected);
    const DataBlock irregular = DataBlock::withTimes(1, 0, 2, {1.0, 2.0, 3.0, 4.0, 5.0, 6.0}, {1, 2, 3, 4, 5, 6},
                                                     {2000.0, 2000.5, 2000.75});
    const DataBlock timeless(1, 3, 2, {1.5, 2.5, 3.5, 4.5}, {1, 2, 3, 4});
    return {block(0, 3, 1000.0),
            awkwardBlock(),
            reported,
            block(12, 100, 1000.254),
            unknown,
            irregular,
            timeless,
            block(5, 2, 2001.0, 0.001, 1)};
}

Content flat(const QVector<RecordingReader::Item> &items)
{
    Content content;
    for (const auto &item : items)
        std::visit([&content](const auto &part) { addItem(content, part); }, item);
    return content;
}

RecordColumns columnsOf(const Way &way)
{
    RecordColumns made = columns(way.scaled, way.raw, way.number);
    made.frame.signals[1].scaledName = QString::fromUtf8("Größe; \"B\", x");
    made.frame.signals[1].rawRangeMin = -5.0;
    return made;
}

RecordHead headOf()
{
    RecordHead head;
    head.program = "tests 1.0";
    head.address = "TX270@RS232,port=COM3";
    head.sensors = {{{"SA_Sensor", "TX270-10"}, {"SA_SerialNumber", "1018001"}},
                    {{"SA_Sensor", "Other"}, {"SA_SerialNumber", "7"}}};
    head.rate = 2000.0;
    head.start = QDateTime::fromString("2026-11-22T09:55:32.335Z", Qt::ISODateWithMs);
    return head;
}

struct Written
{
    QByteArray data;
    QByteArray notes;
};

Written written(const Way &way, const QVector<RecordingReader::Item> &items)
{
    QTemporaryDir folder;
    Recorder::Plan plan;
    plan.path = folder.filePath("file");
    plan.format = way.format;
    plan.options = way.options;
    plan.columns = columnsOf(way);
    plan.withHead = way.withHead;
    ErrorValues errors(textOf);
    Recorder recorder(plan, headOf(), errors);
    bool isOk = recorder.open();
    for (const auto &item : items)
        isOk = isOk && std::visit([&recorder](const auto &part) { return recorder.write(part); }, item);
    if (!isOk || !recorder.finish())
        qFatal("cannot write: %s", qPrintable(recorder.problem()));
    return {Recordings::contentOf(plan.path),
            QFile::exists(plan.path + ".jsonl") ? Recordings::contentOf(plan.path + ".jsonl") : QByteArray()};
}

std::unique_ptr<RecordingReader> makeReader(const Written &files)
{
    return std::make_unique<RecordingReader>(bufferOf(files.data),
                                             files.notes.isEmpty() ? nullptr : bufferOf(files.notes));
}

bool sameNumber(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

/// The first difference between the content that was written with the options \a way and what was read; empty if they
/// are equal.
QString difference(const Content &expected, const Content &read, const Way &way, const RecordingReader &reader)
{
    const auto at = [](int i, const char *what) { return QStringLiteral("frame %1: %2").arg(i).arg(what); };
    if (expected.frames.size() != read.frames.size())
        return QStringLiteral("%1 frames").arg(read.frames.size());
    for (int i = 0; i < read.frames.size(); ++i) {
        const FlatFrame &want = expected.frames[i];
        const FlatFrame &have = read.frames[i];
        if (want.run != have.run || (way.number && want.number != have.number))
            return at(i, "number");
        if (std::isnan(want.time) != std::isnan(have.time) || std::fabs(want.time - have.time) > 1.6e-6)
            return at(i, "time");
        for (int s = 0; s < want.scaled.size(); ++s) {
            if (way.raw && want.raw[s] != have.raw[s])
                return at(i, "raw");
            const double value = have.scaled[s];
            if (!way.scaled) {
                if (value != want.raw[s])
                    return at(i, "raw as scaled");
            } else if (isErrorValue(want.scaled[s])) {
                const bool hasText = way.format != RecordFormat::Npy && way.options.errors == ErrorStyle::Text;
                if (!isErrorValue(value) || std::isnan(value) == hasText)
                    return at(i, "error");
                if (hasText && reader.errorText(value) != textOf(want.scaled[s]))
                    return at(i, "error text");
                if (hasText && way.format == RecordFormat::JsonLines && value != want.scaled[s])
                    return at(i, "error key");
            } else if (std::isinf(want.scaled[s]) && way.format == RecordFormat::JsonLines) {
                if (!std::isnan(value)) // JSON has no infinity
                    return at(i, "infinity");
            } else if (way.format == RecordFormat::JsonLines ? value != want.scaled[s]
                                                             : !sameNumber(value, want.scaled[s])) {
                // Qt reads "-0" as the integer 0.
                return at(i, "value");
            }
        }
    }
    return {};
}

} // namespace

Q_DECLARE_METATYPE(Way)
Q_DECLARE_METATYPE(SondixApp::RecordFormat)

class TestRecordingReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatWasWritten_data();
    void readsWhatWasWritten();
    void readsTheHead_data();
    void readsTheHead();
    void manyFramesComeInBlocks();
    void cutFilesGiveWhatIsWhole_data();
    void cutFilesGiveWhatIsWhole();
    void continuedFilesAreReadAsOne_data();
    void continuedFilesAreReadAsOne();
    void removedFramesBecomeGaps();
    void partsOfASeriesBeginAnywhere();
    void growingArraysAreReadBehindTheirHeader();
    void arraysWithoutNotesHaveGaps();
    void editedFilesAreRead();
    void foreignFilesAreRefused_data();
    void foreignFilesAreRefused();
    void mistakesEndReadingWithTheirLine_data();
    void mistakesEndReadingWithTheirLine();
    void namesAreKept_data();
    void namesAreKept();
    void readsFromFiles();
};

void TestRecordingReader::readsWhatWasWritten_data()
{
    QTest::addColumn<Way>("way");
    const auto add = [](const QString &name, const Way &way) { QTest::newRow(qPrintable(name)) << way; };
    for (const bool withHead : {true, false})
        for (const int values : {1, 2, 3})
            for (const ErrorStyle style : {ErrorStyle::Text, ErrorStyle::NaN, ErrorStyle::Empty}) {
                Way way;
                way.withHead = withHead;
                way.scaled = values != 2;
                way.raw = values != 1;
                way.options.errors = style;
                const QString name =
                    QString("values %1, errors %2%3").arg(values).arg(int(style)).arg(withHead ? "" : ", no head");
                for (const char separator : {',', ';', '\t', '|', '/'})
                    for (const char mark : {'.', ','}) {
                        if (separator == mark)
                            continue;
                        way.options.separator = separator;
                        way.options.decimalMark = mark;
                        way.number = true;
                        add(QString("csv %1 %2, %3").arg(separator).arg(mark).arg(name), way);
                        way.number = false;
                        add(QString("csv %1 %2, no number, %3").arg(separator).arg(mark).arg(name), way);
                    }
                way.options = {};
                way.options.errors = style;
                way.number = true;
                way.format = RecordFormat::JsonLines;
                add("json, " + name, way);
                way.format = RecordFormat::Npy;
                if (style == ErrorStyle::Text)
                    add("npy, " + name, way);
            }
}

void TestRecordingReader::readsWhatWasWritten()
{
    QFETCH(Way, way);
    const QVector<RecordingReader::Item> items = eventfulRun();
    const Written files = written(way, items);
    const auto reader = makeReader(files);
    QVERIFY2(reader->open(), qPrintable(reader->problem()));
    QCOMPARE(reader->frame().valuesPerFrame, 2);
    const Content read = contentOf(*reader);
    QCOMPARE(reader->problem(), QString());
    QCOMPARE(reader->warning(), QString());
    QCOMPARE(reader->progress(), 1.0);
    const Content expected = flat(items);
    QCOMPARE(difference(expected, read, way, *reader), QString());
    QCOMPARE(read.gaps.size(), expected.gaps.size());
    for (int i = 0; i < read.gaps.size(); ++i) {
        const DataGap &want = expected.gaps[i].second;
        const DataGap &have = read.gaps[i].second;
        QCOMPARE(read.gaps[i].first, expected.gaps[i].first);
        QCOMPARE(have.run, want.run);
        QCOMPARE(have.frames, want.frames);
        QCOMPARE(have.firstFrame, want.firstFrame);
        // An array alone tells only that frames are missing.
        const bool isNoted = way.format != RecordFormat::Npy || way.withHead;
        QCOMPARE(have.reason, isNoted ? want.reason : DataGap::Unknown);
        if (way.format == RecordFormat::JsonLines)
            QCOMPARE(have.endTime, want.endTime);
    }
}

void TestRecordingReader::readsTheHead_data()
{
    QTest::addColumn<RecordFormat>("format");
    QTest::newRow("csv") << RecordFormat::Csv;
    QTest::newRow("json") << RecordFormat::JsonLines;
    QTest::newRow("npy") << RecordFormat::Npy;
}

void TestRecordingReader::readsTheHead()
{
    QFETCH(RecordFormat, format);
    Way way;
    way.format = format;
    way.raw = true;
    const auto reader = makeReader(written(way, eventfulRun()));
    QVERIFY2(reader->open(), qPrintable(reader->problem()));
    const RecordHead &head = reader->head();
    QCOMPARE(head.program, headOf().program);
    QCOMPARE(head.address, headOf().address);
    QCOMPARE(head.sensors, headOf().sensors);
    QCOMPARE(head.rate, headOf().rate);
    QVERIFY(head.start.isValid());
    QVERIFY(!head.isWallClock);
    const RecordColumns expected = columnsOf(way);
    QCOMPARE(reader->frame().datarate, 2000.0);
    QCOMPARE(reader->frame().signalList().size(), 2);
    for (int i = 0; i < 2; ++i) {
        const SignalInfo &want = expected.frame.signalList()[i];
        const SignalInfo &have = reader->frame().signalList()[i];
        QCOMPARE(have.scaledName, want.scaledName);
        QCOMPARE(have.scaledUnit, want.scaledUnit);
        QCOMPARE(have.scaledRangeMax, want.scaledRangeMax);
        QCOMPARE(have.rawName, want.rawName);
        QCOMPARE(have.rawUnit, want.rawUnit);
        QCOMPARE(have.rawRangeMin, want.rawRangeMin);
        QCOMPARE(have.rawRangeMax, want.rawRangeMax);
    }
}

void TestRecordingReader::manyFramesComeInBlocks()
{
    constexpr int frames = 200000;
    const QVector<RecordingReader::Item> items{block(0, frames, 1000.0, 1.0e-5)};
    for (const RecordFormat format : {RecordFormat::Csv, RecordFormat::JsonLines, RecordFormat::Npy}) {
        Way way;
        way.format = format;
        const auto reader = makeReader(written(way, items));
        QVERIFY2(reader->open(), qPrintable(reader->problem()));
        const Content read = contentOf(*reader);
        QCOMPARE(difference(flat(items), read, way, *reader), QString());
        QVERIFY2(read.largestBlock > 1000 && read.largestBlock <= 65536,
                 qPrintable(QString::number(read.largestBlock)));
        QVERIFY(read.gaps.isEmpty());
    }
}

void TestRecordingReader::cutFilesGiveWhatIsWhole_data()
{
    readsTheHead_data();
}

void TestRecordingReader::cutFilesGiveWhatIsWhole()
{
    QFETCH(RecordFormat, format);
    Way way;
    way.format = format;
    way.raw = true;
    const QVector<RecordingReader::Item> items{block(0, 3, 1000.0), gap(3, 4, DataGap::LibraryOverrun),
                                               block(7, 2, 1000.007)};
    const Written files = written(way, items);
    const Content whole = flat(items);
    int most = 0;
    for (int size = 0; size <= files.data.size(); ++size) {
        const auto reader = makeReader({files.data.left(size), files.notes});
        if (!reader->open()) {
            QVERIFY2(!reader->problem().isEmpty(), qPrintable(QString::number(size)));
            QCOMPARE(most, 0); // what is longer is no worse
            continue;
        }
        const Content read = contentOf(*reader);
        QCOMPARE(reader->problem(), QString());
        QVERIFY(read.frames.size() >= most);
        most = read.frames.size();
        Content expected;
        expected.frames = whole.frames.mid(0, most);
        QCOMPARE(difference(expected, read, way, *reader), QString());
        const bool isWhole = size == files.data.size();
        if (isWhole)
            QCOMPARE(reader->warning(), QString());
        else if (format == RecordFormat::Npy)
            QVERIFY(!reader->warning().isEmpty());
        else
            QCOMPARE(reader->warning().isEmpty(), files.data.at(size - 1) == '\n');
    }
    QCOMPARE(most, 5);
}

void TestRecordingReader::continuedFilesAreReadAsOne_data()
{
    readsTheHead_data();
}

void TestRecordingReader::continuedFilesAreReadAsOne()
{
    QFETCH(RecordFormat, format);
    QTemporaryDir folder;
    Recorder::Plan plan;
    plan.path = folder.filePath("file");
    plan.format = format;
    plan.columns = columns();
    plan.append = true;
    ErrorValues errors(textOf);
    for (int session = 0; session < 3; ++session) {
        Recorder recorder(plan, headOf(), errors);
        QVERIFY2(recorder.open(), qPrintable(recorder.problem()));
        QVERIFY(recorder.write(block(0, 4, 10.0 * session)));
        QVERIFY(recorder.write(gap(4, std::nullopt, DataGap::Disconnected)));
        QVERIFY(recorder.write(block(0, 3, 10.0 * session + 5.0, 0.001, 1)));
        DataGap overrun = gap(3, 2, DataGap::LibraryOverrun);
        overrun.run = 1;
        QVERIFY(recorder.write(overrun));
        QVERIFY(recorder.write(block(5, 1, 10.0 * session + 6.0, 0.001, 1)));
        QVERIFY(recorder.finish());
    }
    RecordingReader reader(plan.path);
    QVERIFY2(reader.open(), qPrintable(reader.problem()));
    const Content read = contentOf(reader);
    QCOMPARE(reader.problem(), QString());
    QCOMPARE(read.frames.size(), 24);
    for (int i = 0; i < read.frames.size(); ++i) {
        const int inSession = i % 8;
        QCOMPARE(read.frames[i].run, 2 * (i / 8) + (inSession < 4 ? 0 : 1));
        QCOMPARE(read.frames[i].number, inSession < 4 ? inSession : inSession < 7 ? inSession - 4 : 5);
    }
    // Two gaps in each session, and the pauses between them.
    QCOMPARE(read.gaps.size(), 8);
    int known = 0;
    for (const auto &[position, item] : read.gaps)
        known += item.reason == DataGap::Unknown ? 0 : 1;
    QCOMPARE(known, 6);
}

void TestRecordingReader::removedFramesBecomeGaps()
{
    RecordingReader reader(bufferOf("frame,time [s],A\n0,1.0,1\n1,2.0,2\n5,6.0,3\n0,7.0,4\n"));
    QVERIFY(reader.open());
    const Content read = contentOf(reader);
    QCOMPARE(read.frames.size(), 4);
    QCOMPARE(read.gaps.size(), 2);
    QCOMPARE(read.gaps[0].first, 2);
    QCOMPARE(read.gaps[0].second.frames, std::optional<qint64>(3));
    QCOMPARE(read.gaps[0].second.firstFrame, 2LL);
    QCOMPARE(read.gaps[0].second.reason, DataGap::Unknown);
    QCOMPARE(read.gaps[1].first, 3);
    QVERIFY(!read.gaps[1].second.frames);
    QCOMPARE(read.frames[3].run, 1);
    QCOMPARE(read.frames[3].number, 0LL);
}

void TestRecordingReader::partsOfASeriesBeginAnywhere()
{
    for (const RecordFormat format : {RecordFormat::Csv, RecordFormat::JsonLines, RecordFormat::Npy}) {
        Way way;
        way.format = format;
        const QVector<RecordingReader::Item> items{block(5000, 3, 1000.0)};
        const auto reader = makeReader(written(way, items));
        QVERIFY2(reader->open(), qPrintable(reader->problem()));
        const Content read = contentOf(*reader);
        QCOMPARE(read.frames.first().number, 5000LL);
        QVERIFY(read.gaps.isEmpty());
    }
}

void TestRecordingReader::growingArraysAreReadBehindTheirHeader()
{
    Way way;
    way.format = RecordFormat::Npy;
    Written files = written(way, {block(1, 9, 1000.0)});
    const int shape = files.data.indexOf("'shape': (9,)");
    QVERIFY(shape > 0);
    files.data[shape + 10] = '4';
    auto reader = makeReader(files);
    QVERIFY2(reader->open(), qPrintable(reader->problem()));
    QCOMPARE(contentOf(*reader).frames.size(), 9);
    QCOMPARE(reader->warning(), QString());
    // After a power failure there are zeros behind the data.
    files.data += QByteArray(1000, '\0');
    reader = makeReader(files);
    QVERIFY2(reader->open(), qPrintable(reader->problem()));
    QCOMPARE(contentOf(*reader).frames.size(), 9);
}

void TestRecordingReader::arraysWithoutNotesHaveGaps()
{
    Way way;
    way.format = RecordFormat::Npy;
    const auto reader = makeReader({written(way, eventfulRun()).data, {}});
    QVERIFY2(reader->open(), qPrintable(reader->problem()));
    QCOMPARE(reader->frame().signalList().first().scaledName, QString("A"));
    QCOMPARE(reader->frame().signalList().first().scaledUnit, QString("mm"));
    const Content read = contentOf(*reader);
    QCOMPARE(read.gaps.size(), 2);
    QCOMPARE(read.gaps[0].second.frames, std::optional<qint64>(4));
    QVERIFY(!read.gaps[1].second.frames);
}

void TestRecordingReader::editedFilesAreRead()
{
    RecordingReader reader(bufferOf("\xEF\xBB\xBF# remark: by hand\r\nframe;time [s];\"A; x [mm]\"\r\n\r\n"
                                    "0;1,000000;2,5\r\n# a comment\r\n1;;\"too; \"\"far\"\"\"\r\n2;3;1e3\r\n"));
    QVERIFY2(reader.open(), qPrintable(reader.problem()));
    QCOMPARE(reader.frame().signalList().first().scaledName, QString("A; x"));
    const Content read = contentOf(reader);
    QCOMPARE(reader.problem(), QString());
    QCOMPARE(read.frames.size(), 3);
    QCOMPARE(read.frames[0].scaled.first(), 2.5);
    QVERIFY(std::isnan(read.frames[1].time));
    QCOMPARE(reader.errorText(read.frames[1].scaled.first()), QString("too; \"far\""));
    QCOMPARE(read.frames[2].scaled.first(), 1000.0);
}

void TestRecordingReader::foreignFilesAreRefused_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("part");
    QTest::newRow("empty") << QByteArray() << "empty";
    QTest::newRow("text") << QByteArray("Dear Sir,\nhow are you?\n") << "Dear Sir";
    QTest::newRow("other CSV") << QByteArray("x,y\n1,2\n") << "line 1";
    QTest::newRow("no values") << QByteArray("frame,time [s]\n1,2\n") << "line 1";
    QTest::newRow("other second column") << QByteArray("frame,x,y\n1,2,3\n") << "line 1";
    QTest::newRow("zeros") << QByteArray(5000, '\0') << "cut";
    QTest::newRow("a line without end") << QByteArray(1 << 24, 'x') << "too long";
    QTest::newRow("only a head") << QByteArray("# sensor: TX270\n# rate: 5 Hz\n") << "cut";
    QTest::newRow("other JSON") << QByteArray("{\"a\":1}\n") << "line 1";
    QTest::newRow("broken JSON") << QByteArray("{\"head\":\n") << "line 1";
    QTest::newRow("deep JSON") << QByteArray(100000, '{') + "\n"
                               << "line 1";
    QTest::newRow("head without signals") << QByteArray("{\"head\":{}}\n") << "no signals";
    QTest::newRow("frame without values") << QByteArray("{\"frame\":0,\"time\":null}\n") << "no values";
    QTest::newRow("other array") << QByteArray("\x93NUMPY\x01\x00\x76\x00{'descr': '<f8', 'fortran_order': False, "
                                               "'shape': (3,), }",
                                               56)
                                        .leftJustified(128, ' ')
                                 << "columns";
    QTest::newRow("cut array") << QByteArray("\x93NUMPY\x01\x00\x76", 9) << "header";
    QTest::newRow("huge header") << QByteArray("\x93NUMPY\x02\x00\xff\xff\xff\xff", 12) << "header";
}

void TestRecordingReader::foreignFilesAreRefused()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, part);
    RecordingReader reader(bufferOf(content));
    QVERIFY(!reader.open());
    QVERIFY2(reader.problem().contains(part), qPrintable(reader.problem()));
    QVERIFY(reader.problem().size() < 200);
    QVERIFY(!reader.next());
}

void TestRecordingReader::mistakesEndReadingWithTheirLine_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("part");
    QTest::newRow("number") << QByteArray("x,1.0,2,3") << "'x'";
    QTest::newRow("negative number") << QByteArray("-1,1.0,2,3") << "'-1'";
    QTest::newRow("huge number") << QByteArray("9223372036854775807,1.0,2,3") << "9223372036854775807";
    QTest::newRow("time") << QByteArray("2,now,2,3") << "'now'";
    QTest::newRow("infinite time") << QByteArray("2,inf,2,3") << "'inf'";
    QTest::newRow("too few") << QByteArray("2,1.0,2") << "columns";
    QTest::newRow("too many") << QByteArray("2,1.0,2,3,4") << "columns";
    QTest::newRow("raw") << QByteArray("2,1.0,2,3.5") << "'3.5'";
    QTest::newRow("raw too large") << QByteArray("2,1.0,2,4294967296") << "'4294967296'";
    QTest::newRow("open quote") << QByteArray("2,1.0,\"2,3") << "columns";
}

void TestRecordingReader::mistakesEndReadingWithTheirLine()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, part);
    RecordingReader reader(
        bufferOf("# c\nframe,time [s],A [mm],A raw [Digits]\n0,0.5,1,10\n1,0.75,1,10\n" + line + "\n3,1.0,1,1\n"));
    QVERIFY2(reader.open(), qPrintable(reader.problem()));
    const Content read = contentOf(reader);
    QCOMPARE(read.frames.size(), 2);
    QVERIFY2(reader.problem().startsWith("line 5: "), qPrintable(reader.problem()));
    QVERIFY2(reader.problem().contains(part), qPrintable(reader.problem()));
    QVERIFY(!reader.next());
}

void TestRecordingReader::namesAreKept_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::newRow("equal") << QStringList{"A", "A", "A"};
    QTest::newRow("number of its own") << QStringList{"A (2)", "B (7)"};
    QTest::newRow("brackets") << QStringList{"A [x]", "[y]"};
    QTest::newRow("line break") << QStringList{"A\nB", "C"};
    QTest::newRow("other script") << QStringList{QString::fromUtf8("距離"),
                                                 QString::fromUtf8("\U0001F600 'q' \\")};
}

void TestRecordingReader::namesAreKept()
{
    QFETCH(QStringList, names);
    RecordColumns wanted;
    for (const QString &name : names)
        wanted.frame.signals += signalInfo(name);
    wanted.frame.valuesPerFrame = names.size();
    wanted.number = true;
    ErrorValues errors(textOf);
    const QVector<double> scaled(names.size(), 1.0);
    for (const RecordFormat format : {RecordFormat::Csv, RecordFormat::Npy}) {
        const auto writer = makeFrameWriter(format, wanted, {}, errors);
        TextBuffer out;
        writer->begin(out, nullptr, true);
        writer->addFrames(out, DataBlock(0, 0, names.size(), scaled, QVector<qint32>(names.size())), 0, 1);
        RecordingReader reader(bufferOf(out.data()));
        QVERIFY2(reader.open(), qPrintable(reader.problem()));
        QCOMPARE(reader.frame().signalList().size(), names.size());
        for (int i = 0; i < names.size(); ++i) {
            QCOMPARE(reader.frame().signalList()[i].scaledName, names[i]);
            QCOMPARE(reader.frame().signalList()[i].scaledUnit, QString("mm"));
        }
        QCOMPARE(contentOf(reader).frames.size(), 1);
    }
}

void TestRecordingReader::readsFromFiles()
{
    QTemporaryDir folder;
    RecordingReader missing(folder.filePath("none.csv"));
    QVERIFY(!missing.open());
    QVERIFY(!missing.problem().isEmpty());
    RecordingReader directory(folder.path());
    QVERIFY(!directory.open());
    QVERIFY(!directory.problem().isEmpty());
    const QString path = folder.filePath(QString::fromUtf8("Größe.csv.partial"));
    writeFile(path, "time [s],A [mm]\n1.0,2\n");
    RecordingReader reader(path);
    QVERIFY2(reader.open(), qPrintable(reader.problem()));
    QCOMPARE(contentOf(reader).frames.size(), 1);
}

QTEST_GUILESS_MAIN(TestRecordingReader)
#include "tst_recordingreader.moc"
