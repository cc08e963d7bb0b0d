// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QTextCodec>

namespace SondixQt {

/// The text in \a bytes, windows-1250 as the sensor-access library writes it, up to a zero byte.
inline QString decodeText(const QByteArray &bytes)
{
    static const QTextCodec *const codec = QTextCodec::codecForName("windows-1250");
    return codec->toUnicode(bytes.constData(), int(qstrnlen(bytes.constData(), uint(bytes.size()))));
}

} // namespace SondixQt
