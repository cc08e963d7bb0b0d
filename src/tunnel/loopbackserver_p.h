// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractSocket>
#include <QTcpServer>
#include <QTimer>

#include <deque>

namespace SondixQt {

/// An unbuffered connection. QTcpSocket buffers, and closes the connection when the peer shuts down its write
/// side, although the peer may still wait for its answer.
class ClientSocket : public QAbstractSocket
{
public:
    explicit ClientSocket(QObject *parent);

    /// Makes Qt emit readyRead() again, which it otherwise does only after a read.
    void expectInput();
    /// Ends the notifications until expectInput() or a read. On Windows, Qt would otherwise emit readyRead() without a
    /// pause after the peer has ended sending.
    void ignoreInput();

    /// Times out once, a while after it was started.
    QTimer peerCheck;
};

/// A server whose connections are unbuffered.
class LoopbackServer : public QTcpServer
{
public:
    using QTcpServer::QTcpServer;

    bool hasPendingConnections() const override { return !pending.empty(); }
    /// The next connection, or null if there is none. The server remains its parent.
    ClientSocket *takeConnection();
    /// Stops listening and drops the connections that were not taken.
    void stop();

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    std::deque<ClientSocket *> pending;
};

} // namespace SondixQt
