// SPDX-License-Identifier: MIT
#pragma once

#include "explorerbench.h"

#include "explorer/window/mainwindow.h"

#include <QAction>
#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

/// Settings in a folder of their own, and the main window.
class ExplorerWindow
{
public:
    ExplorerWindow()
    {
        QCoreApplication::setApplicationName("SondixQt Explorer");
        QCoreApplication::setOrganizationName("SondixQt");
        QSettings::setDefaultFormat(QSettings::IniFormat);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_folder.path());
    }

    Explorer::MainWindow *operator->() { return m_window.get(); }
    Explorer::MainWindow &operator*() { return *m_window; }

    void open()
    {
        m_window = std::make_unique<Explorer::MainWindow>();
        m_window->show();
    }
    /// Closes the window as a user would and waits until it is gone.
    void close()
    {
        m_window->close();
        m_window.reset();
    }

    /// The child of the window with this name; fails the test if there is none.
    template<typename T>
    T *child(const char *name)
    {
        T *const found = m_window->findChild<T *>(name);
        if (!found)
            QTest::qFail(qPrintable(QStringLiteral("no ") + name), __FILE__, __LINE__);
        return found;
    }

    QAction *action(const char *name) { return child<QAction>(name); }
    QString folder() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<Explorer::MainWindow> m_window;
};
