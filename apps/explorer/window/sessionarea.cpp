// SPDX-License-Identifier: MIT
#include "sessionarea.h"

#include <QApplication>
#include <QEvent>
#include <QSplitter>
#include <QTabBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace Explorer {

SessionArea::SessionArea(QWidget *parent)
    : QWidget(parent)
    , m_tabs(new QTabBar)
    , m_splitter(new QSplitter(Qt::Horizontal))
{
    m_tabs->setObjectName(QStringLiteral("sessionTabs"));
    m_tabs->setAccessibleName(tr("Open sensors"));
    m_tabs->setDocumentMode(true);
    m_tabs->setMovable(true);
    m_tabs->setExpanding(false);
    m_splitter->setChildrenCollapsible(false);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_tabs);
    layout->addWidget(m_splitter, 1);
    connect(m_tabs, &QTabBar::currentChanged, this, [this] {
        showPages();
        Q_EMIT currentChanged(current());
    });
    connect(m_tabs, &QTabBar::tabMoved, this, [this](int from, int to) {
        m_pages.move(from, to);
        m_splitter->insertWidget(to, m_pages.at(to));
    });
    // Side by side, a page becomes the current one when the user works in it, with the mouse or the keyboard.
    qApp->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { selectPageOf(now); });
}

void SessionArea::add(QWidget *page, const QString &title)
{
    m_pages.append(page);
    m_splitter->addWidget(page);
    page->hide();
    const int index = m_tabs->addTab(title);
    m_tabs->setTabButton(index, QTabBar::RightSide, makeCloseButton(page));
    m_tabs->setCurrentIndex(index);
    showPages();
}

// The icon of the style is not visible on a dark ground.
QWidget *SessionArea::makeCloseButton(QWidget *page)
{
    auto *button = new QToolButton;
    button->setText(QStringLiteral("\u2715"));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setToolTip(tr("Close this page"));
    button->setAccessibleName(button->toolTip());
    connect(button, &QToolButton::clicked, page, [this, page] { Q_EMIT closeRequested(page); });
    return button;
}

void SessionArea::take(QWidget *page)
{
    const int index = indexOf(page);
    if (index < 0)
        return;
    m_pages.removeAt(index);
    page->hide();
    page->setParent(nullptr);
    m_tabs->removeTab(index);
    showPages();
}

void SessionArea::setTitle(QWidget *page, const QString &title, const QString &toolTip)
{
    const int index = indexOf(page);
    if (index < 0)
        return;
    if (m_tabs->tabText(index) != title)
        m_tabs->setTabText(index, title);
    m_tabs->setTabToolTip(index, toolTip);
}

int SessionArea::count() const
{
    return m_pages.size();
}

QWidget *SessionArea::page(int index) const
{
    return m_pages.value(index);
}

QWidget *SessionArea::current() const
{
    return m_pages.value(m_tabs->currentIndex());
}

int SessionArea::indexOf(const QWidget *page) const
{
    return m_pages.indexOf(const_cast<QWidget *>(page));
}

void SessionArea::setCurrent(QWidget *page)
{
    if (const int index = indexOf(page); index >= 0)
        m_tabs->setCurrentIndex(index);
}

void SessionArea::setSideBySide(bool on)
{
    m_isSideBySide = on;
    showPages();
}

void SessionArea::step(int by)
{
    if (!m_pages.isEmpty())
        m_tabs->setCurrentIndex((m_tabs->currentIndex() + by + m_pages.size()) % m_pages.size());
}

void SessionArea::showPages()
{
    for (QWidget *page : qAsConst(m_pages))
        page->setVisible(m_isSideBySide || page == current());
}

void SessionArea::selectPageOf(const QWidget *widget)
{
    if (!m_isSideBySide || !widget)
        return;
    const auto page = std::find_if(m_pages.cbegin(), m_pages.cend(), [widget](const QWidget *each) {
        return each == widget || each->isAncestorOf(widget);
    });
    if (page != m_pages.cend())
        setCurrent(*page);
}

bool SessionArea::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress && object->isWidgetType())
        selectPageOf(static_cast<QWidget *>(object));
    return QWidget::eventFilter(object, event);
}

} // namespace Explorer
