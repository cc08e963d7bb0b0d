// SPDX-License-Identifier: MIT
#include "flowlayout.h"

#include <QWidget>

#include <algorithm>

namespace Explorer {

FlowLayout::FlowLayout(QWidget *parent)
    : QLayout(parent)
{
}

FlowLayout::~FlowLayout()
{
    qDeleteAll(m_items);
}

void FlowLayout::addItem(QLayoutItem *item)
{
    m_items.append(item);
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    return index >= 0 && index < m_items.size() ? m_items.takeAt(index) : nullptr;
}

int FlowLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), false);
}

QSize FlowLayout::minimumSize() const
{
    QSize size;
    for (const QLayoutItem *item : m_items)
        size = size.expandedTo(item->minimumSize());
    const QMargins margins = contentsMargins();
    return size + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
    QWidget *const widget = parentWidget();
    if (!m_keepsHeight || !widget || widget->layout() != this)
        return;
    if (const int needed = heightForWidth(rect.width()); widget->minimumHeight() != needed)
        widget->setMinimumHeight(needed);
}

int FlowLayout::arrange(const QRect &rect, bool isApplied) const
{
    const QRect inner = rect.marginsRemoved(contentsMargins());
    const int gap = std::max(0, spacing());
    int x = inner.x();
    int y = inner.y();
    int rowHeight = 0;
    for (QLayoutItem *item : m_items) {
        const QSize size = item->sizeHint();
        if (x > inner.x() && x + size.width() > inner.right() + 1) {
            x = inner.x();
            y += rowHeight + gap;
            rowHeight = 0;
        }
        if (isApplied)
            item->setGeometry(QRect(QPoint(x, y), QSize(std::min(size.width(), inner.width()), size.height())));
        x += size.width() + gap;
        rowHeight = std::max(rowHeight, size.height());
    }
    return y + rowHeight - rect.y() + contentsMargins().bottom();
}

} // namespace Explorer
