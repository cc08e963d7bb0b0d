// SPDX-License-Identifier: MIT
#pragma once

#include "shared/framereader.h"

#include <SondixQt/transmitteddatainfo.h>

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <QString>

#include <functional>

/// Formats frames as text, one line per frame. Numbers do not depend on the locale.
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

    /// Returns the error text for a scaled value that is an error value; empty if it has none.
    using ErrorText = std::function<QString(double)>;

    ValueWriter(Format format, const Columns &columns, ErrorText errorText);

    /// The header line; empty for formats without one.
    QByteArray header() const;
    QByteArray lines(const SondixApp::FrameBlock &block);

    /// The number of error values by their text.
    const QMap<QString, qint64> &errorCounts() const { return m_errorCounts; }

private:
    /// The text that is shown instead of the error value \a value.
    QString errorMark(double value);
    void appendFrame(QByteArray &out, const SondixApp::FrameBlock &block, int frame);
    void appendJson(QByteArray &out, const SondixApp::FrameBlock &block, int frame, double time);
    void appendCell(QByteArray &out, const QByteArray &text, int column) const;
    QList<QByteArray> columnNames() const;

    Format m_format;
    Columns m_columns;
    QVector<int> m_widths;
    ErrorText m_errorText;
    QHash<int, QString> m_errorMarks;
    QMap<QString, qint64> m_errorCounts;
};
