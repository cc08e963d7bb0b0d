// SPDX-License-Identifier: MIT
#include "explorer/window/mainwindow.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("SondixQt Explorer"));
    QApplication::setOrganizationName(QStringLiteral("SondixQt"));
    QApplication::setApplicationVersion(QStringLiteral(SONDIXQT_VERSION));
    Explorer::MainWindow window;
    window.show();
    return QApplication::exec();
}
