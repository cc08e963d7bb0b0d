// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QWidget>

class QSplitter;
class QTabBar;

namespace Explorer {

/// Holds a page for each open sensor: one behind the other with tabs, or side by side.
class SessionArea : public QWidget
{
    Q_OBJECT
public:
    explicit SessionArea(QWidget *parent = nullptr);

    /// Adds \a page, which becomes the current one. The area owns it.
    void add(QWidget *page, const QString &title);
    /// Takes \a page away; the caller owns it.
    void take(QWidget *page);
    void setTitle(QWidget *page, const QString &title, const QString &toolTip);
    int count() const;
    QWidget *page(int index) const;
    QWidget *current() const;
    void setCurrent(QWidget *page);

    bool isSideBySide() const { return m_isSideBySide; }

public Q_SLOTS:
    void setSideBySide(bool on);
    /// Makes the next or, with -1, the previous page the current one.
    void step(int by);

Q_SIGNALS:
    void currentChanged(QWidget *page);
    void closeRequested(QWidget *page);

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    int indexOf(const QWidget *page) const;
    void showPages();
    void selectPageOf(const QWidget *widget);
    QWidget *makeCloseButton(QWidget *page);

    QTabBar *m_tabs;
    QSplitter *m_splitter;
    QVector<QWidget *> m_pages; // in the order of the tabs
    bool m_isSideBySide = false;
};

} // namespace Explorer
