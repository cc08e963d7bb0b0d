// SPDX-License-Identifier: MIT
#pragma once

#include <QLayout>
#include <QVector>

namespace Explorer {

/// Widgets side by side, in as many rows as they need.
class FlowLayout : public QLayout
{
    Q_OBJECT
public:
    explicit FlowLayout(QWidget *parent = nullptr);
    ~FlowLayout() override;

    /// Gives the widget of this layout the height of its rows as the minimum. Layouts around it do not ask for that
    /// height when there is little room, and the last rows would be cut off.
    void setKeepsHeight(bool keeps) { m_keepsHeight = keeps; }

    void addItem(QLayoutItem *item) override;
    int count() const override { return m_items.size(); }
    QLayoutItem *itemAt(int index) const override { return m_items.value(index); }
    QLayoutItem *takeAt(int index) override;
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override { return minimumSize(); }
    QSize minimumSize() const override;
    void setGeometry(const QRect &rect) override;

private:
    int arrange(const QRect &rect, bool isApplied) const;

    QVector<QLayoutItem *> m_items;
    bool m_keepsHeight = false;
};

} // namespace Explorer
