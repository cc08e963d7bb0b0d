// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;
class QToolButton;

namespace Explorer {

/// A line below the plot with the progress of an export and with what has become of it.
class ExportBar : public QWidget
{
    Q_OBJECT
public:
    explicit ExportBar(QWidget *parent = nullptr);

    /// \a progress from 0 to 1.
    void showProgress(const QString &text, double progress);
    void showResult(const QString &text);
    QString text() const;

Q_SIGNALS:
    void cancelled();

private:
    QLabel *m_text;
    QProgressBar *m_progress;
    QToolButton *m_close;
    bool m_isRunning = false;
};

} // namespace Explorer
