// SPDX-License-Identifier: MIT
#pragma once

#include "shared/framewriter.h"

#include <QVector>

/// A table for people: columns of equal width, seven digits.
class TableWriter final : public SondixApp::FrameWriter
{
public:
    TableWriter(const SondixApp::RecordColumns &columns, SondixApp::ErrorValues &errors);

    void begin(SondixApp::TextBuffer &out, const SondixApp::RecordHead *head, bool withColumns) override;
    void addFrames(SondixApp::TextBuffer &out, const SondixQt::DataBlock &block, int first, int count) override;
    void addGap(SondixApp::TextBuffer &out, const SondixQt::DataGap &gap) override;
    std::optional<Resumption> resume(QFile &file, QString &problem) override;
    int frameSize() const override;

private:
    void addCell(SondixApp::TextBuffer &out, const QByteArray &text, int column) const;

    SondixApp::RecordColumns m_columns;
    SondixApp::ErrorValues &m_errors;
    QVector<int> m_widths;
};
