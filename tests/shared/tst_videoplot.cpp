// SPDX-License-Identifier: MIT
#include "shared/videoplot.h"

#include <QtTest>

using namespace SondixApp;

namespace {

// For each column, the rows in which the picture shows the curve: pixels that are neither white nor grey.
QVector<QVector<int>> curveRows(const QImage &picture)
{
    QVector<QVector<int>> rows(picture.width());
    for (int x = 0; x < picture.width(); ++x)
        for (int y = 0; y < picture.height(); ++y)
            if (QColor(picture.pixel(x, y)).hsvSaturation() > 100)
                rows[x] += y;
    return rows;
}

} // namespace

class TestVideoPlot : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void pixelsComeLowByteFirst();
    void brokenDataAreNoPixels_data();
    void brokenDataAreNoPixels();
    void pictureShowsPeaksWhereTheyAre();
    void pictureHoldsPixelsBeyondTheResolution_data();
    void pictureHoldsPixelsBeyondTheResolution();
    void textShowsThePeakInItsColumn();
    void textIsNoWiderThanThePixels();
};

void TestVideoPlot::pixelsComeLowByteFirst()
{
    const auto pixels = videoPixels(QByteArray("\x01\x00\x00\x01\xff\xff\x34\x12", 8));
    QVERIFY(pixels);
    QCOMPARE(*pixels, (QVector<int>{1, 256, 65535, 0x1234}));
}

void TestVideoPlot::brokenDataAreNoPixels_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("none") << QByteArray();
    QTest::newRow("half a pixel") << QByteArray("\x01", 1);
    QTest::newRow("half a pixel more") << QByteArray("\x01\x00\x02", 3);
}

void TestVideoPlot::brokenDataAreNoPixels()
{
    QFETCH(QByteArray, data);
    QVERIFY(!videoPixels(data));
}

void TestVideoPlot::pictureShowsPeaksWhereTheyAre()
{
    QVector<int> pixels(513, 0);
    pixels[128] = 1023;
    const QImage picture = videoPicture(pixels, 1024);
    const QVector<QVector<int>> rows = curveRows(picture);
    const int left = 12;
    const int width = picture.width() - 2 * left - 1;
    const int peak = left + width / 4;
    const int top = left;
    const int bottom = picture.height() - left - 1;
    QVERIFY(!rows[peak].isEmpty());
    QVERIFY2(qAbs(rows[peak].first() - top) <= 3, "the peak reaches full scale");
    for (const int x : {left + 1, left + width / 2, left + width - 1}) {
        QVERIFY(!rows[x].isEmpty());
        QVERIFY2(qAbs(rows[x].last() - bottom) <= 1 && qAbs(rows[x].first() - bottom) <= 2, "all else is dark");
    }
}

void TestVideoPlot::pictureHoldsPixelsBeyondTheResolution_data()
{
    QTest::addColumn<QVector<int>>("pixels");
    QTest::addColumn<int>("resolution");
    QTest::newRow("beyond") << QVector<int>{0, 65535, 0} << 1024;
    QTest::newRow("one pixel") << QVector<int>{512} << 1024;
    QTest::newRow("dark, without a resolution") << QVector<int>(64, 0) << 0;
}

void TestVideoPlot::pictureHoldsPixelsBeyondTheResolution()
{
    QFETCH(QVector<int>, pixels);
    QFETCH(int, resolution);
    const QVector<QVector<int>> rows = curveRows(videoPicture(pixels, resolution));
    QVERIFY(std::any_of(rows.cbegin(), rows.cend(), [](const QVector<int> &column) { return !column.isEmpty(); }));
    for (const QVector<int> &column : rows)
        for (const int y : column)
            QVERIFY(y >= 10);
}

void TestVideoPlot::textShowsThePeakInItsColumn()
{
    QVector<int> pixels(512, 0);
    pixels[100] = 1023;
    pixels[101] = 512;
    const QStringList lines = videoText(pixels, 1024, 64, 4);
    const QString bar = QString(12, QLatin1Char(' ')) + QLatin1Char('#');
    QCOMPARE(lines, (QStringList{"1023 |" + bar, "     |" + bar, "     |" + bar, "     |" + bar,
                                 "   0 +" + QString(64, QLatin1Char('-')),
                                 "      0" + QStringLiteral("511").rightJustified(63)}));
}

void TestVideoPlot::textIsNoWiderThanThePixels()
{
    const QStringList lines = videoText({0, 1, 2, 3}, 4, 64, 3);
    QCOMPARE(lines, (QStringList{"3 |   #", "  |  ##", "  | ###", "0 +----", "   0  3"}));
}

QTEST_GUILESS_MAIN(TestVideoPlot)
#include "tst_videoplot.moc"
