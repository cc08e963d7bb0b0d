// SPDX-License-Identifier: MIT
#include "answerparser_p.h"

#include <limits>

namespace SondixQt {

namespace {

/// A range of characters of the answer.
struct Part
{
    const ushort *begin;
    const ushort *end;

    std::ptrdiff_t size() const { return end - begin; }
    QString toString() const { return QString(reinterpret_cast<const QChar *>(begin), int(size())); }
};

bool isSpace(ushort c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The position after the closing quote of the quoted text at \a quote, or null if it is not terminated. A
/// backslash escapes every character except a line feed.
const ushort *quotedEnd(const ushort *quote, const ushort *end)
{
    for (const ushort *p = quote + 1; p < end; ++p) {
        if (*p == '"')
            return p + 1;
        if (*p == '\\' && (++p == end || *p == '\n'))
            return nullptr;
    }
    return nullptr;
}

/// Calls \a found with the key and the value of each pair of \a answer, in order.
template<typename Found>
void splitPairs(Part answer, Found found)
{
    const ushort *const end = answer.end;
    const ushort *p = answer.begin;
    while (p < end) {
        if (isSpace(*p) || *p == '"') {
            ++p;
            continue;
        }
        // A run without white space and quotes contains at most one pair, because an unquoted value extends to the
        // end of the run. The key ends at the last "=" that is followed by a value.
        const ushort *const run = p;
        const ushort *last = nullptr;
        const ushort *previous = nullptr; // the "=" before the last one
        for (; p < end; ++p) {
            if (isSpace(*p) || *p == '"')
                break;
            if (*p == '=' && p > run) {
                previous = last;
                last = p;
            }
        }
        const bool endsWithSeparator = last && last + 1 == p;
        if (endsWithSeparator && p < end && *p == '"') {
            if (const ushort *close = quotedEnd(p, end)) {
                found(Part{run, last}, Part{p, close});
                p = close;
                continue;
            }
        }
        if (const ushort *const separator = endsWithSeparator ? previous : last)
            found(Part{run, separator}, Part{separator + 1, p});
    }
}

/// Fast path for plain decimal numbers such as -12 or 3.25; false for any other \a text. Up to 15 digits and the
/// power of ten are exact as doubles, so their quotient is correctly rounded.
bool setPlainNumber(QVariant &value, Part text)
{
    static constexpr double powersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                             1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    constexpr std::ptrdiff_t maxDigits = 15;
    const bool negative = *text.begin == '-';
    const ushort *const first = text.begin + (negative ? 1 : 0);
    const ushort *point = nullptr;
    qint64 digits = 0;
    if (text.end - first < 1 || text.end - first > maxDigits || *first == '.')
        return false;
    for (const ushort *p = first; p < text.end; ++p) {
        if (*p >= '0' && *p <= '9')
            digits = digits * 10 + (*p - '0');
        else if (*p == '.' && !point)
            point = p;
        else
            return false;
    }
    if (point) {
        const double number = double(digits) / powersOfTen[text.end - point - 1];
        value = negative ? -number : number;
        return true;
    }
    if (digits > std::numeric_limits<int>::max())
        return false;
    value = int(negative ? -digits : digits);
    return true;
}

/// Converts \a text into \a value; false if it is not a valid value.
bool setValue(QVariant &value, Part text)
{
    if (*text.begin == '"') {
        value = text.toString().remove(QLatin1Char('"'));
        return true;
    }
    if (setPlainNumber(value, text))
        return true;

    const QString word = text.toString();
    bool ok = true;
    if (word.contains(QLatin1Char('.')))
        value = word.toDouble(&ok);
    else if (word.contains(QLatin1String("0x")))
        value = word;
    else
        value = word.toInt(&ok, 10);
    return ok;
}

} // namespace

QMap<QString, QVariant> parseAllParameters(const QString &answer)
{
    QMap<QString, QVariant> result;
    const ushort *const text = answer.utf16();
    splitPairs({text, text + answer.size()}, [&result](Part key, Part value) {
        const auto entry = result.insert(key.toString(), QVariant());
        if (!setValue(*entry, value))
            result.erase(entry);
    });
    return result;
}

} // namespace SondixQt
