// SPDX-License-Identifier: MIT
#include "recordingwidget.h"

#include "explorer/sensor/diskthread.h"
#include "explorer/sensor/librarytexts.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QPainter>
#include <QSettings>
#include <QStandardPaths>
#include <QToolButton>

#include <memory>
#include <utility>

namespace Explorer {

namespace {

const QLatin1String folderKey("recording/folder");
const QLatin1String suffixKey("recording/suffix");

// The first of the folders that exists. Accesses the disk.
QString existingFolder(const QString &wanted)
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    for (const QString &folder : {wanted, documents})
        if (!folder.isEmpty() && QFileInfo(folder).isDir())
            return folder;
    return QDir::homePath();
}

QString chosenFolder()
{
    return QSettings().value(folderKey).toString();
}

QString recordingSuffix()
{
    const QString suffix = QSettings().value(suffixKey).toString();
    return RecordingControl::suffixes().contains(suffix) ? suffix : RecordingControl::suffixes().first();
}

/// The usual sign: a disc, red while recording.
QIcon recordIcon(const QPalette &palette)
{
    constexpr int size = 32;
    constexpr qreal margin = 6.0;
    QIcon icon;
    for (const QIcon::State state : {QIcon::Off, QIcon::On}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor red(214, 57, 44);
        painter.setPen(QPen(state == QIcon::On ? red : palette.color(QPalette::ButtonText), 2.0));
        painter.setBrush(state == QIcon::On ? QBrush(red) : QBrush(Qt::NoBrush));
        painter.drawEllipse(QRectF(margin, margin, size - 2 * margin, size - 2 * margin));
        icon.addPixmap(pixmap, QIcon::Normal, state);
    }
    return icon;
}

} // namespace

RecordingWidget::RecordingWidget(SensorSession &session, QWidget *parent)
    : QWidget(parent)
    , m_control(session)
    , m_record(new QAction(tr("Record"), this))
    , m_recordTo(new QAction(tr("Record to ..."), this))
    , m_text(new QLabel(this))
    , m_disk(new DiskThread(this))
{
    m_record->setObjectName(QStringLiteral("recordAction"));
    m_record->setCheckable(true);
    m_record->setToolTip(tr("Record the values of the sensor into a file"));
    m_recordTo->setObjectName(QStringLiteral("recordToAction"));
    auto *button = new QToolButton(this);
    button->setDefaultAction(m_record);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setPopupMode(QToolButton::MenuButtonPopup);
    button->setAutoRaise(true);
    auto *menu = new QMenu(button);
    menu->addAction(m_recordTo);
    button->setMenu(menu);
    m_record->setIcon(recordIcon(palette()));
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_text->setAccessibleName(tr("State of the recording"));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(button);
    layout->addWidget(m_text);
    m_timer.setInterval(500);
    connect(&m_timer, &QTimer::timeout, this, &RecordingWidget::show);
    connect(m_record, &QAction::triggered, this, &RecordingWidget::toggle);
    connect(m_recordTo, &QAction::triggered, this, &RecordingWidget::askForFile);
    connect(&m_control, &RecordingControl::changed, this, &RecordingWidget::show);
    connect(&m_control, &RecordingControl::ended, this, &RecordingWidget::takeEnd);
    show();
}

void RecordingWidget::stop()
{
    m_isWanted = false;
    m_control.stop();
    show();
}

void RecordingWidget::toggle(bool on)
{
    if (!on) {
        stop();
        return;
    }
    m_isWanted = true;
    const auto path = std::make_shared<QString>();
    m_disk->run(
        DiskThread::Reading,
        [path, folder = chosenFolder(), name = m_control.proposedName(), suffix = recordingSuffix()] {
            *path = RecordingControl::freePath(existingFolder(folder), name, suffix);
        },
        [this, path] {
            if (std::exchange(m_isWanted, false))
                start(*path);
        });
    show();
}

void RecordingWidget::askForFile()
{
    auto *dialog = new QFileDialog(this, tr("Record to"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilters({tr("CSV (*.csv)"), tr("NumPy array (*.npy)"), tr("JSON lines (*.jsonl)")});
    const QString suffix = recordingSuffix();
    dialog->selectNameFilter(dialog->nameFilters().value(RecordingControl::suffixes().indexOf(suffix)));
    dialog->setDefaultSuffix(suffix);
    connect(dialog, &QFileDialog::filterSelected, dialog, [dialog](const QString &filter) {
        dialog->setDefaultSuffix(RecordingControl::suffixes().value(dialog->nameFilters().indexOf(filter)));
    });
    dialog->selectFile(
        RecordingControl::freePath(existingFolder(chosenFolder()), m_control.proposedName(), suffix));
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString &path) {
        QSettings settings;
        settings.setValue(folderKey, QFileInfo(path).absolutePath());
        settings.setValue(suffixKey, QFileInfo(path).suffix().toLower());
        start(path);
    });
    dialog->open();
}

void RecordingWidget::start(const QString &path)
{
    QString problem;
    if (!m_control.start(path, &problem))
        takeEnd({}, problem);
    else
        Q_EMIT happened(tr("recording into %1").arg(QDir::toNativeSeparators(path)), false);
    show();
}

void RecordingWidget::show()
{
    const bool isRecording = m_control.isRecording();
    m_record->setChecked(isRecording || m_isWanted);
    m_recordTo->setEnabled(!isRecording && !m_isWanted);
    if (!isRecording) {
        m_timer.stop();
        m_text->setVisible(!m_text->text().isEmpty());
        return;
    }
    m_timer.start();
    const int seconds = static_cast<int>(m_control.seconds());
    constexpr int minute = 60;
    const QLatin1Char zero('0');
    QString text = QStringLiteral("%1:%2:%3  ")
                       .arg(seconds / (minute * minute), 2, 10, zero)
                       .arg(seconds / minute % minute, 2, 10, zero)
                       .arg(seconds % minute, 2, 10, zero) +
                   QLocale().formattedDataSize(m_control.bytes(), 1, QLocale::DataSizeSIFormat);
    if (!m_control.losses().isEmpty())
        text += QStringLiteral("  ") + shownLosses(m_control.losses());
    m_text->setText(text);
    m_text->setToolTip(QDir::toNativeSeparators(m_control.place()));
    m_text->setVisible(true);
}

void RecordingWidget::takeEnd(const QString &place, const QString &problem)
{
    const QString file = QDir::toNativeSeparators(place);
    const QString kept = place.isEmpty() ? QString() : tr("recorded into %1").arg(file);
    QString text = kept;
    if (!problem.isEmpty())
        text = place.isEmpty() ? problem : tr("%1 What was recorded is in %2.").arg(problem, file);
    m_text->setText(problem.isEmpty() ? tr("recorded: %1").arg(QFileInfo(place).fileName()) : tr("not recorded"));
    if (!problem.isEmpty() && !place.isEmpty())
        m_text->setText(tr("recording ended: see the log"));
    m_text->setToolTip(text);
    show();
    Q_EMIT happened(text, !problem.isEmpty());
}

} // namespace Explorer
