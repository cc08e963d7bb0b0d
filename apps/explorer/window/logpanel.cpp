// SPDX-License-Identifier: MIT
#include "logpanel.h"

#include "look.h"

#include "explorer/plot/flowlayout.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QShortcut>
#include <QSortFilterProxyModel>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>

namespace Explorer {

/// Shows the entries of a kind that contain a text.
class LogFilter : public QSortFilterProxyModel
{
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    void setKind(int kind)
    {
        m_kind = kind;
        invalidateFilter();
    }
    void setText(const QString &text)
    {
        m_text = text;
        invalidateFilter();
    }

    QVariant data(const QModelIndex &index, int role) const override
    {
        if (role == Qt::ForegroundRole && index.data(LogModel::KindRole).toInt() == LogModel::Problem)
            return colourOf(Meaning::Problem, QApplication::palette());
        return QSortFilterProxyModel::data(index, role);
    }

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override
    {
        const QModelIndex first = sourceModel()->index(row, LogModel::SourceColumn, parent);
        if (m_kind >= 0 && first.data(LogModel::KindRole).toInt() != m_kind)
            return false;
        const QModelIndex text = first.siblingAtColumn(LogModel::TextColumn);
        return m_text.isEmpty() || first.data().toString().contains(m_text, Qt::CaseInsensitive) ||
               text.data().toString().contains(m_text, Qt::CaseInsensitive);
    }

private:
    int m_kind = -1;
    QString m_text;
};

LogPanel::LogPanel(QWidget *parent)
    : QWidget(parent)
    , m_filter(new LogFilter(this))
    , m_text(new QLineEdit)
    , m_kind(new QComboBox)
    , m_everyCall(new QCheckBox(tr("Every call")))
    , m_view(new QTreeView)
{
    m_filter->setSourceModel(&m_model);
    m_view->setModel(m_filter);
    m_view->setRootIsDecorated(false);
    m_view->setUniformRowHeights(true);
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setObjectName(QStringLiteral("logView"));
    m_view->setAccessibleName(tr("Log"));
    m_view->header()->setStretchLastSection(true);
    const int character = fontMetrics().averageCharWidth();
    m_view->header()->resizeSection(LogModel::TimeColumn, 15 * character);
    m_view->header()->resizeSection(LogModel::SourceColumn, 22 * character);
    m_text->setPlaceholderText(tr("Filter"));
    m_text->setClearButtonEnabled(true);
    m_text->setAccessibleName(tr("Show only entries with this text"));
    m_text->setObjectName(QStringLiteral("logFilter"));
    m_kind->setAccessibleName(tr("Show only entries of this kind"));
    m_kind->addItem(tr("Everything"), -1);
    m_kind->addItem(tr("Errors"), LogModel::Problem);
    m_kind->addItem(tr("States"), LogModel::Event);
    m_kind->addItem(tr("Answers"), LogModel::Answer);
    m_kind->addItem(tr("Calls"), LogModel::Call);
    m_everyCall->setObjectName(QStringLiteral("everyCall"));
    m_everyCall->setToolTip(tr("Also shows every opening, closing and command"));
    auto *copyButton = new QToolButton; // narrower than a push button
    auto *clearButton = new QToolButton;
    copyButton->setText(tr("Copy"));
    clearButton->setText(tr("Clear"));
    clearButton->setObjectName(QStringLiteral("clearLog"));
    auto *bar = new QWidget;
    auto *barLayout = new FlowLayout(bar); // in a narrow window in two rows
    barLayout->setContentsMargins(0, 0, 0, 0);
    barLayout->setKeepsHeight(true);
    barLayout->addWidget(m_text);
    for (QWidget *widget : std::initializer_list<QWidget *>{m_kind, m_everyCall, copyButton, clearButton})
        barLayout->addWidget(widget);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(bar);
    layout->addWidget(m_view, 1);
    connect(copyButton, &QToolButton::clicked, this, &LogPanel::copy);
    connect(clearButton, &QToolButton::clicked, &m_model, &LogModel::clear);
    connectView();
}

LogPanel::~LogPanel() = default;

void LogPanel::connectView()
{
    connect(m_text, &QLineEdit::textChanged, this, [this](const QString &text) { m_filter->setText(text); });
    connect(m_kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this] { m_filter->setKind(m_kind->currentData().toInt()); });
    connect(m_everyCall, &QCheckBox::toggled, this, [this](bool on) { m_messages.setDetailed(on); });
    connect(&m_messages, &LibraryMessages::messageReceived, this,
            [this](const QString &category, const QString &text, bool isWarning) {
                m_model.add(isWarning ? LogModel::Problem : LogModel::Call, category, text);
            });
    auto *shortcut = new QShortcut(QKeySequence::Copy, m_view);
    shortcut->setContext(Qt::WidgetShortcut);
    connect(shortcut, &QShortcut::activated, this, &LogPanel::copy);
    // Follows the newest entry as long as it is in view.
    QScrollBar *const bar = m_view->verticalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this, [this, bar](int value) { m_isAtEnd = value == bar->maximum(); });
    connect(bar, &QScrollBar::rangeChanged, this, [this, bar](int, int maximum) {
        if (m_isAtEnd)
            bar->setValue(maximum);
    });
}

void LogPanel::setDetailed(bool detailed)
{
    m_everyCall->setChecked(detailed);
}

void LogPanel::copy() const
{
    QList<int> rows;
    const QModelIndexList selected = m_view->selectionModel()->selectedRows();
    for (const QModelIndex &index : selected)
        rows += m_filter->mapToSource(index).row();
    if (rows.isEmpty()) {
        for (int row = 0; row < m_filter->rowCount(); ++row)
            rows += m_filter->mapToSource(m_filter->index(row, 0)).row();
    }
    std::sort(rows.begin(), rows.end());
    QApplication::clipboard()->setText(m_model.text(rows));
}

} // namespace Explorer
