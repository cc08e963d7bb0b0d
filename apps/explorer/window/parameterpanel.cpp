// SPDX-License-Identifier: MIT
#include "parameterpanel.h"

#include "commandcompleter.h"
#include "look.h"
#include "parameterdelegate.h"

#include "explorer/sensor/diskthread.h"
#include "explorer/sensor/englishtexts.h"
#include "explorer/sensor/filenames.h"
#include "explorer/sensor/parameterfile.h"
#include "explorer/sensor/parametermodel.h"
#include "explorer/sensor/sensorsession.h"
#include "shared/commandparameters.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QToolButton>
#include <QTreeView>
#include <QUndoGroup>
#include <QVBoxLayout>

#include <memory>
#include <optional>

using namespace SondixQt;

namespace Explorer {

namespace {

QString answerText(const QMap<QString, QVariant> &answer)
{
    QStringList parts;
    for (auto it = answer.cbegin(); it != answer.cend(); ++it) {
        if (it.key() != QLatin1String("S_Command"))
            parts += QStringLiteral("%1=%2").arg(it.key(), it->userType() == QMetaType::Double
                                                               ? exactNumber(it->toDouble())
                                                               : it->toString().simplified());
    }
    return parts.join(QStringLiteral(", "));
}

// The first names of the settings that \a wanted has and \a other lacks.
QString namesOnlyIn(const SensorSettings &wanted, const SensorSettings &other)
{
    constexpr int maxNames = 5;
    QStringList names;
    for (auto group = wanted.cbegin(); group != wanted.cend(); ++group) {
        const auto known = other.value(group.key());
        for (auto it = group->cbegin(); it != group->cend(); ++it) {
            if (!known.contains(it.key()))
                names += it.key();
        }
    }
    const bool isLong = names.size() > maxNames;
    return names.mid(0, maxNames).join(QStringLiteral(", ")) + (isLong ? QStringLiteral(", ...") : QString());
}

// Long lines would make the dock as wide as they are.
QLabel *wrappedLabel(const char *objectName)
{
    auto *label = new QLabel;
    label->setObjectName(QLatin1String(objectName));
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    return label;
}

// The columns share the width: that of the notes, which are the longest, is cut with an ellipsis.
class ParameterView : public QTreeView
{
public:
    void fitColumns()
    {
        if (!model())
            return;
        const int character = fontMetrics().averageCharWidth();
        const int valueWidth = std::max(sizeHintForColumn(ParameterModel::ValueColumn), 8 * character);
        const int nameWidth = std::max(sizeHintForColumn(ParameterModel::NameColumn), 8 * character);
        // Names and values first: a note that is cut has a tool tip.
        const int width = viewport()->width();
        const int note = header()->sectionSizeHint(ParameterModel::NoteColumn);
        const int value = std::min(valueWidth, std::max(14 * character, (width - note) / 2));
        const int name = std::max(std::min(nameWidth, width - value - note), 8 * character);
        header()->setMinimumSectionSize(6 * character);
        header()->resizeSection(ParameterModel::NameColumn, name);
        header()->resizeSection(ParameterModel::ValueColumn, value);
        // The stretched section would not become narrower than the default.
        header()->resizeSection(ParameterModel::NoteColumn, std::max(note, width - name - value));
    }

    void dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                     const QVector<int> &roles) override
    {
        QTreeView::dataChanged(topLeft, bottomRight, roles);
        fitColumns(); // for longer values
    }

protected:
    void resizeEvent(QResizeEvent *event) override
    {
        fitColumns();
        QTreeView::resizeEvent(event);
    }
};

} // namespace

ParameterPanel::ParameterPanel(QUndoGroup &undoGroup, QWidget *parent)
    : QWidget(parent)
    , m_undoGroup(undoGroup)
    , m_filter(new QLineEdit)
    , m_view(new ParameterView)
    , m_message(wrappedLabel("parameterMessage"))
    , m_empty(wrappedLabel("parametersEmpty"))
    , m_ask(new QPushButton(tr("Ask the sensor for known settings")))
    , m_command(new QLineEdit)
    , m_content(new QWidget)
    , m_disk(new DiskThread(this))
{
    setObjectName(QStringLiteral("parameterPanel"));
    m_view->setObjectName(QStringLiteral("parameterView"));
    m_view->setAccessibleName(tr("Settings of the sensor"));
    m_view->setItemDelegate(new ParameterDelegate(m_view));
    m_view->setAlternatingRowColors(true);
    m_view->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::SelectedClicked |
                            QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
    m_view->setTabKeyNavigation(false);
    m_view->setIndentation(fontMetrics().height());               // the names need the room
    m_view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // the note is cut, and complete in its tool tip
    m_message->hide();
    makePlaceholder(*m_empty);
    makeFileActions();
    auto *content = new QVBoxLayout(m_content);
    content->setContentsMargins(0, 0, 0, 0);
    content->addWidget(makeBar());
    content->addWidget(m_view, 1);
    content->addWidget(m_ask);
    content->addWidget(m_message);
    content->addWidget(makeCommandLine());
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_content);
    layout->addWidget(m_empty, 1);
    connect(m_ask, &QPushButton::clicked, this, [this] {
        if (m_model)
            m_model->askForKnownGroups();
    });
    setSession(nullptr, nullptr);
}

QWidget *ParameterPanel::makeBar()
{
    auto *refresh = new QToolButton;
    refresh->setText(QStringLiteral("\u21bb"));
    refresh->setToolTip(tr("Read all settings from the sensor again"));
    refresh->setAccessibleName(refresh->toolTip());
    refresh->setObjectName(QStringLiteral("refreshParameters"));
    connect(refresh, &QToolButton::clicked, this, [this] {
        if (m_model)
            m_model->refresh();
    });
    QAction *const undo = m_undoGroup.createUndoAction(this, tr("Undo"));
    QAction *const redo = m_undoGroup.createRedoAction(this, tr("Redo"));
    auto *undoButton = new QToolButton;
    auto *redoButton = new QToolButton;
    undoButton->setDefaultAction(undo);
    redoButton->setDefaultAction(redo);
    undo->setIconText(QStringLiteral("\u21b6"));
    redo->setIconText(QStringLiteral("\u21b7"));
    undoButton->setAccessibleName(tr("Undo the last change of a setting"));
    redoButton->setAccessibleName(tr("Repeat the change that was undone"));
    undoButton->setObjectName(QStringLiteral("undoParameter"));
    redoButton->setObjectName(QStringLiteral("redoParameter"));
    auto *menuButton = new QToolButton;
    auto *menu = new QMenu(menuButton);
    menu->addActions(m_fileActions);
    menuButton->setText(tr("File"));
    menuButton->setMenu(menu);
    menuButton->setPopupMode(QToolButton::InstantPopup);
    menuButton->setAccessibleName(tr("Save, load and compare settings"));
    m_filter->setPlaceholderText(tr("Filter"));
    m_filter->setAccessibleName(tr("Show only settings with this text"));
    m_filter->setClearButtonEnabled(true);
    m_filter->setObjectName(QStringLiteral("parameterFilter"));
    auto *bar = new QWidget;
    auto *layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_filter, 1);
    for (QToolButton *button : {refresh, undoButton, redoButton, menuButton})
        layout->addWidget(button);
    return bar;
}

QWidget *ParameterPanel::makeCommandLine()
{
    m_command->setObjectName(QStringLiteral("commandLine"));
    m_command->setPlaceholderText(QStringLiteral("Get_Info"));
    m_command->setAccessibleName(tr("Command to send to the sensor"));
    m_command->setToolTip(tr("Any command, with its parameters as NAME=VALUE. The answer appears in the log."));
    m_command->setCompleter(new CommandCompleter(m_command));
    connect(m_command, &QLineEdit::returnPressed, this, [this] {
        if (sendLine(m_command->text()))
            m_command->clear();
    });
    auto *label = new QLabel(tr("&Command"));
    label->setBuddy(m_command);
    auto *line = new QWidget;
    auto *layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(m_command, 1);
    return line;
}

void ParameterPanel::makeFileActions()
{
    m_fileActions = {
        fileAction(tr("Save settings ..."), "saveSettings", true, &ParameterPanel::saveTo),
        fileAction(tr("Load settings ..."), "loadSettings", false, &ParameterPanel::loadFrom),
        fileAction(tr("Compare with file ..."), "compareSettings", false, &ParameterPanel::compareWith),
    };
    auto *asFound = new QAction(tr("Compare with the settings as found"), this);
    connect(asFound, &QAction::triggered, this, [this] {
        if (m_model)
            m_model->resetReference();
    });
    m_fileActions += asFound;
}

QAction *ParameterPanel::fileAction(const QString &text, const char *name, bool forSaving,
                                    bool (ParameterPanel::*function)(const QString &))
{
    auto *action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    connect(action, &QAction::triggered, this, [this, forSaving, function] {
        const QString path = chosenFile(forSaving);
        if (!path.isEmpty())
            (this->*function)(path);
    });
    return action;
}

QString ParameterPanel::proposedPath() const
{
    if (!m_session)
        return {};
    const QString name = fileNameOf(m_session->title()).replace(QLatin1Char(' '), QLatin1Char('_'));
    return QDir(m_folder).filePath(name + QStringLiteral(".json"));
}

QString ParameterPanel::chosenFile(bool forSaving)
{
    if (!m_session)
        return {};
    const QString filter = tr("Settings (*.json);;All files (*)");
    QString path = forSaving ? QFileDialog::getSaveFileName(this, tr("Save settings"), proposedPath(), filter)
                             : QFileDialog::getOpenFileName(this, tr("Open settings"), m_folder, filter);
    if (!path.isEmpty())
        m_folder = QFileInfo(path).absolutePath();
    return path;
}

void ParameterPanel::setSession(SensorSession *session, ParameterModel *model)
{
    if (m_model)
        m_model->disconnect(this);
    if (m_session)
        m_session->disconnect(this);
    m_session = session;
    m_model = model;
    m_content->setVisible(session);
    m_empty->setText(
        tr("No sensor is open. Here you will see its settings, change them in place, undo changes, and "
           "compare them with those of a file."));
    m_empty->setVisible(!session);
    m_message->hide();
    auto *old = m_view->model();
    QSortFilterProxyModel *proxy = nullptr;
    if (model) {
        proxy = new QSortFilterProxyModel(m_view);
        proxy->setRecursiveFilteringEnabled(true);
        proxy->setFilterCaseSensitivity(Qt::CaseInsensitive);
        proxy->setFilterKeyColumn(-1);
        proxy->setFilterFixedString(m_filter->text());
        proxy->setSourceModel(model);
        connect(m_filter, &QLineEdit::textChanged, proxy, [this, proxy](const QString &text) {
            proxy->setFilterFixedString(text);
            m_view->expandAll();
        });
    }
    m_view->setModel(proxy);
    delete old;
    m_undoGroup.setActiveStack(model ? model->undoStack() : nullptr);
    if (model)
        connectModel();
}

void ParameterPanel::connectModel()
{
    m_undoGroup.addStack(m_model->undoStack());
    m_undoGroup.setActiveStack(m_model->undoStack());
    connect(m_model, &ParameterModel::refused, this, [this](const QModelIndex &index, const QString &sentence) {
        const QString name = index.siblingAtColumn(ParameterModel::NameColumn).data().toString();
        showMessage(tr("%1 refused: %2").arg(name, sentence), true);
    });
    connect(m_model, &ParameterModel::accepted, this,
            [this](const QString &title) { showMessage(tr("Set: %1").arg(title), false); });
    connect(m_model, &QAbstractItemModel::modelReset, this, &ParameterPanel::showSize);
    connect(m_model, &QAbstractItemModel::rowsInserted, this, &ParameterPanel::showSize);
    showSize();
}

void ParameterPanel::showSize()
{
    m_ask->setVisible(m_model->rowCount() == 0);
    m_view->expandAll();
    for (int group = 0; group < m_view->model()->rowCount(); ++group)
        m_view->setFirstColumnSpanned(group, {}, true);
    QHeaderView *const header = m_view->header();
    header->setStretchLastSection(true);
    static_cast<ParameterView *>(m_view)->fitColumns();
    static_cast<CommandCompleter *>(m_command->completer())->setModelOfSensor(m_model);
}

void ParameterPanel::showMessage(const QString &text, bool isProblem)
{
    QPalette colours = palette();
    if (isProblem)
        colours.setColor(QPalette::WindowText, colourOf(Meaning::Problem, palette()));
    m_message->setPalette(colours);
    m_message->setText(isProblem ? QStringLiteral("\u26a0 %1").arg(text) : text);
    m_message->show();
}

void ParameterPanel::endFile(const QString &path, const QString &problem)
{
    if (!problem.isEmpty())
        showMessage(problem, true);
    Q_EMIT fileDone(path, problem);
}

bool ParameterPanel::saveTo(const QString &path)
{
    if (!m_model || !m_session)
        return false;
    const ParameterFile file{sensorName(m_session->model(), true), m_session->serialNumber(), m_model->settings()};
    showMessage(tr("Saving '%1'...").arg(QDir::toNativeSeparators(path)), false);
    const auto problem = std::make_shared<QString>();
    m_disk->run(
        DiskThread::Writing, [file, path, problem] { file.save(path, problem.get()); },
        [this, path, problem] {
            if (problem->isEmpty())
                showMessage(tr("Saved as '%1'.").arg(QDir::toNativeSeparators(path)), false);
            endFile(path, *problem);
        });
    return true;
}

bool ParameterPanel::readFile(const QString &path,
                              QString (ParameterPanel::*use)(const ParameterFile &, const QString &))
{
    if (!m_model || !m_session)
        return false;
    struct Content
    {
        std::optional<ParameterFile> file;
        QString problem;
    };
    showMessage(tr("Reading '%1'...").arg(QDir::toNativeSeparators(path)), false);
    const auto content = std::make_shared<Content>();
    m_disk->run(
        DiskThread::Reading, [path, content] { content->file = ParameterFile::load(path, &content->problem); },
        [this, path, use, content, model = m_model] {
            if (!model || model != m_model || !m_session)
                content->problem = tr("'%1' was not used: another sensor was chosen while it was read.")
                                       .arg(QFileInfo(path).fileName());
            else if (content->file)
                content->problem = (this->*use)(*content->file, path);
            endFile(path, content->problem);
        });
    return true;
}

bool ParameterPanel::loadFrom(const QString &path)
{
    return readFile(path, &ParameterPanel::apply);
}

// Empty if the settings of \a file are those of a sensor of this model.
QString ParameterPanel::otherModel(const ParameterFile &file, const QString &name) const
{
    const QString model = sensorName(m_session->model(), true);
    return file.model == model
               ? QString()
               : tr("'%1' has the settings of a %2, this sensor is a %3.").arg(name, file.model, model);
}

QString ParameterPanel::apply(const ParameterFile &file, const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    if (const QString other = otherModel(file, name); !other.isEmpty())
        return tr("%1 Nothing was changed.").arg(other);
    m_message->hide();
    QString problem;
    if (m_model->apply(file.settings, tr("settings of '%1'").arg(name), &problem))
        return {};
    return tr("'%1' does not fit: %2. Nothing was changed.").arg(name, problem);
}

bool ParameterPanel::compareWith(const QString &path)
{
    return readFile(path, &ParameterPanel::compare);
}

QString ParameterPanel::compare(const ParameterFile &file, const QString &path)
{
    if (QString other = otherModel(file, QFileInfo(path).fileName()); !other.isEmpty())
        return other;
    m_model->setReference(file.settings, QFileInfo(path).completeBaseName());
    const QString missing = namesOnlyIn(file.settings, m_model->settings());
    const QString further = namesOnlyIn(m_model->settings(), file.settings);
    QStringList sentences;
    if (m_model->differsFromReference())
        sentences += tr("The settings that differ are bold.");
    else if (missing.isEmpty() && further.isEmpty())
        sentences += tr("All settings are those of the file.");
    else
        sentences += tr("The settings that both have are the same.");
    if (!missing.isEmpty())
        sentences += tr("Only in the file: %1").arg(missing);
    if (!further.isEmpty())
        sentences += tr("Not in the file: %1").arg(further);
    showMessage(sentences.join(QLatin1Char('\n')), false);
    return {};
}

bool ParameterPanel::sendLine(const QString &line)
{
    QStringList words = CommandCompleter::wordsOf(line);
    if (!m_session || words.isEmpty())
        return false;
    const QString command = words.takeFirst();
    QString problem;
    if (!SondixApp::isCommandWord(command))
        problem = tr("'%1' is not a command, such as Get_Info").arg(command);
    const auto parameters = problem.isEmpty() ? SondixApp::commandParameters(words, problem) : std::nullopt;
    if (!parameters) {
        showMessage(shownText(problem), true);
        return false;
    }
    m_message->hide();
    const QString source = m_session->title();
    const auto callback = [this, command, source](const CommandResult &result) {
        const QString answer = answerText(result.answer);
        if (result.code == NoError)
            Q_EMIT answered(source, QStringLiteral("%1: %2").arg(command, answer.isEmpty() ? tr("done") : answer),
                            false);
        else
            Q_EMIT answered(
                source, tr("%1: error %2: %3").arg(command, QString::number(result.code), result.errorText), true);
        if (result.code != NoError)
            showMessage(QStringLiteral("%1: %2").arg(command, result.errorText), true);
        else
            showMessage(QStringLiteral("%1: %2").arg(command, answer.isEmpty() ? tr("done") : answer), false);
        if (m_model && !command.startsWith(QLatin1String("Get_")))
            m_model->refresh();
    };
    // A setting is sent again when the sensor was gone, in its order among those of the table.
    if (m_model && m_model->isSetting(command))
        m_session->reader().addSetting(command, *parameters, this, callback);
    else
        m_session->post(command, *parameters, this, callback);
    return true;
}

} // namespace Explorer
