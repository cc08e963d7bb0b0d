// SPDX-License-Identifier: MIT
#pragma once

#include "framewriter.h"

namespace SondixApp {

/// JSON lines: an object per frame. Head and gaps are objects with the only member "head" or "gap".
class JsonWriter final : public FrameWriter
{
public:
    JsonWriter(const RecordColumns &columns, const FormatOptions &options, ErrorValues &errors);

    void begin(TextBuffer &out, const RecordHead *head, bool withColumns) override;
    void addFrames(TextBuffer &out, const SondixQt::DataBlock &block, int first, int count) override;
    void addGap(TextBuffer &out, const SondixQt::DataGap &gap) override;
    std::optional<Resumption> resume(QFile &file, QString &problem) override;
    int frameSize() const override;

private:
    void addScaled(TextBuffer &out, double value);
    QString misfit(const QJsonObject &frame) const;

    RecordColumns m_columns;
    FormatOptions m_options;
    ErrorValues &m_errors;
};

} // namespace SondixApp
