// SPDX-License-Identifier: MIT
#include "loopbackserver_p.h"

#include <QAbstractSocket>

namespace SondixQt {

void LoopbackServer::incomingConnection(qintptr descriptor)
{
    auto *const socket = new QAbstractSocket(QAbstractSocket::TcpSocket, this);
    if (!socket->setSocketDescriptor(descriptor, QAbstractSocket::ConnectedState,
                                     QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        delete socket;
        return;
    }
    // Small answers that follow each other would otherwise wait for the client's acknowledgement.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    pending.push_back(socket);
    if (int(pending.size()) >= maxPendingConnections())
        pauseAccepting();
}

QAbstractSocket *LoopbackServer::takeConnection()
{
    if (pending.empty())
        return nullptr;
    QAbstractSocket *const socket = pending.front();
    pending.pop_front();
    if (int(pending.size()) == maxPendingConnections() - 1)
        resumeAccepting();
    return socket;
}

} // namespace SondixQt
