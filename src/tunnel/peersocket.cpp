// SPDX-License-Identifier: MIT
#include "peersocket_p.h"

#include <QAbstractSocket>

#if defined(Q_OS_WIN)
#    include <winsock2.h>
#else
#    include <poll.h>
#    include <sys/socket.h>

#    include <cerrno>
#endif

namespace SondixQt {

#if defined(Q_OS_WIN)

namespace {

SOCKET descriptorOf(const QAbstractSocket &socket)
{
    return static_cast<SOCKET>(socket.socketDescriptor());
}

} // namespace

SocketInput pendingInput(const QAbstractSocket &socket)
{
    char byte = 0;
    const int size = ::recv(descriptorOf(socket), &byte, 1, MSG_PEEK);
    if (size > 0) {
        // Qt takes the error of an earlier call for that of a successful read and loses what it has read.
        ::WSASetLastError(0);
        return SocketInput::Data;
    }
    // A reset that a notification has already reported looks like an end of the input, but nothing can be sent any more.
    const bool isEnd = size == 0 && ::send(descriptorOf(socket), &byte, 0, 0) == 0;
    if (isEnd)
        return SocketInput::Ended;
    if (::WSAGetLastError() != WSAEWOULDBLOCK)
        return SocketInput::Failed;
    return size == 0 ? SocketInput::Ended : SocketInput::Nothing;
}

bool hasPeerEndedSending(const QAbstractSocket &socket)
{
    WSAPOLLFD poll{descriptorOf(socket), POLLRDNORM, 0};
    return ::WSAPoll(&poll, 1, 0) > 0 && (poll.revents & (POLLHUP | POLLERR)) != 0;
}

void endSending(const QAbstractSocket &socket)
{
    ::shutdown(descriptorOf(socket), SD_SEND);
}

#else

namespace {

int descriptorOf(const QAbstractSocket &socket)
{
    return static_cast<int>(socket.socketDescriptor());
}

} // namespace

SocketInput pendingInput(const QAbstractSocket &socket)
{
    char byte = 0;
    const ssize_t size = ::recv(descriptorOf(socket), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    if (size > 0)
        return SocketInput::Data;
    if (size == 0)
        return SocketInput::Ended;
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR ? SocketInput::Nothing : SocketInput::Failed;
}

bool hasPeerEndedSending(const QAbstractSocket &socket)
{
    pollfd poll{descriptorOf(socket), POLLRDHUP, 0};
    return ::poll(&poll, 1, 0) > 0;
}

void endSending(const QAbstractSocket &socket)
{
    ::shutdown(descriptorOf(socket), SHUT_WR);
}

#endif

} // namespace SondixQt
