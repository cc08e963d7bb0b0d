// SPDX-License-Identifier: MIT
#include "findpanel.h"
#include "logpanel.h"
#include "mainwindow.h"
#include "numbersview.h"
#include "parameterpanel.h"
#include "sessionarea.h"
#include "sessionview.h"

#include "explorer/plot/drawnicon.h"
#include "explorer/plot/plotview.h"
#include "explorer/sensor/accesslibrary.h"
#include "explorer/sensor/filenames.h"

#include <QActionGroup>
#include <QApplication>
#include <QBoxLayout>
#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QSettings>
#include <QToolBar>
#include <QTreeWidget>

using namespace SondixQt;

namespace Explorer {

namespace {

constexpr int stateVersion = 1; // of the docks; other versions are not restored
const QLatin1String geometryKey("window/geometry");
const QLatin1String docksKey("window/docks");
const QLatin1String themeKey("window/theme");
const QLatin1String numbersKey("window/numbers");
const QLatin1String sideBySideKey("window/sideBySide");
const QLatin1String everyCallKey("log/everyCall");
const QLatin1String plotGroup("plot");
constexpr int maxRecent = 10;

} // namespace

QAction *MainWindow::addAction(QMenu *menu, const QString &text, const QKeySequence &shortcut, const char *name)
{
    QAction *const action = menu->addAction(text);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(shortcut);
    return action;
}

void MainWindow::makeToolBar()
{
    m_toolBar = addToolBar(tr("Main toolbar"));
    m_toolBar->setObjectName(QStringLiteral("mainToolBar"));
    m_toolBar->setMovable(false);
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    const int icon = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    m_toolBar->setIconSize({icon, icon});
    m_state = new QLabel;
    m_state->setObjectName(QStringLiteral("currentState"));
    m_state->setContentsMargins(0, 0, 8, 0);
}

void MainWindow::makeMenus()
{
    m_fileMenu = menuBar()->addMenu(tr("&File"));
    m_viewMenu = menuBar()->addMenu(tr("&View"));
    m_sensorMenu = menuBar()->addMenu(tr("&Sensor"));
    m_helpMenu = menuBar()->addMenu(tr("&Help"));
    makeFileMenu();
    makeViewMenu();
    makeSensorMenu();
    makeHelpMenu();
    auto *spacer = new QWidget;
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_toolBar->addWidget(spacer);
    m_toolBar->addWidget(m_state);
}

void MainWindow::makeFileMenu()
{
    QAction *const search = addAction(m_fileMenu, tr("&Search for sensors"), Qt::Key_F5, "searchAction");
    QAction *const open =
        addAction(m_fileMenu, tr("Open by &address ..."), QKeySequence::Open, "openAddressAction");
    connect(search, &QAction::triggered, this, &MainWindow::startSearch);
    connect(open, &QAction::triggered, this, &MainWindow::focusAddress);
    m_toolBar->addAction(search);
    m_toolBar->addAction(open);
    search->setIcon(drawnIcon(Drawing::Search));
    open->setIcon(drawnIcon(Drawing::Open));
    search->setIconText(tr("Search"));
    open->setIconText(tr("Open address"));
    QAction *const file =
        addAction(m_fileMenu, tr("Open &recording ..."), Qt::CTRL + Qt::SHIFT + Qt::Key_O, "openRecordingAction");
    connect(file, &QAction::triggered, this, [this] {
        const QStringList paths = QFileDialog::getOpenFileNames(
            this, tr("Open recording"), {}, tr("Recordings (*.csv *.jsonl *.npy);;All files (*)"));
        for (const QString &path : paths)
            openFile(path);
    });
    m_recentMenu = m_fileMenu->addMenu(tr("Open recent &sensor"));
    connect(m_fileMenu, &QMenu::aboutToShow, this, &MainWindow::fillRecentMenu);
    m_fileMenu->addSeparator();
    m_fileMenu->addActions(m_parameters->fileActions());
    m_fileMenu->addSeparator();
    QAction *const close = addAction(m_fileMenu, tr("&Close page"), QKeySequence::Close, "closePageAction");
    connect(close, &QAction::triggered, this, [this] { closePage(currentView()); });
    QAction *const quit = addAction(m_fileMenu, tr("&Quit"), QKeySequence::Quit, "quitAction");
    connect(quit, &QAction::triggered, this, &QWidget::close);
}

void MainWindow::fillRecentMenu()
{
    m_recentMenu->clear();
    const SensorListModel &sensors = m_find->sensors();
    for (int row = sensors.rowCount() - 1; row >= 0 && m_recentMenu->actions().size() < maxRecent; --row) {
        const ListedSensor sensor = sensors.at(row);
        m_recentMenu->addAction(QStringLiteral("%1 (%2)").arg(sensor.title(), sensor.place()), this,
                                [this, sensor] { openSensor(sensor.address, sensor.title()); });
    }
    m_recentMenu->setEnabled(!m_recentMenu->isEmpty());
}

void MainWindow::makeViewMenu()
{
    constexpr int firstKey = Qt::CTRL + Qt::Key_1;
    for (int i = 0; i < m_docks.size(); ++i) {
        QAction *const action = m_docks.at(i)->toggleViewAction();
        action->setShortcut(firstKey + i);
        m_viewMenu->addAction(action);
    }
    m_viewMenu->addSeparator();
    m_numbersAction = addAction(m_viewMenu, tr("&Numbers"), Qt::CTRL + Qt::Key_N, "numbersAction");
    m_numbersAction->setCheckable(true);
    m_numbersAction->setChecked(true);
    connect(m_numbersAction, &QAction::toggled, this, [this](bool on) {
        for (SessionView *view : views())
            view->setNumbersVisible(on);
    });
    m_sideBySideAction =
        addAction(m_viewMenu, tr("Sensors side &by side"), Qt::CTRL + Qt::Key_B, "sideBySideAction");
    m_sideBySideAction->setCheckable(true);
    connect(m_sideBySideAction, &QAction::toggled, m_area, &SessionArea::setSideBySide);
    connect(addAction(m_viewMenu, tr("Next page"), QKeySequence::NextChild, "nextPageAction"), &QAction::triggered,
            this, [this] { m_area->step(1); });
    connect(addAction(m_viewMenu, tr("Previous page"), QKeySequence::PreviousChild, "previousPageAction"),
            &QAction::triggered, this, [this] { m_area->step(-1); });
    QMenu *const themes = m_viewMenu->addMenu(tr("&Colours"));
    m_themes = new QActionGroup(this);
    for (const auto &[text, theme] : {std::pair(tr("As the system"), Theme::System),
                                      std::pair(tr("Light"), Theme::Light), std::pair(tr("Dark"), Theme::Dark)}) {
        QAction *const action = themes->addAction(text);
        action->setCheckable(true);
        action->setData(int(theme));
        m_themes->addAction(action);
    }
    connect(m_themes, &QActionGroup::triggered, this,
            [this](QAction *action) { setTheme(Theme(action->data().toInt())); });
}

void MainWindow::makeSensorMenu()
{
    const auto add = [this](const QString &text, const QKeySequence &shortcut, const char *name, auto function) {
        QAction *const action = addAction(m_sensorMenu, text, shortcut, name);
        connect(action, &QAction::triggered, this, [this, function] {
            if (SessionView *const view = currentView(); view && view->session())
                function(*view);
        });
        m_sessionActions += action;
        return action;
    };
    add(tr("Open &again"), {}, "reopenAction", [](SessionView &view) { view.session()->reopen(); });
    m_sensorMenu->addSeparator();
    QAction *const undo = m_undoGroup.createUndoAction(this, tr("&Undo setting:"));
    QAction *const redo = m_undoGroup.createRedoAction(this, tr("R&epeat setting:"));
    undo->setShortcut(QKeySequence::Undo);
    redo->setShortcut(QKeySequence::Redo);
    m_sensorMenu->addActions({undo, redo});
    m_sensorMenu->addSeparator();
    add(tr("&Copy values"), Qt::CTRL + Qt::SHIFT + Qt::Key_C, "copyValuesAction",
        [](SessionView &view) { view.numbers()->copy(); });
    add(tr("&Zero here"), Qt::CTRL + Qt::Key_0, "zeroAction",
        [](SessionView &view) { view.numbers()->setZero(); });
    add(tr("&Without zero"), Qt::CTRL + Qt::SHIFT + Qt::Key_0, "clearZeroAction",
        [](SessionView &view) { view.numbers()->clearZero(); });
    add(tr("&Reset minimum and maximum"), Qt::CTRL + Qt::Key_R, "resetAction",
        [](SessionView &view) { view.session()->resetValues(); });
}

void MainWindow::makeHelpMenu()
{
    connect(addAction(m_helpMenu, tr("&Keyboard"), QKeySequence::HelpContents, "keyboardAction"),
            &QAction::triggered, this, &MainWindow::showShortcuts);
    connect(addAction(m_helpMenu, tr("&About"), {}, "aboutAction"), &QAction::triggered, this,
            &MainWindow::showAbout);
}

void MainWindow::showShortcuts()
{
    // Not a table in a message box: its layout takes longer than 100 ms.
    auto *list = new QTreeWidget;
    list->setObjectName(QStringLiteral("keyboardList"));
    list->setAccessibleName(tr("Keyboard"));
    list->setColumnCount(2);
    list->setHeaderHidden(true);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    const auto add = [list](const QString &keys, const QString &effect) {
        new QTreeWidgetItem(list, {keys, effect});
    };
    QMap<QString, QString> actions;
    for (const QAction *action : findChildren<QAction *>()) {
        if (!action->shortcut().isEmpty() && !action->text().isEmpty())
            actions.insert(action->text().remove(QLatin1Char('&')),
                           action->shortcut().toString(QKeySequence::NativeText));
    }
    for (auto it = actions.cbegin(); it != actions.cend(); ++it)
        add(it.value(), it.key());
    add(QStringLiteral("+ -"), tr("In the plot: zoom the time"));
    add(tr("Left, Right"), tr("In the plot: move the window"));
    add(tr("Up, Down"), tr("In the plot: move the values, with Ctrl zoom them"));
    add(tr("Home, End"), tr("In the plot: the first values, the newest values"));
    add(QStringLiteral("0"), tr("In the plot: show everything"));
    add(tr("Space"), tr("In the plot: pause; on a number: its limits"));
    list->resizeColumnToContents(0);
    auto *dialog = new QDialog(this);
    dialog->setWindowTitle(tr("Keyboard"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    auto *layout = new QVBoxLayout(dialog);
    layout->addWidget(list);
    layout->addWidget(buttons);
    dialog->resize(fontMetrics().averageCharWidth() * 80, fontMetrics().height() * 32);
    dialog->open();
}

void MainWindow::showAbout()
{
    const QString file = accessLibraryFile();
    const QString library = file.isEmpty() ? tr("not known") : QDir::toNativeSeparators(file);
    const SensorSession *const session = currentSession();
    const QString simulated = session && session->isSimulated()
                                  ? tr("It is the bench simulator: the values are not measurements.")
                                  : QString();
    auto *box = new QMessageBox(this);
    box->setObjectName(QStringLiteral("aboutBox"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(tr("About"));
    box->setTextFormat(Qt::PlainText);
    box->setText(QStringLiteral("%1 %2").arg(QApplication::applicationName(), QApplication::applicationVersion()));
    box->setInformativeText(
        tr("Sensor-access library: %1\n%2\nQt %3").arg(library, simulated, QString::fromLatin1(qVersion())));
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box->open();
}

void MainWindow::setTheme(Theme theme)
{
    applyTheme(theme);
    QSettings().setValue(themeKey, int(theme));
}

void MainWindow::saveChoices()
{
    QSettings settings;
    settings.setValue(geometryKey, saveGeometry());
    settings.setValue(docksKey, QMainWindow::saveState(stateVersion));
    settings.setValue(numbersKey, m_numbersAction->isChecked());
    settings.setValue(sideBySideKey, m_sideBySideAction->isChecked());
    settings.setValue(everyCallKey, m_log->isDetailed());
    m_find->save(settings);
}

void MainWindow::fitTo(const QSize &available)
{
    constexpr QSize roomForAll(1100, 640);
    resize(size().boundedTo(available));
    if (m_isFirstStart && available.boundedTo(roomForAll) != roomForAll)
        m_docks.last()->hide(); // the log
}

void MainWindow::saveView(const SessionView &view)
{
    QSettings settings;
    settings.beginGroup(plotGroup);
    view.plot()->savePanels(settings);
    settings.endGroup();
    if (!view.session())
        return;
    settings.beginGroup(settingsGroupOf(view.session()->address()));
    view.save(settings);
}

void MainWindow::restoreView(SessionView &view)
{
    // A sensor that is opened for the first time, or a recording, has the panels that were chosen last.
    QSettings settings;
    settings.beginGroup(plotGroup);
    view.plot()->restorePanels(settings);
    settings.endGroup();
    if (!view.session())
        return;
    settings.beginGroup(settingsGroupOf(view.session()->address()));
    view.restore(settings);
}

void MainWindow::restoreChoices()
{
    constexpr QSize firstSize(1360, 860);
    QSettings settings;
    const Theme theme = Theme(settings.value(themeKey, int(Theme::System)).toInt());
    for (QAction *action : m_themes->actions())
        action->setChecked(action->data().toInt() == int(theme));
    applyTheme(theme);
    resize(firstSize);
    m_isFirstStart = !settings.contains(docksKey);
    restoreGeometry(settings.value(geometryKey).toByteArray());
    QMainWindow::restoreState(settings.value(docksKey).toByteArray(), stateVersion);
    m_numbersAction->setChecked(settings.value(numbersKey, true).toBool());
    m_sideBySideAction->setChecked(settings.value(sideBySideKey, false).toBool());
    m_log->setDetailed(settings.value(everyCallKey, false).toBool());
    m_find->restore(settings);
}

} // namespace Explorer
