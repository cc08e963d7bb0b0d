// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace SondixQt {

/// Limits of the tunnel, far above what a sensor's own pages need. They bound the memory that any client can use.
namespace TunnelLimits {

constexpr int requestLine = 8 * 1024;     ///< bytes
constexpr int head = 32 * 1024;           ///< bytes, the request line included
constexpr int body = 1024 * 1024;         ///< bytes
constexpr int discarded = 1024 * 1024;    ///< bytes that are not a request, before the connection ends
constexpr int connections = 64;           ///< at a time
constexpr int waitingRequests = 16;       ///< of one connection, before no more is read from it
constexpr int waitingText = 1024 * 1024;  ///< bytes of their commands, likewise
constexpr int readChunk = 64 * 1024;      ///< bytes taken from a connection at a time
constexpr qint64 unsentAnswers = 1 << 20; ///< bytes that a client has not read, before its requests must wait

constexpr int incompleteRequestSeconds = 5; ///< that an incomplete request may wait for its next bytes
constexpr qint64 quietMs = 300;             ///< pause after which a raw client's request is complete
constexpr qint64 idleMs = 60000;            ///< without a request, or without reading the responses
constexpr qint64 lingerMs = 500;            ///< during which input is discarded after the last response

} // namespace TunnelLimits

} // namespace SondixQt
