// SPDX-License-Identifier: MIT
#pragma once

#include "processortime.h"

#include <QElapsedTimer>
#include <QTimer>

/// The longest time for which the event loop of this thread did nothing else.
///
/// On a busy machine the time on the clock also contains the work of other programs. So there are two times: the processor
/// time of the thread, which is all that it computes, and the time in which it neither computes nor is ready to, which is
/// what it waits for others: a sensor, a disk, a lock. Tests make that last for long, so that a wait stands out.
class EventLoopWatch
{
public:
    EventLoopWatch()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { take(); });
        m_timer.start(interval);
        restart();
    }
    void restart()
    {
        m_longestWork = m_longestWait = 0.0;
        m_sinceStep.start();
        m_processor = threadProcessorSeconds();
        m_ready = threadReadySeconds();
    }
    /// In milliseconds.
    double longestWork()
    {
        take();
        return m_longestWork;
    }
    double longestWait()
    {
        take();
        return m_longestWait;
    }

private:
    static constexpr int interval = 2;

    void take()
    {
        const double processor = threadProcessorSeconds();
        const double work = 1e3 * (processor - m_processor);
        const double ready = threadReadySeconds();
        const double wait =
            1e-6 * static_cast<double>(m_sinceStep.nsecsElapsed()) - work - 1e3 * (ready - m_ready);
        m_longestWork = qMax(m_longestWork, work);
        m_longestWait = qMax(m_longestWait, wait);
        m_processor = processor;
        m_ready = ready;
        m_sinceStep.start();
    }

    QTimer m_timer;
    QElapsedTimer m_sinceStep;
    double m_processor = 0.0;
    double m_ready = 0.0;
    double m_longestWork = 0.0;
    double m_longestWait = 0.0;
};
