// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QTextCodec>

namespace SondixQt {

/// Decodes \a bytes up to the first zero byte. The sensor-access library encodes its texts in windows-1250.
inline QString decodeText(const QByteArray &bytes)
{
    static const QTextCodec *const codec = QTextCodec::codecForName("windows-1250");
    return codec->toUnicode(bytes.constData(), int(qstrnlen(bytes.constData(), uint(bytes.size()))));
}

} // namespace SondixQt
