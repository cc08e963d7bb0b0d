// SPDX-License-Identifier: MIT
#pragma once

#include <QMainWindow>

namespace Explorer {

/// The window of the explorer: the sensors that were found on the left, the plot in the middle, parameters on the right.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit MainWindow(QWidget *parent = nullptr);
};

} // namespace Explorer
