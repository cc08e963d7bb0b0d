// SPDX-License-Identifier: MIT
#include "mainwindow.h"

#include <QApplication>

namespace Explorer {

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
{
    setWindowTitle(QApplication::applicationName());
}

} // namespace Explorer
