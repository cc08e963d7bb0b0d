// SPDX-License-Identifier: MIT
#pragma once

#include "videoline.h"

#include <QPointer>
#include <QTimer>
#include <QVector>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

class QAction;
class QCheckBox;
class QLabel;
class QwtPlotCurve;
class QwtPlotGrid;
class QwtPlotMarker;
class QwtPlotZoneItem;

namespace Explorer {

class BasePlot;

/// The video line of a sensor, live: what its receiving element sees, pixel by pixel, with threshold and region of
/// interest of the models that report them.
///
/// The sensor is accessed by its reader. Lines are fetched while the view is visible, up to 20 times a second; nothing is
/// switched in the sensor unless the user does it. Threads: that of the window.
class VideoView : public QWidget
{
    Q_OBJECT
public:
    explicit VideoView(SondixQt::SensorReader &reader, QWidget *parent = nullptr);
    ~VideoView() override;

    /// Fetches lines while it is checked.
    QAction *liveAction() const { return m_live; }
    const VideoState &state() const { return m_state; }
    /// The lines that are shown, one per enabled signal.
    QVector<QVector<int>> lines() const { return m_lines; }
    /// How many times lines were fetched.
    int fetched() const { return m_fetched; }
    /// What is wrong or missing, for users.
    QString message() const;
    /// The minimum height: in a scroll area the view becomes no higher than its part of the window without need.
    int heightForWidth(int width) const override;
    BasePlot *plot() const { return m_plot; }

Q_SIGNALS:
    /// The user has switched the video mode or a signal here: these are settings of the sensor.
    void settingsChanged();

protected:
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    using Step = std::function<SondixQt::CommandResult(SondixQt::SensorInstance &, VideoState &)>;

    void run(const Step &step);
    void change(const Step &step);
    void takeState(const SondixQt::CommandResult &result, const VideoState &state);
    void tick();
    void takeLines(const SondixQt::CommandResult &result, const QVector<QVector<int>> &lines);
    void showState();
    void showMarks();
    void showMessage(const QString &text);
    void setColours();

    QPointer<SondixQt::SensorReader> m_reader;
    VideoState m_state;
    QVector<QVector<int>> m_lines;
    bool m_isKnown = false;  // m_state was read
    bool m_isChange = false; // the user has switched something
    bool m_isBusy = false;
    int m_fetched = 0;
    QTimer m_timer;
    QAction *m_live;
    QCheckBox *m_mode;
    QWidget *m_bar;
    QLabel *m_message;
    QVector<QCheckBox *> m_signals;
    BasePlot *m_plot;
    std::unique_ptr<QwtPlotGrid> m_grid;
    std::unique_ptr<QwtPlotMarker> m_threshold;
    std::unique_ptr<QwtPlotZoneItem> m_region;
    std::vector<std::unique_ptr<QwtPlotCurve>> m_curves;
};

} // namespace Explorer
