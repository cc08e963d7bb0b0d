// SPDX-License-Identifier: MIT
#include "parametermodel.h"

#include <SondixQt/errorcode.h>

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace SondixQt;

namespace Explorer {

namespace {

/// Groups that sensors may have, for those that do not report their settings when they are opened.
const char *const knownGroups[] = {
    "Samplerate",  "SampleTime", "SRIndex",       "Averaging",       "Average",          "Settings",
    "MeasureMode", "Trigger",    "TriggerMode",   "Status",          "TriggerSource",    "SyncMode",
    "LaserPower",  "Autostart",  "MeasFrequency", "Names",           "DataOutInterface", "MeasureTime",
    "SensorName",  "Output_ETH", "Output_RS422",  "OutputVideo_ETH",
};

QString readCommandOf(const QString &writeCommand)
{
    return QStringLiteral("Get_") + writeCommand.mid(writeCommand.indexOf(QLatin1Char('_')) + 1);
}

QMap<QString, QVariant> sensorNumber(int sensor)
{
    return sensor > 0 ? QMap<QString, QVariant>{{QStringLiteral("IP_SensorIndex"), sensor}}
                      : QMap<QString, QVariant>();
}

QMap<QString, QVariant> settingsIn(const QMap<QString, QVariant> &answer)
{
    QMap<QString, QVariant> values;
    for (auto it = answer.cbegin(); it != answer.cend(); ++it) {
        if (it.key().startsWith(QLatin1String("SA_")))
            values.insert(it.key(), it.value());
    }
    return values;
}

struct ValueTexts
{
    Q_DECLARE_TR_FUNCTIONS(Explorer::ParameterModel)
};

std::optional<QVariant> numberOf(const QString &text, bool isInt)
{
    bool isNumber = false;
    const auto read = [&](const QLocale &locale) {
        return isInt ? QVariant(locale.toInt(text, &isNumber)) : QVariant(locale.toDouble(text, &isNumber));
    };
    QVariant value = read(QLocale());
    if (!isNumber)
        value = read(QLocale::c());
    return isNumber ? std::optional<QVariant>(value) : std::nullopt;
}

bool isLatin1Text(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() <= 0xFF; });
}

} // namespace

/// A change that the sensor has accepted.
class ParameterChange : public QUndoCommand
{
public:
    ParameterChange(ParameterModel &model, const ParameterModel::Change &change)
        : QUndoCommand(change.title)
        , m_model(model)
        , m_change(change)
    {
        m_change.isNew = false;
    }

    void redo() override
    {
        // The stack calls this for a new change, too, which has already been sent.
        if (std::exchange(m_isDone, true))
            m_model.start(m_change);
    }

    void undo() override
    {
        ParameterModel::Change back = m_change;
        back.isUndo = true;
        std::reverse(back.steps.begin(), back.steps.end());
        for (ParameterModel::Step &step : back.steps)
            std::swap(step.before, step.after);
        m_model.start(back);
    }

private:
    ParameterModel &m_model;
    ParameterModel::Change m_change;
    bool m_isDone = false;
};

std::optional<QVariant> settingValue(const QVariant &wanted, const QVariant &like,
                                     const QVector<NamedValue> &names, QString *problem)
{
    const QString text = wanted.toString().trimmed();
    for (const NamedValue &named : names) {
        if (wanted.userType() == QMetaType::QString && text.compare(named.name, Qt::CaseInsensitive) == 0)
            return named.value;
    }
    switch (like.userType()) {
    case QMetaType::Int:
        if (wanted.userType() == QMetaType::Int)
            return wanted;
        if (auto number = numberOf(text, true); number && wanted.userType() == QMetaType::QString)
            return number;
        *problem = ValueTexts::tr("'%1' is not a whole number").arg(text);
        return std::nullopt;
    case QMetaType::Double: {
        const bool isNumber = wanted.userType() == QMetaType::Int || wanted.userType() == QMetaType::Double;
        auto number = isNumber ? std::optional<QVariant>(wanted.toDouble()) : numberOf(text, false);
        if (number && std::isfinite(number->toDouble()))
            return number;
        *problem = ValueTexts::tr("'%1' is not a number").arg(text);
        return std::nullopt;
    }
    default:
        if (isLatin1Text(wanted.toString()))
            return wanted.toString();
        *problem = ValueTexts::tr("'%1' has characters that cannot be sent to a sensor").arg(text);
        return std::nullopt;
    }
}

bool ParameterModel::setData(const QModelIndex &index, const QVariant &wanted, int role)
{
    Entry *const entry = entryAt(index);
    if (role != Qt::EditRole || !entry || index.column() != ValueColumn)
        return false;
    const int row = static_cast<int>(index.internalId());
    QString problem;
    const std::optional<QVariant> value = settingValue(wanted, entry->value, entry->shown.values, &problem);
    entry->problem = value ? QString() : problem;
    announce(row);
    if (!value) {
        Q_EMIT refused(index, problem);
        return false;
    }
    if (isSameValue(*value, entry->value) && !entry->pending.isValid())
        return true;
    const QString title = tr("%1: %2").arg(entry->shown.name, presentedValue(entry->shown, *value));
    start({title, {{m_groups.at(row).key, {}, {{entry->answer, *value}}}}, true});
    return true;
}

bool ParameterModel::apply(const SensorSettings &wanted, const QString &title, QString *problem)
{
    Change change{title, {}, true};
    for (auto group = wanted.cbegin(); group != wanted.cend(); ++group) {
        const int row = rowOf(group.key());
        if (row < 0) {
            *problem = tr("the sensor has no group of settings '%1'").arg(group.key());
            return false;
        }
        Step step{group.key(), {}, {}};
        for (auto it = group->cbegin(); it != group->cend(); ++it) {
            const QVector<Entry> &entries = m_groups.at(row).entries;
            const auto entry = std::find_if(entries.begin(), entries.end(),
                                            [&it](const Entry &known) { return known.answer == it.key(); });
            if (entry == entries.end()) {
                *problem = tr("the sensor has no setting '%1' in '%2'").arg(it.key(), group.key());
                return false;
            }
            QString reason;
            const auto value = settingValue(*it, entry->value, {}, &reason);
            if (!value) {
                *problem = tr("%1: %2").arg(it.key(), reason);
                return false;
            }
            if (!isSameValue(*value, entry->value) || entry->pending.isValid())
                step.after.insert(it.key(), *value);
        }
        if (!step.after.isEmpty())
            change.steps.append(step);
    }
    if (change.steps.isEmpty())
        Q_EMIT accepted(title);
    else
        start(change);
    return true;
}

void ParameterModel::start(const Change &change)
{
    if (m_isTakingBack)
        return;
    m_changes.enqueue(change);
    for (const Step &step : change.steps)
        showPending(step);
    if (m_isBusy)
        return;
    m_isBusy = true;
    Q_EMIT busyChanged(true);
    sendStep(m_changes.head(), 0);
}

// Shows for the settings of a step what the last change that waits will make of them. The first change of the queue no
// longer counts for a step that was \a answered.
void ParameterModel::showPending(const Step &step, bool answered)
{
    const int row = rowOf(step.key);
    if (row < 0)
        return;
    for (Entry &entry : m_groups[row].entries) {
        if (!step.after.contains(entry.answer))
            continue;
        entry.pending = QVariant();
        for (int i = answered ? 1 : 0; i < m_changes.size(); ++i) {
            for (const Step &waiting : m_changes.at(i).steps) {
                if (waiting.key == step.key && waiting.after.contains(entry.answer))
                    entry.pending = waiting.after.value(entry.answer);
            }
        }
        if (!answered)
            entry.problem.clear();
    }
    announce(row);
}

void ParameterModel::sendStep(const Change &change, int number)
{
    const SensorReader::State state = m_reader.state();
    if (state == SensorReader::Stopped || state == SensorReader::Failed) {
        refuse(change, number, tr("not sent: the sensor is not open"));
        return;
    }
    Change sent = change;
    Step &step = sent.steps[number];
    if (change.isNew) { // the values before it are known only now, when the changes before it were answered
        for (const Entry &entry : m_groups.at(rowOf(step.key)).entries) {
            if (step.after.contains(entry.answer))
                step.before.insert(entry.answer, entry.value);
        }
    }
    send(step, step.after,
         [this, sent, number](const CommandResult &result) { takeResult(sent, number, result); });
}

// Sends the whole group of the step, with the values of the step in place of the present ones.
void ParameterModel::send(const Step &step, const QMap<QString, QVariant> &values,
                          const SensorReader::Callback &callback)
{
    const Group &group = m_groups.at(rowOf(step.key));
    QMap<QString, QVariant> parameters = sensorNumber(group.sensor);
    for (const Entry &entry : group.entries)
        parameters.insert(QStringLiteral("SP_") + entry.answer.mid(3), values.value(entry.answer, entry.value));
    m_reader.addSetting(group.command, parameters, this, callback);
}

void ParameterModel::takeResult(const Change &change, int number, const CommandResult &result)
{
    if (result.code != NoError) {
        const QString reason =
            result.errorText.isEmpty() ? tr("error %1").arg(int(result.code)) : result.errorText;
        refuse(change, number, reason);
        return;
    }
    const Step &step = change.steps.at(number);
    showPending(step, true);
    takeValues(step.key, step.after);
    if (number + 1 < change.steps.size())
        sendStep(change, number + 1);
    else
        finish(change);
}

void ParameterModel::refuse(const Change &change, int number, const QString &sentence)
{
    for (const Step &step : change.steps)
        showPending(step, true);
    const Step &step = change.steps.at(number);
    const int row = rowOf(step.key);
    QModelIndex place;
    QVector<Entry> &entries = m_groups[row].entries;
    for (int i = 0; i < entries.size(); ++i) {
        if (!step.after.contains(entries.at(i).answer))
            continue;
        entries[i].problem = sentence;
        // The sentence may name the parameter that it is about.
        const QString name = QStringLiteral("SP_") + entries.at(i).answer.mid(3);
        if (!place.isValid() || sentence.contains(name))
            place = index(i, ValueColumn, index(row, 0));
    }
    announce(row);
    // What was sent before of a change of several groups.
    for (int i = number - 1; i >= 0; --i) {
        const Step &done = change.steps.at(i);
        send(done, done.before, {});
        takeValues(done.key, done.before);
        readGroup(done.key);
    }
    if (!change.isNew) // later: the stack may be calling this function
        QMetaObject::invokeMethod(
            this, [this, isUndo = change.isUndo] { takeBack(isUndo); }, Qt::QueuedConnection);
    Change refusedChange = change;
    refusedChange.isNew = false;
    refusedChange.steps.clear();
    finish(refusedChange);
    Q_EMIT refused(place, sentence);
}

// The stack has already moved past a change that was undone or repeated, and that the sensor has refused.
void ParameterModel::takeBack(bool isUndo)
{
    if (m_isBusy) { // it has moved on
        m_undoStack.clear();
        return;
    }
    m_isTakingBack = true;
    isUndo ? m_undoStack.redo() : m_undoStack.undo();
    m_isTakingBack = false;
}

void ParameterModel::finish(const Change &change)
{
    for (const Step &step : change.steps)
        readGroup(step.key);
    if (change.isNew)
        m_undoStack.push(new ParameterChange(*this, change));
    m_changes.dequeue();
    if (!change.steps.isEmpty())
        Q_EMIT accepted(change.title);
    if (!m_changes.isEmpty()) {
        sendStep(m_changes.head(), 0);
        return;
    }
    m_isBusy = false;
    Q_EMIT busyChanged(false);
}

void ParameterModel::refresh()
{
    for (const Group &group : qAsConst(m_groups))
        readGroup(group.key);
}

void ParameterModel::readGroup(const QString &key)
{
    const int row = rowOf(key);
    if (row < 0)
        return;
    const Group &group = m_groups.at(row);
    m_reader.post(readCommandOf(group.command), sensorNumber(group.sensor), this,
                  [this, key](const CommandResult &result) {
                      const int changed = rowOf(key);
                      if (changed < 0)
                          return;
                      m_groups[changed].problem = result.code == NoError ? QString() : result.errorText;
                      takeValues(key, result.answer);
                  });
}

void ParameterModel::takeValues(const QString &key, const QMap<QString, QVariant> &answer)
{
    const int row = rowOf(key);
    if (row < 0)
        return;
    for (Entry &entry : m_groups[row].entries) {
        if (const auto value = answer.constFind(entry.answer); value != answer.constEnd())
            entry.value = *value;
    }
    announce(row);
}

void ParameterModel::askForKnownGroups()
{
    for (const char *name : knownGroups) {
        const QString command = QStringLiteral("Set_") + QLatin1String(name);
        m_reader.post(readCommandOf(command), {}, this, [this, command](const CommandResult &result) {
            if (result.code == NoError)
                addGroup(groupOf(command, 0, settingsIn(result.answer)));
        });
    }
}

} // namespace Explorer
