// SPDX-License-Identifier: MIT
#pragma once

#include "shared/framereader.h"

#include <SondixQt/transmitteddatainfo.h>

#include <QByteArray>
#include <QMap>
#include <QString>

#include <memory>

/// Turns frames of values into text, one line a frame. Numbers are independent of the locale.
class ValueWriter
{
public:
    enum Format { Table, Csv, JsonLines };

    struct Columns
    {
        SondixQt::TransmittedDataInfo frame;
        bool raw = false;
        bool scaled = true;
    };

    ValueWriter(Format format, const Columns &columns);

    /// What stands before the first frame; empty in the formats that need nothing there.
    QByteArray header() const;
    QByteArray lines(const SondixApp::FrameBlock &block);

    /// How many error values of each key there were.
    const QMap<int, qint64> &errorCounts() const { return m_errorCounts; }

private:
    void appendFrame(QByteArray &out, const SondixApp::FrameBlock &block, int frame);
    void appendJson(QByteArray &out, const SondixApp::FrameBlock &block, int frame, double time) const;
    void appendCell(QByteArray &out, const QByteArray &text, int column) const;
    QList<QByteArray> columnNames() const;

    Format m_format;
    Columns m_columns;
    QVector<int> m_widths;
    QMap<int, qint64> m_errorCounts;
};
