// SPDX-License-Identifier: MIT
#include "halfclose_p.h"

#include <QTcpSocket>

#if defined(Q_OS_WIN)
#    include <winsock2.h>
#else
#    include <sys/socket.h>
#endif

namespace SondixQt {

void endSending(const QTcpSocket &socket)
{
#if defined(Q_OS_WIN)
    ::shutdown(static_cast<SOCKET>(socket.socketDescriptor()), SD_SEND);
#else
    ::shutdown(static_cast<int>(socket.socketDescriptor()), SHUT_WR);
#endif
}

} // namespace SondixQt
