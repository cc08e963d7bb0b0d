// SPDX-License-Identifier: MIT
#pragma once

#include "explorerwindow.h"
#include "recordingwatch.h"

#include <QElapsedTimer>
#include <QMutex>
#include <QPointer>
#include <QThread>

#include <atomic>
#include <random>
#include <thread>

class QFileDialog;

namespace Explorer {
class Extensions;
}

/// Does random things in the explorer, as fast as the event loop allows: keys, typed text, mouse, wheel, menus, sizes,
/// files, and faults on the bench. It goes on inside of menus and dialogs, and closes them again.
///
/// A watchdog ends the program with the last actions if the event loop stands still. All actions are printed if
/// SONDIXQT_MONKEY_TRACE is set.
class Monkey : public QObject
{
    Q_OBJECT
public:
    Monkey(quint64 seed, int events);
    ~Monkey() override;

    /// Returns after all events, when the window is closed and all recordings have been compared.
    void run();

    const RecordingWatch &recordings() const { return m_recordings; }
    int windows() const { return m_windows; } ///< how often the window was opened
    /// The longest time between two actions, on the clock and as processor time of the thread.
    double longestSeconds() const { return m_longestSeconds; }
    double longestProcessorSeconds() const { return m_longestProcessorSeconds; }
    /// What was done before the longest of those processor times.
    QString longestAction() const { return m_longestAction; }
    /// Files that were being written and have been left behind.
    QStringList unfinishedFiles() const;

private:
    void openWindow();
    void closeWindow();
    void recordToTheEnd();
    void step();
    void act();
    void scheduleStep(int delay = 0);
    void measure();
    void restartMeasuring();
    void watch();
    void note(const QString &action);
    void printProgress() const;
    void endLongRecordings();

    // Events
    void pressKey();
    void typeText();
    void clickMouse();
    void dragMouse();
    void turnWheel();
    void triggerAction();
    void changeSize();
    // What takes a person several events
    void openSomething();
    void dropFile();
    void toggleRecording();
    void sendCommand();
    void closeAPage();
    void leave();
    // The bench
    void pullOrPlug();
    void silence();
    void trigger();
    void injectFault();
    void repairBench();
    void atBench(const std::function<void()> &change);

    void endNesting();
    void answer(QFileDialog &dialog);
    /// The widget that a person can use now, with all in it: the open menu, the dialog, or the window.
    QWidget *usableWindow();
    QWidget *randomWidget();
    QPoint randomPoint(const QWidget &widget);
    int random(int below);
    bool chance(int percent) { return random(100) < percent; }
    template<typename List>
    auto oneOf(const List &list)
    {
        return list[static_cast<typename List::size_type>(random(static_cast<int>(list.size())))];
    }

    std::mt19937_64 m_random;
    const int m_events;
    const bool m_isTracing;
    int m_done = 0;
    int m_depth = 0; // of actions that have not returned, because they run an event loop
    int m_windows = 0;
    ExplorerWindow m_window;
    QPointer<Explorer::Extensions> m_extensions;
    RecordingWatch m_recordings;
    QStringList m_files; // that can be opened
    int m_fileNumber = 0;
    // Bench functions may block until a command of a sensor returns: they are called in a thread of their own.
    QThread m_benchThread;
    QObject *m_bench;

    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceStep;
    double m_processorSeconds = 0.0; // at the last step
    double m_longestSeconds = 0.0;
    double m_longestProcessorSeconds = 0.0;
    QString m_longestAction;

    QMutex m_lock; // for what the watchdog prints
    QStringList m_lastActions;
    std::atomic<int> m_heartbeat{0};
    std::atomic<bool> m_isEnding{false};
    std::thread m_watchdog;
};
