// SPDX-License-Identifier: MIT
#include "logmodel.h"

#include <QLocale>

using namespace SondixQt;

namespace Explorer {

namespace {

// Dropping several at once keeps the time per entry constant.
constexpr int droppedAtOnce = LogModel::maxEntries / 10;

QString kindSymbol(LogModel::Kind kind)
{
    switch (kind) {
    case LogModel::Problem:
        return QStringLiteral("\u26a0 ");
    case LogModel::Answer:
        return QStringLiteral("\u203a ");
    default:
        return {};
    }
}

} // namespace

int LogModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_entries.size();
}

int LogModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant LogModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Entry &entry = m_entries.at(index.row());
    if (role == KindRole)
        return entry.kind;
    if (role == Qt::ToolTipRole && index.column() == TextColumn)
        return entry.text;
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case TimeColumn:
        return entry.time.toString(QStringLiteral("HH:mm:ss.zzz"));
    case SourceColumn:
        return entry.source;
    default:
        return kindSymbol(entry.kind) + entry.text;
    }
}

QVariant LogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case TimeColumn:
        return tr("Time");
    case SourceColumn:
        return tr("Sensor");
    case TextColumn:
        return tr("Message");
    default:
        return {};
    }
}

void LogModel::add(Kind kind, const QString &source, const QString &text)
{
    m_gaps.remove(source); // what is missing after this gets an entry after it
    append(kind, source, text);
}

void LogModel::add(const QString &source, const DataGap &gap)
{
    constexpr qint64 longest = 60; // seconds that an entry grows
    QMap<int, GapEntry> &entries = m_gaps[source];
    const auto known = entries.find(gap.reason);
    const qint64 row = known != entries.end() ? known->number - m_dropped : -1;
    const bool grows = row >= 0 && m_entries.at(int(row)).time.secsTo(QDateTime::currentDateTime()) < longest;
    GapSum sum;
    if (grows)
        sum = known->sum;
    sum.reason = gap.reason;
    sum.gaps += gap.frames ? 1 : 0;
    sum.frames += gap.frames.value_or(0);
    sum.unknownGaps += gap.frames ? 0 : 1;
    if (grows) {
        m_entries[int(row)].text = shownGaps(sum);
        const QModelIndex changed = index(int(row), TextColumn);
        Q_EMIT dataChanged(changed, changed);
        known->sum = sum;
        return;
    }
    append(gap.reason == DataGap::Restarted ? Event : Problem, source, shownGaps(sum));
    entries[gap.reason] = {m_dropped + m_entries.size() - 1, sum};
}

void LogModel::append(Kind kind, const QString &source, const QString &text)
{
    if (m_entries.size() >= maxEntries) {
        beginRemoveRows({}, 0, droppedAtOnce - 1);
        m_entries.remove(0, droppedAtOnce);
        m_dropped += droppedAtOnce;
        endRemoveRows();
    }
    beginInsertRows({}, m_entries.size(), m_entries.size());
    m_entries.append({QDateTime::currentDateTime(), kind, source, text.trimmed()});
    endInsertRows();
}

void LogModel::clear()
{
    beginResetModel();
    m_dropped += m_entries.size();
    m_entries.clear();
    m_gaps.clear();
    endResetModel();
}

QString LogModel::text(const QList<int> &rows) const
{
    QStringList lines;
    for (const int row : rows) {
        const Entry &entry = m_entries.at(row);
        lines +=
            QStringLiteral("%1\t%2\t%3").arg(entry.time.toString(Qt::ISODateWithMs), entry.source, entry.text);
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace Explorer
