// SPDX-License-Identifier: MIT
#pragma once

#include "shared/framereader.h"

#include <SondixQt/transmitteddatainfo.h>

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <QString>

#include <functional>

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

    /// The text of the error that a scaled value stands for; empty where there is none.
    using ErrorText = std::function<QString(double)>;

    ValueWriter(Format format, const Columns &columns, ErrorText errorText);

    /// What stands before the first frame; empty in the formats that need nothing there.
    QByteArray header() const;
    QByteArray lines(const SondixApp::FrameBlock &block);

    /// How many error values of each text there were.
    const QMap<QString, qint64> &errorCounts() const { return m_errorCounts; }

private:
    /// What stands in place of the error value \a value of the key \a key.
    QString errorMark(double value, int key);
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
