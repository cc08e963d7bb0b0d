// SPDX-License-Identifier: MIT
#pragma once

#include "console.h"
#include "exitcode.h"
#include "interruptwatcher.h"
#include "sensoroptions.h"

#include "shared/errorvalues.h"
#include "shared/framesink.h"
#include "shared/readrun.h"
#include "shared/recordhead.h"

#include <SondixQt/sensorreader.h>

#include <QStringList>

#include <memory>
#include <optional>
#include <string>
#include <vector>

class QEventLoop;

/// The options of reading that "read" and "record" have in common.
class ReadOptions
{
public:
    void addTo(CLI::App &app);

    /// \a isTriggered: the sensor waits for a trigger, so that only a time limit that the user has set counts.
    SondixApp::ReadRun::Plan plan(bool isTriggered) const;
    std::optional<SondixQt::Reconnect> reconnect() const;
    double silence() const { return m_silence.value_or(defaultSilence); }
    bool isScaled() const { return m_scaled || !m_raw; }
    bool isRaw() const { return m_raw; }

private:
    static constexpr double defaultSilence = 5.0;

    std::optional<long long> m_frames;
    std::optional<double> m_seconds;
    std::optional<double> m_silence;
    std::optional<double> m_giveUp;
    bool m_reconnect = false;
    bool m_raw = false;
    bool m_scaled = false;
};

/// One sensor that is read: open, and described.
struct ReadSource
{
    SondixQt::SensorAddress address;
    std::unique_ptr<SondixQt::SensorInstance> instance;
    SondixQt::TransmittedDataInfo frame;
    std::optional<double> rate; ///< frames per second
    std::unique_ptr<SondixApp::ErrorValues> errors;
    std::unique_ptr<SondixApp::FrameSink> sink; ///< set it before ReadSession::run()
    std::unique_ptr<SondixQt::SensorReader> reader;
    std::unique_ptr<SondixApp::ReadRun> run;

    ~ReadSource();

    QString serialNumber; ///< stored because the thread of the reader writes the information of the instance

    /// The model and serial number, for messages.
    QString name() const;
    SondixApp::RecordHead head() const;
};

/// Opens sensors, reads them at the same time and reports how that ended.
class ReadSession
{
public:
    ReadSession(Console &console, InterruptWatcher &interrupt, const ReadOptions &options);

    /// Opens a sensor. Throws Failure if it cannot be opened or does not describe its data.
    ReadSource &open(const SondixQt::SensorAddress &address);
    const std::vector<std::unique_ptr<ReadSource>> &sources() const { return m_sources; }

    /// Reads all sensors until each has ended. With \a follow the status line has the values. Throws Failure if one of
    /// them has failed or lost frames.
    ExitCode run(bool withStatus, bool follow = false);

private:
    void start(ReadSource &source, QEventLoop &loop);
    QString status(bool follow) const;
    QString label(const ReadSource &source) const;
    ExitCode conclude();
    ExitCode concludeOne(ReadSource &source);

    Console &m_console;
    InterruptWatcher &m_interrupt;
    const ReadOptions &m_options;
    std::vector<std::unique_ptr<ReadSource>> m_sources;
    int m_running = 0;
    QStringList m_problems;
};
