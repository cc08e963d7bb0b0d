// SPDX-License-Identifier: MIT
#pragma once

#include <explorer/history/signalpyramid.h>

#include <QAbstractTableModel>
#include <QColor>
#include <QVector>
#include <QWidget>

#include <array>
#include <optional>

class QLabel;
class QTableView;

namespace Explorer {

/// The figures of one signal in the visible range.
struct SignalStatistics
{
    QString name;
    QString unit;
    QColor colour;
    Moments moments;
    std::optional<double> atA; ///< value at cursor A; may be an error value
    std::optional<double> atB;
    QString textOfA; ///< what is shown for atA
    QString textOfB;
};

/// A table of statistics: a row per signal. Numbers are shown with a few digits and copied exactly.
class StatisticsModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column {
        Name,
        Unit,
        Mean,
        Deviation,
        PeakToPeak,
        Minimum,
        Maximum,
        Count,
        Errors,
        AtA,
        AtB,
        Difference,
        ColumnCount
    };

    using QAbstractTableModel::QAbstractTableModel;

    void setRows(const QVector<SignalStatistics> &rows);
    const QVector<SignalStatistics> &rows() const { return m_rows; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    /// A cell as it is copied: numbers with all digits and a point.
    QString exactText(const QModelIndex &index) const;

private:
    std::optional<double> number(const SignalStatistics &row, int column) const;
    QString text(const SignalStatistics &row, int column) const;

    QVector<SignalStatistics> m_rows;
};

/// The statistics of what a plot shows, and what is at its cursors.
class StatisticsPanel : public QWidget
{
    Q_OBJECT
public:
    explicit StatisticsPanel(QWidget *parent = nullptr);

    void setRows(const QVector<SignalStatistics> &rows);
    void setSummary(const QString &summary);
    QString summary() const;
    void setColumnsVisible(bool statistics, bool cursors);
    const StatisticsModel &model() const { return *m_model; }
    /// Copies the selected cells, or all of them if there is no selection, separated by tabs and line ends.
    void copy() const;

    QSize sizeHint() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void showSummary();
    void fitColumns(bool mayShrink);
    void spreadColumns();

    StatisticsModel *m_model;
    QTableView *m_table;
    QLabel *m_summary;
    QString m_summaryText;
    std::array<int, StatisticsModel::ColumnCount> m_neededWidths{};
};

} // namespace Explorer
