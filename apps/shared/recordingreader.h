// SPDX-License-Identifier: MIT
#pragma once

#include "recordhead.h"

#include <SondixQt/datablock.h>
#include <SondixQt/transmitteddatainfo.h>

#include <QIODevice>
#include <QString>

#include <memory>
#include <optional>
#include <variant>

namespace SondixApp {

/// Reads a file that `sondixqt record` or `sondixqt read --csv` has written, from its beginning to its end, with all
/// options that these have. Holds one block of the file in memory.
///
/// \par What is read
/// - Frames in blocks that DataBlock::run() and DataBlock::firstFrame() number as in the file. Frames that are missing in
///   the file without a word, for example because somebody has removed lines, become a gap with the reason
///   DataGap::Unknown.
/// - A file with raw values alone has them as scaled values, too, so that they can be shown; with scaled values alone the
///   raw ones are 0.
/// - Error values as isErrorValue(): with their number in JSON lines, and with a number of the reader's where CSV has only
///   the text, so that errorText() returns it. They are not a number where the file has no more than that.
///
/// \par Cut and foreign files
/// A file that is still written, or that was cut by a crash, gives all that is whole, and a warning(). Any other error
/// ends reading with a problem() that names the line (the frame in .npy). The blocks before it are delivered first.
///
/// \par Threads
/// One at a time.
class RecordingReader
{
public:
    using Item = std::variant<SondixQt::DataBlock, SondixQt::DataGap>;

    /// \a path may have any suffix: the format is recognised by the content. Beside a .npy file the file \a path.jsonl
    /// is read, if it exists.
    explicit RecordingReader(const QString &path);
    /// Reads \a data, and \a notes beside a .npy file; they are open for reading and can seek.
    explicit RecordingReader(std::unique_ptr<QIODevice> data, std::unique_ptr<QIODevice> notes = nullptr);
    ~RecordingReader();

    RecordingReader(const RecordingReader &) = delete;
    RecordingReader &operator=(const RecordingReader &) = delete;

    /// Reads up to the first frame. False with a problem() if the file is no recording.
    bool open();
    /// The description of the frames as far as the file has it.
    const SondixQt::TransmittedDataInfo &frame() const;
    /// What the head of the file reports; empty fields for a file without a head.
    const RecordHead &head() const;
    /// The next block or gap. Nothing at the end, and after an error.
    std::optional<Item> next();

    /// The reason why open() or next() has failed, in English; empty after the regular end of the file.
    QString problem() const;
    /// What is wrong with the file without being a reason not to show it; known at its end.
    QString warning() const;
    /// The text of the error value \a value; empty if the file has none.
    QString errorText(double value) const;
    /// How much of the file has been read, from 0 to 1.
    double progress() const;

private:
    struct State;
    const std::unique_ptr<State> d;
};

} // namespace SondixApp
