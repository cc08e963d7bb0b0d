// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QRegularExpression>
#include <QString>
#include <QVariant>

#include <algorithm>

/// Parses a complete answer with the regular expression that defines its syntax.
inline QMap<QString, QVariant> parseByPattern(const QString &answer)
{
    static const QRegularExpression pattern(
        QStringLiteral("%1=%2").arg("([^\\s\"]+)", "(\"(?:[^\"\\\\]++|\\\\.)*+\"|[^\"\\s]+)"));
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
        if (text.startsWith('"'))
            value = text.remove('"');
        else if (text.contains('.'))
            value = text.toDouble(&ok);
        else if (text.contains("0x"))
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

/// Compares keys, values and their types. QVariant::operator== alone would convert the types.
inline bool identical(const QMap<QString, QVariant> &a, const QMap<QString, QVariant> &b)
{
    return std::equal(a.keyValueBegin(), a.keyValueEnd(), b.keyValueBegin(), b.keyValueEnd(),
                      [](const auto &left, const auto &right) {
                          return left.first == right.first && left.second.userType() == right.second.userType() &&
                                 left.second == right.second;
                      });
}
