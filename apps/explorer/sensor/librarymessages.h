// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QStringList>
#include <QVector>

namespace Explorer {

/// Receives the messages of the library's logging categories ("SondixQt...") and passes all messages on to the handler
/// that was installed before.
///
/// Messages may come from any thread; messageReceived() is emitted in that of the object. Not more than a few thousand
/// messages wait: the others are dropped, and their number is reported. Only one object may exist at a time.
class LibraryMessages : public QObject
{
    Q_OBJECT
public:
    explicit LibraryMessages(QObject *parent = nullptr);
    ~LibraryMessages() override;

    /// Whether every call is reported; otherwise only warnings are, and the other messages are left to the handler
    /// that was installed before.
    void setDetailed(bool detailed);
    bool isDetailed() const { return m_isDetailed; }

Q_SIGNALS:
    void messageReceived(const QString &category, const QString &text, bool isWarning);

private:
    Q_INVOKABLE void deliver();

    bool m_isDetailed = false;
};

} // namespace Explorer
