// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>

class QAction;

namespace Explorer {

class BenchControl;
class MainWindow;
class RecordingWidget;
class SessionView;
class VideoView;
class WebTunnel;

/// Adds recording, video, web interface and the menu of the bench to a window.
class Extensions : public QObject
{
    Q_OBJECT
public:
    /// \a window owns the object.
    explicit Extensions(MainWindow &window);

    /// What belongs to the page \a view; null if the page does not have it.
    RecordingWidget *recording(SessionView *view) const;
    VideoView *video(SessionView *view) const;
    WebTunnel *web(SessionView *view) const;

private:
    struct Parts
    {
        QPointer<RecordingWidget> recording;
        QPointer<VideoView> video;
        QPointer<WebTunnel> web;
    };

    QAction *addAction(const QString &text, const QKeySequence &shortcut, const char *name);
    void addToSensorMenu();
    void addBenchMenu();
    void extend(SessionView *view);
    void addWebTunnel(SessionView *view);
    void showVideo();
    void update();
    void log(const QString &source, const QString &text, bool isProblem);
    Parts current() const;

    MainWindow &m_window;
    BenchControl *m_bench;
    QAction *m_record = nullptr;
    QAction *m_recordTo = nullptr;
    QAction *m_video = nullptr;
    QAction *m_web = nullptr;
    QHash<SessionView *, Parts> m_parts;
};

} // namespace Explorer
