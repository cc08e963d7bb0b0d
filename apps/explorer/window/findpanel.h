// SPDX-License-Identifier: MIT
#pragma once

#include "explorer/sensor/sensorlistmodel.h"
#include "explorer/sensor/sensorsearch.h"

#include <QWidget>

#include <optional>

class QComboBox;
class QLabel;
class QLineEdit;
class QListView;
class QMenu;
class QProgressBar;
class QPushButton;
class QSettings;
class QToolButton;

namespace Explorer {

/// Searches for sensors, lists them and opens them, also by their address.
class FindPanel : public QWidget
{
    Q_OBJECT
public:
    explicit FindPanel(QWidget *parent = nullptr);

    SensorListModel &sensors() { return m_sensors; }
    SensorSearch &search() { return m_search; }

    /// Saves and restores what was found and what was chosen.
    void save(QSettings &settings) const;
    void restore(QSettings &settings);

public Q_SLOTS:
    /// Begins a search with the chosen scope, or ends the one that is running.
    void toggleSearch();
    /// Lets the user type an address.
    void focusAddress();

Q_SIGNALS:
    /// The user wants to open a sensor. A running search has ended: it would occupy the interfaces.
    void openRequested(const SondixQt::SensorAddress &address, const QString &title);
    void problemOccurred(const QString &text);

private:
    QWidget *makeScope();
    void makeListHint();
    QWidget *makeAddressField();
    void makeMenu();
    void connectSearch();
    void fillModels();
    SearchScope scope() const;
    void showInterfaces();
    void open(const SondixQt::SensorAddress &address, const QString &title);
    void openAt(const QModelIndex &index);
    void openTyped();
    void checkTyped();
    void showState(const QString &text);

    SensorListModel m_sensors;
    SensorSearch m_search;
    QPushButton *m_searchButton;
    QToolButton *m_interfaces;
    QMenu *m_interfaceMenu;
    QComboBox *m_groups;
    QComboBox *m_models;
    QProgressBar *m_progress;
    QLabel *m_state;
    QListView *m_list;
    QLineEdit *m_address;
    QPushButton *m_openButton;
    QLabel *m_addressProblem;
    QString m_problem; // of the present search
    struct Opening
    {
        SondixQt::SensorAddress address;
        QString title;
    };
    std::optional<Opening> m_afterSearch;
};

} // namespace Explorer
