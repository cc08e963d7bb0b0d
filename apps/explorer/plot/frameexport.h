// SPDX-License-Identifier: MIT
#pragma once

#include <explorer/history/signalhistory.h>

#include <shared/errorvalues.h>
#include <shared/framewriter.h>
#include <shared/recorder.h>
#include <shared/recordhead.h>

#include <QCoreApplication>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace Explorer {

/// Writes frames of a history into a file as <tt>sondixqt record</tt> does, piece by piece, so that the event loop can run
/// in between. A file that could not be completed is removed.
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
    ~FrameExport();

    /// Writes up to \a frames frames. False when there is nothing more to do: see isComplete() and problem().
    bool step(int frames);
    bool isComplete() const { return m_state == Complete; }
    /// Why the export has failed, in the words of the user.
    QString problem() const { return m_problem; }
    /// From 0 to 1.
    double progress() const;
    qint64 framesWritten() const { return m_recorder.framesWritten(); }
    /// Frames that the history dropped before they were written.
    qint64 droppedFrames() const { return m_dropped; }

private:
    enum State { New, Running, Complete, Failed };

    bool writeGaps();
    bool fail(const QString &problem);

    const SignalHistory &m_history;
    FrameRange m_range;
    int m_generation;
    qint64 m_next;
    qint64 m_dropped = 0;
    qint64 m_gapsUpTo;
    SondixApp::ErrorValues m_errors;
    SondixApp::SharedClock m_clock;
    SondixApp::Recorder m_recorder;
    State m_state = New;
    QString m_problem;
};

} // namespace Explorer
