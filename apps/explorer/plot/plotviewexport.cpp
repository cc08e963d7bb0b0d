// SPDX-License-Identifier: MIT
// The export of a PlotView.
#include "exportbar.h"
#include "frameexport.h"
#include "plotpicture.h"
#include "plotview.h"
#include "timeplot.h"

#include <QAction>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMenu>
#include <QTimer>

namespace Explorer {

namespace {

// Between two looks at the events, in ms and in frames.
constexpr int sliceTime = 20;
constexpr int sliceFrames = 4096;

std::optional<SondixApp::RecordFormat> recordFormatOf(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("csv"))
        return SondixApp::RecordFormat::Csv;
    if (suffix == QLatin1String("npy"))
        return SondixApp::RecordFormat::Npy;
    if (suffix == QLatin1String("jsonl"))
        return SondixApp::RecordFormat::JsonLines;
    return std::nullopt;
}

} // namespace

void PlotView::makeExportAction()
{
    QAction *action =
        addPlotAction("exportAction", tr("Export"), tr("Save the visible range as a table or a picture"), false);
    auto *menu = new QMenu(this);
    const auto addChoice = [this, menu](const char *name, const QString &text, ExportRange range) {
        QAction *choice = menu->addAction(text);
        choice->setObjectName(QLatin1String(name));
        connect(choice, &QAction::triggered, this, [this, range] { chooseExport(range); });
    };
    addChoice("exportVisibleAction", tr("Visible range..."), ExportRange::Visible);
    addChoice("exportEverythingAction", tr("Everything that is kept..."), ExportRange::Everything);
    action->setMenu(menu);
    connect(action, &QAction::triggered, this, [this] { chooseExport(ExportRange::Visible); });
    m_exportTimer = new QTimer(this);
    connect(m_exportTimer, &QTimer::timeout, this, &PlotView::continueExport);
    connect(m_exportBar, &ExportBar::cancelled, this, [this] { endExport(tr("The export was cancelled.")); });
}

void PlotView::setRecordHead(const SondixApp::RecordHead &head)
{
    *m_recordHead = head;
}

void PlotView::chooseExport(ExportRange range)
{
    auto *dialog = new QFileDialog(this, tr("Export"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    QStringList filters{tr("Table (*.csv)"), tr("NumPy array (*.npy)"), tr("Table in JSON lines (*.jsonl)")};
    for (const QString &suffix : PlotPicture::suffixes())
        filters << tr("Picture (*.%1)").arg(suffix);
    dialog->setNameFilters(filters);
    const auto useSuffix = [dialog](const QString &filter) {
        dialog->setDefaultSuffix(filter.mid(filter.lastIndexOf(QLatin1Char('.')) + 1).remove(QLatin1Char(')')));
    };
    connect(dialog, &QFileDialog::filterSelected, dialog, useSuffix);
    useSuffix(filters.first());
    connect(dialog, &QFileDialog::fileSelected, this,
            [this, range](const QString &path) { startExport(path, range); });
    dialog->open();
}

FrameRange PlotView::exportRange(ExportRange range) const
{
    if (range == ExportRange::Visible)
        return m_plot->shownFrames();
    return m_history ? FrameRange{m_history->firstFrame(), m_history->endFrame()} : FrameRange();
}

std::unique_ptr<FrameExport> PlotView::makeExport(const QString &path, ExportRange range, QString *problem)
{
    const auto format = recordFormatOf(path);
    const FrameRange frames = exportRange(range);
    if (!format || !m_history || frames.isEmpty()) {
        *problem = format ? tr("there are no values to export")
                          : tr("'%1' has none of the endings csv, npy, jsonl, %2")
                                .arg(path, PlotPicture::suffixes().join(QLatin1String(", ")));
        return nullptr;
    }
    FrameExport::Plan plan;
    plan.path = path;
    plan.format = *format;
    plan.range = frames;
    plan.errorText = m_errorText;
    plan.clockOffset = m_shownOffset;
    plan.head = *m_recordHead;
    return std::make_unique<FrameExport>(*m_history, plan);
}

bool PlotView::exportPicture(const QString &path, ExportRange range, QString *problem)
{
    if (exportRange(range).isEmpty()) {
        *problem = tr("there are no values to export");
        return false;
    }
    const TimeWindow before = window();
    if (range == ExportRange::Everything)
        m_plot->setWindow(limits());
    constexpr int columnsPerPixel = 2;
    m_plot->load(m_plot->canvas()->width() * columnsPerPixel);
    const bool isSaved = PlotPicture::save(*m_plot, path, problem);
    m_plot->setWindow(before);
    m_plot->load();
    return isSaved;
}

bool PlotView::exportTo(const QString &path, ExportRange range, QString *problem)
{
    QString reason;
    bool isDone = false;
    if (PlotPicture::suffixes().contains(QFileInfo(path).suffix().toLower())) {
        isDone = exportPicture(path, range, &reason);
    } else if (const auto job = makeExport(path, range, &reason)) {
        while (job->step(sliceFrames)) {
        }
        isDone = job->isComplete();
        reason = job->problem();
    }
    if (problem)
        *problem = reason;
    return isDone;
}

void PlotView::startExport(const QString &path, ExportRange range)
{
    QString problem;
    if (m_export)
        endExport(QString());
    m_exportPath = path;
    if (PlotPicture::suffixes().contains(QFileInfo(path).suffix().toLower())) {
        exportPicture(path, range, &problem);
        endExport(problem);
        return;
    }
    m_export = makeExport(path, range, &problem);
    if (!m_export) {
        endExport(problem);
        return;
    }
    m_exportTimer->start(0);
    continueExport();
}

void PlotView::continueExport()
{
    QElapsedTimer timer;
    timer.start();
    bool goesOn = true;
    while (goesOn && timer.elapsed() < sliceTime)
        goesOn = m_export->step(sliceFrames);
    if (goesOn)
        m_exportBar->showProgress(tr("Exporting to %1").arg(m_exportPath), m_export->progress());
    else
        endExport(m_export->problem());
}

void PlotView::endExport(const QString &problem)
{
    m_exportTimer->stop();
    QString text = problem;
    if (problem.isEmpty()) {
        text = tr("Exported to %1").arg(m_exportPath);
        if (m_export && m_export->droppedFrames() > 0)
            text += QStringLiteral(". ") + tr("%1 of the oldest frames had been dropped before they were written.")
                                               .arg(QLocale().toString(m_export->droppedFrames()));
    }
    m_export.reset();
    m_exportBar->showResult(text);
    Q_EMIT exportFinished(m_exportPath, problem);
}

} // namespace Explorer
