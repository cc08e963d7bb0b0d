// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QRegularExpression>
#include <QString>
#include <QVariant>

#include <algorithm>

/// The described rules of a complete answer word by word, with the regular expression itself.
inline QMap<QString, QVariant> parseByPattern(const QString &answer)
{
    static const QRegularExpression pattern(QStringLiteral("%1=%2").arg(
        QStringLiteral("([^\\s\"]+)"), QStringLiteral("(\"(?:[^\"\\\\]++|\\\\.)*+\"|[^\"\\s]+)")));
    QMap<QString, QVariant> result;
    QRegularExpressionMatchIterator matches = pattern.globalMatch(answer);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        if (match.lastCapturedIndex() != 2)
            continue;
        const QString key = match.captured(1);
        QString text = match.captured(2);
        bool ok = true;
        QVariant value;
        if (text.startsWith(QLatin1Char('"')))
            value = text.remove(QLatin1Char('"'));
        else if (text.contains(QLatin1Char('.')))
            value = text.toDouble(&ok);
        else if (text.contains(QLatin1String("0x")))
            value = text;
        else
            value = text.toInt(&ok, 10);
        if (ok)
            result.insert(key, value);
        else
            result.remove(key);
    }
    return result;
}

/// Equal keys with equal values of equal types: QVariant's own comparison converts.
inline bool identical(const QMap<QString, QVariant> &a, const QMap<QString, QVariant> &b)
{
    return std::equal(a.keyValueBegin(), a.keyValueEnd(), b.keyValueBegin(), b.keyValueEnd(),
                      [](const auto &left, const auto &right) {
                          return left.first == right.first && left.second.userType() == right.second.userType() &&
                                 left.second == right.second;
                      });
}
