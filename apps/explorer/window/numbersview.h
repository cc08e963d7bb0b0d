// SPDX-License-Identifier: MIT
#pragma once

#include "explorer/sensor/signalvalues.h"

#include <SondixQt/transmitteddatainfo.h>

#include <QMap>
#include <QTimer>
#include <QWidget>

#include <functional>

class QGridLayout;
class QSettings;

namespace Explorer {

class NumberTile;

/// The present values of a sensor, as large as there is room for: a tile for each signal with value, unit, minimum,
/// maximum, and what its limits say. Zero, offset and limits are those of the screen: recordings and the plot keep the
/// values of the sensor.
///
/// The tiles are drawn ten times a second, and only if something has changed.
class NumbersView : public QWidget
{
    Q_OBJECT
public:
    using ErrorText = std::function<QString(double)>;

    /// \a values must outlive the view. \a errorText returns the texts of error values.
    NumbersView(const SignalValues &values, const ErrorText &errorText, QWidget *parent = nullptr);

    /// Shows the signals of \a frame. Limits and offsets of signals with the same name are kept.
    void setFrame(const SondixQt::TransmittedDataInfo &frame);
    /// Whether the values are those of now. If not, no present value is shown and copied: minimum and maximum are.
    void setPresent(bool present);
    NumberTile *tile(int signal) const { return m_tiles.value(signal); }

    /// Limits, by the names of the signals. Not the offsets: another sensor may be at the address the next time.
    void save(QSettings &settings) const;
    void restore(QSettings &settings);
    QSize minimumSizeHint() const override;

public Q_SLOTS:
    /// The values have changed.
    void refresh() { m_isStale = true; }
    /// The exact values of all signals, one a line, to the clipboard.
    void copy() const;
    /// Makes the present values the zero of the screen.
    void setZero();
    void clearZero();

Q_SIGNALS:
    /// The user wants minimum and maximum to begin again.
    void resetRequested();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void draw();
    void arrange();

    const SignalValues &m_values;
    const ErrorText m_errorText;
    QGridLayout *m_layout;
    QVector<NumberTile *> m_tiles;
    QMap<QString, DisplayLimits> m_limits; // also of signals that are not shown at present
    QTimer m_timer;
    bool m_isStale = true;
    bool m_arePresent = true;
};

} // namespace Explorer
