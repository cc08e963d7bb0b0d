// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/datablock.h>

#include <QObject>
#include <QStringList>
#include <QVector>

#include <functional>
#include <utility>

namespace Explorer {
class RecordingControl;
class SensorSession;
} // namespace Explorer

/// Compares recordings with what the reader has delivered while they were made.
///
/// A file must contain every delivered frame with its number and values, every reported gap with its length, and nothing
/// else. The watch also checks the numbers of the frames: delivered frames and reported gaps together must be complete.
class RecordingWatch : public QObject
{
    Q_OBJECT
public:
    explicit RecordingWatch(QObject *parent = nullptr);

    /// Watches a sensor from now on, until it is destroyed. \a control is its recording.
    void watch(Explorer::SensorSession &session, Explorer::RecordingControl &control);
    /// Compares the files that were finished since the last call. This takes long for long recordings: \a isGoingOn is
    /// called again and again meanwhile.
    void compareFinished(const std::function<void()> &isGoingOn);

    int finished() const { return m_finished; } ///< recordings that were compared
    qint64 frames() const { return m_frames; }  ///< frames in them
    qint64 lost() const { return m_lost; }      ///< frames that they tell to be lost
    QStringList problems() const { return m_problems; }

private:
    /// What a file must contain.
    struct Content
    {
        qint64 frames = 0;
        qint64 lost = 0; // in gaps of known length
        int unknownGaps = 0;
        quint64 digest = 0; // of the numbers of the frames and their values
        int restarts = 0;   // of the reader, after which it counts from 0 again

        void add(const SondixQt::DataBlock &block);
        void add(const SondixQt::DataGap &gap);
        QString text() const;
        /// Whether this is what a file with \a expected holds. A restart is a gap in some files.
        bool fits(const Content &expected) const;
    };
    /// One sensor.
    struct Stand
    {
        QString path; // of the file that is being recorded; empty: none
        Content expected;
        int run = 0;
        qint64 nextFrame = 0;   // -1: not known
        bool isOpening = false; // the frame is not yet known: a recording started now begins with a gap
    };

    void followBlock(Stand &stand, const SondixQt::DataBlock &block);
    void followGap(Stand &stand, const SondixQt::DataGap &gap);
    void finish(Stand &stand, const QString &place);
    void compare(const QString &place, const Content &expected, const std::function<void()> &isGoingOn);
    void problem(const QString &text);

    QVector<std::pair<QString, Content>> m_toCompare;
    QStringList m_problems;
    int m_finished = 0;
    qint64 m_frames = 0;
    qint64 m_lost = 0;
};
