// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

namespace SondixQt {

/// The sensor's answer to a request as it goes to the browser. An empty \a header is replaced by our own; one
/// that lets other origins read the answer loses that. A 304 has no body.
QByteArray sensorResponse(const QByteArray &header, const QByteArray &body);

/// Whether a client can tell where the response ends: otherwise the connection must end with it.
bool isDelimited(const QByteArray &header, const QByteArray &body);

/// Whether the sensor says that the connection ends with this answer.
bool announcesEnd(const QByteArray &header);

/// The answer to a command.
QByteArray commandResponse(const QByteArray &answer);

/// The page that says that the sensor did not serve \a path, both taken as Latin-1.
QByteArray badGatewayResponse(const QByteArray &path, const QByteArray &errorText);

/// The answer to a request that is neither GET nor POST. The connection goes on.
QByteArray otherMethodResponse(bool withBody);

/// Tells a client to send the body that it has announced.
QByteArray continueResponse();

/// The page with which a request is refused. The client is told that the connection ends.
QByteArray refusalResponse(int status);

} // namespace SondixQt
