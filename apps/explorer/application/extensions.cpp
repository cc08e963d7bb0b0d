// SPDX-License-Identifier: MIT
#include "extensions.h"

#include "explorer/extras/benchmenu.h"
#include "explorer/extras/recordingwidget.h"
#include "explorer/extras/videoview.h"
#include "explorer/extras/webtunnel.h"
#include "explorer/plot/drawnicon.h"
#include "explorer/window/logpanel.h"
#include "explorer/window/mainwindow.h"
#include "explorer/window/sessionview.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QToolButton>

using namespace SondixQt;

namespace Explorer {

Extensions::Extensions(MainWindow &window)
    : QObject(&window)
    , m_window(window)
    , m_bench(new BenchControl(this))
{
    addToSensorMenu();
    if (m_bench->isAvailable())
        addBenchMenu();
    connect(&window, &MainWindow::viewAdded, this, &Extensions::extend);
    connect(&window, &MainWindow::currentViewChanged, this, &Extensions::update);
    update();
}

QAction *Extensions::addAction(const QString &text, const QKeySequence &shortcut, const char *name)
{
    QAction *const action = m_window.sensorMenu()->addAction(text);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(shortcut);
    return action;
}

void Extensions::addToSensorMenu()
{
    m_window.sensorMenu()->addSeparator();
    m_record = addAction(tr("Rec&ord"), Qt::Key_F9, "menuRecordAction");
    m_record->setCheckable(true);
    m_recordTo = addAction(tr("Record &to ..."), Qt::SHIFT + Qt::Key_F9, "menuRecordToAction");
    m_video = addAction(tr("&Video line"), Qt::Key_F8, "menuVideoAction");
    m_web = addAction(tr("Web &interface"), Qt::Key_F7, "menuWebAction");
    m_web->setCheckable(true);
    m_video->setIcon(drawnIcon(Drawing::Video));
    m_web->setIcon(drawnIcon(Drawing::Web));
    connect(m_record, &QAction::triggered, this, [this] {
        if (const auto recording = current().recording)
            recording->recordAction()->trigger();
        update();
    });
    connect(m_recordTo, &QAction::triggered, this, [this] {
        if (const auto recording = current().recording)
            recording->recordToAction()->trigger();
    });
    connect(m_video, &QAction::triggered, this, &Extensions::showVideo);
    connect(m_web, &QAction::triggered, this, [this] {
        if (const auto web = current().web)
            web->action()->trigger();
        update();
    });
}

void Extensions::addBenchMenu()
{
    auto *menu = new BenchMenu(*m_bench, &m_window);
    m_window.menuBar()->insertMenu(m_window.helpMenu()->menuAction(), menu);
    connect(menu, &BenchMenu::happened, this,
            [this](const QString &text, bool isProblem) { log(tr("Bench"), text, isProblem); });
}

void Extensions::extend(SessionView *view)
{
    SensorSession *const session = view->session();
    if (!session)
        return;
    auto *recording = new RecordingWidget(*session);
    view->addStatusWidget(recording);
    connect(recording, &RecordingWidget::happened, this,
            [this, session](const QString &text, bool isProblem) { log(session->title(), text, isProblem); });
    connect(&recording->control(), &RecordingControl::changed, this, &Extensions::update);
    view->addEnding([recording] { recording->stop(); },
                    [recording] { return recording->control().isRecording(); });
    m_parts[view].recording = recording;
    if (WebTunnel::isOffered(session->address()))
        addWebTunnel(view);
    connect(view, &QObject::destroyed, this, [this, view] { m_parts.remove(view); });
    update();
}

void Extensions::addWebTunnel(SessionView *view)
{
    SensorSession *const session = view->session();
    auto *web = new WebTunnel(*session, view);
    auto *line = new QWidget;
    auto *text = new QLabel;
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto *again = new QToolButton;
    again->setText(tr("Show"));
    again->setToolTip(tr("Show the page in the browser once more"));
    auto *end = new QToolButton;
    end->setText(tr("Go on reading"));
    auto *layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget *widget : std::initializer_list<QWidget *>{text, again, end})
        layout->addWidget(widget);
    line->hide();
    view->addStatusWidget(line);
    connect(again, &QToolButton::clicked, web, &WebTunnel::showBrowser);
    connect(end, &QToolButton::clicked, web, &WebTunnel::close);
    connect(web, &WebTunnel::changed, this, [this, web, line, text, again, end] {
        text->setText(web->stateText());
        again->setEnabled(web->state() == WebTunnel::Open);
        end->setEnabled(web->state() == WebTunnel::Open);
        line->setVisible(web->state() != WebTunnel::Closed);
        update();
    });
    connect(web, &WebTunnel::happened, this, [this, session](const QString &happened, bool isProblem) {
        log(session->title(), happened, isProblem);
    });
    connect(web, &WebTunnel::moved, this, [this, view](const SensorAddress &address) {
        if (!m_window.views().contains(view))
            return; // the user has closed the page
        m_window.closePage(view);
        m_window.openSensor(address);
    });
    view->addEnding([web] { web->close(); }, [web] { return web->state() != WebTunnel::Closed; });
    m_parts[view].web = web;
}

void Extensions::showVideo()
{
    SessionView *const view = m_window.currentView();
    if (!view || !view->session())
        return;
    Parts &parts = m_parts[view];
    if (!parts.video) {
        parts.video = new VideoView(view->session()->reader());
        connect(parts.video, &VideoView::settingsChanged, view->parameters(), &ParameterModel::refresh);
        view->addView(tr("Video line"), parts.video);
    }
    view->showView(parts.video);
}

Extensions::Parts Extensions::current() const
{
    return m_parts.value(m_window.currentView());
}

RecordingWidget *Extensions::recording(SessionView *view) const
{
    return m_parts.value(view).recording;
}

VideoView *Extensions::video(SessionView *view) const
{
    return m_parts.value(view).video;
}

WebTunnel *Extensions::web(SessionView *view) const
{
    return m_parts.value(view).web;
}

void Extensions::update()
{
    const Parts parts = current();
    m_record->setEnabled(parts.recording);
    m_record->setChecked(parts.recording && parts.recording->recordAction()->isChecked());
    m_recordTo->setEnabled(parts.recording && !m_record->isChecked());
    m_video->setEnabled(m_window.currentSession() != nullptr);
    m_web->setEnabled(parts.web && parts.web->action()->isEnabled());
    m_web->setChecked(parts.web && parts.web->action()->isChecked());
}

void Extensions::log(const QString &source, const QString &text, bool isProblem)
{
    if (isProblem)
        m_window.reportProblem(source, text);
    else
        m_window.logPanel()->model().add(LogModel::Event, source, text);
}

} // namespace Explorer
