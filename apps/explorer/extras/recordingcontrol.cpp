// SPDX-License-Identifier: MIT
#include "recordingcontrol.h"

#include "explorer/sensor/englishtexts.h"
#include "explorer/sensor/filenames.h"
#include "explorer/sensor/sensorsession.h"
#include "explorer/sensor/threadend.h"
#include "recordingwriter.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QThread>

using namespace SondixQt;
using namespace SondixApp;

namespace Explorer {

namespace {

constexpr qint64 maxWaitingValues = 32'000'000; // 256 MB

std::optional<RecordFormat> formatOf(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("csv"))
        return RecordFormat::Csv;
    if (suffix == QLatin1String("jsonl"))
        return RecordFormat::JsonLines;
    if (suffix == QLatin1String("npy"))
        return RecordFormat::Npy;
    return std::nullopt;
}

} // namespace

RecordingControl::RecordingControl(SensorSession &session, QObject *parent)
    : QObject(parent)
    , m_session(session)
    , m_thread(new QThread)
{
    connect(&session, &SensorSession::blockArrived, this, [this](const DataBlock &block) { take(block); });
    connect(&session, &SensorSession::gapArrived, this, [this](const DataGap &gap) { take(gap); });
    connect(&session.reader(), &SensorReader::frameChanged, this, &RecordingControl::checkFrame);
    m_thread->start();
}

RecordingControl::~RecordingControl()
{
    if (m_writer) {
        // In this order behind what waits to be written.
        QMetaObject::invokeMethod(m_writer, [writer = m_writer, thread = m_thread] {
            delete writer; // finishes the file
            thread->quit();
        });
    } else {
        m_thread->quit();
    }
    finishThread(m_thread);
}

QStringList RecordingControl::suffixes()
{
    return {QStringLiteral("csv"), QStringLiteral("npy"), QStringLiteral("jsonl")};
}

QString RecordingControl::proposedName() const
{
    return fileNameOf(m_session.title() +
                      QDateTime::currentDateTime().toString(QStringLiteral(" yyyy-MM-dd HH-mm-ss")));
}

QString RecordingControl::freePath(const QString &folder, const QString &name, const QString &suffix)
{
    const QDir dir(folder);
    QString path = dir.filePath(name + QLatin1Char('.') + suffix);
    for (int number = 2; QFileInfo::exists(path) || QFileInfo::exists(path + QStringLiteral(".partial")); ++number)
        path = dir.filePath(QStringLiteral("%1 (%2).%3").arg(name, QString::number(number), suffix));
    return path;
}

bool RecordingControl::start(const QString &path, QString *problem)
{
    const auto refuse = [problem](const QString &text) {
        if (problem)
            *problem = text;
        return false;
    };
    if (m_writer)
        return refuse(tr("The sensor is being recorded already."));
    const std::optional<RecordFormat> format = formatOf(path);
    if (!format)
        return refuse(tr("The suffix of '%1' is no format; the formats are .csv, .jsonl and .npy.").arg(path));
    m_frame = m_session.frame();
    if (m_frame.valuesPerFrame < 1)
        return refuse(tr("The sensor has not yet described its values."));
    Recorder::Plan plan;
    plan.path = path;
    plan.format = *format;
    plan.columns.frame = m_frame;
    plan.columns.number = true;
    RecordHead head;
    head.program = QCoreApplication::applicationName() + QLatin1Char(' ') + QCoreApplication::applicationVersion();
    head.address = m_session.address().toString();
    head.sensors = m_session.reader().sensorInformation();
    head.rate = m_session.rate();
    m_progress = std::make_shared<RecordingProgress>();
    m_writer = new RecordingWriter(plan, head, m_progress);
    m_writer->moveToThread(m_thread);
    connect(m_writer, &RecordingWriter::opened, this, [this](const QString &place) {
        m_place = place;
        Q_EMIT changed();
    });
    connect(m_writer, &RecordingWriter::finished, this, &RecordingControl::takeEnd);
    QMetaObject::invokeMethod(m_writer, &RecordingWriter::open);
    m_path = m_place = path;
    m_newErrors.clear();
    m_losses = {};
    m_problem.clear();
    m_isStopping = false;
    m_sinceStart.start();
    Q_EMIT changed();
    return true;
}

void RecordingControl::stop()
{
    if (!m_writer || m_isStopping)
        return;
    m_isStopping = true;
    QMetaObject::invokeMethod(m_writer, &RecordingWriter::finish);
}

double RecordingControl::seconds() const
{
    return m_writer ? static_cast<double>(m_sinceStart.elapsed()) / 1000.0 : 0.0;
}

qint64 RecordingControl::frames() const
{
    return m_progress ? m_progress->frames.load() : 0;
}

qint64 RecordingControl::bytes() const
{
    return m_progress ? m_progress->bytes.load() : 0;
}

void RecordingControl::take(const DataBlock &block)
{
    if (!m_writer || m_isStopping)
        return;
    if (block.valuesPerFrame() != m_frame.valuesPerFrame) {
        checkFrame();
        return;
    }
    m_progress->waitingValues += block.scaledData().size();
    if (m_progress->waitingValues > maxWaitingValues) {
        endBy(tr("The disk is too slow for the values of the sensor."));
        return;
    }
    const auto text = [this](double value) { return m_session.reader().errorValueText(value); };
    QMetaObject::invokeMethod(m_writer, [writer = m_writer, block, texts = m_newErrors.of(block, text)] {
        writer->write(block, texts);
    });
}

void RecordingControl::take(const DataGap &gap)
{
    if (!m_writer || m_isStopping)
        return;
    m_losses.add(gap);
    QMetaObject::invokeMethod(m_writer, [writer = m_writer, gap] { writer->write(gap); });
    Q_EMIT changed();
}

void RecordingControl::checkFrame()
{
    const QVector<SignalInfo> &recorded = m_frame.signalList();
    const TransmittedDataInfo present = m_session.reader().frame();
    const QVector<SignalInfo> &now = present.signalList();
    const bool isSame =
        recorded.size() == now.size() &&
        std::equal(recorded.cbegin(), recorded.cend(), now.cbegin(), [](const SignalInfo &a, const SignalInfo &b) {
            return a.scaledName == b.scaledName && a.scaledUnit == b.scaledUnit;
        });
    if (m_writer && !isSame)
        endBy(tr("The sensor sends other values now."));
}

void RecordingControl::endBy(const QString &problem)
{
    m_problem = problem;
    stop();
}

void RecordingControl::takeEnd(const QString &place, const QString &problem)
{
    if (!m_writer)
        return;
    m_writer->deleteLater();
    m_writer = nullptr;
    m_place = place;
    Q_EMIT changed();
    Q_EMIT ended(place, m_problem.isEmpty() ? shownText(problem) : m_problem);
}

} // namespace Explorer
