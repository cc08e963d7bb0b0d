// SPDX-License-Identifier: MIT
#include "recordings.h"

#include "shared/recorder.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Recordings;

/// Arrays, as NumPy reads them.
class TestNpyWriter : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }
    void hasAColumnForEachSignal_data();
    void hasAColumnForEachSignal();
    void unknownTimesAndErrorValuesAreNaN();
    void gapsAreSeenInTheNumbers();
    void namesMayHaveAnyCharacters();
    void isReadableWhileItGrows();
    void thousandsOfSignalsNeedVersion2();
    void headAndGapsAreInAFileBesideIt();

private:
    QString path() const { return m_dir->filePath("values.npy"); }
    Recorder::Plan plan(const RecordColumns &columns) const
    {
        Recorder::Plan plan;
        plan.path = path();
        plan.format = RecordFormat::Npy;
        plan.columns = columns;
        plan.withHead = false;
        return plan;
    }
    void record(const RecordColumns &columns, const QVector<DataBlock> &blocks)
    {
        Recorder recorder(plan(columns), {}, m_errors);
        QVERIFY2(recorder.open(), qPrintable(recorder.problem()));
        for (const DataBlock &block : blocks)
            QVERIFY(recorder.write(block));
        QVERIFY(recorder.finish());
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    ErrorValues m_errors{[](double) { return QString(); }};
};

void TestNpyWriter::hasAColumnForEachSignal_data()
{
    QTest::addColumn<bool>("scaled");
    QTest::addColumn<bool>("raw");
    QTest::addColumn<QByteArray>("expected");
    const QByteArray base = "'run', '<i4'), ('frame', '<i8'), ('time [s]', '<f8'), ";
    QTest::newRow("scaled") << true << false
                            << "[(" + base + "('A [mm]', '<f8'), ('B [%]', '<f8')]\n(0, 4, 1., 4.5, 8.)";
    QTest::newRow("raw") << false << true
                         << "[(" + base +
                                "('A raw [Digits]', '<i4'), ('B raw [Digits]', '<i4')]\n(0, 4, 1., 40, 80)";
    QTest::newRow("both") << true << true
                          << "[(" + base +
                                 "('A [mm]', '<f8'), ('A raw [Digits]', '<i4'), ('B [%]', '<f8'), "
                                 "('B raw [Digits]', '<i4')]\n(0, 4, 1., 4.5, 40, 8., 80)";
}

void TestNpyWriter::hasAColumnForEachSignal()
{
    QFETCH(bool, scaled);
    QFETCH(bool, raw);
    QFETCH(QByteArray, expected);
    record(columns(scaled, raw), {block(4, 3)});
    QCOMPARE(python(path(), "assert len(a) == 3\nprint(a.dtype.descr)\nprint(a[0])"), expected);
}

void TestNpyWriter::unknownTimesAndErrorValuesAreNaN()
{
    record(columns(), {block(0, 2, {}, {}), blockOf({errorValue, 8.0})});
    QCOMPARE(python(path(), "print(a['time [s]'].tolist(), a['A [mm]'].tolist(), a['B [%]'].tolist())"),
             QByteArray("[nan, nan, 1.0] [0.5, 1.5, nan] [0.0, 2.0, 8.0]"));
    QCOMPARE(m_errors.counts().values(), QList<qint64>{1});
}

void TestNpyWriter::gapsAreSeenInTheNumbers()
{
    record(columns(), {block(0, 2), block(5, 2), block(0, 1, 9.0, 0.001, 1)});
    QCOMPARE(python(path(),
                    "new = numpy.diff(a['run']) != 0\nlost = numpy.where(new, 0, numpy.diff(a['frame']) - 1)\n"
                    "print(lost.tolist(), new.tolist())"),
             QByteArray("[0, 3, 0, 0] [False, False, False, True]"));
}

void TestNpyWriter::namesMayHaveAnyCharacters()
{
    RecordColumns named = columns();
    named.frame.signals = {signalInfo("run", ""),
                           signalInfo(QStringLiteral("\u00e9'\\ \u6d4b \U0001f600"), QStringLiteral("\u03a9"))};
    record(named, {block(0, 1)});
    const QByteArray expected =
        "('run', 'frame', 'time [s]', 'run (2)', \"\\xe9'\\\\ \\u6d4b \\U0001f600 [\\u03a9]\")";
    QCOMPARE(python(path(), "print(ascii(a.dtype.names))"), expected);
}

void TestNpyWriter::isReadableWhileItGrows()
{
    Recorder recorder(plan(columns()), {}, m_errors);
    QVERIFY(recorder.open());
    int frame = 0;
    const auto shape = [this] { return python(path() + ".partial", "print(len(a))").toInt(); };
    QVERIFY(recorder.write(block(frame++, 1)));
    QTRY_VERIFY(recorder.write(block(frame++, 1)) && shape() > 0);
    QVERIFY(shape() <= frame);
}

void TestNpyWriter::thousandsOfSignalsNeedVersion2()
{
    constexpr int signalCount = 3000;
    RecordColumns many;
    many.frame.valuesPerFrame = signalCount;
    for (int i = 0; i < signalCount; ++i)
        many.frame.signals += signalInfo(QStringLiteral("signal %1").arg(i));
    const QVector<double> scaled(signalCount, 2.5);
    record(many, {DataBlock(0, 0, signalCount, scaled, QVector<qint32>(signalCount, 1))});
    // NumPy trusts headers of this length only if it is told to.
    QProcess process;
    process.start("/usr/bin/python3", {"-c",
                                       "import numpy, sys\n"
                                       "a = numpy.load(sys.argv[1], max_header_size=10**7)\n"
                                       "print(len(a.dtype), a['signal 2999 [mm]'][0])",
                                       path()});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.readAllStandardOutput().trimmed(), QByteArray("3003 2.5"));
}

void TestNpyWriter::headAndGapsAreInAFileBesideIt()
{
    Recorder::Plan headed = plan(columns());
    headed.withHead = true;
    RecordHead head;
    head.address = "TX270@RS232,port=COM3";
    Recorder recorder(headed, head, m_errors);
    QVERIFY(recorder.open());
    QVERIFY(recorder.write(block(0, 1)));
    QVERIFY(recorder.write(gap(1, 5, DataGap::Disconnected)));
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files, QDir::Name),
             (QStringList{"values.npy.jsonl.partial", "values.npy.partial"}));
    QVERIFY(recorder.finish());
    const QList<QByteArray> notes = contentOf(path() + ".jsonl").split('\n');
    QCOMPARE(notes.size(), 3);
    QCOMPARE(QJsonDocument::fromJson(notes[0]).object().value("head").toObject().value("address").toString(),
             head.address);
    QCOMPARE(QJsonDocument::fromJson(notes[1]).object().value("gap").toObject().value("frames").toInt(), 5);
}

QTEST_GUILESS_MAIN(TestNpyWriter)
#include "tst_npywriter.moc"
