// SPDX-License-Identifier: MIT
#pragma once

#include "parameterfile.h"
#include "parameternames.h"

#include <SondixQt/sensorreader.h>

#include <QAbstractItemModel>
#include <QQueue>
#include <QUndoStack>
#include <QVector>

namespace Explorer {

/// The settings of a sensor as a tree: its groups, and in each group the settings with value and note.
///
/// Which groups there are is what the sensor has reported when it was opened, so that showing them sends no command. A
/// changed value is sent with all other values of its group, because sensors set a group as a whole; the group is then
/// read again, and shows what the sensor has made of it. A change that the sensor refuses leaves the old value, and its
/// sentence stands at the setting. Accepted changes can be undone; undoing sends the old values. Changes are sent one
/// after another. A change is sent again when the sensor was gone.
///
/// There is no command that every sensor has for its factory settings. Values are therefore compared with a reference:
/// the values as the sensor was found, or those of a file.
///
/// Threads: that of the window. No function waits for the sensor.
class ParameterModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Column { NameColumn, ValueColumn, NoteColumn, ColumnCount };
    enum Role {
        AnswerRole = Qt::UserRole, ///< QString: the name of the sensor-access library, such as "SA_Measrate"
        ProblemRole,               ///< QString: why the last change was refused
        DiffersRole,               ///< bool: the value is not that of the reference
        NamesRole,                 ///< QStringList: the names of values
        IsCompleteRole,            ///< bool: there are no other values than those with a name
    };

    /// The model shows the settings of the sensor of \a reader, which must outlive it.
    explicit ParameterModel(SondixQt::SensorReader &reader, QObject *parent = nullptr);

    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    /// Sends a value, or refuses one that the setting cannot have. Texts are converted as the locale writes them.
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

    /// The value of the setting \a answer ("SA_Measrate"); an invalid index if there is none.
    QModelIndex valueIndex(const QString &answer) const;

    /// Whether \a command sets a group of the model.
    bool isSetting(const QString &command) const;

    /// Reads all groups from the sensor.
    void refresh();
    /// Asks the sensor for groups that sensors of its kind may have; those that it answers are added. For sensors that
    /// do not report their settings.
    void askForKnownGroups();

    SensorSettings settings() const;
    /// Sends all values of \a wanted that differ, as one change named \a title. If one is refused, those sent before are
    /// taken back. Returns false with a message for users, and sends nothing, if the sensor has no such settings.
    bool apply(const SensorSettings &wanted, const QString &title, QString *problem);

    /// The values with which the present ones are compared.
    SensorSettings reference() const { return m_reference; }
    void setReference(const SensorSettings &reference, const QString &name);
    /// Compares with the values as the sensor was found.
    void resetReference();
    bool differsFromReference() const;

    QUndoStack *undoStack() { return &m_undoStack; }
    /// Whether a change has been sent and not been answered.
    bool isBusy() const { return m_isBusy; }

Q_SIGNALS:
    void refused(const QModelIndex &index, const QString &sentence);
    /// The change named \a title is complete.
    void accepted(const QString &title);
    void busyChanged(bool busy);

private:
    friend class ParameterChange;

    struct Entry
    {
        QString answer;
        ParameterPresentationEntry shown;
        QVariant value;
        QVariant pending; // sent, not answered
        QString problem;
    };
    struct Group
    {
        QString key;     // in SensorSettings
        QString command; // such as "Set_Samplerate"
        int sensor = 0;  // number in a multi-sensor; 0: the only one
        QVector<Entry> entries;
        QString problem;
    };
    struct Step
    {
        QString key;
        QMap<QString, QVariant> before; // of a new change: filled when it is sent
        QMap<QString, QVariant> after;
    };
    struct Change
    {
        QString title;
        QVector<Step> steps;
        bool isNew = true; // not an undone or repeated one
        bool isUndo = false;
    };

    void takeState(SondixQt::SensorReader::State state);
    void takeSettings();
    void nameMeasuringModes();
    static QVector<Group> reportedGroups(const SondixQt::SensorReader &reader);
    static Group groupOf(const QString &command, int sensor, const QMap<QString, QVariant> &values);
    void addGroup(const Group &group);
    void readGroup(const QString &key);
    void takeValues(const QString &key, const QMap<QString, QVariant> &answer);

    int rowOf(const QString &key) const;
    Entry *entryAt(const QModelIndex &index);
    const Entry *entryAt(const QModelIndex &index) const;
    /// What was sent last, or what the sensor has reported.
    static QVariant latestValue(const Entry &entry);
    QVariant entryData(const Group &group, const Entry &entry, int column, int role) const;
    QString noteOf(const Group &group, const Entry &entry) const;
    bool differs(const Group &group, const Entry &entry) const;
    void announce(int group);
    static bool isSameValue(const QVariant &a, const QVariant &b);

    void start(const Change &change);
    void takeBack(bool isUndo);
    void sendStep(const Change &change, int step);
    void takeResult(const Change &change, int step, const SondixQt::CommandResult &result);
    void refuse(const Change &change, int step, const QString &sentence);
    void finish(const Change &change);
    void send(const Step &step, const QMap<QString, QVariant> &values,
              const SondixQt::SensorReader::Callback &callback);
    void showPending(const Step &step, bool answered = false);

    SondixQt::SensorReader &m_reader;
    QVector<Group> m_groups;
    SensorSettings m_found;
    SensorSettings m_reference;
    QString m_referenceName;
    QUndoStack m_undoStack;
    bool m_isTakingBack = false; // the stack is moved, nothing is sent
    QQueue<Change> m_changes;
    bool m_isBusy = false;
    bool m_wasOpen = false;
};

/// The value of a setting like \a like that \a wanted represents: a number that the setting can hold, or a text. Nothing
/// if there is none; \a problem receives a message for users.
std::optional<QVariant> settingValue(const QVariant &wanted, const QVariant &like,
                                     const QVector<NamedValue> &names, QString *problem);

} // namespace Explorer
