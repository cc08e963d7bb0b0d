// SPDX-License-Identifier: MIT
#pragma once

#include "look.h"

#include <SondixQt/sensoraddress.h>

#include <QMainWindow>
#include <QPointer>
#include <QUndoGroup>
#include <QVector>

#include <functional>

class QActionGroup;
class QDockWidget;
class QLabel;
class QMenu;
class QMessageBox;
class QStackedWidget;
class QTimer;
class QToolBar;

namespace Explorer {

class FindPanel;
class LogPanel;
class ParameterPanel;
class RecordingLoader;
class SensorPage;
class SensorSession;
class SessionArea;
class SessionView;

/// The window of the explorer: the sensors that were found on the left, the open ones in the middle, settings and
/// identity on the right, the log below. Everything around the middle can be folded away.
///
/// The window remembers its state, the sensors that were found and the last choices in QSettings. It accesses no sensor
/// before the user asks for it.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    /// Opens the sensor at \a address in a page of its own, or shows the page that it has. \a title is shown until the
    /// sensor has answered. While a page with the sensor is still closing, the new page waits for it.
    SessionView *openSensor(const SondixQt::SensorAddress &address, const QString &title = QString());
    /// Shows the recording \a path in a page of its own as soon as its head is read. If it is no recording, the log says
    /// so.
    void openFile(const QString &path);
    /// Opens the address or the file \a text, as it stands on the command line. False with an entry in the log if it is
    /// neither.
    bool openArgument(const QString &text);
    /// Fits the window into \a available pixels. On a small screen the log is folded away at the first start.
    void fitTo(const QSize &available);
    /// Closes a page: what its sensor has sent until now is still delivered, to a recording for example.
    void closePage(SessionView *view);

    /// The page in front, and its sensor; null if there is none.
    SessionView *currentView() const;
    SensorSession *currentSession() const;
    QVector<SessionView *> views() const;

    /// \name For extensions
    /// \{
    QToolBar *toolBar() const { return m_toolBar; }
    QMenu *fileMenu() const { return m_fileMenu; }
    QMenu *viewMenu() const { return m_viewMenu; }
    QMenu *sensorMenu() const { return m_sensorMenu; }
    QMenu *helpMenu() const { return m_helpMenu; }
    FindPanel *findPanel() const { return m_find; }
    ParameterPanel *parameterPanel() const { return m_parameters; }
    LogPanel *logPanel() const { return m_log; }
    /// Adds a view beside the plot of the current page, which owns it. Does nothing if there is no page.
    void addSessionView(const QString &title, QWidget *view);
    /// Adds a page without a sensor. The window owns it.
    void addPage(SessionView *view);
    /// Adds an error to the log and shows it.
    void reportProblem(const QString &source, const QString &text);
    /// \}

Q_SIGNALS:
    /// A page was added. Its session opens the sensor afterwards.
    void viewAdded(Explorer::SessionView *view);
    /// Another page is in front, or none: null.
    void currentViewChanged(Explorer::SessionView *view);

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void makeCentre();
    QWidget *makeWelcome();
    QWidget *makeFamilies();
    void makeDocks();
    QDockWidget *addDock(Qt::DockWidgetArea area, const QString &title, const char *name, QWidget *widget);
    void makeMenus();
    void makeFileMenu();
    void makeViewMenu();
    void makeSensorMenu();
    void makeHelpMenu();
    void makeToolBar();
    QAction *addAction(QMenu *menu, const QString &text, const QKeySequence &shortcut, const char *name);
    void fillRecentMenu();
    void connectPanels();
    void connectSession(SessionView *view);
    void openWhenFree(SessionView *view);
    void takeIdentity(SensorSession *session);
    void showRecording(RecordingLoader *recording, const QString &name);

    void showCurrent();
    void showTitle(SessionView *view);
    void showAbout();
    void showShortcuts();
    void startSearch();
    void focusAddress();
    void saveChoices();
    void restoreChoices();
    static void saveView(const SessionView &view);
    static void restoreView(SessionView &view);
    void setTheme(Theme theme);
    bool isBusy() const;
    bool isWriting() const;
    bool endClosingPages();
    void finishExport(SessionView &view);
    void askToWait(QTimer &limit, const std::function<void()> &end);

    QToolBar *m_toolBar = nullptr;
    QMenu *m_fileMenu = nullptr;
    QMenu *m_viewMenu = nullptr;
    QMenu *m_sensorMenu = nullptr;
    QMenu *m_helpMenu = nullptr;
    QMenu *m_recentMenu = nullptr;
    QUndoGroup m_undoGroup;
    FindPanel *m_find = nullptr;
    ParameterPanel *m_parameters = nullptr;
    SensorPage *m_page = nullptr;
    LogPanel *m_log = nullptr;
    QStackedWidget *m_centre = nullptr;
    SessionArea *m_area = nullptr;
    QLabel *m_state = nullptr;
    QList<QAction *> m_sessionActions; // enabled if there is a sensor in front
    QAction *m_numbersAction = nullptr;
    QAction *m_sideBySideAction = nullptr;
    QActionGroup *m_themes = nullptr;
    QVector<QDockWidget *> m_docks;
    QVector<QPointer<SessionView>> m_closing;
    bool m_isFirstStart = false;
    bool m_isQuitting = false;
    bool m_isWaitingForFilesOnly = false; // not for sensors any more
    QPointer<QMessageBox> m_waitingBox;   // while files are written on quitting
};

} // namespace Explorer
