// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// \file
/// What Qt's sockets do not tell. Reading from one whose other side has ended sending closes it, so pendingInput() is
/// asked first.

QT_BEGIN_NAMESPACE
class QAbstractSocket;
QT_END_NAMESPACE

namespace SondixQt {

enum class SocketInput {
    Data,
    Nothing, ///< for now
    Ended,   ///< everything is read, and the other side sends nothing more
    Failed,  ///< the connection is gone
};

/// What reading from \a socket would give.
SocketInput pendingInput(const QAbstractSocket &socket);

/// Whether the other side has ended sending. What it has sent may not be read yet.
bool hasPeerEndedSending(const QAbstractSocket &socket);

/// Tells the other side that nothing more comes from here, while what it sends can still be read. What was written
/// before must have left the socket's own buffer.
void endSending(const QAbstractSocket &socket);

} // namespace SondixQt
