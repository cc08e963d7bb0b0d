// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// \file
/// Socket states that Qt does not report, and the shutdown of the write side. Reading from a QAbstractSocket
/// whose peer has shut down its write side closes the socket: call pendingInput() first.

QT_BEGIN_NAMESPACE
class QAbstractSocket;
QT_END_NAMESPACE

namespace SondixQt {

enum class SocketInput {
    Data,
    Nothing, ///< for now
    Ended,   ///< everything has been read, and the peer has shut down its write side
    Failed,  ///< the connection is gone
};

/// The result that reading from \a socket would have.
SocketInput pendingInput(const QAbstractSocket &socket);

/// Whether the peer has shut down its write side. There may still be unread input.
bool hasPeerEndedSending(const QAbstractSocket &socket);

/// Shuts down the write side; input can still be read. The write buffer of \a socket must be empty.
void endSending(const QAbstractSocket &socket);

} // namespace SondixQt
