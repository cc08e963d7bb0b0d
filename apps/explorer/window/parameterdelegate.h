// SPDX-License-Identifier: MIT
#pragma once

#include <QStyledItemDelegate>

namespace Explorer {

/// Edits a setting of ParameterModel where it stands: a list for named values, a field for others. Changed settings are
/// bold, refused ones have the colour of problems.
class ParameterDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};

} // namespace Explorer
