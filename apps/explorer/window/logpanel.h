// SPDX-License-Identifier: MIT
#pragma once

#include "explorer/sensor/librarymessages.h"
#include "explorer/sensor/logmodel.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QTreeView;

namespace Explorer {

class LogFilter;

/// Shows the log, filtered by kind and text. On demand the library's messages on every call are in it.
class LogPanel : public QWidget
{
    Q_OBJECT
public:
    explicit LogPanel(QWidget *parent = nullptr);
    ~LogPanel() override;

    LogModel &model() { return m_model; }
    bool isDetailed() const { return m_messages.isDetailed(); }
    void setDetailed(bool detailed);

public Q_SLOTS:
    /// Copies the selected entries, or all that are shown.
    void copy() const;

private:
    void connectView();

    LogModel m_model;
    LogFilter *m_filter;
    LibraryMessages m_messages;
    QLineEdit *m_text;
    QComboBox *m_kind;
    QCheckBox *m_everyCall;
    QTreeView *m_view;
    bool m_isAtEnd = true;
};

} // namespace Explorer
