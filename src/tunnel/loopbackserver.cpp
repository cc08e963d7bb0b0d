// SPDX-License-Identifier: MIT
#include "loopbackserver_p.h"

#include <QSocketNotifier>

namespace SondixQt {

namespace {

constexpr int peerCheckMs = 100;

} // namespace

ClientSocket::ClientSocket(QObject *parent)
    : QAbstractSocket(TcpSocket, parent)
    , peerCheck(this)
{
    peerCheck.setSingleShot(true);
    peerCheck.setInterval(peerCheckMs);
}

void ClientSocket::expectInput()
{
    char nothing = 0;
    readData(&nothing, 0);
}

void ClientSocket::ignoreInput()
{
    // An unbuffered socket has no function for this: its read notifier belongs to its socket engine, a child object.
    for (QSocketNotifier *const notifier : findChildren<QSocketNotifier *>()) {
        if (notifier->type() == QSocketNotifier::Read)
            notifier->setEnabled(false);
    }
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
