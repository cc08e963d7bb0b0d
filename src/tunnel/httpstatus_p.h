// SPDX-License-Identifier: MIT
#pragma once

namespace SondixQt {

/// The status codes of answers that the tunnel itself generates.
namespace HttpStatus {

constexpr int ok = 200;
constexpr int badRequest = 400;
constexpr int forbidden = 403;
constexpr int requestTimeout = 408;
constexpr int lengthRequired = 411;
constexpr int contentTooLarge = 413;
constexpr int uriTooLong = 414;
constexpr int headerFieldsTooLarge = 431;
constexpr int notImplemented = 501;
constexpr int badGateway = 502;
constexpr int serviceUnavailable = 503;

} // namespace HttpStatus

} // namespace SondixQt
