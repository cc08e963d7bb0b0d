// SPDX-License-Identifier: MIT
#pragma once

#include "soakbench.h"

#include <SondixQt/SensorReader>

#include <QMap>
#include <QPointer>
#include <QStringList>

/// Follows everything that a reader reports and compares it with what the values themselves say: their frame and their
/// time. It lives in the reader's thread.
class ReaderWatch : public QObject
{
public:
    /// When a loss must have been reported: before the next frame, or with a later block. A block of the sensor-access
    /// library has one time only, so that a loss within a block can be noticed with the next one.
    enum Accuracy { Exact, Eventual };

    ReaderWatch(SondixQt::SensorReader &reader, const soakbench::Setup &setup, Accuracy accuracy);

    const QStringList &problems() const { return m_problems; }
    qint64 delivered() const { return m_delivered; }
    qint64 told(SondixQt::DataGap::Reason reason) const
    {
        return m_told.value(reason);
    } ///< known numbers of frames
    /// Frames of an opening before the first one that was delivered: what is missing between two openings is not known.
    qint64 beforeFirst() const { return m_beforeFirst; }
    /// Frames that are missing in gaps of unknown length within an opening.
    qint64 inUnknownGaps() const { return m_inUnknownGaps; }
    int unknownGaps(SondixQt::DataGap::Reason reason) const { return m_unknown.value(reason); }
    int starts() const { return m_starts; }
    int openings() const { return m_openings; } ///< attempts and successes
    qint64 blocks() const { return m_blocks; }
    /// A command was sent that may change the rate or interrupt the measurement: the next losses cannot always be counted.
    void expectChange() { m_steadyBlocks = 0; }
    /// Prints every event of readers that are watched from now on.
    static void trace(bool on);
    static void note(const QString &text); ///< what the test does, among the events

    /// Compares what is missing among the frames of the present opening with what was reported. All frames that the
    /// sensor has sent must have been delivered, and the last block must have no loss within.
    void checkBalance();
    /// Compares the totals of the reader since its last start with those of its signals.
    void checkTotals(const SondixQt::SensorReader &reader);

private:
    void followState(SondixQt::SensorReader::State state);
    void followBlock(const SondixQt::DataBlock &block);
    void followGap(const SondixQt::DataGap &gap);
    void followFirstFrame(const SondixQt::DataBlock &block);
    void followNumbers(const SondixQt::DataBlock &block);
    void checkTime(const SondixQt::DataBlock &block, int frame);
    double inexactness(const SondixQt::DataBlock &block) const;
    bool isSteady() const;
    void beginOpening();
    void problem(const QString &text);

    const soakbench::Setup m_setup;
    const Accuracy m_accuracy;
    QStringList m_problems;
    SondixQt::SensorReader::State m_state = SondixQt::SensorReader::Stopped;

    qint64 m_delivered = 0;
    qint64 m_blocks = 0;
    QMap<SondixQt::DataGap::Reason, qint64> m_told;
    QMap<SondixQt::DataGap::Reason, int> m_unknown;
    qint64 m_beforeFirst = 0;
    qint64 m_inUnknownGaps = 0;
    int m_starts = 0;
    int m_openings = 0;
    qint64 m_startDelivered = 0; ///< since the last start
    qint64 m_startTold = 0;
    bool m_startUnknown = false;

    // Numbers as the reader counts them.
    int m_run = 0;
    qint64 m_nextFrame = 0;
    std::optional<double> m_lastTime;
    double m_lastInexact = 0.0;

    // Frames as the sensor counts them, since it was opened.
    bool m_opened = false; ///< a new opening, and no frame of it yet
    bool m_gapSinceFrame = false;
    int m_steadyBlocks = 0; ///< since the sensor was opened or got a command
    qint64 m_lastNumber = -1;
    qint64 m_skipped = 0; ///< frames that the numbers show to be missing
    qint64 m_toldHere = 0;
};
