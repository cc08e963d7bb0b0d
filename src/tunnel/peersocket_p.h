// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QTcpSocket;
QT_END_NAMESPACE

namespace SondixQt {

/// Tells the other side that nothing more comes from here, while what it sends can still be read. What was written
/// before must have left the socket's own buffer.
void endSending(const QTcpSocket &socket);

} // namespace SondixQt
