// SPDX-License-Identifier: MIT
#include "parameterdelegate.h"

#include "look.h"

#include "explorer/sensor/parametermodel.h"

#include <QComboBox>
#include <QLineEdit>
#include <QLocale>

namespace Explorer {

namespace {

// The value without its unit, as it is typed.
QString editedText(const QVariant &value)
{
    if (value.userType() != QMetaType::Double)
        return value.toString();
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale.toString(value.toDouble(), 'g', QLocale::FloatingPointShortest);
}

} // namespace

QWidget *ParameterDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                         const QModelIndex &index) const
{
    const QStringList names = index.data(ParameterModel::NamesRole).toStringList();
    const QString name = index.siblingAtColumn(ParameterModel::NameColumn).data().toString();
    QWidget *editor = nullptr;
    if (names.isEmpty()) {
        editor = new QLineEdit(parent);
    } else {
        auto *box = new QComboBox(parent);
        box->addItems(names);
        box->setEditable(!index.data(ParameterModel::IsCompleteRole).toBool());
        box->setInsertPolicy(QComboBox::NoInsert);
        // A chosen name is sent at once.
        connect(box, QOverload<int>::of(&QComboBox::activated), this, [this, box] {
            auto *delegate = const_cast<ParameterDelegate *>(this);
            Q_EMIT delegate->commitData(box);
            Q_EMIT delegate->closeEditor(box);
        });
        editor = box;
    }
    editor->setAccessibleName(name);
    editor->setAutoFillBackground(true);
    return editor;
}

void ParameterDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *box = qobject_cast<QComboBox *>(editor)) {
        const int row = box->findText(index.data().toString());
        box->setCurrentIndex(row);
        if (row < 0)
            box->setEditText(editedText(index.data(Qt::EditRole)));
    } else if (auto *field = qobject_cast<QLineEdit *>(editor)) {
        field->setText(editedText(index.data(Qt::EditRole)));
        field->selectAll();
    }
}

void ParameterDelegate::setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    QString text;
    if (auto *box = qobject_cast<QComboBox *>(editor))
        text = box->currentText();
    else if (auto *field = qobject_cast<QLineEdit *>(editor))
        text = field->text();
    if (text != editedText(index.data(Qt::EditRole)) && text != index.data().toString())
        model->setData(index, text);
}

void ParameterDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const bool isGroup = !index.parent().isValid();
    const bool isNote = index.column() == ParameterModel::NoteColumn;
    option->font.setBold(isGroup || (!isNote && index.data(ParameterModel::DiffersRole).toBool()));
    if (!index.data(ParameterModel::ProblemRole).toString().isEmpty() &&
        index.column() != ParameterModel::NameColumn)
        option->palette.setColor(QPalette::Text, colourOf(Meaning::Problem, option->palette));
}

} // namespace Explorer
