// SPDX-License-Identifier: MIT
#pragma once

#include "readerwatch.h"

#include <functional>
#include <memory>

/// A reader of the sensor of the bench, and what a test does to both. Problems are collected; one that has been found
/// ends all waiting.
class ReaderStand
{
public:
    ReaderStand(const soakbench::Setup &setup, ReaderWatch::Accuracy accuracy);
    ~ReaderStand();
    ReaderStand(const ReaderStand &) = delete;
    ReaderStand &operator=(const ReaderStand &) = delete;

    SondixQt::SensorReader &reader() { return *m_reader; }
    ReaderWatch &watch() { return *m_watch; }
    const soakbench::Setup &setup() const { return m_setup; }
    ReaderWatch::Accuracy accuracy() const { return m_accuracy; }
    QStringList problems() const; ///< empty while everything is right
    bool failed() const { return !m_problems.isEmpty() || (m_watch && !m_watch->problems().isEmpty()); }

    void newReader(std::chrono::milliseconds interval);
    void deleteReader(); ///< may be called in a slot of the reader
    void start();
    void stop();
    bool isRunning() const;

    void settle(); ///< until every frame that the sensor has sent was delivered or reported
    void finish(); ///< settles, compares the accounts, and stops
    /// Waits for the answer. \a meanwhile is called when the setting may already be on its way to the sensor.
    void set(const QString &command, const QString &parameter, const QVariant &value,
             const std::function<void()> &meanwhile = {});
    void setRate(double hertz);
    void post(const QString &command); ///< an answer must come until finish(), but is not waited for
    bool hasPendingCommands() const { return m_pendingCommands != 0; }
    enum End { MustRead, MayFail };
    void pullCable(double seconds, End end = MustRead); ///< until the reader is reading again, or has failed
    static SondixQt::Reconnect quickReconnect();
    /// Calls \a slot when the next block is delivered.
    void inSlot(const std::function<void()> &slot);

    void advance(double seconds) { sondixsim::advance(seconds); }
    void advanceFrames(double frames) { sondixsim::advance(frames / m_setup.rate); }
    bool waitFor(const char *what, const std::function<bool()> &condition);
    void problem(const QString &text) { m_problems += text; }

private:
    qint64 fetched() const; ///< by this reader

    soakbench::Setup m_setup;
    const ReaderWatch::Accuracy m_accuracy;
    QStringList m_problems;
    std::unique_ptr<SondixQt::SensorReader> m_reader;
    std::unique_ptr<ReaderWatch> m_watch;
    quint64 m_fetchedBefore = 0; ///< by earlier readers
    int m_pendingCommands = 0;
};
