// SPDX-License-Identifier: MIT
#include "expectedmodels.h"

#include <QPixmapCache>
#include <QtTest>

#include <atomic>
#include <limits>
#include <thread>

using namespace SondixQt;

namespace {

const QString genericPath = ":/images/genericSensor.png";

/// The groups in the order of their flags, and their pictures.
struct GroupPicture
{
    int group;
    const char *picture;
};

constexpr GroupPicture groupPictures[] = {
    {-1, "All-groups"},
    {0, "genericSensor"},
    {1, "TX-group"},
    {2, "RG-group"},
    {4, "CC480"},
    {8, "WI610"},
    {16, "MC-group"},
    {32, "korrin-group"},
    {64, "delmar-group"},
    {128, "color-group"},
    {256, "genericSensor"},
    {512, "korrin-group"},
    {1024, "PF7xx"},
    {2048, "interface-group"},
    {4096, "genericSensor"},
    {8192, "thermo-group"},
};

QStringList namedPictures()
{
    QStringList names = {"genericSensor"};
    for (const expected::Model &model : expected::models)
        names.append(QString::fromLatin1(model.picture));
    for (const GroupPicture &group : groupPictures)
        names.append(QString::fromLatin1(group.picture));
    names.removeDuplicates();
    return names;
}

} // namespace

class TestPictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pictureIsThereAtBothResolutions_data();
    void pictureIsThereAtBothResolutions();
    void libraryCarriesNoOtherPictures();
    void differentPicturesLookDifferent();
    void modelHasItsPicture_data();
    void modelHasItsPicture();
    void unknownTypeHasTheGenericPicture_data();
    void unknownTypeHasTheGenericPicture();
    void groupHasItsPicture_data();
    void groupHasItsPicture();
    void unknownGroupHasTheGenericPicture_data();
    void unknownGroupHasTheGenericPicture();
    void pictureStaysTheSameWithoutTheCache();
    void pictureOfTheApplicationIsNotTakenForOurs();
    void anyThreadMayAsk();
};

void TestPictures::pictureIsThereAtBothResolutions_data()
{
    QTest::addColumn<QString>("name");
    const QStringList names = namedPictures();
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << name;
}

void TestPictures::pictureIsThereAtBothResolutions()
{
    QFETCH(QString, name);
    const QPixmap single(QStringLiteral(":/images/%1.png").arg(name));
    const QPixmap twofold(QStringLiteral(":/images/%1@2x.png").arg(name));
    QVERIFY(!single.isNull());
    QVERIFY(!twofold.isNull());
    QCOMPARE(twofold.size(), 2 * single.size());
    QCOMPARE(single.devicePixelRatio(), 1.0);
    QCOMPARE(twofold.devicePixelRatio(), 2.0);
}

void TestPictures::libraryCarriesNoOtherPictures()
{
    QStringList files;
    const QStringList names = namedPictures();
    for (const QString &name : names)
        files << name + ".png" << name + "@2x.png";
    files.sort();
    QStringList carried = QDir(":/images").entryList(QDir::Files);
    carried.sort();
    QCOMPARE(carried, files);
}

void TestPictures::differentPicturesLookDifferent()
{
    QList<QImage> seen;
    const QStringList names = namedPictures();
    for (const QString &name : names) {
        const QImage image(QStringLiteral(":/images/%1.png").arg(name));
        const int twin = seen.indexOf(image);
        QVERIFY2(twin < 0, qPrintable(name + " looks like " + names.value(twin)));
        seen.append(image);
    }
}

void TestPictures::modelHasItsPicture_data()
{
    QTest::addColumn<expected::Model>("model");
    for (const expected::Model &model : expected::models)
        QTest::addRow("%d %s", model.value, model.shortName) << model;
}

void TestPictures::modelHasItsPicture()
{
    QFETCH(expected::Model, model);
    const QPixmap picture = getSensorImage(model.type);
    QVERIFY(!picture.isNull());
    QCOMPARE(picture.toImage(), QPixmap(model.picturePath()).toImage());
}

void TestPictures::unknownTypeHasTheGenericPicture_data()
{
    QTest::addColumn<int>("type");
    for (const int type :
         {3, 27, 70, 71, 10041, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QTest::addRow("%d", type) << type;
}

void TestPictures::unknownTypeHasTheGenericPicture()
{
    QFETCH(int, type);
    const QPixmap picture = getSensorImage(static_cast<SensorType>(type));
    QVERIFY(!picture.isNull());
    QCOMPARE(picture.toImage(), QPixmap(genericPath).toImage());
}

void TestPictures::groupHasItsPicture_data()
{
    QTest::addColumn<int>("group");
    QTest::addColumn<QString>("picture");
    for (const GroupPicture &group : groupPictures)
        QTest::addRow("%d", group.group) << group.group << QString::fromLatin1(group.picture);
}

void TestPictures::groupHasItsPicture()
{
    QFETCH(int, group);
    QFETCH(QString, picture);
    const QPixmap image = getSensorGroupImage(static_cast<SensorGroup>(group));
    QVERIFY(!image.isNull());
    QCOMPARE(image.toImage(), QPixmap(QStringLiteral(":/images/%1.png").arg(picture)).toImage());
}

void TestPictures::unknownGroupHasTheGenericPicture_data()
{
    QTest::addColumn<int>("group");
    QTest::newRow("Morvik and KVBus") << (512 | 4096);
    QTest::newRow("Tavrin and TavrinRG") << 3;
    QTest::newRow("a bit of no group") << 16384;
    QTest::newRow("-2") << -2;
    QTest::newRow("largest") << std::numeric_limits<int>::max();
}

void TestPictures::unknownGroupHasTheGenericPicture()
{
    QFETCH(int, group);
    const QPixmap picture = getSensorGroupImage(static_cast<SensorGroup>(group));
    QVERIFY(!picture.isNull());
    QCOMPARE(picture.toImage(), QPixmap(genericPath).toImage());
}

void TestPictures::pictureStaysTheSameWithoutTheCache()
{
    const QImage before = getSensorImage(TX270).toImage();
    QPixmapCache::clear();
    QCOMPARE(getSensorImage(TX270).toImage(), before);
    const int limit = QPixmapCache::cacheLimit();
    QPixmapCache::setCacheLimit(0);
    QCOMPARE(getSensorImage(TX270).toImage(), before);
    QPixmapCache::setCacheLimit(limit);
}

void TestPictures::pictureOfTheApplicationIsNotTakenForOurs()
{
    QPixmap thumbnail(4, 4);
    thumbnail.fill(Qt::red);
    QPixmapCache::insert(":/images/TX270.png", thumbnail);
    QVERIFY(getSensorImage(TX270).size() != thumbnail.size());
    QPixmap changed = getSensorImage(TX270);
    changed.fill(Qt::red);
    QVERIFY(getSensorImage(TX270).toImage() != changed.toImage());
}

void TestPictures::anyThreadMayAsk()
{
    QMap<SensorType, QImage> expectedPictures;
    for (const expected::Model &model : expected::models)
        expectedPictures.insert(model.type, QPixmap(model.picturePath()).toImage());
    const QImage groupPicture = QPixmap(":/images/TX-group.png").toImage();
    QPixmapCache::clear();
    std::atomic<int> wrong{0};
    const auto work = [&] {
        for (auto it = expectedPictures.cbegin(); it != expectedPictures.cend(); ++it) {
            if (getSensorImage(it.key()).toImage() != *it)
                ++wrong;
        }
        if (getSensorGroupImage(Tavrin).toImage() != groupPicture)
            ++wrong;
    };
    std::thread first(work);
    std::thread second(work);
    work();
    first.join();
    second.join();
    QCOMPARE(wrong.load(), 0);
}

QTEST_MAIN(TestPictures)
#include "tst_pictures.moc"
