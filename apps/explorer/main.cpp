// SPDX-License-Identifier: MIT
#include "explorer/application/extensions.h"
#include "explorer/application/translations.h"
#include "explorer/window/mainwindow.h"
#include "shared/simulatedbench.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QEvent>
#include <QScreen>

#include <cstdio>

namespace {

struct MainTexts
{
    Q_DECLARE_TR_FUNCTIONS(Explorer::Main)
};

/// Ends the program after the first drawing of a window, and prints how long that took.
class FirstDrawing : public QObject
{
public:
    FirstDrawing(QWidget &window, const QElapsedTimer &sinceStart)
        : QObject(&window)
        , m_sinceStart(sinceStart)
    {
        window.installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            // When all widgets of the window are drawn.
            QMetaObject::invokeMethod(
                this,
                [this] {
                    std::printf("drawn after %lld ms\n", static_cast<long long>(m_sinceStart.elapsed()));
                    QApplication::quit();
                },
                Qt::QueuedConnection);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    const QElapsedTimer m_sinceStart;
};

} // namespace

int main(int argc, char *argv[])
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("SondixQt Explorer"));
    QApplication::setOrganizationName(QStringLiteral("SondixQt"));
    QApplication::setApplicationVersion(QStringLiteral(SONDIXQT_VERSION));

    Explorer::installTranslations(application, Explorer::languageOption(QApplication::arguments()));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        MainTexts::tr("Finds measuring sensors, shows what they send and sets them up."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption bench(
        QStringLiteral("bench"),
        MainTexts::tr("Bench file for the simulator, if that is the sensor-access library."),
        QStringLiteral("file"));
    const QCommandLineOption language(QStringLiteral("lang"), MainTexts::tr("Language, such as de or en."),
                                      QStringLiteral("language"));
    // For tests: shows that everything that the program needs is there.
    QCommandLineOption exitWhenDrawn(QStringLiteral("exit-when-drawn"));
    exitWhenDrawn.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({bench, language, exitWhenDrawn});
    parser.addPositionalArgument(QStringLiteral("sensor"),
                                 MainTexts::tr("Addresses of sensors and recordings to open."),
                                 QStringLiteral("[sensor or file ...]"));
    parser.process(application);
    if (parser.isSet(bench))
        SondixApp::useBench(parser.value(bench));

    Explorer::MainWindow window;
    new Explorer::Extensions(window);
    window.fitTo(QGuiApplication::primaryScreen()->availableSize());
    if (parser.isSet(exitWhenDrawn))
        new FirstDrawing(window, sinceStart);
    window.show();
    // After the first drawing.
    const QStringList arguments = parser.positionalArguments();
    QMetaObject::invokeMethod(
        &window,
        [&window, arguments] {
            for (const QString &argument : arguments)
                window.openArgument(argument);
        },
        Qt::QueuedConnection);
    return QApplication::exec();
}
