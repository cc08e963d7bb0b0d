// SPDX-License-Identifier: MIT
#include "loopbackserver_p.h"

namespace SondixQt {

void ClientSocket::expectInput()
{
    char nothing = 0;
    readData(&nothing, 0);
}

void LoopbackServer::incomingConnection(qintptr descriptor)
{
    auto *const socket = new ClientSocket(this);
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

ClientSocket *LoopbackServer::takeConnection()
{
    if (pending.empty())
        return nullptr;
    ClientSocket *const socket = pending.front();
    pending.pop_front();
    if (int(pending.size()) == maxPendingConnections() - 1)
        resumeAccepting();
    return socket;
}

void LoopbackServer::stop()
{
    close();
    for (const ClientSocket *socket : pending)
        delete socket;
    pending.clear();
}

} // namespace SondixQt
