// SPDX-License-Identifier: MIT
#pragma once

#include "timewindow.h"

#include <shared/recordhead.h>

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QAction;
class QLabel;
class QSettings;
class QSplitter;
class QTimer;

namespace Explorer {

class CurvesPlot;
class ExportBar;
class DiskThread;
class FrameExport;
class FrameFile;
class PlotCrosshair;
class PlotCursors;
class PlotNavigator;
class SignalHistory;
class SignalLegend;
class StatisticsPanel;
class TimePlot;
struct FrameRange;

/// What a sensor has measured, over the time: curves, statistics, histogram and spectrum.
///
/// The view draws what is new by itself, up to 30 times a second while it is visible. It follows the newest values until
/// another part is chosen with the mouse (see PlotNavigator) or with the keys:
///
/// | Key | What it does |
/// |---|---|
/// | + and - | zoom the time |
/// | Left, Right | move the window |
/// | Up, Down | move the values; with Ctrl zoom them |
/// | Home, End | to the first values; to the newest ones, which are followed |
/// | 0 | show everything |
/// | Space | pause, or go on |
/// | Ctrl+Left, Ctrl+Right | move the active cursor; Tab chooses the other one while the plot has the focus |
class PlotView : public QWidget
{
    Q_OBJECT
public:
    /// How the window on the time axis changes when values arrive.
    enum Mode {
        Follow,     ///< it moves with the newest values
        Everything, ///< it grows with them
        Fixed,      ///< it stays
    };
    enum class ExportRange { Visible, Everything };

    explicit PlotView(QWidget *parent = nullptr);
    ~PlotView() override;

    /// The history to show; null: none. It must outlive the view, or another one must be set before.
    void setHistory(SignalHistory *history);
    /// Returns the text of a value that is an error value.
    void setErrorText(std::function<QString(double)> text);
    /// Sets the time since 1970-01-01 00:00 UTC of the position 0 on the time axis, in seconds. Empty: the time from the
    /// blocks is used, see TimeLine::wallClockOffset().
    void setWallClockOffset(std::optional<double> seconds);

    /// Draws what the history has now, unless the view is paused: then what it had.
    void refresh();

    Mode mode() const { return m_mode; }
    bool isPaused() const;
    /// The part of the time axis that is shown.
    TimeWindow window() const;
    /// Shows a part of the time axis, which no longer follows.
    void setWindow(const TimeWindow &window);
    /// The seconds that are shown while the newest values are followed; frames on an axis in frames.
    void setSpan(double span);
    void showEverything();

    /// Saves and restores which panels are shown, and whether times are the time of day. What was not saved stays.
    void savePanels(QSettings &settings) const;
    void restorePanels(const QSettings &settings);
    /// The same with the time that is shown and the signals that the user has shown or hidden.
    void saveView(QSettings &settings) const;
    void restoreView(const QSettings &settings);

    /// What is written into the head of exported files about the sensor.
    /// \a head is asked when an export begins; program and start are set by the export.
    void setRecordHead(std::function<SondixApp::RecordHead()> head);
    /// The name that is proposed for exported files, without a suffix; \a name is asked when a file is chosen.
    void setExportName(std::function<QString()> name) { m_exportName = std::move(name); }
    /// Writes the frames of \a range as a table, or the plot as a picture. The format follows from the suffix of \a path:
    /// csv, npy or jsonl as <tt>sondixqt record</tt> writes them, see FrameExport; png, pdf or svg, see PlotPicture.
    /// Returns when the file is complete. False and the reason in \a problem otherwise; then there is no new file.
    bool exportTo(const QString &path, ExportRange range, QString *problem = nullptr);
    /// The same while the event loop runs, with a progress bar; exportFinished() reports the end. An export that is
    /// still running is cancelled. A thread of its own writes the file.
    void startExport(const QString &path, ExportRange range);
    /// Whether an export of startExport() has not ended yet.
    bool isExporting() const { return m_export || m_pictures > 0; }
    /// The file of the last startExport().
    QString exportPath() const { return m_exportPath; }

    /// All actions, in the order in which a tool bar should have them.
    QList<QAction *> plotActions() const { return m_actions; }
    QAction *plotAction(const QString &name) const;
    TimePlot &plot() const { return *m_plot; }
    PlotCursors &cursors() const { return *m_cursors; }
    SignalLegend &legend() const { return *m_legend; }
    StatisticsPanel &statistics() const { return *m_statistics; }
    CurvesPlot &histogramPlot() const { return *m_histogram; }
    CurvesPlot &spectrumPlot() const { return *m_spectrum; }

    /// The minimum height: in a scroll area the view becomes no higher than its part of the window without need.
    int heightForWidth(int width) const override;

Q_SIGNALS:
    void modeChanged();
    /// An export of startExport() has ended; \a problem is empty if the file is complete.
    void exportFinished(const QString &path, const QString &problem);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    static constexpr double zoomFactor = 0.5;

    void arrange();
    void arrangePanels();
    void makeActions();
    void makeExportAction();
    void chooseExport(ExportRange range);
    FrameRange exportRange(ExportRange range) const;
    std::unique_ptr<FrameExport> makeExport(const QString &path, ExportRange range, QString *problem);
    QByteArray pictureOf(const QString &path, ExportRange range, QString *problem);
    void continueExport();
    void pieceWritten(const std::shared_ptr<FrameFile> &file, const QString &path);
    bool cancelFile();
    void cancelExport();
    void abandonExport(const QString &problem);
    void endAbandonedExport(const QString &path, const QString &problem);
    void startPicture(const QString &path, ExportRange range);
    void endExport(const QString &problem);
    QAction *addPlotAction(const char *name, const QString &text, const QString &toolTip, bool isCheckable);
    void connectNavigator();
    void tick();
    void setMode(Mode mode);
    void showChosenSignals();
    void updateWindow();
    void updateClock();
    void updateHint();
    void updatePanels();
    void updateStatistics();
    QVector<int> offerShownSignals(CurvesPlot &plot) const;
    void updateHistogram();
    void updateSpectrum();
    void redraw();
    TimeWindow limits() const;
    double narrowest() const;
    double centre() const;
    void zoomTime(double position, double factor);
    void zoomValues(int pixel, double factor);
    void moveTime(double distance);
    void moveValues(double share);
    void select(const QRect &rect, bool isRectangle);
    void moveCursor(int cursor, double position);
    bool pressCursorKey(const QKeyEvent &event);

    SignalHistory *m_history = nullptr;
    std::optional<double> m_wallClockOffset;
    std::optional<double> m_shownOffset;
    Mode m_mode = Follow;
    std::optional<double> m_span;                              // empty: the one below, or from the rate
    std::optional<double> m_restoredSeconds, m_restoredFrames; // for an axis in seconds, and for one in frames
    QHash<QString, bool> m_chosenSignals;                      // by name: whether the user wants to see them
    qint64 m_revision = -1;
    QTimer *m_timer;
    QElapsedTimer m_sincePanels;
    bool m_arePanelsStale = false; // the plot shows newer values
    QList<QAction *> m_actions;

    TimePlot *m_plot;
    SignalLegend *m_legend;
    StatisticsPanel *m_statistics;
    CurvesPlot *m_histogram;
    CurvesPlot *m_spectrum;
    QSplitter *m_analysis;
    QLabel *m_cursorText;
    QLabel *m_hint;
    PlotCrosshair *m_crosshair;
    std::unique_ptr<PlotCursors> m_cursors;
    PlotNavigator *m_navigator;

    std::function<QString(double)> m_errorText;
    std::function<SondixApp::RecordHead()> m_recordHead;
    std::function<QString()> m_exportName;
    ExportBar *m_exportBar;
    std::unique_ptr<FrameExport> m_export;
    DiskThread *m_disk;
    int m_pictures = 0; // that are being written
    QString m_exportPath;
};

} // namespace Explorer
