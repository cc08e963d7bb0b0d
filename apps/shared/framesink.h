// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/datablock.h>

#include <QString>

namespace SondixApp {

/// Where the frames and gaps of one sensor go, in the order in which they come.
class FrameSink
{
public:
    virtual ~FrameSink() = default;

    /// False after a failure, see problem(). What was written before stays.
    virtual bool write(const SondixQt::DataBlock &block) = 0;
    /// \copydoc write
    virtual bool write(const SondixQt::DataGap &gap) = 0;
    /// To be called several times a second while nothing is written, so that what was written reaches the disk.
    /// \copydoc write
    virtual bool flush() { return true; }
    /// Ends a recording that is as long as it should be: files get their names.
    virtual bool finish() = 0;
    /// Ends a recording that was cut short: what was written stays where it is.
    virtual bool keep() = 0;

    virtual qint64 framesWritten() const = 0;
    /// Where the frames written last are, for users; empty if they are nowhere.
    virtual QString place() const = 0;
    /// The reason why the last operation failed.
    virtual QString problem() const = 0;
};

} // namespace SondixApp
