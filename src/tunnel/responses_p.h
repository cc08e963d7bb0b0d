// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

namespace SondixQt {

/// The response with the sensor's \a header and \a body. An empty header is replaced by a composed one, CORS
/// fields are removed, and a 304 has no body.
QByteArray sensorResponse(const QByteArray &header, const QByteArray &body);

/// Whether the client can find the end of the body without the connection being closed.
bool isDelimited(const QByteArray &header, const QByteArray &body);

/// Whether the sensor's header announces that the connection will be closed.
bool announcesEnd(const QByteArray &header);

/// The answer to a command.
QByteArray commandResponse(const QByteArray &answer);

/// A 502 page that names \a path and \a errorText, both Latin-1.
QByteArray badGatewayResponse(const QByteArray &path, const QByteArray &errorText);

/// The 501 for a request that is neither GET nor POST. The connection stays open.
QByteArray otherMethodResponse(bool withBody);

/// The 100 that asks a client for the announced body.
QByteArray continueResponse();

/// The page for a refused request, with a header that announces that the connection will be closed.
QByteArray refusalResponse(int status);

} // namespace SondixQt
