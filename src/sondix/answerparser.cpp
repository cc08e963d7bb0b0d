// SPDX-License-Identifier: MIT
#include "answerparser_p.h"

#include <QVarLengthArray>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace SondixQt {

namespace {

/// A part of the answer.
struct Part
{
    const ushort *begin;
    const ushort *end;

    std::ptrdiff_t size() const { return end - begin; }
    QString toString() const { return QString(reinterpret_cast<const QChar *>(begin), int(size())); }
};

struct Pair
{
    Part key;
    Part text;
};

bool isSpace(ushort c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The end of the quoted text that begins at \a quote, behind its closing quote; null when it does
/// not end. A backslash escapes every character but a line feed.
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

/// Calls \a found with each pair of \a answer in turn.
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
        // A run can hold one pair only, as a value without quotes reaches to the run's end. Its key
        // ends at the last "=" that a value follows.
        const ushort *const run = p;
        const ushort *last = nullptr;
        const ushort *inner = nullptr; // the "=" before the last
        for (; p < end; ++p) {
            if (*p > '=') // letters, above all: nothing below this line can be one
                continue;
            if (isSpace(*p) || *p == '"')
                break;
            if (*p == '=' && p > run) {
                inner = last;
                last = p;
            }
        }
        const bool endsOpen = last && last + 1 == p;
        if (endsOpen && p < end && *p == '"') {
            if (const ushort *close = quotedEnd(p, end)) {
                found(Pair{{run, last}, {p, close}});
                p = close;
                continue;
            }
        }
        if (const ushort *const separator = endsOpen ? inner : last)
            found(Pair{{run, separator}, {separator + 1, p}});
    }
}

/// Where \a a and \a b, of which the shorter has \a common characters, first differ; \a common when
/// they do not.
std::ptrdiff_t firstDifference(const ushort *a, const ushort *b, std::ptrdiff_t common)
{
    // The names of parameters begin alike, so most of them is skipped four characters at a time.
    constexpr std::ptrdiff_t chunk = sizeof(quint64) / sizeof(ushort);
    std::ptrdiff_t i = 0;
    for (; i + chunk <= common && std::memcmp(a + i, b + i, sizeof(quint64)) == 0; i += chunk) {
    }
    while (i < common && a[i] == b[i])
        ++i;
    return i;
}

/// The order of QString, and for equal keys that of the answer.
inline bool comesBefore(const Pair &a, const Pair &b)
{
    const std::ptrdiff_t common = std::min(a.key.size(), b.key.size());
    const std::ptrdiff_t i = firstDifference(a.key.begin, b.key.begin, common);
    if (i != common)
        return a.key.begin[i] < b.key.begin[i];
    if (a.key.size() != b.key.size())
        return a.key.size() < b.key.size();
    return a.key.begin < b.key.begin;
}

bool equalKeys(const Pair &a, const Pair &b)
{
    return std::equal(a.key.begin, a.key.end, b.key.begin, b.key.end);
}

/// Moves \a text into \a value, which can only copy.
void setText(QVariant &value, QString text)
{
    value = QString();
    static_cast<QString *>(value.data())->swap(text);
}

QString withoutQuotes(Part text)
{
    QString result(int(text.size()), Qt::Uninitialized);
    auto *const begin = reinterpret_cast<ushort *>(result.data());
    result.truncate(int(std::remove_copy(text.begin, text.end, begin, ushort('"')) - begin));
    return result;
}

/// Sets \a value if \a text is a plain decimal number such as -12 or 3.25. Up to 15 digits, these and
/// the power of ten are exact as doubles, so that their quotient is the nearest double.
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

/// Sets \a value to what \a text stands for; false when it cannot be converted.
bool setValue(QVariant &value, Part text)
{
    if (*text.begin == '"') {
        setText(value, withoutQuotes(text));
        return true;
    }
    if (setPlainNumber(value, text))
        return true;

    QString word = text.toString();
    bool ok = true;
    if (word.contains(QLatin1Char('.')))
        value = word.toDouble(&ok);
    else if (word.contains(QLatin1String("0x")))
        setText(value, std::move(word));
    else
        value = word.toInt(&ok, 10);
    return ok;
}

} // namespace

QMap<QString, QVariant> parseAllParameters(const QString &answer)
{
    QVarLengthArray<Pair, 256> pairs;
    const ushort *const text = answer.utf16();
    splitPairs({text, text + answer.size()}, [&](const Pair &pair) { pairs.append(pair); });

    // In ascending order every entry is hung in at the map's end, without a search for its place.
    std::sort(pairs.begin(), pairs.end(), [](const Pair &a, const Pair &b) { return comesBefore(a, b); });

    QMap<QString, QVariant> result;
    for (auto pair = pairs.cbegin(); pair != pairs.cend(); ++pair) {
        const auto next = pair + 1;
        if (next != pairs.cend() && equalKeys(*next, *pair))
            continue;
        const auto entry = result.insert(result.constEnd(), pair->key.toString(), QVariant());
        if (!setValue(*entry, pair->text))
            result.erase(entry);
    }
    return result;
}

} // namespace SondixQt
