// SPDX-License-Identifier: MIT
#pragma once

#include <QStyledItemDelegate>

namespace Explorer {

/// Draws a sensor of SensorListModel: its picture, and beside it title and place.
class SensorDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace Explorer
