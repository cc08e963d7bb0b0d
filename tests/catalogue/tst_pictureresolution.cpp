// SPDX-License-Identifier: MIT
#include <SondixQt/sensortypes.h>

#include <QtTest>

using namespace SondixQt;

class TestPictureResolution : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCOMPARE(qGuiApp->devicePixelRatio(), 2.0); }
    void init() { QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true); }
    void scaledScreenGetsTwofoldPictures();
    void applicationThatDoesNotAskGetsSinglePictures();
};

void TestPictureResolution::scaledScreenGetsTwofoldPictures()
{
    for (const QPixmap &picture :
         {getSensorImage(XA100PCI), getSensorImage(static_cast<SensorType>(3)), getSensorGroupImage(Tavrin)}) {
        QVERIFY(!picture.isNull());
        QCOMPARE(picture.devicePixelRatio(), 2.0);
    }
    QCOMPARE(getSensorImage(XA100PCI).toImage(), QPixmap(":/images/XA100 (PCI)@2x.png").toImage());
}

void TestPictureResolution::applicationThatDoesNotAskGetsSinglePictures()
{
    QVERIFY(!getSensorImage(XA100PCI).isNull());
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, false);
    const QPixmap picture = getSensorImage(XA100PCI);
    QCOMPARE(picture.devicePixelRatio(), 1.0);
    QCOMPARE(picture.toImage(), QPixmap(":/images/XA100 (PCI).png").toImage());
}

int main(int argc, char *argv[])
{
    qputenv("QT_SCALE_FACTOR", "2");
    QGuiApplication application(argc, argv);
    TestPictureResolution test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_pictureresolution.moc"
