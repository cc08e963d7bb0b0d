// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace SondixQt {

/// What the tunnel bears. The sizes are far above what a sensor's own pages need; they keep a stranger from
/// filling the memory.
namespace TunnelLimits {

constexpr int requestLine = 8 * 1024;     ///< bytes
constexpr int head = 32 * 1024;           ///< bytes, the request line included
constexpr int body = 1024 * 1024;         ///< bytes
constexpr int garbage = 1024 * 1024;      ///< bytes that fit no request before the connection ends
constexpr int connections = 64;           ///< at a time
constexpr int waitingRequests = 16;       ///< of one connection, before no more is read from it
constexpr int waitingText = 1024 * 1024;  ///< bytes of their commands, likewise
constexpr int readChunk = 64 * 1024;      ///< bytes taken from a connection at a time
constexpr qint64 unsentAnswers = 1 << 20; ///< bytes that a client has not fetched before it gets no more

constexpr int incompleteRequestSeconds = 5; ///< a request that has begun may wait for its next bytes
constexpr qint64 quietMs = 300;             ///< after which a client that sends no blank line has said all
constexpr qint64 idleMs = 60000; ///< a connection that asks for nothing, or fetches nothing of what it asked for
constexpr qint64 lingerMs = 500; ///< what still comes is discarded between the last answer and the end

} // namespace TunnelLimits

} // namespace SondixQt
