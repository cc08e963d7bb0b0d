// SPDX-License-Identifier: MIT
#include "statisticspanel.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QScrollBar>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <vector>

namespace Explorer {

int StatisticsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

int StatisticsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

// A selection stays as long as the signals are the same.
void StatisticsModel::setRows(const QVector<SignalStatistics> &rows)
{
    if (rows.size() != m_rows.size()) {
        beginResetModel();
        m_rows = rows;
        endResetModel();
        return;
    }
    m_rows = rows;
    if (!rows.isEmpty())
        Q_EMIT dataChanged(index(0, 0), index(rows.size() - 1, ColumnCount - 1));
}

std::optional<double> StatisticsModel::number(const SignalStatistics &row, int column) const
{
    const Moments &moments = row.moments;
    const bool hasValues = moments.count > 0;
    const auto known = [hasValues](double value) { return hasValues ? std::optional(value) : std::nullopt; };
    switch (column) {
    case Mean:
        return known(moments.mean);
    case Deviation:
        return moments.count > 1 ? std::optional(moments.standardDeviation()) : std::nullopt;
    case PeakToPeak:
        return known(moments.maximum - moments.minimum);
    case Minimum:
        return known(moments.minimum);
    case Maximum:
        return known(moments.maximum);
    case Count:
        return static_cast<double>(moments.count);
    case Errors:
        return static_cast<double>(moments.errors);
    case AtA:
        return row.atA && isMeasured(*row.atA) ? row.atA : std::nullopt;
    case AtB:
        return row.atB && isMeasured(*row.atB) ? row.atB : std::nullopt;
    case Difference:
        return row.atA && row.atB && isMeasured(*row.atA) && isMeasured(*row.atB)
                   ? std::optional(*row.atB - *row.atA)
                   : std::nullopt;
    default:
        return std::nullopt;
    }
}

QString StatisticsModel::text(const SignalStatistics &row, int column) const
{
    constexpr int digits = 7;
    switch (column) {
    case Name:
        return row.name;
    case Unit:
        return row.unit;
    case Count:
        return QLocale().toString(row.moments.count);
    case Errors:
        return QLocale().toString(row.moments.errors);
    case AtA:
        return row.textOfA;
    case AtB:
        return row.textOfB;
    default:
        break;
    }
    const std::optional<double> value = number(row, column);
    return value ? QLocale().toString(*value, 'g', digits) : QStringLiteral("–");
}

QString StatisticsModel::exactText(const QModelIndex &index) const
{
    const SignalStatistics &row = m_rows.at(index.row());
    const std::optional<double> value = number(row, index.column());
    return value ? QString::number(*value, 'g', QLocale::FloatingPointShortest) : text(row, index.column());
}

QVariant StatisticsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const SignalStatistics &row = m_rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return text(row, index.column());
    case Qt::EditRole:
        return exactText(index);
    case Qt::TextAlignmentRole:
        return int(index.column() <= Unit ? Qt::AlignLeft | Qt::AlignVCenter : Qt::AlignRight | Qt::AlignVCenter);
    case Qt::DecorationRole:
        return index.column() == Name ? QVariant(row.colour) : QVariant();
    default:
        return {};
    }
}

QVariant StatisticsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Name:
        return tr("Signal");
    case Unit:
        return tr("Unit");
    case Mean:
        return tr("Mean");
    case Deviation:
        return tr("Std. deviation");
    case PeakToPeak:
        return tr("Peak to peak");
    case Minimum:
        return tr("Minimum");
    case Maximum:
        return tr("Maximum");
    case Count:
        return tr("Values");
    case Errors:
        return tr("Errors");
    case AtA:
        return tr("At A");
    case AtB:
        return tr("At B");
    case Difference:
        return tr("B − A");
    default:
        return {};
    }
}

StatisticsPanel::StatisticsPanel(QWidget *parent)
    : QWidget(parent)
    , m_model(new StatisticsModel(this))
    , m_table(new QTableView)
    , m_summary(new QLabel)
{
    m_table->setObjectName(QStringLiteral("statisticsTable"));
    m_table->setAccessibleName(tr("Statistics of the visible range"));
    m_table->setModel(m_model);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setFrameStyle(QFrame::NoFrame);
    m_table->setShowGrid(false);
    m_table->setAlternatingRowColors(true);
    m_table->setWordWrap(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    m_table->horizontalHeader()->setMinimumSectionSize(fontMetrics().averageCharWidth() * 6);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->setHorizontalScrollMode(QAbstractItemView::ScrollPerItem);
    m_table->viewport()->installEventFilter(this);
    m_table->setTabKeyNavigation(false);
    auto *copyAction = new QAction(tr("Copy"), this);
    copyAction->setShortcut(QKeySequence::Copy);
    copyAction->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(copyAction, &QAction::triggered, this, &StatisticsPanel::copy);
    m_table->addAction(copyAction);
    m_table->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_summary->setObjectName(QStringLiteral("statisticsSummary"));
    m_summary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_summary->setMinimumWidth(1); // see showSummary()
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->setSpacing(2);
    layout->addWidget(m_summary);
    layout->addWidget(m_table, 1);
}

void StatisticsPanel::setRows(const QVector<SignalStatistics> &rows)
{
    const int before = m_model->rowCount();
    m_model->setRows(rows);
    const bool isOther = rows.size() != before;
    if (isOther)
        updateGeometry();
    fitColumns(isOther);
}

// Columns only grow, so that they do not move while the numbers change.
void StatisticsPanel::fitColumns(bool mayShrink)
{
    for (int column = 0; column < m_model->columnCount(); ++column) {
        if (m_table->isColumnHidden(column))
            continue;
        m_table->resizeColumnToContents(column);
        int &needed = m_neededWidths[static_cast<std::size_t>(column)];
        needed = mayShrink ? m_table->columnWidth(column) : std::max(needed, m_table->columnWidth(column));
    }
    spreadColumns();
}

// If there is no room for all columns, those that fit fill the table, so that no column is cut.
void StatisticsPanel::spreadColumns()
{
    const int room = m_table->viewport()->width();
    std::vector<int> fitting;
    int used = 0;
    bool fitsAll = true;
    for (int column = 0; column < m_model->columnCount(); ++column) {
        if (m_table->isColumnHidden(column))
            continue;
        const int needed = m_neededWidths[static_cast<std::size_t>(column)];
        m_table->setColumnWidth(column, needed);
        fitsAll = fitsAll && used + needed <= room;
        if (!fitsAll)
            continue;
        used += needed;
        fitting.push_back(column);
    }
    if (fitsAll)
        return;
    auto left = static_cast<int>(fitting.size());
    for (const int column : fitting) {
        const int extra = (room - used) / left--;
        used += extra;
        m_table->setColumnWidth(column, m_neededWidths[static_cast<std::size_t>(column)] + extra);
    }
}

bool StatisticsPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        spreadColumns();
    return QWidget::eventFilter(watched, event);
}

void StatisticsPanel::setSummary(const QString &summary)
{
    m_summaryText = summary;
    showSummary();
}

void StatisticsPanel::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    showSummary();
}

// One line for each part where they do not fit side by side.
void StatisticsPanel::showSummary()
{
    const QMargins margins = layout()->contentsMargins();
    const int room = width() - margins.left() - margins.right();
    const bool fits = fontMetrics().horizontalAdvance(m_summaryText) <= room;
    m_summary->setText(fits ? m_summaryText
                            : QString(m_summaryText).replace(QStringLiteral("   "), QStringLiteral("\n")));
}

QString StatisticsPanel::summary() const
{
    return m_summaryText;
}

void StatisticsPanel::setColumnsVisible(bool statistics, bool cursors)
{
    for (int column = StatisticsModel::Mean; column <= StatisticsModel::Errors; ++column)
        m_table->setColumnHidden(column, !statistics);
    for (int column = StatisticsModel::AtA; column <= StatisticsModel::Difference; ++column)
        m_table->setColumnHidden(column, !cursors);
    fitColumns(false);
}

void StatisticsPanel::copy() const
{
    QModelIndexList cells = m_table->selectionModel()->selectedIndexes();
    if (cells.isEmpty())
        for (int row = 0; row < m_model->rowCount(); ++row)
            for (int column = 0; column < m_model->columnCount(); ++column)
                if (!m_table->isColumnHidden(column))
                    cells << m_model->index(row, column);
    std::sort(cells.begin(), cells.end());
    QString text;
    for (int i = 0; i < cells.size(); ++i) {
        if (m_table->isColumnHidden(cells.at(i).column()))
            continue;
        if (!text.isEmpty())
            text += cells.at(i).row() == cells.at(i - 1).row() ? QLatin1Char('\t') : QLatin1Char('\n');
        text += m_model->exactText(cells.at(i));
    }
    QApplication::clipboard()->setText(text);
}

// Room for up to five signals without scrolling.
QSize StatisticsPanel::sizeHint() const
{
    constexpr int maxRows = 5;
    const int rows = std::clamp(m_model->rowCount(), 1, maxRows);
    const int height = m_summary->sizeHint().height() + m_table->horizontalHeader()->sizeHint().height() +
                       rows * m_table->verticalHeader()->defaultSectionSize() +
                       m_table->horizontalScrollBar()->sizeHint().height() + 8;
    return QSize(480, height);
}

} // namespace Explorer
