// SPDX-License-Identifier: MIT
#include "recordings.h"

#include "shared/recorder.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Recordings;

/// Continuing files, whole and broken.
class TestAppending : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }
    void continuesAFile_data();
    void continuesAFile();
    void createsAMissingOrEmptyFile_data();
    void createsAMissingOrEmptyFile();
    void refusesWhatDoesNotFit_data();
    void refusesWhatDoesNotFit();
    void mendsAnIncompleteLine_data();
    void mendsAnIncompleteLine();
    void writesTheColumnsBehindAHeadAlone();
    void findsTheRecordsOfACutArray_data();
    void findsTheRecordsOfACutArray();
    void continuesTheNotesOfAnArray();

private:
    QString path(const char *name) const { return m_dir->filePath(name); }
    Recorder::Plan plan(const QString &name, bool append = true) const
    {
        Recorder::Plan plan;
        plan.path = m_dir->filePath(name);
        plan.format = name.endsWith("npy")    ? RecordFormat::Npy
                      : name.endsWith("json") ? RecordFormat::JsonLines
                                              : RecordFormat::Csv;
        plan.columns = columns();
        plan.append = append;
        plan.withHead = false;
        return plan;
    }
    void record(const QString &name, int frames, bool append = true)
    {
        Recorder recorder(plan(name, append), {}, m_errors);
        QVERIFY2(recorder.open(), qPrintable(recorder.problem()));
        QVERIFY(recorder.write(block(0, frames)));
        QVERIFY2(recorder.finish(), qPrintable(recorder.problem()));
        m_repair = recorder.repair();
    }
    static void addNames()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"values.csv", "values.json", "values.npy"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    ErrorValues m_errors{[](double) { return QString(); }};
    QString m_repair;
};

void TestAppending::continuesAFile_data()
{
    addNames();
}

void TestAppending::continuesAFile()
{
    QFETCH(QString, name);
    record(name, 3, false);
    const QByteArray before = contentOf(m_dir->filePath(name));
    record(name, 2);
    QCOMPARE(m_repair, QString());
    const QByteArray text = contentOf(m_dir->filePath(name));
    if (name == "values.npy") {
        QVERIFY(text.contains("'shape': (5,)"));
#ifdef Q_OS_UNIX
        QCOMPARE(python(path("values.npy"), "print(a['run'].tolist(), a['frame'].tolist(), a['A [mm]'].tolist())"),
                 QByteArray("[0, 0, 0, 1, 1] [0, 1, 2, 0, 1] [0.5, 1.5, 2.5, 0.5, 1.5]"));
#endif
        return;
    }
    QVERIFY(text.startsWith(before));
    const QByteArray added = text.mid(before.size());
    QCOMPARE(added.count('\n'), 2);
    QVERIFY(before.contains(added));
}

void TestAppending::createsAMissingOrEmptyFile_data()
{
    addNames();
}

void TestAppending::createsAMissingOrEmptyFile()
{
    QFETCH(QString, name);
    record(name, 3);
    const QByteArray whole = contentOf(m_dir->filePath(name));
    QVERIFY(whole.size() > 30);
    writeFile(m_dir->filePath(name), "");
    record(name, 3);
    QCOMPARE(contentOf(m_dir->filePath(name)), whole);
}

void TestAppending::refusesWhatDoesNotFit_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("problem");
    const auto row = [](const char *title, const char *name, const QByteArray &content, const char *problem) {
        QTest::newRow(title) << QString::fromLatin1(name) << content << QString::fromLatin1(problem);
    };
    row("other columns", "values.csv", "frame,time [s],C [mm]\n0,1.000000,1\n",
        "it has other columns: frame,time");
    row("fewer columns", "values.csv", "frame,time [s],A [mm]\n", "it has other columns");
    row("another separator", "values.csv", "frame;time [s];A [mm];B [%]\n", "it has other columns");
    row("other line ends", "values.csv", "frame,time [s],A [mm],B [%]\r\n", "it has other columns");
    row("a document", "values.csv", "{\n  \"a\": 1\n}\n", "it has other columns: {");
    row("other values", "values.json", "{\"frame\":0,\"time\":1,\"values\":[1]}\n",
        "its frames have other values");
    row("raw values", "values.json", "{\"frame\":0,\"time\":1,\"values\":[1,2],\"raw\":[1,2]}\n",
        "its frames have other values");
    row("no objects", "values.json", "[1]\n", "it does not consist of JSON objects, one per line");
    row("CSV as JSON", "values.json", "frame,time [s]\n0,1\n", "it does not consist of JSON objects");
    row("bytes", "values.csv", QByteArray(2'000'000, 'x'), "it does not consist of lines");
    row("no array", "values.npy", "frame,time [s]\n0,1\n", "it is no .npy file with these columns");
    row("half a header", "values.npy", "\x93NUMPY\x01", "it is no .npy file with these columns");
}

void TestAppending::refusesWhatDoesNotFit()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, problem);
    const QString file = m_dir->filePath(name);
    writeFile(file, content);
    Recorder recorder(plan(name), {}, m_errors);
    QVERIFY(!recorder.open());
    QVERIFY2(recorder.problem().startsWith(QStringLiteral("cannot append to '%1': %2").arg(file, problem)),
             qPrintable(recorder.problem()));
    QCOMPARE(contentOf(file), content);
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), QStringList{name});
}

void TestAppending::mendsAnIncompleteLine_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("mended");
    const QByteArray csv = "frame,time [s],A [mm],B [%]\n0,1.000000,0.5,0\n";
    const QByteArray json = "{\"frame\":0,\"time\":1.000000,\"values\":[0.5,0]}\n";
    QTest::newRow("half a line") << "values.csv" << csv + "1,1.001" << csv + "# incomplete: 1,1.001\n";
    QTest::newRow("half a comment") << "values.csv" << csv + "# gap: 12" << csv + "# incomplete: # gap: 12\n";
    QTest::newRow("zeros") << "values.csv" << csv + QByteArray(5000, '\0') << csv;
    QTest::newRow("half a line and zeros")
        << "values.csv" << csv + "1,1.0" + QByteArray(5000, '\0') << csv + "# incomplete: 1,1.0\n";
    QTest::newRow("half the columns") << "values.csv" << QByteArray("frame,time [s],A")
                                      << QByteArray(
                                             "# incomplete: frame,time [s],A\nframe,time [s],A [mm],B [%]\n");
    QTest::newRow("half an object") << "values.json" << json + "{\"frame\":1,\"ti"
                                    << json + "{\"incomplete\":\"{\\\"frame\\\":1,\\\"ti\"}\n";
}

void TestAppending::mendsAnIncompleteLine()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, mended);
    writeFile(m_dir->filePath(name), content);
    record(name, 1);
    const QByteArray frame =
        name.endsWith("json") ? "{\"frame\":0,\"time\":1.000000,\"values\":[0.5,0]}\n" : "0,1.000000,0.5,0\n";
    QCOMPARE(contentOf(m_dir->filePath(name)), mended + frame);
    QCOMPARE(m_repair.isEmpty(), !mended.contains("incomplete"));
}

void TestAppending::writesTheColumnsBehindAHeadAlone()
{
    writeFile(path("values.csv"), "# sensor: TX270\n");
    record("values.csv", 1);
    QCOMPARE(contentOf(path("values.csv")),
             QByteArray("# sensor: TX270\nframe,time [s],A [mm],B [%]\n0,1.000000,0.5,0\n"));
}

void TestAppending::findsTheRecordsOfACutArray_data()
{
    QTest::addColumn<int>("records"); // that the file has
    QTest::addColumn<int>("told");    // that its header tells of
    QTest::addColumn<QByteArray>("rest");
    QTest::addColumn<int>("expected");
    QTest::newRow("a header that lags behind") << 5 << 3 << QByteArray() << 5;
    QTest::newRow("killed within a record") << 5 << 3 << QByteArray(10, 'x') << 5;
    QTest::newRow("cut off") << 5 << 9 << QByteArray(10, 'x') << 5;
    QTest::newRow("a rest behind it") << 5 << 5 << QByteArray(10, 'x') << 5;
    QTest::newRow("zeros behind it") << 5 << 3 << QByteArray(5000, '\0') << 5;
    QTest::newRow("nothing but the header") << 0 << 7 << QByteArray() << 0;
}

void TestAppending::findsTheRecordsOfACutArray()
{
#ifdef Q_OS_WIN
    QSKIP("NumPy is installed for Linux only");
#endif
    QFETCH(int, records);
    QFETCH(int, told);
    QFETCH(QByteArray, rest);
    QFETCH(int, expected);
    record("values.npy", qMax(records, 1), false);
    QByteArray file = contentOf(path("values.npy"));
    const int headerSize = file.indexOf('\n') + 1;
    const QByteArray shape = "'shape': (" + QByteArray::number(qMax(records, 1)) + ",)";
    QVERIFY(file.contains(shape));
    file.replace(shape, "'shape': (" + QByteArray::number(told) + ",)");
    if (records == 0)
        file.truncate(headerSize);
    writeFile(path("values.npy"), file + rest);
    record("values.npy", 2);
    QCOMPARE(m_repair.isEmpty(), records == told && rest.isEmpty());
    QCOMPARE(python(path("values.npy"), "print(len(a), a['frame'].tolist()[-2:], a['A [mm]'].tolist()[-2:])"),
             QByteArray::number(expected + 2) + " [0, 1] [0.5, 1.5]");
}

void TestAppending::continuesTheNotesOfAnArray()
{
    for (int i = 0; i < 2; ++i) {
        Recorder::Plan headed = plan("values.npy");
        headed.withHead = true;
        RecordHead head;
        head.program = QStringLiteral("run %1").arg(i);
        Recorder recorder(headed, head, m_errors);
        QVERIFY2(recorder.open(), qPrintable(recorder.problem()));
        QVERIFY(recorder.write(block(0, 1)));
        QVERIFY(recorder.write(gap(1, 5, DataGap::Disconnected)));
        QVERIFY(recorder.finish());
    }
    const QList<QByteArray> notes = contentOf(path("values.npy.jsonl")).split('\n');
    QCOMPARE(notes.size(), 5);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(
            QJsonDocument::fromJson(notes[2 * i]).object().value("head").toObject().value("program").toString(),
            QStringLiteral("run %1").arg(i));
        QVERIFY(QJsonDocument::fromJson(notes[2 * i + 1]).object().contains("gap"));
    }
}

QTEST_GUILESS_MAIN(TestAppending)
#include "tst_appending.moc"
