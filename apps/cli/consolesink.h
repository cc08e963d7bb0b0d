// SPDX-License-Identifier: MIT
#pragma once

#include "console.h"

#include "shared/framesink.h"
#include "shared/framewriter.h"

#include <memory>

/// Writes the frames and gaps of one sensor to stdout.
class ConsoleSink final : public SondixApp::FrameSink
{
public:
    ConsoleSink(Console &console, std::unique_ptr<SondixApp::FrameWriter> writer);

    /// Writes the line of column names.
    bool begin();
    bool write(const SondixQt::DataBlock &block) override;
    bool write(const SondixQt::DataGap &gap) override;
    bool finish() override { return true; }
    bool keep() override { return true; }
    qint64 framesWritten() const override { return m_frames; }
    QString place() const override { return {}; }
    QString problem() const override;

private:
    bool put();

    Console &m_console;
    std::unique_ptr<SondixApp::FrameWriter> m_writer;
    SondixApp::TextBuffer m_buffer;
    qint64 m_frames = 0;
};
