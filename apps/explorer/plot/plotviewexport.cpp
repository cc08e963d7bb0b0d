// SPDX-License-Identifier: MIT
// The export of a PlotView.
#include "exportbar.h"
#include "frameexport.h"
#include "plotpicture.h"
#include "plotview.h"
#include "timeplot.h"

#include "explorer/sensor/diskthread.h"
#include "explorer/sensor/filenames.h"

#include <QAction>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMenu>
#include <QSettings>

#include <algorithm>
#include <utility>

namespace Explorer {

namespace {

// Between two looks at the events, in ms and in frames.
constexpr int sliceTime = 20;
constexpr int sliceFrames = 4096;
// Slices that the disk gets at once.
constexpr std::size_t maxSlices = 16;

const QLatin1String exportFolderKey("export/folder");
const QLatin1String exportSuffixKey("export/suffix");

// Of a filter such as "Table (*.csv)".
QString suffixOf(const QString &filter)
{
    return filter.mid(filter.lastIndexOf(QLatin1Char('.')) + 1).remove(QLatin1Char(')'));
}

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
    connect(m_exportBar, &ExportBar::cancelled, this, &PlotView::cancelExport);
}

void PlotView::setRecordHead(std::function<SondixApp::RecordHead()> head)
{
    m_recordHead = std::move(head);
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
    const auto useFilter = [dialog](const QString &filter) { dialog->setDefaultSuffix(suffixOf(filter)); };
    connect(dialog, &QFileDialog::filterSelected, dialog, useFilter);
    const QSettings settings;
    const QString suffix = settings.value(exportSuffixKey).toString();
    const auto last = std::find_if(filters.cbegin(), filters.cend(),
                                   [&suffix](const QString &filter) { return suffixOf(filter) == suffix; });
    const QString filter = last != filters.cend() ? *last : filters.first();
    dialog->selectNameFilter(filter);
    useFilter(filter);
    if (const QString folder = settings.value(exportFolderKey).toString(); !folder.isEmpty())
        dialog->setDirectory(folder);
    if (m_exportName)
        dialog->selectFile(fileNameOf(m_exportName()) + QLatin1Char('.') + suffixOf(filter));
    connect(dialog, &QFileDialog::fileSelected, this, [this, range](const QString &path) {
        QSettings chosen;
        chosen.setValue(exportFolderKey, QFileInfo(path).absolutePath());
        chosen.setValue(exportSuffixKey, QFileInfo(path).suffix().toLower());
        startExport(path, range);
    });
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
    if (m_recordHead)
        plan.head = m_recordHead();
    return std::make_unique<FrameExport>(*m_history, plan);
}

QByteArray PlotView::pictureOf(const QString &path, ExportRange range, QString *problem)
{
    if (exportRange(range).isEmpty()) {
        *problem = tr("there are no values to export");
        return {};
    }
    const TimeWindow before = window();
    if (range == ExportRange::Everything)
        m_plot->setWindow(limits());
    constexpr int columnsPerPixel = 2;
    m_plot->load(m_plot->canvas()->width() * columnsPerPixel);
    QByteArray content = PlotPicture::draw(*m_plot, path);
    m_plot->setWindow(before);
    m_plot->load();
    return content;
}

bool PlotView::exportTo(const QString &path, ExportRange range, QString *problem)
{
    QString reason;
    bool isDone = false;
    if (PlotPicture::suffixes().contains(QFileInfo(path).suffix().toLower())) {
        const QByteArray content = pictureOf(path, range, &reason);
        if (reason.isEmpty())
            reason = PlotPicture::write(path, content);
        isDone = reason.isEmpty();
    } else if (const auto job = makeExport(path, range, &reason)) {
        while (job->step(sliceFrames)) {
        }
        isDone = job->file()->isComplete();
        reason = job->problem();
    }
    if (problem)
        *problem = reason;
    return isDone;
}

void PlotView::startExport(const QString &path, ExportRange range)
{
    QString problem;
    abandonExport(tr("The export was cancelled."));
    m_exportPath = path;
    if (PlotPicture::suffixes().contains(QFileInfo(path).suffix().toLower())) {
        startPicture(path, range);
        return;
    }
    m_export = makeExport(path, range, &problem);
    if (m_export)
        continueExport();
    else
        endExport(problem);
}

void PlotView::startPicture(const QString &path, ExportRange range)
{
    QString refusal;
    const QByteArray content = pictureOf(path, range, &refusal);
    if (!refusal.isEmpty()) {
        endExport(refusal);
        return;
    }
    ++m_pictures;
    const auto problem = std::make_shared<QString>();
    m_disk->run(
        DiskThread::Writing, [path, content, problem] { *problem = PlotPicture::write(path, content); },
        [this, path, problem] {
            --m_pictures;
            endAbandonedExport(path, *problem);
        });
}

// One piece at a time is on its way to the disk, so that a slow one does not fill the memory.
void PlotView::continueExport()
{
    m_exportBar->showProgress(tr("Exporting to %1").arg(m_exportPath), m_export->progress());
    QElapsedTimer timer;
    timer.start();
    std::vector<FramePiece> pieces;
    do {
        std::optional<FramePiece> piece = m_export->take(sliceFrames);
        if (!piece)
            break;
        pieces.push_back(std::move(*piece));
    } while (!pieces.back().isLast && pieces.size() < maxSlices && timer.elapsed() < sliceTime);
    if (!m_export->problem().isEmpty()) {
        // Reported when the file is gone.
        m_disk->run(
            DiskThread::Writing, [file = m_export->file()] { file->discard(); },
            [this, file = m_export->file()] {
                if (m_export && m_export->file() == file)
                    endExport(m_export->problem());
            });
        return;
    }
    m_disk->run(
        DiskThread::Writing,
        [file = m_export->file(), pieces] {
            for (const FramePiece &piece : pieces)
                if (!file->write(piece))
                    break;
        },
        [this, file = m_export->file(), path = m_exportPath] { pieceWritten(file, path); });
}

void PlotView::pieceWritten(const std::shared_ptr<FrameFile> &file, const QString &path)
{
    const bool hasEnded = file->isComplete() || !file->problem().isEmpty();
    if (m_export && m_export->file() == file) {
        if (hasEnded)
            endExport(file->problem());
        else
            continueExport();
    } else if (hasEnded && !file->isCancelled()) {
        endAbandonedExport(path, file->problem());
    }
}

// The end of what is no longer the present export.
void PlotView::endAbandonedExport(const QString &path, const QString &problem)
{
    if (m_export) { // The bar shows another one.
        Q_EMIT exportFinished(path, problem);
        return;
    }
    m_exportPath = path;
    endExport(problem);
}

// If the disk hangs, the file is removed when the disk responds again.
bool PlotView::cancelFile()
{
    if (!m_export || !m_export->file()->cancel())
        return false;
    m_disk->run(DiskThread::Writing, [file = m_export->file()] { file->discard(); });
    return true;
}

// A file that is being completed will be there in a moment.
void PlotView::cancelExport()
{
    if (cancelFile())
        endExport(tr("The export was cancelled."));
}

// Makes way for other values or another export. A file that is being completed is reported when it is complete.
void PlotView::abandonExport(const QString &problem)
{
    if (cancelFile())
        endExport(problem);
    m_export.reset();
}

void PlotView::endExport(const QString &problem)
{
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
