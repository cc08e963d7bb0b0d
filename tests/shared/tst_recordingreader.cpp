// SPDX-License-Identifier: MIT
#include "writtenrecordings.h"

using namespace Recordings;

class TestRecordingReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatWasWritten_data();
    void readsWhatWasWritten();
    void readsTheHead_data();
    void readsTheHead();
    void manyFramesComeInBlocks();
    void partsOfASeriesBeginAnywhere();
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
        // An array alone shows only that frames are missing.
        const bool isNoted = way.format != RecordFormat::Npy || way.withHead;
        QCOMPARE(have.reason, isNoted ? want.reason : DataGap::Unknown);
        if (way.format == RecordFormat::JsonLines)
            QCOMPARE(have.endTime, want.endTime);
    }
}

void TestRecordingReader::readsTheHead_data()
{
    addFormats();
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
