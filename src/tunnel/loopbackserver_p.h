// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractSocket>
#include <QTcpServer>

#include <deque>

namespace SondixQt {

/// An unbuffered connection. QTcpSocket buffers, and closes the connection when the other side ends sending, although
/// that side may still wait for its answer.
class ClientSocket : public QAbstractSocket
{
public:
    explicit ClientSocket(QObject *parent)
        : QAbstractSocket(TcpSocket, parent)
    {
    }

    /// Emit readyRead() again although nothing was read since the last time.
    void expectInput();
};

/// A server whose connections are unbuffered.
class LoopbackServer : public QTcpServer
{
public:
    using QTcpServer::QTcpServer;

    bool hasPendingConnections() const override { return !pending.empty(); }
    /// The next connection, null when there is none. It belongs to the server until it is deleted.
    ClientSocket *takeConnection();
    /// Stops listening and drops the connections that were not taken.
    void stop();

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    std::deque<ClientSocket *> pending;
};

} // namespace SondixQt
