// SPDX-License-Identifier: MIT
#pragma once

#include "explorerbench.h"

#include "explorer/window/logpanel.h"
#include "explorer/window/mainwindow.h"
#include "explorer/window/sessionview.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTreeView>

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
    /// What the log shows.
    QString logText()
    {
        m_window->logPanel()->copy();
        return QApplication::clipboard()->text();
    }

    /// Opens firstAddress() and waits until it is read. Null if it is not.
    Explorer::SessionView *openFirst()
    {
        Explorer::SessionView *const view = m_window->openSensor(firstAddress());
        const bool isOpen = QTest::qWaitFor(
            [view] { return view->session()->state() == SondixQt::SensorReader::Reading; }, longestTestWait);
        return isOpen ? view : nullptr;
    }

    /// The value of a setting in the tree of the panel.
    QModelIndex shownValue(const QString &answer)
    {
        const auto *tree = child<QTreeView>("parameterView");
        const auto *model = tree->model();
        for (int group = 0; model && group < model->rowCount(); ++group) {
            const QModelIndex parent = model->index(group, 0);
            for (int row = 0; row < model->rowCount(parent); ++row) {
                const QModelIndex value = model->index(row, Explorer::ParameterModel::ValueColumn, parent);
                if (value.data(Explorer::ParameterModel::AnswerRole) == answer)
                    return value;
            }
        }
        return {};
    }

    /// Types into a field of that tree.
    void type(const QModelIndex &index, const QString &text)
    {
        auto *tree = child<QTreeView>("parameterView");
        tree->scrollTo(index);
        tree->setCurrentIndex(index);
        tree->setFocus();
        QTest::keyClick(tree, Qt::Key_F2);
        auto *field = tree->viewport()->findChild<QLineEdit *>();
        QVERIFY(field);
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
    }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<Explorer::MainWindow> m_window;
};
