// SPDX-License-Identifier: MIT
#include "writtenrecordings.h"

using namespace Recordings;

/// Recordings that were cut, continued or edited, and files that are none.
class TestRecordingReaderFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutFilesGiveWhatIsWhole_data();
    void cutFilesGiveWhatIsWhole();
    void continuedFilesAreReadAsOne_data();
    void continuedFilesAreReadAsOne();
    void aGapAtTheBeginningIsOne_data();
    void aGapAtTheBeginningIsOne();
    void removedFramesBecomeGaps();
    void growingArraysAreReadBehindTheirHeader();
    void arraysWithoutNotesHaveGaps();
    void editedFilesAreRead();
    void foreignFilesAreRefused_data();
    void foreignFilesAreRefused();
    void mistakesEndReadingWithTheirLine_data();
    void mistakesEndReadingWithTheirLine();
};

void TestRecordingReaderFiles::cutFilesGiveWhatIsWhole_data()
{
    addFormats();
}

void TestRecordingReaderFiles::cutFilesGiveWhatIsWhole()
{
    QFETCH(RecordFormat, format);
    Way way;
    way.format = format;
    way.raw = true;
    const QVector<RecordingReader::Item> items{block(0, 3, 1000.0), gap(3, 4, DataGap::LibraryOverrun),
                                               block(7, 2, 1000.007)};
    const Written files = written(way, items);
    const Content whole = flat(items);
    int maxFrames = 0;
    for (int size = 0; size <= files.data.size(); ++size) {
        const auto reader = makeReader({files.data.left(size), files.notes});
        if (!reader->open()) {
            QVERIFY2(!reader->problem().isEmpty(), qPrintable(QString::number(size)));
            QCOMPARE(maxFrames, 0); // what is longer is no worse
            continue;
        }
        const Content read = contentOf(*reader);
        QCOMPARE(reader->problem(), QString());
        QVERIFY(read.frames.size() >= maxFrames);
        maxFrames = read.frames.size();
        Content expected;
        expected.frames = whole.frames.mid(0, maxFrames);
        QCOMPARE(difference(expected, read, way, *reader), QString());
        const bool isWhole = size == files.data.size();
        if (isWhole)
            QCOMPARE(reader->warning(), QString());
        else if (format == RecordFormat::Npy)
            QVERIFY(!reader->warning().isEmpty());
        else
            QCOMPARE(reader->warning().isEmpty(), files.data.at(size - 1) == '\n');
    }
    QCOMPARE(maxFrames, 5);
}

void TestRecordingReaderFiles::continuedFilesAreReadAsOne_data()
{
    addFormats();
}

void TestRecordingReaderFiles::continuedFilesAreReadAsOne()
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

void TestRecordingReaderFiles::aGapAtTheBeginningIsOne_data()
{
    addFormats();
}

/// A recording that was started after others have ended begins in a later run of the reader.
void TestRecordingReaderFiles::aGapAtTheBeginningIsOne()
{
    QFETCH(RecordFormat, format);
    Way way;
    way.format = format;
    DataGap first = gap(10, 24, DataGap::LibraryOverrun);
    first.run = 2;
    const auto reader = makeReader(written(way, {first, block(34, 3, 1000.0, 0.001, 2)}));
    QVERIFY2(reader->open(), qPrintable(reader->problem()));
    const Content read = contentOf(*reader);
    QCOMPARE(read.frames.size(), 3);
    QCOMPARE(read.gaps.size(), 1);
    QCOMPARE(read.gaps[0].first, 0);
    QCOMPARE(read.gaps[0].second.frames, std::optional<qint64>(24));
    QCOMPARE(read.gaps[0].second.firstFrame, 10LL);
    QCOMPARE(read.gaps[0].second.run, read.frames[0].run);
}

void TestRecordingReaderFiles::removedFramesBecomeGaps()
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

void TestRecordingReaderFiles::growingArraysAreReadBehindTheirHeader()
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

void TestRecordingReaderFiles::arraysWithoutNotesHaveGaps()
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

void TestRecordingReaderFiles::editedFilesAreRead()
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

void TestRecordingReaderFiles::foreignFilesAreRefused_data()
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

void TestRecordingReaderFiles::foreignFilesAreRefused()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, part);
    RecordingReader reader(bufferOf(content));
    QVERIFY(!reader.open());
    QVERIFY2(reader.problem().contains(part), qPrintable(reader.problem()));
    QVERIFY(reader.problem().size() < 200);
    QVERIFY(!reader.next());
}

void TestRecordingReaderFiles::mistakesEndReadingWithTheirLine_data()
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

void TestRecordingReaderFiles::mistakesEndReadingWithTheirLine()
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

QTEST_GUILESS_MAIN(TestRecordingReaderFiles)
#include "tst_recordingreaderfiles.moc"
