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
    void pictureHasNumbersAndTexts();
    void csvHasALineForEachPixel();
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
    const QVector<QVector<int>> rows = curveRows(videoPicture(pixels, 1024, {}));
    const QRect area = videoPlotArea();
    const int left = area.left();
    const int width = area.width();
    const int peak = left + width / 4;
    const int top = area.top();
    const int bottom = area.top() + area.height();
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
    const QVector<QVector<int>> rows = curveRows(videoPicture(pixels, resolution, {}));
    QVERIFY(std::any_of(rows.cbegin(), rows.cend(), [](const QVector<int> &column) { return !column.isEmpty(); }));
    for (const QVector<int> &column : rows)
        for (const int y : column)
            QVERIFY(y >= videoPlotArea().top() - 2);
}

void TestVideoPlot::pictureHasNumbersAndTexts()
{
    const QVector<int> pixels(512, 100);
    const QRect area = videoPlotArea();
    // Whether something is drawn in a part of the picture: more than one colour.
    const auto hasMarks = [](const QImage &picture, const QRect &part) {
        const QImage cut = picture.copy(part & picture.rect());
        for (int y = 0; y < cut.height(); ++y)
            for (int x = 0; x < cut.width(); ++x)
                if (cut.pixel(x, y) != cut.pixel(0, 0))
                    return true;
        return false;
    };
    const QRect upperLeft(area.left(), 0, 400, 28);
    const QRect lowerLeft(area.left(), 28, 400, 20);
    const QRect upperRight(area.right() - 200, 0, 200, 28);
    const QRect lowerRight(area.right() - 200, 28, 200, 20);
    const QImage bare = videoPicture(pixels, 1024, {});
    for (const QRect &part : {upperLeft, lowerLeft, upperRight, lowerRight})
        QVERIFY(!hasMarks(bare, part));
    const QImage full = videoPicture(pixels, 1024, {"Video line", "TX240@RS232", "2026-01-02T03:04:05", true});
    for (const QRect &part : {upperLeft, lowerLeft, upperRight, lowerRight})
        QVERIFY(hasMarks(full, part));
    const QImage real = videoPicture(pixels, 1024, {"Video line", "TX240@RS232", "2026-01-02T03:04:05", false});
    QVERIFY(!hasMarks(real, upperRight)); // the mark of simulation
    for (int i = 0; i <= 8; ++i) {
        QVERIFY(hasMarks(bare, QRect(0, area.bottom() - area.height() * i / 8 - 6, area.left() - 2, 12)));
        QVERIFY(hasMarks(bare, QRect(area.left() + area.width() * i / 8 - 14, area.bottom() + 5, 28, 16)));
    }
}

void TestVideoPlot::csvHasALineForEachPixel()
{
    QCOMPARE(
        videoCsv({7, 0, 65535}, {"Raw", "TX240@RS232", "2026-01-02T03:04:05", true}),
        QByteArray("# Raw\n# TX240@RS232\n# 2026-01-02T03:04:05\n# simulated\npixel,value\n0,7\n1,0\n2,65535\n"));
    QCOMPARE(videoCsv({1}, {"Raw", "TX240@RS232", "now", false}),
             QByteArray("# Raw\n# TX240@RS232\n# now\npixel,value\n0,1\n"));
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

QTEST_MAIN(TestVideoPlot)
#include "tst_videoplot.moc"
