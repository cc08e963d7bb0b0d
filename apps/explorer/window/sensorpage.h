// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QVariant>
#include <QVector>
#include <QWidget>

class QComboBox;
class QFormLayout;
class QLabel;
class QPushButton;
class QTableWidget;

namespace Explorer {

class SensorSession;

/// What is known about a sensor: picture, identity, connection, state and the signals of its frames.
class SensorPage : public QWidget
{
    Q_OBJECT
public:
    explicit SensorPage(QWidget *parent = nullptr);

    /// Shows \a session; null: nothing.
    void setSession(SensorSession *session);

    /// For how long values are kept, as the user has chosen it last: 10 minutes at first.
    static double chosenKeepSeconds();

private:
    QWidget *makeKeptField();
    void keepFor(double seconds);
    void showKept();
    void showState();
    void showIdentity();
    void showFrame();

    /// The identity that is shown.
    struct Shown
    {
        const SensorSession *session = nullptr;
        QString title;
        QVector<QMap<QString, QVariant>> sensors;
    };

    SensorSession *m_session = nullptr;
    Shown m_shown;
    QLabel *m_picture;
    QLabel *m_title;
    QLabel *m_state;
    QLabel *m_problem;
    QPushButton *m_reopen;
    QFormLayout *m_identityLayout;
    QTableWidget *m_signals;
    QLabel *m_rate;
    QComboBox *m_keep;
    QLabel *m_memory;
    QLabel *m_empty;
    QWidget *m_content;
};

} // namespace Explorer
