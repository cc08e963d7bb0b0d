// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <QString>

#include <functional>

namespace SondixApp {

/// The texts of a sensor's error values, and how often each has occurred.
class ErrorValues
{
public:
    /// Returns the text of a scaled value that is an error value; empty if it has none.
    using Text = std::function<QString(double)>;

    explicit ErrorValues(Text text);

    struct Error
    {
        int key = 0;
        QByteArray text; ///< UTF-8 on one line, never empty
        QByteArray json; ///< an object with the key and the text
        qint64 count = 0;
    };

    /// Counts the error value \a value. The reference is valid until the next call.
    const Error &count(double value);
    /// The number of error values by their text.
    QMap<QString, qint64> counts() const;

private:
    Text m_text;
    QHash<int, Error> m_errors;
};

} // namespace SondixApp
