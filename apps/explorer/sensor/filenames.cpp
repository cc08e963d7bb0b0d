// SPDX-License-Identifier: MIT
#include "filenames.h"

#include <SondixQt/sensoraddress.h>

#include <QCryptographicHash>
#include <QRegularExpression>

namespace Explorer {

QString fileNameOf(const QString &text)
{
    static const QRegularExpression forbidden(QStringLiteral("[\\x00-\\x1f\\x7f/\\\\:*?\"<>|]"));
    return QString(text).replace(forbidden, QStringLiteral("_"));
}

// A slash would begin another group, and Windows has no keys of more than 255 characters.
QString settingsGroupOf(const SondixQt::SensorAddress &address)
{
    constexpr int longest = 200;
    const QByteArray text = address.toString().toUtf8();
    QByteArray name = text.toPercentEncoding(" @=,:");
    if (name.size() > longest)
        name = QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex();
    return QStringLiteral("sensor ") + QString::fromLatin1(name);
}

} // namespace Explorer
