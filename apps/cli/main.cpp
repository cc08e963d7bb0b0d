// SPDX-License-Identifier: MIT
#include "exitcode.h"
#include "tool.h"

#include <SondixQt/sensortypes.h>

#include <QGuiApplication>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <exception>
#include <memory>

namespace {

/// Texts in pictures need a QGuiApplication, which needs no display. No other task of the tool pays for it.
std::unique_ptr<QCoreApplication> makeApplication(int &argc, char *argv[])
{
    const bool draws = std::any_of(argv, argv + argc,
                                   [](const char *word) { return QByteArray(word).toLower().endsWith(".png"); });
    if (!draws)
        return std::make_unique<QCoreApplication>(argc, argv);
#ifndef Q_OS_WIN
    qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
    // Without a session of a desktop Qt warns of a missing folder, which the tool does not use.
    const QtMessageHandler handler = qInstallMessageHandler([](QtMsgType type, const auto &, const QString &text) {
        if (type == QtFatalMsg)
            std::fprintf(stderr, "sondixqt: %s\n", qPrintable(text));
    });
    auto application = std::make_unique<QGuiApplication>(argc, argv);
    qInstallMessageHandler(handler);
    return application;
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        qInstallMessageHandler(onLogMessage);
        const std::unique_ptr<QCoreApplication> application = makeApplication(argc, argv);
        // Numbers on the command line have a decimal point in every locale.
        std::setlocale(LC_NUMERIC, "C");
        QCoreApplication::setApplicationName(QStringLiteral("sondixqt"));
        SondixQt::setUsedByApplicationName(QStringLiteral("sondixqt"));
        return runTool(QCoreApplication::arguments().mid(1));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "sondixqt: %s\n", error.what());
    }
    return static_cast<int>(ExitCode::Failed);
}
