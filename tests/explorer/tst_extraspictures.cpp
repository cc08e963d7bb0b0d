// SPDX-License-Identifier: MIT
#include "explorerwindow.h"

#include "explorer/application/extensions.h"
#include "explorer/application/translations.h"
#include "explorer/extras/videoview.h"
#include "explorer/plot/plotview.h"
#include "explorer/window/findpanel.h"
#include "explorer/window/sessionview.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QCheckBox>
#include <QDir>
#include <QDockWidget>
#include <QHeaderView>
#include <QLabel>
#include <QTranslator>
#include <QTreeView>

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
    /// The texts in \a window that have less room than they need. Views with scroll bars are not looked into.
    static bool measure(SessionView &page);
    static QStringList cutTexts(QWidget &window);
};

void ExtrasPicturesTest::initTestCase()
{
    QVERIFY(QDir().mkpath(SONDIXQT_SCREENSHOTS));
    QFont font = QApplication::font();
    font.setPointSize(10); // as most desktops have it
    QApplication::setFont(font);
}

void ExtrasPicturesTest::load()
{
    sondixsim::loadBuiltInBench();
    sondixsim::setLineSpeedEffect(false);
    constexpr double speed = 40.0;
    sondixsim::useRealClock(speed);
}

void ExtrasPicturesTest::views_data()
{
    QTest::addColumn<QString>("view");
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QString>("language");
    QTest::addColumn<double>("scale");
    QTest::addColumn<QSize>("size");
    constexpr QSize large(1280, 800);
    constexpr QSize small(960, 540);
#ifdef Q_OS_WIN
    constexpr bool isShort = true; // drawing takes long under Wine, and the fonts are not those of Windows
#else
    constexpr bool isShort = false;
#endif
    for (const char *view : {"welcome", "found", "sensor", "analysis", "video", "sides"}) {
        QTest::addRow("%s light german 125 %%", view) << view << false << "de" << 1.25 << large;
        if (isShort)
            continue;
        QTest::addRow("%s light", view) << view << false << "en" << 1.0 << large;
        QTest::addRow("%s dark", view) << view << true << "en" << 1.0 << large;
        QTest::addRow("%s dark german small 200 %%", view) << view << true << "de" << 2.0 << small;
    }
}

QImage ExtrasPicturesTest::picture(QWidget &window, double scale)
{
    QImage image((QSizeF(window.size()) * scale).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    window.render(&image);
    return image;
}

QStringList ExtrasPicturesTest::cutTexts(QWidget &window)
{
    QStringList cut;
    for (QWidget *widget : window.findChildren<QWidget *>()) {
        if (!widget->isVisible() || widget->parentWidget()->metaObject()->className() == QByteArray("QTabBar"))
            continue;
        const auto isDock = [](QWidget *outer) { return qobject_cast<QDockWidget *>(outer) != nullptr; };
        QWidget *dock = widget;
        while (dock && !isDock(dock))
            dock = dock->parentWidget();
        if (dock && dock->visibleRegion().isEmpty()) // behind the tab of another one
            continue;
        const auto *label = qobject_cast<QLabel *>(widget);
        const auto *button = qobject_cast<QAbstractButton *>(widget);
        const QString text = label ? label->text() : button ? button->text() : QString();
        if (text.isEmpty())
            continue;
        const bool isWrapped = label && label->wordWrap();
        const bool fits = isWrapped ? widget->height() >= widget->heightForWidth(widget->width())
                                    : widget->width() >= widget->sizeHint().width();
        // Rows of a layout that has too little height end outside the widget, or of one around it.
        bool isInside = true;
        for (QWidget *outer = widget->parentWidget(); outer && isInside; outer = outer->parentWidget()) {
            if (qobject_cast<QAbstractScrollArea *>(outer->parentWidget()))
                break;
            isInside = outer->rect().contains(QRect(widget->mapTo(outer, QPoint()), widget->size()));
        }
        if (!fits || !isInside)
            cut += QString("%1 %2 x %3 in %4: %5")
                       .arg(widget->metaObject()->className(), QString::number(widget->width()),
                            QString::number(widget->height()), widget->parentWidget()->objectName(), text);
    }
    // Its last text ends in an ellipsis only if its column ends where the table does.
    const auto *settings = window.findChild<QTreeView *>("parameterView");
    if (settings->isVisible() && settings->header()->length() > settings->viewport()->width())
        cut += QString("columns of the settings: %1 in %2")
                   .arg(settings->header()->length())
                   .arg(settings->viewport()->width());
    return cut;
}

// Most of the time axis is filled.
bool ExtrasPicturesTest::measure(SessionView &page)
{
    for (int second = 0; second < 11; ++second) {
        const qint64 before = page.session()->framesRead();
        sondixsim::advance(1.0);
        if (!QTest::qWaitFor([&] { return page.session()->framesRead() > before; }, 30000))
            return false;
    }
    return true;
}

void ExtrasPicturesTest::views()
{
    QFETCH(QString, view);
    QFETCH(bool, dark);
    QFETCH(QString, language);
    QFETCH(double, scale);
    QFETCH(QSize, size);
    load();
    installTranslations(*qApp, language);
    ExplorerWindow window;
    window.open();
    window->fitTo(size);
    window->resize(size);
    auto *extensions = new Extensions(*window);
    applyTheme(dark ? Theme::Dark : Theme::Light);
    if (view == "found") {
        window.action("searchAction")->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(!window->findPanel()->search().isRunning(), 60000);
    }
    sondixsim::useVirtualClock(); // losses of a busy machine would be seen
    if (view != "welcome") {
        const QString address = view == "video"      ? "CC430@TCP/IP,address=169.254.168.150"
                                : view == "analysis" ? "TX300@WinUSB,device=0" // no error values
                                                     : "TX270@RS232,port=COM3";
        const auto parsed = SensorAddress::parse(address);
        QVERIFY(parsed);
        SessionView *page = window->openSensor(*parsed);
        QTRY_COMPARE(page->session()->state(), SensorReader::Reading);
        QVERIFY(measure(*page));
        if (view == "analysis") {
            window.child<QWidget>("logDock")->hide(); // folded away
            for (const char *action : {"statisticsAction", "histogramAction", "spectrumAction", "cursorsAction"})
                page->plot()->plotAction(action)->trigger();
        }
        if (view == "sides") {
            window.action("sideBySideAction")->trigger();
            if (size == QSize(960, 540))
                window.child<QWidget>("sensorsDock")->hide(); // folded away
            const auto second = SensorAddress::parse("CC430@TCP/IP,address=169.254.168.150");
            SessionView *other = window->openSensor(*second);
            QTRY_COMPARE(other->session()->state(), SensorReader::Reading);
            QVERIFY(measure(*other));
        }
        if (view == "found")
            window.child<QDockWidget>("sensorDock")->raise();
        if (view == "video") {
            sondixsim::useRealClock();
            window.action("menuVideoAction")->trigger();
            VideoView *video = extensions->video(page);
            auto *mode = video->findChild<QCheckBox *>("videoMode");
            QTRY_VERIFY(mode->isEnabled());
            if (!mode->isChecked())
                mode->click();
            QTRY_VERIFY(video->state().isVideoMode);
            if (video->state().enabled.isEmpty())
                video->findChild<QCheckBox *>("OutputVideoRaw")->click();
            QTRY_VERIFY_WITH_TIMEOUT(video->fetched() > 2, 60000); // a busy machine draws few of them
        }
    }
    sondixsim::useVirtualClock(); // numbers and plot come to the same time, in the video view as well
    QTest::qWait(300);            // layouts and drawing settle
    const QImage image = picture(*window.operator->(), scale);
    const QString name = QString(QTest::currentDataTag()).remove(" %").replace(' ', '-');
    QVERIFY(image.save(QString("%1/%2.png").arg(SONDIXQT_SCREENSHOTS, name)));
#ifndef Q_OS_WIN // Wine's fonts are wider than those of Windows
    QCOMPARE(window->size(), size);
    // A text may have become longer just now.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    const QStringList cut = cutTexts(*window);
    QVERIFY2(cut.isEmpty(), qPrintable(cut.join('\n')));
#endif
    // The theme is that of the row: most of the window is dark or light.
    qint64 brightness = 0;
    qint64 pixels = 0;
    for (int y = 0; y < image.height(); y += 7)
        for (int x = 0; x < image.width(); x += 7, ++pixels)
            brightness += qGray(image.pixel(x, y));
    QVERIFY2((brightness / pixels < 128) == dark, qPrintable(QString::number(brightness / pixels)));
    // There is room on small screens.
#ifndef Q_OS_WIN // Wine's fonts are wider than those of Windows
    constexpr int smallScreen = 1024;
    QVERIFY2(window->minimumSizeHint().width() <= smallScreen,
             qPrintable(QString::number(window->minimumSizeHint().width())));
#endif
    window.close();
    for (QTranslator *translator : qApp->findChildren<QTranslator *>())
        delete translator;
    installTranslations(*qApp, "en");
}

QTEST_MAIN(ExtrasPicturesTest)
#include "tst_extraspictures.moc"
