// SPDX-License-Identifier: MIT
#pragma once

#include "framesink.h"
#include "framewriter.h"
#include "outputfile.h"

#include <QElapsedTimer>
#include <QStringList>

#include <memory>
#include <optional>

namespace SondixApp {

/// The relation between the clock of the sensor-access library and that of the computer, which all sensors of a
/// recording share, so that differences between their times are exact.
struct SharedClock
{
    std::optional<TimeAxis> axis;
    double uncertainty = 0.0; ///< seconds
};

/// Writes the frames and gaps of one sensor into one file, or into a series of files.
///
/// Files grow in the open, see OutputFile. A .npy file has a second file beside it, FILE.jsonl, with the head and the
/// gaps. Threads: one.
class Recorder : public FrameSink
{
public:
    struct Plan
    {
        QString path;
        RecordFormat format = RecordFormat::Csv;
        FormatOptions options;
        RecordColumns columns;
        bool append = false;                 ///< continue an existing file
        bool withHead = true;                ///< write the head
        std::optional<qint64> rotateSize;    ///< begin another file before this number of bytes is exceeded
        std::optional<double> rotateSeconds; ///< begin another file after this time
        OutputFile::SendToDisk sendToDisk;   ///< for tests, see OutputFile
    };

    /// Blocks are formatted and written in pieces of about this number of bytes.
    static constexpr int sliceSize = 1 << 16;

    /// With \a clock the times are on the clock of the computer; it may be null. \a errors and \a clock must outlive the
    /// recorder.
    Recorder(const Plan &plan, const RecordHead &head, ErrorValues &errors, SharedClock *clock = nullptr);
    ~Recorder() override;

    /// Creates the first file, or checks and opens the one that is appended to.
    bool open();

    bool write(const SondixQt::DataBlock &block) override;
    bool write(const SondixQt::DataGap &gap) override;
    bool flush() override;
    bool finish() override;
    bool keep() override;
    /// Removes what has been written to the present file.
    void discard();
    qint64 framesWritten() const override { return m_frames; }
    QString place() const override;
    QString problem() const override { return m_problem; }

    /// The files that are finished, under the names that they have.
    QStringList files() const { return m_files; }
    /// What was wrong with the file that is appended to, and has been repaired; empty: nothing.
    QString repair() const { return m_repair; }

private:
    struct Part;

    std::unique_ptr<Part> makePart(RecordFormat format, const QString &path) const;
    bool openPart(Part &part);
    bool resumePart(Part &part);
    bool openNext();
    void setAxis(const SondixQt::DataBlock &block);
    bool begin(const SondixQt::DataBlock *block);
    bool isRotationDue() const;
    bool writeSlice(const SondixQt::DataBlock &block, int first, int count);
    bool put(Part &part);
    bool checkDisk(Part &part);
    bool keep(Part &part);
    void putWhatFits(Part &part);
    bool writePreamble(Part &part, qint64 size);
    bool fail(const Part &part);
    QString nextName() const;
    bool hasNotes() const { return m_plan.format == RecordFormat::Npy && m_plan.withHead; }

    Plan m_plan;
    RecordHead m_head;
    ErrorValues &m_errors;
    SharedClock *m_clock;
    std::optional<TimeAxis> m_axis;
    int m_run = -1;
    std::unique_ptr<Part> m_data;
    std::unique_ptr<Part> m_notes; // beside a .npy file
    QElapsedTimer m_sinceOpen;
    qint64 m_frames = 0;
    qint64 m_framesInFile = 0;
    bool m_begun = false;
    QStringList m_files;
    QString m_problem;
    QString m_repair;
};

} // namespace SondixApp
