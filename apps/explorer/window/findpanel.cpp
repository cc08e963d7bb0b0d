// SPDX-License-Identifier: MIT
#include "findpanel.h"

#include "explorer/sensor/englishtexts.h"

#include "look.h"
#include "sensordelegate.h"

#include <SondixQt/namelookup.h>

#include <QAction>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QToolButton>
#include <QVBoxLayout>

using namespace SondixQt;

namespace Explorer {

namespace {

const QLatin1String findGroup("find");
const QLatin1String searchedInterfacesKey("interfaces");
const QLatin1String searchedGroupKey("group");
const QLatin1String searchedModelKey("model");

void nameFor(QWidget *widget, const QString &name, const char *objectName)
{
    widget->setAccessibleName(name);
    widget->setObjectName(QLatin1String(objectName));
}

} // namespace

FindPanel::FindPanel(QWidget *parent)
    : QWidget(parent)
    , m_searchButton(new QPushButton(tr("&Search")))
    , m_interfaces(new QToolButton)
    , m_interfaceMenu(new QMenu(this))
    , m_groups(new QComboBox)
    , m_models(new QComboBox)
    , m_progress(new QProgressBar)
    , m_state(new QLabel)
    , m_list(new QListView)
    , m_address(new QLineEdit)
    , m_openButton(new QPushButton(tr("&Open")))
    , m_addressProblem(new QLabel)
{
    nameFor(m_searchButton, tr("Search for sensors"), "searchButton");
    nameFor(m_list, tr("Sensors"), "sensorList");
    nameFor(m_state, tr("State of the search"), "searchState");
    nameFor(m_progress, tr("Progress of the search"), "searchProgress");
    m_list->setModel(&m_sensors);
    m_list->setItemDelegate(new SensorDelegate(m_list));
    m_list->setUniformItemSizes(true);
    m_list->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_progress->setTextVisible(false);
    m_progress->setMaximumHeight(6);
    m_progress->hide();
    m_state->setWordWrap(true);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(makeScope());
    layout->addWidget(m_searchButton);
    layout->addWidget(m_progress);
    layout->addWidget(m_state);
    layout->addWidget(m_list, 1);
    makeListHint();
    layout->addWidget(makeAddressField());
    makeMenu();
    connectSearch();
    connect(m_searchButton, &QPushButton::clicked, this, &FindPanel::toggleSearch);
    connect(m_list, &QListView::activated, this, &FindPanel::openAt);
    showState(tr("Not searched yet."));
}

// In the empty list: what will be there.
void FindPanel::makeListHint()
{
    auto *hint = new QLabel(tr("Sensors that were found or opened stand here. A double click opens them."));
    hint->setObjectName(QStringLiteral("listHint"));
    hint->setWordWrap(true);
    hint->setAlignment(Qt::AlignCenter);
    hint->setAttribute(Qt::WA_TransparentForMouseEvents);
    hint->setEnabled(false); // in the colour of a hint
    auto *layout = new QVBoxLayout(m_list->viewport());
    layout->addWidget(hint);
    const auto update = [this, hint] { hint->setVisible(m_sensors.rowCount() == 0); };
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(&m_sensors, signal, hint, update);
    connect(&m_sensors, &QAbstractItemModel::modelReset, hint, update);
    update();
}

QWidget *FindPanel::makeScope()
{
    nameFor(m_interfaces, tr("Interfaces to search"), "interfaces");
    nameFor(m_groups, tr("Groups of models to search for"), "groups");
    nameFor(m_models, tr("Model to search for"), "models");
    m_interfaces->setPopupMode(QToolButton::InstantPopup);
    m_interfaces->setMenu(m_interfaceMenu);
    m_interfaces->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_interfaces->setToolButtonStyle(Qt::ToolButtonTextOnly);
    for (const SensorInterface type : sensorInterfaces()) {
        QAction *const action = m_interfaceMenu->addAction(interfaceName(type));
        action->setCheckable(true);
        action->setChecked(true);
        action->setData(int(type));
        connect(action, &QAction::toggled, this, &FindPanel::showInterfaces);
    }
    m_groups->addItem(tr("All groups"), int(AllGroups));
    for (const SensorGroup group : sensorGroups()) {
        if (group != AllGroups && group != NoGroup && !sensorsInGroup(group).isEmpty())
            m_groups->addItem(sensorGroupName(group), int(group));
    }
    // The longest names would make the panel too wide.
    for (QComboBox *box : {m_groups, m_models}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(11);
    }
    connect(m_groups, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &FindPanel::fillModels);
    fillModels();
    showInterfaces();
    auto *widget = new QWidget;
    auto *form = new QFormLayout(widget);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(tr("Interfaces"), m_interfaces);
    form->addRow(tr("Group"), m_groups);
    form->addRow(tr("Model"), m_models);
    return widget;
}

QWidget *FindPanel::makeAddressField()
{
    nameFor(m_address, tr("Address of a sensor"), "addressEdit");
    nameFor(m_openButton, tr("Open the sensor at this address"), "openButton");
    nameFor(m_addressProblem, tr("What is wrong with the address"), "addressProblem");
    m_address->setPlaceholderText(QStringLiteral("TX270@RS232,port=COM3"));
    m_address->setClearButtonEnabled(true);
    m_address->setToolTip(tr("<model>@<interface>,<name>=<value>,... such as TX270@RS232,port=COM3 or "
                             "CC430@TCP/IP,address=169.254.168.150")
                              .toHtmlEscaped());
    m_addressProblem->setWordWrap(true);
    m_addressProblem->hide();
    m_openButton->setEnabled(false);
    connect(m_address, &QLineEdit::textChanged, this, &FindPanel::checkTyped);
    connect(m_address, &QLineEdit::returnPressed, this, &FindPanel::openTyped);
    connect(m_openButton, &QPushButton::clicked, this, &FindPanel::openTyped);
    auto *widget = new QWidget;
    auto *layout = new QGridLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *label = new QLabel(tr("Open by &address"));
    label->setBuddy(m_address);
    layout->addWidget(label, 0, 0, 1, 2);
    layout->addWidget(m_address, 1, 0);
    layout->addWidget(m_openButton, 1, 1);
    layout->addWidget(m_addressProblem, 2, 0, 1, 2);
    return widget;
}

void FindPanel::makeMenu()
{
    auto *open = new QAction(tr("Open"), m_list);
    auto *copy = new QAction(tr("Copy address"), m_list);
    auto *forget = new QAction(tr("Forget"), m_list);
    forget->setShortcut(QKeySequence::Delete);
    forget->setShortcutContext(Qt::WidgetShortcut);
    connect(open, &QAction::triggered, this, [this] { openAt(m_list->currentIndex()); });
    connect(copy, &QAction::triggered, this, [this] {
        if (m_list->currentIndex().isValid())
            m_address->setText(m_sensors.at(m_list->currentIndex().row()).address.toString());
        m_address->selectAll();
        m_address->copy();
    });
    connect(forget, &QAction::triggered, this, [this] {
        if (m_list->currentIndex().isValid())
            m_sensors.remove(m_list->currentIndex().row());
    });
    m_list->addActions({open, copy, forget});
}

void FindPanel::connectSearch()
{
    connect(&m_search, &SensorSearch::started, this, [this] {
        m_problem.clear();
        m_sensors.beginSearch();
        m_searchButton->setText(tr("&Cancel search"));
        m_progress->setValue(0);
        m_progress->show();
        showState(tr("Searching ..."));
    });
    connect(&m_search, &SensorSearch::progressChanged, m_progress, &QProgressBar::setValue);
    connect(&m_search, &SensorSearch::sensorFound, this, [this](const SensorInfo &info) {
        m_sensors.addFound(info);
        showState(tr("Searching ... found so far: %1").arg(m_sensors.foundCount()));
    });
    connect(&m_search, &SensorSearch::problemOccurred, this, [this](const QString &text) {
        m_problem = shownText(text);
        Q_EMIT problemOccurred(m_problem);
    });
    connect(&m_search, &SensorSearch::finished, this, [this] {
        m_searchButton->setText(tr("&Search"));
        m_progress->hide();
        const QString count = tr("Sensors found: %1.").arg(m_sensors.foundCount());
        showState(m_problem.isEmpty() ? count : QStringLiteral("%1 %2").arg(count, m_problem));
        if (const std::optional<Opening> next = std::exchange(m_afterSearch, std::nullopt))
            Q_EMIT openRequested(next->address, next->title);
    });
}

void FindPanel::showState(const QString &text)
{
    m_state->setText(text);
}

void FindPanel::fillModels()
{
    const SensorGroup group = SensorGroup(m_groups->currentData().toInt());
    m_models->clear();
    m_models->addItem(tr("All models"), int(NoSensor));
    for (const SensorType type : sensorsInGroup(group))
        m_models->addItem(sensorName(type, true), int(type));
}

void FindPanel::showInterfaces()
{
    QStringList names;
    for (const QAction *action : m_interfaceMenu->actions()) {
        if (action->isChecked())
            names += action->text();
    }
    const bool all = names.size() == m_interfaceMenu->actions().size();
    const QString joined = names.isEmpty() ? tr("none") : names.join(QStringLiteral(", "));
    m_interfaces->setText(all ? tr("All interfaces")
                              : (names.size() > 2 ? tr("%1 interfaces").arg(names.size()) : joined));
    m_interfaces->setToolTip(joined);
    m_searchButton->setEnabled(!names.isEmpty());
}

SearchScope FindPanel::scope() const
{
    SearchScope scope;
    scope.interfaces = {};
    for (const QAction *action : m_interfaceMenu->actions()) {
        if (action->isChecked())
            scope.interfaces |= SensorInterface(action->data().toInt());
    }
    scope.group = SensorGroup(m_groups->currentData().toInt());
    scope.model = SensorType(m_models->currentData().toInt());
    return scope;
}

void FindPanel::toggleSearch()
{
    if (m_search.isRunning()) {
        showState(tr("Ending the search ..."));
        m_search.cancel();
    } else if (scope().interfaces) {
        m_search.start(scope());
    }
}

void FindPanel::focusAddress()
{
    m_address->setFocus(Qt::ShortcutFocusReason);
    m_address->selectAll();
}

void FindPanel::open(const SensorAddress &address, const QString &title)
{
    if (!m_search.isRunning()) {
        Q_EMIT openRequested(address, title);
        return;
    }
    m_afterSearch = Opening{address, title};
    showState(tr("Ending the search to open %1 ...").arg(title));
    m_search.cancel();
}

void FindPanel::openAt(const QModelIndex &index)
{
    if (index.isValid())
        open(m_sensors.at(index.row()).address, m_sensors.at(index.row()).title());
}

void FindPanel::openTyped()
{
    if (const auto address = SensorAddress::parse(m_address->text().trimmed()))
        open(*address, QString());
    else
        checkTyped();
}

void FindPanel::checkTyped()
{
    QString problem;
    const QString text = m_address->text().trimmed();
    const bool isAddress = SensorAddress::parse(text, &problem).has_value();
    m_openButton->setEnabled(isAddress);
    m_addressProblem->setVisible(!isAddress && !text.isEmpty());
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, colourOf(Meaning::Problem, colours));
    m_addressProblem->setPalette(colours);
    m_addressProblem->setText(QStringLiteral("\u26a0 %1").arg(shownText(problem)));
}

void FindPanel::save(QSettings &settings) const
{
    const SearchScope chosen = scope();
    settings.beginGroup(findGroup);
    settings.setValue(searchedInterfacesKey, int(chosen.interfaces));
    settings.setValue(searchedGroupKey, int(chosen.group));
    settings.setValue(searchedModelKey, int(chosen.model));
    m_sensors.save(settings);
    settings.endGroup();
}

void FindPanel::restore(QSettings &settings)
{
    settings.beginGroup(findGroup);
    const int interfaces = settings.value(searchedInterfacesKey, ~0).toInt();
    for (QAction *action : m_interfaceMenu->actions())
        action->setChecked(interfaces & action->data().toInt());
    const int group = m_groups->findData(settings.value(searchedGroupKey, int(AllGroups)).toInt());
    m_groups->setCurrentIndex(qMax(group, 0));
    const int model = m_models->findData(settings.value(searchedModelKey, int(NoSensor)).toInt());
    m_models->setCurrentIndex(qMax(model, 0));
    m_sensors.restore(settings);
    settings.endGroup();
    if (m_sensors.rowCount() > 0)
        showState(tr("Remembered sensors: %1.").arg(m_sensors.rowCount()));
}

} // namespace Explorer
