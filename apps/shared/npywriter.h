// SPDX-License-Identifier: MIT
#pragma once

#include "framewriter.h"

namespace SondixApp {

/// NumPy's .npy, format version 1.0: a structured array with the columns "run", "frame", those of the time and of the
/// signals. Error values are NaN. A missing frame is a missing number in the column "frame"; where a gap has an unknown
/// length, a new run begins.
///
/// The number of frames is a part of the header, which preamble() makes for any size of the file.
class NpyWriter final : public FrameWriter
{
public:
    NpyWriter(RecordColumns columns, ErrorValues &errors);

    void begin(TextBuffer &out, const RecordHead *head, bool withColumns) override;
    void addFrames(TextBuffer &out, const SondixQt::DataBlock &block, int first, int count) override;
    void addGap(TextBuffer &, const SondixQt::DataGap &) override {}
    QByteArray preamble(qint64 size) const override;
    std::optional<Resumption> resume(QFile &file, QString &problem) override;
    int frameSize() const override { return m_recordSize; }
    int frameEnd(const QByteArray &, int begin) const override { return begin + m_recordSize; }

private:
    QByteArray description() const;
    QByteArray header(qint64 records) const;
    bool copyFrames(char *to, const SondixQt::DataBlock &block, int first, int count) const;
    void convertFrames(char *to, const SondixQt::DataBlock &block, int first, int count);
    qint64 wholeRecords(QFile &file, qint64 told) const;

    RecordColumns m_columns;
    ErrorValues &m_errors;
    int m_recordSize;
    int m_firstRun = 0;
};

} // namespace SondixApp
