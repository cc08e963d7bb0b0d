// SPDX-License-Identifier: MIT
#include "errorvalues.h"

#include <SondixQt/errorvalue.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

using namespace SondixQt;

namespace SondixApp {

ErrorValues::ErrorValues(Text text)
    : m_text(std::move(text))
{
}

const ErrorValues::Error &ErrorValues::count(double value)
{
    const int key = errorValueKey(value);
    auto error = m_errors.find(key);
    if (error == m_errors.end()) {
        QString text = m_text(value).simplified();
        if (text.isEmpty())
            text = QStringLiteral("error %1").arg(key);
        const QJsonDocument json(QJsonObject{{QStringLiteral("error"), key}, {QStringLiteral("text"), text}});
        error = m_errors.insert(key, {key, text.toUtf8(), json.toJson(QJsonDocument::Compact), 0});
    }
    ++error->count;
    return *error;
}

QMap<QString, qint64> ErrorValues::counts() const
{
    QMap<QString, qint64> counts;
    for (const Error &error : m_errors)
        counts[QString::fromUtf8(error.text)] += error.count;
    return counts;
}

} // namespace SondixApp
