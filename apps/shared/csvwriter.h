// SPDX-License-Identifier: MIT
#pragma once

#include "framewriter.h"

namespace SondixApp {

/// CSV: a line of column names, then a line per frame. Head and gaps are comment lines that begin with "# ".
class CsvWriter final : public FrameWriter
{
public:
    CsvWriter(const RecordColumns &columns, const FormatOptions &options, ErrorValues &errors);

    void begin(TextBuffer &out, const RecordHead *head, bool withColumns) override;
    void addFrames(TextBuffer &out, const SondixQt::DataBlock &block, int first, int count) override;
    void addGap(TextBuffer &out, const SondixQt::DataGap &gap) override;
    std::optional<Resumption> resume(QFile &file, QString &problem) override;
    int frameSize() const override;

    /// The line of column names without its end.
    QByteArray columnLine() const;

private:
    void addScaled(TextBuffer &out, double value);
    QByteArray quoted(const QByteArray &text) const;
    bool hasOtherDecimalMark(const QByteArray &line) const;

    RecordColumns m_columns;
    FormatOptions m_options;
    ErrorValues &m_errors;
};

} // namespace SondixApp
