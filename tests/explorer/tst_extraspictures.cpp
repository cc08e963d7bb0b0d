// SPDX-License-Identifier: MIT
#include "explorerwindow.h"

#include "explorer/application/extensions.h"
#include "explorer/application/translations.h"
#include "explorer/extras/videoview.h"
#include "explorer/window/sessionview.h"

#include <QCheckBox>
#include <QDir>
#include <QTranslator>

using namespace Explorer;
using namespace SondixQt;

/// Draws the main views on each theme into files, so that they can be looked at, and checks what a program can check.
class ExtrasPicturesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void views_data();
    void views();

private:
    static void load();
    static QImage picture(QWidget &window, double scale);
};

void ExtrasPicturesTest::initTestCase()
{
    QVERIFY(QDir().mkpath(SONDIXQT_SCREENSHOTS));
}

void ExtrasPicturesTest::load()
{
    sondixsim::loadBuiltInBench();
    sondixsim::useRealClock();
}

void ExtrasPicturesTest::views_data()
{
    QTest::addColumn<QString>("view");
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QString>("language");
    QTest::addColumn<double>("scale");
    for (const char *view : {"welcome", "sensor", "video"}) {
        QTest::addRow("%s light", view) << view << false << "en" << 1.0;
        QTest::addRow("%s dark", view) << view << true << "en" << 1.0;
        QTest::addRow("%s light german 125 %%", view) << view << false << "de" << 1.25;
        QTest::addRow("%s dark 200 %%", view) << view << true << "en" << 2.0;
    }
}

QImage ExtrasPicturesTest::picture(QWidget &window, double scale)
{
    QImage image((QSizeF(window.size()) * scale).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    window.render(&image);
    return image;
}

void ExtrasPicturesTest::views()
{
    QFETCH(QString, view);
    QFETCH(bool, dark);
    QFETCH(QString, language);
    QFETCH(double, scale);
    load();
    installTranslations(*qApp, language);
    ExplorerWindow window;
    window.open();
    window->resize(1280, 800);
    auto *extensions = new Extensions(*window);
    applyTheme(dark ? Theme::Dark : Theme::Light);
    if (view != "welcome") {
        const QString address = view == "video" ? "CC430@TCP/IP,address=169.254.168.150" : "TX270@RS232,port=COM3";
        const auto parsed = SensorAddress::parse(address);
        QVERIFY(parsed);
        SessionView *page = window->openSensor(*parsed);
        QTRY_COMPARE(page->session()->state(), SensorReader::Reading);
        QTRY_VERIFY(page->session()->framesRead() > 1000);
        if (view == "video") {
            window.action("menuVideoAction")->trigger();
            VideoView *video = extensions->video(page);
            auto *mode = video->findChild<QCheckBox *>("videoMode");
            QTRY_VERIFY(mode->isEnabled());
            if (!mode->isChecked())
                mode->click();
            QTRY_VERIFY(video->state().isVideoMode);
            if (video->state().enabled.isEmpty())
                video->findChild<QCheckBox *>("OutputVideoRaw")->click();
            QTRY_VERIFY(video->fetched() > 2);
        }
    }
    QTest::qWait(300); // layouts and drawing settle
    const QImage image = picture(*window.operator->(), scale);
    const QString name = QString(QTest::currentDataTag()).remove(" %").replace(' ', '-');
    QVERIFY(image.save(QString("%1/%2.png").arg(SONDIXQT_SCREENSHOTS, name)));
    // The theme is that of the row: most of the window is dark or light.
    qint64 brightness = 0;
    qint64 pixels = 0;
    for (int y = 0; y < image.height(); y += 7)
        for (int x = 0; x < image.width(); x += 7, ++pixels)
            brightness += qGray(image.pixel(x, y));
    QVERIFY2((brightness / pixels < 128) == dark, qPrintable(QString::number(brightness / pixels)));
    window.close();
    for (QTranslator *translator : qApp->findChildren<QTranslator *>())
        delete translator;
    installTranslations(*qApp, "en");
}

QTEST_MAIN(ExtrasPicturesTest)
#include "tst_extraspictures.moc"
