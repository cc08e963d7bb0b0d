// SPDX-License-Identifier: MIT
#include "framereader.h"

#include <algorithm>
#include <cmath>

using namespace SondixQt;

namespace SondixApp {

namespace {

constexpr int framesPerTransfer = 8192;
constexpr int maxTransfersPerPoll = 16;
constexpr int pollInterval = 40;
constexpr int minPollInterval = 5;

} // namespace

FrameReader::FrameReader(SensorInstance &instance, int valuesPerFrame, double rateKhz, QObject *parent)
    : QObject(parent)
    , m_instance(instance)
    , m_valuesPerFrame(valuesPerFrame)
    , m_rateKhz(std::isfinite(rateKhz) && rateKhz > 0.0 ? rateKhz : 0.0)
{
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &FrameReader::poll);
}

void FrameReader::start(const Plan &plan)
{
    m_plan = plan;
    m_running = true;
    const auto capacity = static_cast<size_t>(framesPerTransfer) * static_cast<size_t>(m_valuesPerFrame);
    m_scaled.resize(capacity);
    m_raw.resize(capacity);
    // Such a sensor measures only when it is polled: poll it at its sample rate.
    const bool isPolled = m_instance.isGetMeasureNeeded() && m_rateKhz > 0.0;
    const int interval =
        isPolled ? static_cast<int>(std::min<double>(pollInterval, 1.0 / m_rateKhz)) : pollInterval;
    m_timer.start(std::max(minPollInterval, interval));
    m_sinceStart.start();
    m_sinceFrame.start();
}

void FrameReader::stop()
{
    end(Stopped);
}

void FrameReader::poll()
{
    for (int i = 0; m_running && i < maxTransfersPerPoll; ++i) {
        const int capacity = static_cast<int>(m_scaled.size()) - m_left;
        int count = 0;
        if (!transfer(capacity, count))
            return;
        if (count > 0)
            deliver(count);
        if (count < capacity)
            break;
    }
    if (!m_running)
        return;
    if (m_plan.seconds >= 0.0 && static_cast<double>(m_sinceStart.elapsed()) >= m_plan.seconds * 1000.0)
        end(Reached);
    else if (static_cast<double>(m_sinceFrame.elapsed()) >= m_plan.silence * 1000.0)
        end(Silent);
}

bool FrameReader::transfer(int capacity, int &count)
{
    QString text;
    count = capacity;
    // A sensor that measures only when it is polled has no data available before the transfer.
    if (!m_instance.isGetMeasureNeeded()) {
        int available = 0;
        if (m_instance.dataAvail(available, &text) != NoError) {
            end(Failed, text);
            return false;
        }
        count = std::min(available, capacity);
        if (count <= 0) {
            count = 0;
            return true;
        }
    }
    if (m_instance.transferData(m_scaled.data() + m_left, m_raw.data() + m_left, &m_timestamp, count, &text) !=
        NoError) {
        end(Failed, text);
        return false;
    }
    count = std::clamp(count, 0, capacity);
    return true;
}

void FrameReader::deliver(int count)
{
    const int values = m_left + count;
    FrameBlock block;
    block.firstFrame = m_framesRead;
    block.frames = values / m_valuesPerFrame;
    block.valuesPerFrame = m_valuesPerFrame;
    block.scaled = m_scaled.data();
    block.raw = m_raw.data();
    block.timestamp = m_left > 0 ? m_leftTimestamp : m_timestamp;
    block.period = m_rateKhz > 0.0 ? 0.001 / m_rateKhz : 0.0;
    if (m_plan.frames >= 0)
        block.frames = static_cast<int>(std::min<qint64>(block.frames, m_plan.frames - m_framesRead));

    const int used = block.frames * m_valuesPerFrame;
    if (block.frames > 0) {
        countLost(block.timestamp);
        m_framesRead += block.frames;
        m_lastBlockSeconds = block.frames * block.period;
        m_nextTimestamp = block.timestamp + m_lastBlockSeconds;
        m_sinceFrame.start();
        Q_EMIT framesArrived(block);
    }
    if (!m_running)
        return;
    if (m_plan.frames >= 0 && m_framesRead >= m_plan.frames) {
        end(Reached);
        return;
    }
    m_leftTimestamp = block.timestamp + block.frames * block.period;
    m_left = values - used;
    std::move(m_scaled.begin() + used, m_scaled.begin() + values, m_scaled.begin());
    std::move(m_raw.begin() + used, m_raw.begin() + values, m_raw.begin());
}

void FrameReader::countLost(double blockTime)
{
    // A sensor that is polled sends no continuous stream, so gaps are no losses.
    if (m_framesRead == 0 || m_rateKhz <= 0.0 || m_instance.isGetMeasureNeeded())
        return;
    // The reported rate is rounded; the error accumulates over a block.
    constexpr double rateTolerance = 0.001;
    const double period = 0.001 / m_rateKhz;
    const double gap = blockTime - m_nextTimestamp;
    if (gap > 1.5 * period + rateTolerance * m_lastBlockSeconds)
        m_framesLost += std::max<qint64>(1, std::llround(gap / period));
}

void FrameReader::end(End end, const QString &problem)
{
    if (!m_running)
        return;
    m_running = false;
    m_timer.stop();
    m_problem = problem;
    Q_EMIT finished(end);
}

} // namespace SondixApp
