// SPDX-License-Identifier: MIT
#include "explorer/application/extensions.h"
#include "explorer/application/translations.h"
#include "explorer/window/mainwindow.h"
#include "shared/simulatedbench.h"

#include <QApplication>
#include <QCommandLineParser>

namespace {

struct MainTexts
{
    Q_DECLARE_TR_FUNCTIONS(Explorer::Main)
};

} // namespace

int main(int argc, char *argv[])
{
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
    parser.addOptions({bench, language});
    parser.addPositionalArgument(QStringLiteral("sensor"),
                                 MainTexts::tr("Addresses of sensors and recordings to open."),
                                 QStringLiteral("[sensor or file ...]"));
    parser.process(application);
    if (parser.isSet(bench))
        SondixApp::useBench(parser.value(bench));

    Explorer::MainWindow window;
    new Explorer::Extensions(window);
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
