// SPDX-License-Identifier: MIT
#include "answerparser_p.h"

#include <QVarLengthArray>

#include <algorithm>

namespace SondixQt {

namespace {

/// One pair of the answer, which the two references point into.
struct Pair
{
    QStringRef key;
    QStringRef text;
};

bool isSpace(QChar c)
{
    return c == QLatin1Char(' ') || (c >= QLatin1Char('\t') && c <= QLatin1Char('\r'));
}

/// The end of the quoted text that begins at \a quote, behind its closing quote; null when it does
/// not end. A backslash escapes every character but a line feed.
const QChar *quotedEnd(const QChar *quote, const QChar *end)
{
    for (const QChar *p = quote + 1; p < end; ++p) {
        if (*p == QLatin1Char('"'))
            return p + 1;
        if (*p == QLatin1Char('\\') && (++p == end || *p == QLatin1Char('\n')))
            return nullptr;
    }
    return nullptr;
}

/// Calls \a found with each pair of \a answer in turn.
template<typename Found>
void splitPairs(const QString &answer, Found found)
{
    const QChar *const begin = answer.constData();
    const QChar *const end = begin + answer.size();
    const auto part = [&](const QChar *from, const QChar *to) {
        return QStringRef(&answer, int(from - begin), int(to - from));
    };
    const QChar *p = begin;
    while (p < end) {
        if (isSpace(*p) || *p == QLatin1Char('"')) {
            ++p;
            continue;
        }
        // A run can hold one pair only, as a value without quotes reaches to the run's end. Its key
        // ends at the last "=" that a value follows.
        const QChar *const run = p;
        const QChar *last = nullptr;
        const QChar *inner = nullptr; // the last "=" that is not the run's last character
        for (; p < end && !isSpace(*p) && *p != QLatin1Char('"'); ++p) {
            if (*p == QLatin1Char('=') && p > run) {
                inner = last;
                last = p;
            }
        }
        const bool endsOpen = last && last + 1 == p;
        if (endsOpen && p < end && *p == QLatin1Char('"')) {
            if (const QChar *close = quotedEnd(p, end)) {
                found(Pair{part(run, last), part(p, close)});
                p = close;
                continue;
            }
        }
        if (const QChar *const separator = endsOpen ? inner : last)
            found(Pair{part(run, separator), part(separator + 1, p)});
    }
}

QString withoutQuotes(const QStringRef &text)
{
    QString result(int(text.size()), Qt::Uninitialized);
    QChar *const begin = result.data();
    QChar *const end = std::remove_copy(text.begin(), text.end(), begin, QLatin1Char('"'));
    result.truncate(int(end - begin));
    return result;
}

/// The value that \a text stands for, invalid when it cannot be converted.
QVariant valueOf(const QStringRef &text)
{
    if (text.startsWith(QLatin1Char('"')))
        return withoutQuotes(text);
    bool ok = true;
    if (text.contains(QLatin1Char('.'))) {
        const double number = text.toDouble(&ok);
        return ok ? QVariant(number) : QVariant();
    }
    if (text.contains(QLatin1String("0x")))
        return text.toString();
    const int number = text.toInt(&ok);
    return ok ? QVariant(number) : QVariant();
}

} // namespace

QMap<QString, QVariant> parseAllParameters(const QString &answer)
{
    QVarLengthArray<Pair, 256> pairs;
    splitPairs(answer, [&](const Pair &pair) { pairs.append(pair); });

    // In ascending order every entry is hung in at the map's end, without a search for its place.
    std::stable_sort(pairs.begin(), pairs.end(), [](const Pair &a, const Pair &b) { return a.key < b.key; });

    QMap<QString, QVariant> result;
    for (auto pair = pairs.cbegin(); pair != pairs.cend(); ++pair) {
        const auto next = pair + 1;
        if (next != pairs.cend() && next->key == pair->key)
            continue;
        const QVariant value = valueOf(pair->text);
        if (value.isValid())
            result.insert(result.constEnd(), pair->key.toString(), value);
    }
    return result;
}

bool confirmsModel(QString catalogueName, QString reportedName)
{
    const Qt::CaseSensitivity anyCase = Qt::CaseInsensitive;
    if (reportedName.size() >= 3 && catalogueName.contains(reportedName, anyCase))
        return true;
    for (const char superfluous : {'x', '0', '/'}) {
        catalogueName.remove(QLatin1Char(superfluous), anyCase);
        if (reportedName.contains(catalogueName, anyCase))
            return true;
    }
    for (const char superfluous : {'_', '-', ' '}) {
        reportedName.remove(QLatin1Char(superfluous), anyCase);
        if (reportedName.contains(catalogueName, anyCase))
            return true;
    }
    return false;
}

} // namespace SondixQt
