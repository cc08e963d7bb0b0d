// SPDX-License-Identifier: MIT
#pragma once

#include <explorer/history/signalhistory.h>
#include <explorer/sensor/newerrortexts.h>

#include <shared/errorvalues.h>
#include <shared/framewriter.h>
#include <shared/recorder.h>
#include <shared/recordhead.h>

#include <QCoreApplication>
#include <QHash>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace Explorer {

/// Frames and gaps in the order in which they are written.
struct FramePiece
{
    std::vector<std::variant<SondixQt::DataBlock, SondixQt::DataGap>> items;
    QHash<int, QString> errorTexts; ///< new ones, by errorValueKey()
    bool isLast = false;
};

/// The file of a FrameExport. Used by one thread at a time, except for cancel().
class FrameFile
{
public:
    FrameFile(const SondixApp::Recorder::Plan &plan, const SondixApp::RecordHead &head,
              std::optional<double> clockOffset);
    /// Removes a file that is not complete.
    ~FrameFile();

    /// Creates the file before the first piece, and completes it after the last one. False: see problem().
    bool write(const FramePiece &piece);
    void discard();
    /// Any thread: nothing more is written, and the file will not be completed. False if that has begun already.
    bool cancel();
    bool isCancelled() const { return m_phase == Cancelled; }
    bool isComplete() const { return m_state == Complete; }
    /// Why writing has failed, in the words of the user.
    QString problem() const { return m_problem; }

private:
    enum State { New, Running, Complete, Failed };
    enum Phase { Open, Completing, Cancelled };

    bool writeItems(const FramePiece &piece);
    bool writePiece(const FramePiece &piece);
    bool enter(Phase phase);

    QHash<int, QString> m_errorTexts;
    SondixApp::ErrorValues m_errors;
    SondixApp::SharedClock m_clock;
    SondixApp::Recorder m_recorder;
    State m_state = New;
    std::atomic<Phase> m_phase{Open};
    QString m_problem;
};

/// Writes frames of a history into a file as <tt>sondixqt record</tt> does, piece by piece: the thread of the history
/// takes the pieces from it, and another thread may write them. A file that could not be completed is removed.
///
/// The times in the file are the positions on the time axis: of the computer's clock where the relation is known. Values
/// of all signals are written, also of those that a plot hides.
class FrameExport
{
    Q_DECLARE_TR_FUNCTIONS(Explorer::FrameExport)
public:
    struct Plan
    {
        QString path;
        SondixApp::RecordFormat format = SondixApp::RecordFormat::Csv;
        FrameRange range;
        std::function<QString(double)> errorText; ///< may be empty
        std::optional<double> clockOffset;        ///< see TimeLine::wallClockOffset()
        SondixApp::RecordHead head;
    };

    /// \a history must outlive the export. The export fails if it forgets its frames meanwhile.
    FrameExport(const SignalHistory &history, const Plan &plan);

    /// Takes up to \a frames frames. Empty if there is nothing more to take: see problem().
    std::optional<FramePiece> take(int frames);
    /// Where the pieces are to be written.
    const std::shared_ptr<FrameFile> &file() const { return m_file; }
    /// Takes and writes up to \a frames frames. False when there is nothing more to do: see file() and problem().
    bool step(int frames);
    /// Why the export has failed, in the words of the user.
    QString problem() const { return m_problem.isEmpty() ? m_file->problem() : m_problem; }
    /// From 0 to 1.
    double progress() const;
    /// Frames that the history dropped before they were written.
    qint64 droppedFrames() const { return m_dropped; }

private:
    void takeGaps(FramePiece &piece);

    const SignalHistory &m_history;
    FrameRange m_range;
    int m_generation;
    qint64 m_next;
    qint64 m_dropped = 0;
    qint64 m_gapsUpTo;
    std::function<QString(double)> m_errorText;
    NewErrorTexts m_newErrors;
    std::shared_ptr<FrameFile> m_file;
    bool m_isTaken = false; // everything
    QString m_problem;
};

} // namespace Explorer
