// SPDX-License-Identifier: MIT
#include "sensorsession.h"

#include "librarytexts.h"

#include <SondixQt/errorvalue.h>
#include <SondixQt/sensorinfo.h>

#include <QLocale>

#include <algorithm>
#include <utility>

using namespace SondixQt;
using State = SondixQt::SensorReader::State;

namespace Explorer {

namespace {

// A changed sample rate does not make the values before it meaningless.
bool hasSameMeaning(const TransmittedDataInfo &a, const TransmittedDataInfo &b)
{
    const auto isSame = [](SignalInfo x, const SignalInfo &y) {
        x.rawDatarate = y.rawDatarate;
        x.scaledDatarate = y.scaledDatarate;
        return x == y;
    };
    const QVector<SignalInfo> &left = a.signalList();
    const QVector<SignalInfo> &right = b.signalList();
    return a.valuesPerFrame == b.valuesPerFrame &&
           std::equal(left.begin(), left.end(), right.begin(), right.end(), isSame);
}

} // namespace

SensorSession::SensorSession(const SensorAddress &address, const QString &name, QObject *parent)
    : QObject(parent)
    , m_address(address)
    , m_name(name)
    , m_reader(address)
{
    constexpr qint64 queuedValues = 8'388'608;                // 64 MB; several seconds of the fastest sensors
    constexpr std::chrono::milliseconds deliveryInterval(20); // each drawing of the plot has new values
    m_reader.setReconnect(Reconnect());
    m_reader.setQueueLimit(queuedValues);
    m_reader.setDeliveryInterval(deliveryInterval);
    connect(&m_reader, &SensorReader::blockReady, this, &SensorSession::takeBlock);
    connect(&m_reader, &SensorReader::gapDetected, this, &SensorSession::takeGap);
    connect(&m_reader, &SensorReader::frameChanged, this, &SensorSession::takeFrame);
    connect(&m_reader, &SensorReader::stateChanged, this, &SensorSession::takeState);
    connect(&m_reader, &SensorReader::errorOccurred, this, &SensorSession::takeError);
}

SensorSession::~SensorSession() = default;

void SensorSession::open()
{
    if (m_isClosing)
        return;
    m_sinceOpen.start();
    m_reader.start();
}

void SensorSession::reopen()
{
    bool isTaken = false;
    Q_EMIT reopening(&isTaken);
    if (!isTaken)
        open();
}

void SensorSession::close()
{
    m_isClosing = true;
    if (m_reader.state() == State::Stopped || m_reader.state() == State::Failed)
        QMetaObject::invokeMethod(this, &SensorSession::closed, Qt::QueuedConnection);
    else
        m_reader.stop();
}

QString SensorSession::stateText() const
{
    switch (m_reader.state()) {
    case State::Stopped:
        return tr("stopped");
    case State::Opening:
        return tr("opening");
    case State::Reading:
        return tr("reading");
    case State::WaitingForTrigger:
        return tr("waiting for a trigger");
    case State::Reconnecting:
        return tr("reconnecting");
    case State::Failed:
        return tr("failed");
    }
    return {};
}

QString SensorSession::problem() const
{
    const State state = m_reader.state();
    if (state == State::Reconnecting)
        return tr("%1. The explorer tries to open the sensor again; check cable and power supply.")
            .arg(shownReaderError(m_reader.error(), m_reader.errorString()));
    if (state == State::Failed)
        return tr("%1. Check cable, power supply and address, then open the sensor again.")
            .arg(shownReaderError(m_reader.error(), m_reader.errorString()));
    return {};
}

QString SensorSession::title() const
{
    const QString serial = serialNumber();
    const QString name = sensorName(model(), true);
    if (!serial.isEmpty())
        return QStringLiteral("%1 %2").arg(name, serial);
    return m_name.isEmpty() ? QStringLiteral("%1 %2").arg(name, place()).trimmed() : m_name;
}

SensorType SensorSession::model() const
{
    // On a bus the search reports a family, and the sensor itself reports its model.
    const QMap<QString, QVariant> all = information();
    if (all.isEmpty() || m_address.type == MultiSensor)
        return m_address.type;
    const SensorType type = SensorInfo(all, NoSensor).sensorType();
    return sensorName(type).isEmpty() ? m_address.type : type;
}

QString SensorSession::place() const
{
    return shownPlace(m_address);
}

QString SensorSession::answer(const QString &name) const
{
    return information().value(name).toString();
}

QString SensorSession::serialNumber() const
{
    const QString serial = answer(InterfaceParameter::SerialNumber);
    return serial.isEmpty() ? answer(QStringLiteral("SA_ControllerSerialNumber")) : serial;
}

bool isSimulated(const QMap<QString, QVariant> &information)
{
    return information.value(InterfaceParameter::SoftwareVersion)
        .toString()
        .contains(QLatin1String("(simulator)"));
}

QMap<QString, QVariant> SensorSession::information() const
{
    return m_reader.sensorInformation().value(0);
}

std::optional<double> SensorSession::rate() const
{
    if (m_interval && *m_interval > 0.0)
        return 1.0 / *m_interval;
    const double told = frame().datarate;
    return told > 0.0 ? std::optional<double>(told) : std::nullopt;
}

void SensorSession::resetValues()
{
    m_values.reset();
    Q_EMIT dataArrived();
}

QString SensorSession::errorText(double value) const
{
    const QString text = m_reader.errorValueText(value).simplified();
    return text.isEmpty() ? tr("error %1").arg(errorValueKey(value)) : text;
}

double SensorSession::secondsSilent() const
{
    const bool isSilent = m_reader.state() == State::Reading && m_sinceData.isValid();
    return isSilent ? static_cast<double>(m_sinceData.elapsed()) / 1000.0 : 0.0;
}

double SensorSession::secondsOpen() const
{
    return m_sinceOpen.isValid() ? static_cast<double>(m_sinceOpen.elapsed()) / 1000.0 : 0.0;
}

void SensorSession::post(const QString &command, const QMap<QString, QVariant> &parameters, QObject *context,
                         const SensorReader::Callback &callback)
{
    m_reader.post(command, parameters, context, callback);
}

void SensorSession::takeBlock(const DataBlock &ofThisStart)
{
    const DataBlock block = ofThisStart.inRun(ofThisStart.run() + m_firstRun);
    m_end = {block.run(), block.firstFrame() + block.frameCount()};
    m_sinceData.start();
    m_framesRead += block.frameCount();
    if (block.frameInterval())
        m_interval = block.frameInterval();
    const bool wasCut = m_history.cutFrames() > 0;
    m_history.append(block);
    if (!wasCut && m_history.cutFrames() > 0)
        Q_EMIT happened(
            tr("The memory for values is full: the oldest ones are dropped although they are to be kept for "
               "%1 s. Keep them for a shorter time, or record them.")
                .arg(QLocale().toString(m_history.keepSeconds(), 'g', 6)),
            true);
    m_values.add(block);
    Q_EMIT blockArrived(block);
    Q_EMIT dataArrived();
}

void SensorSession::takeGap(const DataGap &ofThisStart)
{
    DataGap gap = ofThisStart;
    gap.run += m_firstRun;
    if (gap.frames)
        m_end = {gap.run, gap.firstFrame + *gap.frames};
    m_losses.add(gap);
    m_history.append(gap);
    Q_EMIT gapHappened(gap);
    Q_EMIT gapArrived(gap);
    Q_EMIT dataArrived();
}

void SensorSession::takeFrame(const TransmittedDataInfo &frame)
{
    m_interval.reset();
    const bool isNewStart = std::exchange(m_isNewStart, false);
    if (m_history.isEmpty() || !hasSameMeaning(m_frame, frame)) {
        m_history.begin(frame);
        m_values.begin(frame.valuesPerFrame);
    } else if (isNewStart) {
        // Meanwhile something else has used the sensor, such as its web interface.
        DataGap pause;
        pause.reason = DataGap::Disconnected;
        pause.run = m_end.run;
        pause.firstFrame = m_end.frame;
        m_history.append(pause);
        Q_EMIT gapArrived(pause);
    }
    if (isNewStart)
        m_firstRun = m_end.run + 1;
    m_frame = frame;
    Q_EMIT frameChanged();
    Q_EMIT changed();
}

void SensorSession::takeState(State state)
{
    if (state == State::Opening) { // a new start counts from 0
        m_isNewStart = true;
        m_framesRead = 0;
        m_losses = {};
    }
    m_sinceData.start();
    Q_EMIT happened(stateText(), false);
    Q_EMIT changed();
    if (m_isClosing && (state == State::Stopped || state == State::Failed))
        Q_EMIT closed();
}

void SensorSession::takeError(ErrorCode code, const QString &text)
{
    Q_EMIT happened(tr("%1 (error %2)").arg(shownReaderError(code, text), QString::number(code)), true);
    Q_EMIT changed();
}

} // namespace Explorer
