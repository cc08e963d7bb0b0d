// SPDX-License-Identifier: MIT
#include "parametermodel.h"

#include <SondixQt/sensorinstance.h>

#include <algorithm>
#include <utility>

using namespace SondixQt;

namespace Explorer {

namespace {

/// The internal id of the index of a group; the id of a setting is the row of its group.
constexpr quintptr groupId = ~quintptr(0);

const QLatin1String measuringMode("SA_MeasureMode");

QString keyOf(const QString &command, int sensor)
{
    return sensor > 0 ? QStringLiteral("%1#%2").arg(command, QString::number(sensor)) : command;
}

} // namespace

ParameterModel::ParameterModel(SensorReader &reader, QObject *parent)
    : QAbstractItemModel(parent)
    , m_reader(reader)
{
    resetReference();
    connect(&reader, &SensorReader::stateChanged, this, &ParameterModel::takeState);
    takeState(reader.state());
}

void ParameterModel::takeState(SensorReader::State state)
{
    const bool isOpen = state == SensorReader::Reading || state == SensorReader::WaitingForTrigger;
    if (!isOpen || std::exchange(m_wasOpen, isOpen))
        m_wasOpen = isOpen;
    else if (m_groups.isEmpty())
        takeSettings();
    else
        refresh(); // what the sensor has reported now is older than the settings that the reader has sent again
}

ParameterModel::Group ParameterModel::groupOf(const QString &command, int sensor,
                                              const QMap<QString, QVariant> &values)
{
    Group group{keyOf(command, sensor), command, sensor, {}, {}};
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        group.entries.append({it.key(), presentationOf(it.key()), it.value(), {}, {}});
    return group;
}

QVector<ParameterModel::Group> ParameterModel::reportedGroups(const SensorReader &reader)
{
    QVector<Group> groups;
    const auto sensors = reader.sensorSettings();
    for (int i = 0; i < sensors.size(); ++i) {
        for (auto it = sensors.at(i).cbegin(); it != sensors.at(i).cend(); ++it)
            groups.append(groupOf(it.key(), sensors.size() > 1 ? i + 1 : 0, it.value()));
    }
    return groups;
}

void ParameterModel::takeSettings()
{
    const QVector<Group> groups = reportedGroups(m_reader);
    if (groups.isEmpty())
        return;
    beginResetModel();
    m_groups = groups;
    m_found = settings();
    if (m_reference.isEmpty())
        m_reference = m_found;
    endResetModel();
    nameMeasuringModes();
}

// The instance knows the modes of its model; no command is sent.
void ParameterModel::nameMeasuringModes()
{
    if (!valueIndex(measuringMode).isValid())
        return;
    const auto work = [](SensorInstance &instance) {
        CommandResult result;
        for (const QPair<QString, int> &mode : instance.getAvailableMeasModi())
            result.answer.insert(mode.first, mode.second);
        return result;
    };
    m_reader.call(work, SensorReader::OnlyReads, this, [this](const CommandResult &result) {
        const QModelIndex index = valueIndex(measuringMode);
        if (result.answer.isEmpty() || !index.isValid())
            return;
        QVector<NamedValue> names;
        for (auto mode = result.answer.cbegin(); mode != result.answer.cend(); ++mode)
            names.append({mode->toInt(), mode.key()});
        std::sort(names.begin(), names.end(),
                  [](const NamedValue &a, const NamedValue &b) { return a.value < b.value; });
        entryAt(index)->shown.values = names;
        announce(index.parent().row());
    });
}

void ParameterModel::addGroup(const Group &group)
{
    if (rowOf(group.key) >= 0 || group.entries.isEmpty())
        return;
    const bool comparesWithFound = m_reference == m_found;
    beginInsertRows({}, m_groups.size(), m_groups.size());
    m_groups.append(group);
    for (const Entry &entry : group.entries)
        m_found[group.key].insert(entry.answer, entry.value);
    if (comparesWithFound)
        m_reference = m_found;
    endInsertRows();
}

QModelIndex ParameterModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, parent.isValid() ? static_cast<quintptr>(parent.row()) : groupId);
}

QModelIndex ParameterModel::parent(const QModelIndex &child) const
{
    if (!child.isValid() || child.internalId() == groupId)
        return {};
    return createIndex(static_cast<int>(child.internalId()), 0, groupId);
}

int ParameterModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return m_groups.size();
    return parent.internalId() == groupId && parent.column() == 0 ? m_groups.at(parent.row()).entries.size() : 0;
}

int ParameterModel::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

int ParameterModel::rowOf(const QString &key) const
{
    const auto found =
        std::find_if(m_groups.begin(), m_groups.end(), [&key](const Group &group) { return group.key == key; });
    return found != m_groups.end() ? static_cast<int>(found - m_groups.begin()) : -1;
}

bool ParameterModel::isSetting(const QString &command) const
{
    return std::any_of(m_groups.begin(), m_groups.end(),
                       [&command](const Group &group) { return group.command == command; });
}

ParameterModel::Entry *ParameterModel::entryAt(const QModelIndex &index)
{
    return const_cast<Entry *>(std::as_const(*this).entryAt(index));
}

const ParameterModel::Entry *ParameterModel::entryAt(const QModelIndex &index) const
{
    if (!index.isValid() || index.internalId() == groupId)
        return nullptr;
    return &m_groups.at(static_cast<int>(index.internalId())).entries.at(index.row());
}

QModelIndex ParameterModel::valueIndex(const QString &answer) const
{
    for (int group = 0; group < m_groups.size(); ++group) {
        const QVector<Entry> &entries = m_groups.at(group).entries;
        for (int row = 0; row < entries.size(); ++row) {
            if (entries.at(row).answer == answer)
                return index(row, ValueColumn, index(group, 0));
        }
    }
    return {};
}

QVariant ParameterModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    if (const Entry *entry = entryAt(index))
        return entryData(m_groups.at(static_cast<int>(index.internalId())), *entry, index.column(), role);
    const Group &group = m_groups.at(index.row());
    if (role == AnswerRole)
        return group.key;
    if (role == Qt::ToolTipRole)
        return group.problem.isEmpty() ? group.key : QStringLiteral("%1\n%2").arg(group.key, group.problem);
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)
        return {};
    if (index.column() == NameColumn) {
        const QString title = groupTitle(group.command);
        return group.sensor > 0 ? tr("%1 (sensor %2)").arg(title, QString::number(group.sensor)) : title;
    }
    return index.column() == NoteColumn ? group.problem : QVariant();
}

QVariant ParameterModel::latestValue(const Entry &entry)
{
    return entry.pending.isValid() ? entry.pending : entry.value;
}

QVariant ParameterModel::entryData(const Group &group, const Entry &entry, int column, int role) const
{
    switch (role) {
    case Qt::DisplayRole:
        if (column == NameColumn)
            return entry.shown.name;
        if (column == ValueColumn)
            return presentedValue(entry.shown, latestValue(entry));
        return noteOf(group, entry);
    case Qt::EditRole:
        return column == ValueColumn ? latestValue(entry) : QVariant();
    case Qt::ToolTipRole: {
        const QString note = noteOf(group, entry);
        const QString name = QStringLiteral("%1 (%2)").arg(entry.shown.name, entry.answer);
        return note.isEmpty() ? name : QStringLiteral("%1\n%2").arg(name, note);
    }
    case Qt::AccessibleTextRole:
        if (column == ValueColumn)
            return tr("%1: %2").arg(entry.shown.name, presentedValue(entry.shown, latestValue(entry)));
        return entryData(group, entry, column, Qt::DisplayRole);
    case AnswerRole:
        return entry.answer;
    case ProblemRole:
        return entry.problem;
    case DiffersRole:
        return differs(group, entry);
    case IsCompleteRole:
        return entry.shown.values.size() > 1;
    case NamesRole: {
        QStringList names;
        for (const NamedValue &named : entry.shown.values)
            names += named.name;
        return names;
    }
    default:
        return {};
    }
}

QString ParameterModel::noteOf(const Group &group, const Entry &entry) const
{
    if (!entry.problem.isEmpty())
        return entry.problem;
    if (entry.pending.isValid())
        return tr("sending ...");
    if (!differs(group, entry))
        return {};
    const QVariant value = m_reference.value(group.key).value(entry.answer);
    return tr("%1: %2").arg(m_referenceName, presentedValue(entry.shown, value));
}

bool ParameterModel::isSameValue(const QVariant &a, const QVariant &b)
{
    // A sensor may report 2 for 2.0.
    const auto isNumber = [](const QVariant &value) {
        return value.userType() == QMetaType::Double || value.userType() == QMetaType::Int;
    };
    if (isNumber(a) && isNumber(b))
        return !(a.toDouble() < b.toDouble()) && !(a.toDouble() > b.toDouble());
    return a == b;
}

bool ParameterModel::differs(const Group &group, const Entry &entry) const
{
    const QMap<QString, QVariant> values = m_reference.value(group.key);
    const auto value = values.constFind(entry.answer);
    return value != values.constEnd() && !isSameValue(*value, entry.value);
}

bool ParameterModel::differsFromReference() const
{
    return std::any_of(m_groups.begin(), m_groups.end(), [this](const Group &group) {
        return std::any_of(group.entries.begin(), group.entries.end(),
                           [&](const Entry &entry) { return differs(group, entry); });
    });
}

QVariant ParameterModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::ToolTipRole && section == NoteColumn)
        return tr(
            "Why a change was refused, or how a setting was when the sensor was opened. There is no command for "
            "factory settings that all sensors have: to compare with these, save those of a new sensor into a "
            "file and compare with the file.");
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case NameColumn:
        return tr("Setting");
    case ValueColumn:
        return tr("Value");
    case NoteColumn:
        return tr("Note");
    default:
        return {};
    }
}

Qt::ItemFlags ParameterModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    return entryAt(index) && index.column() == ValueColumn ? flags | Qt::ItemIsEditable : flags;
}

void ParameterModel::announce(int group)
{
    const QModelIndex parent = index(group, 0);
    Q_EMIT dataChanged(parent, index(group, ColumnCount - 1));
    const int rows = m_groups.at(group).entries.size();
    Q_EMIT dataChanged(index(0, 0, parent), index(rows - 1, ColumnCount - 1, parent));
}

SensorSettings ParameterModel::settings() const
{
    SensorSettings settings;
    for (const Group &group : m_groups) {
        for (const Entry &entry : group.entries)
            settings[group.key].insert(entry.answer, entry.value);
    }
    return settings;
}

void ParameterModel::setReference(const SensorSettings &reference, const QString &name)
{
    m_reference = reference;
    m_referenceName = name;
    for (int group = 0; group < m_groups.size(); ++group)
        announce(group);
}

void ParameterModel::resetReference()
{
    setReference(m_found, tr("as found"));
}

} // namespace Explorer
