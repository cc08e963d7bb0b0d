// SPDX-License-Identifier: MIT
#include "sensordelegate.h"

#include "look.h"

#include "explorer/sensor/sensorlistmodel.h"

#include <QApplication>
#include <QPainter>

#include <algorithm>

namespace Explorer {

namespace {

constexpr int pictureSize = 40;
constexpr int itemMargin = 5;
constexpr double weakOpacity = 0.6;

} // namespace

void SensorDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    item.text.clear();
    item.icon = QIcon();
    const QWidget *const widget = option.widget;
    const QStyle *const style = widget ? widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, widget);

    painter->save();
    const bool isFound = index.data(SensorListModel::FoundRole).toBool();
    const bool isOpen = index.data(SensorListModel::OpenRole).toBool();
    const QRect picture(option.rect.left() + itemMargin, option.rect.center().y() - pictureSize / 2, pictureSize,
                        pictureSize);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->setOpacity(isFound || isOpen ? 1.0 : weakOpacity);
    painter->drawPixmap(picture, index.data(Qt::DecorationRole).value<QPixmap>());

    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const QColor text = option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text);
    QRect area = option.rect.adjusted(2 * itemMargin + pictureSize, itemMargin, -itemMargin, -itemMargin);
    const QFontMetrics plain(option.font);
    const int top = area.center().y() - plain.height();
    if (isOpen) {
        painter->setPen(isSelected ? text : colourOf(Meaning::Good, option.palette));
        const QString mark = QStringLiteral("\u25cf");
        painter->drawText(area, Qt::AlignRight | Qt::AlignVCenter, mark);
        area.setRight(area.right() - plain.horizontalAdvance(mark) - itemMargin);
    }
    painter->setPen(text);
    QFont bold = option.font;
    bold.setBold(true);
    painter->setFont(bold);
    // The end of the title is the serial number.
    const QString title = index.data(SensorListModel::TitleRole).toString();
    painter->drawText(QRect(area.left(), top, area.width(), plain.height()), Qt::AlignLeft | Qt::AlignVCenter,
                      QFontMetrics(bold).elidedText(title, Qt::ElideMiddle, area.width()));
    painter->setFont(option.font);
    const QString place = index.data(SensorListModel::PlaceRole).toString();
    painter->drawText(QRect(area.left(), top + plain.height(), area.width(), plain.height()),
                      Qt::AlignLeft | Qt::AlignVCenter, plain.elidedText(place, Qt::ElideRight, area.width()));
    painter->restore();
}

QSize SensorDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    const QFontMetrics metrics(option.font);
    const int height = std::max(pictureSize, 2 * metrics.height()) + 2 * itemMargin;
    return {pictureSize + 3 * itemMargin + metrics.averageCharWidth() * 20, height};
}

} // namespace Explorer
