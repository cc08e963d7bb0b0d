// SPDX-License-Identifier: MIT
#include "exportbar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QToolButton>

namespace Explorer {

namespace {

constexpr int progressSteps = 1000;

} // namespace

ExportBar::ExportBar(QWidget *parent)
    : QWidget(parent)
    , m_text(new QLabel)
    , m_progress(new QProgressBar)
    , m_close(new QToolButton)
{
    setObjectName(QStringLiteral("exportBar"));
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_text->setWordWrap(true);
    m_progress->setRange(0, progressSteps);
    m_progress->setAccessibleName(tr("Progress of the export"));
    m_close->setObjectName(QStringLiteral("exportClose"));
    m_close->setAutoRaise(true);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 2, 6, 2);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_progress);
    layout->addWidget(m_close);
    connect(m_close, &QToolButton::clicked, this, [this] {
        if (m_isRunning)
            Q_EMIT cancelled();
        else
            hide();
    });
    hide();
}

void ExportBar::showProgress(const QString &text, double progress)
{
    m_isRunning = true;
    m_text->setText(text);
    m_progress->setValue(static_cast<int>(progress * progressSteps));
    m_progress->show();
    m_close->setText(tr("Cancel"));
    show();
}

void ExportBar::showResult(const QString &text)
{
    m_isRunning = false;
    m_text->setText(text);
    m_progress->hide();
    m_close->setText(tr("Close"));
    show();
}

QString ExportBar::text() const
{
    return m_text->text();
}

} // namespace Explorer
