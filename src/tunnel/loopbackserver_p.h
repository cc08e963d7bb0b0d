// SPDX-License-Identifier: MIT
#pragma once

#include <QTcpServer>

#include <deque>

QT_BEGIN_NAMESPACE
class QAbstractSocket;
QT_END_NAMESPACE

namespace SondixQt {

/// A server whose connections are unbuffered. QTcpSocket buffers, and closes its connection when the other side ends
/// sending, although that side may still wait for its answer.
class LoopbackServer : public QTcpServer
{
public:
    using QTcpServer::QTcpServer;

    bool hasPendingConnections() const override { return !pending.empty(); }
    /// The next connection, null when there is none. It belongs to the server until it is deleted.
    QAbstractSocket *takeConnection();

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    std::deque<QAbstractSocket *> pending;
};

} // namespace SondixQt
