// SPDX-License-Identifier: MIT
#pragma once

#include "explorer/sensor/parametermodel.h"
#include "explorer/sensor/sensorsession.h"

#include <QTimer>
#include <QVector>
#include <QWidget>

#include <functional>

class QLabel;
class QPushButton;
class QSettings;
class QSplitter;
class QTabWidget;
class QToolButton;

namespace Explorer {

class NumbersView;
class PlotView;

/// The page of an open sensor, or of values without a sensor: numbers, plot, further views, and a line with what can be
/// done and what has happened.
class SessionView : public QWidget
{
    Q_OBJECT
public:
    /// Owns \a session.
    explicit SessionView(SensorSession *session, QWidget *parent = nullptr);
    /// The values of a file, which are in \a history; it must outlive the view.
    SessionView(SignalHistory *history, const QString &title, QWidget *parent = nullptr);
    ~SessionView() override;

    /// Null for values without a sensor.
    SensorSession *session() const { return m_session; }
    ParameterModel *parameters() const { return m_parameters; }
    PlotView *plot() const { return m_plot; }
    NumbersView *numbers() const { return m_numbers; }
    QString title() const;

    /// Adds a view beside the plot, such as the video line. The page owns it.
    void addView(const QString &title, QWidget *view);
    /// Brings such a view to the front.
    void showView(QWidget *view);
    /// Adds a widget to the line below the plot. The page owns it.
    void addStatusWidget(QWidget *widget);
    /// Adds a part that needs time to end, such as a recording. When the page was closed and nothing more arrives, \a begin
    /// is called, and again as long as \a isBusy returns true; the page is destroyed when no part is busy any more.
    void addEnding(const std::function<void()> &begin, const std::function<bool()> &isBusy);
    /// Ends what was added by addEnding(). ended() follows. False, and nothing happens, if it was called before.
    bool end();
    void setNumbersVisible(bool visible);
    /// Shows a banner that says whether the values are simulated.
    void setSimulated(bool simulated);
    /// Shows \a text in the line below the plot.
    void setStatus(const QString &text);

    void save(QSettings &settings) const;
    void restore(QSettings &settings);

Q_SIGNALS:
    void ended();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Ending
    {
        std::function<void()> begin;
        std::function<bool()> isBusy;
    };

    void build();
    QLabel *makeBanner();
    QWidget *makeStatusLine();
    void addPlotButtons(QLayout &layout);
    void connectSession();
    void showState();
    void showFrame();
    void showCounts();

    SensorSession *m_session = nullptr;
    SignalHistory *m_history;
    ParameterModel *m_parameters = nullptr;
    QString m_title;
    QLabel *m_simulated;
    QWidget *m_problem;
    QLabel *m_problemText;
    QPushButton *m_reopen;
    NumbersView *m_numbers = nullptr;
    PlotView *m_plot;
    QTabWidget *m_views;
    QSplitter *m_splitter;
    QLabel *m_state;
    QLabel *m_counts;
    QWidget *m_extensions = nullptr; // of the line below the plot
    QVector<QToolButton *> m_plotButtons;
    int m_widthOfTexts = 0; // of these buttons with their texts
    QVector<Ending> m_endings;
    bool m_isEnding = false;
    QTimer m_timer;
};

} // namespace Explorer
