// SPDX-License-Identifier: MIT
#pragma once

#include "librarytexts.h"

#include <QAbstractTableModel>
#include <QDateTime>
#include <QHash>
#include <QMap>
#include <QVector>

namespace Explorer {

/// What has happened, in the order in which it happened. Bounded: the oldest entries are dropped.
class LogModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Kind {
        Event,   ///< the state of a sensor has changed
        Problem, ///< an error
        Answer,  ///< a command and its answer
        Call,    ///< a message of the library
    };
    Q_ENUM(Kind)

    enum Column { TimeColumn, SourceColumn, TextColumn, ColumnCount };
    enum Role { KindRole = Qt::UserRole };

    static constexpr int maxEntries = 20000;

    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    /// Adds an entry with the present time. \a source is the sensor or the category.
    void add(Kind kind, const QString &source, const QString &text);
    /// Adds a gap. Gaps of one reason that follow each other within a minute share an entry with their number and sum:
    /// a sensor can lose values a hundred times a second.
    void add(const QString &source, const SondixQt::DataGap &gap);
    void clear();

    /// The entries \a rows as lines of text, for the clipboard.
    QString text(const QList<int> &rows) const;

private:
    void append(Kind kind, const QString &source, const QString &text);

    struct Entry
    {
        QDateTime time;
        Kind kind = Event;
        QString source;
        QString text;
    };
    struct GapEntry
    {
        qint64 number = 0; // of the entry, counted from the first one ever added
        GapSum sum;
    };
    QVector<Entry> m_entries;
    qint64 m_dropped = 0;                       // of the entries ever added
    QHash<QString, QMap<int, GapEntry>> m_gaps; // by source and reason: entries that may grow
};

} // namespace Explorer
