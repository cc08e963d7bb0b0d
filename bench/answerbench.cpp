// SPDX-License-Identifier: MIT
#include "report.h"
#include "sondix/answerparser_p.h"

#include <QRegularExpression>
#include <QVector>

using namespace SondixQt;

namespace {

using Parameters = QMap<QString, QVariant>;

constexpr int parameterCount = 200;

/// A complete answer in the mix of texts, numbers and integers that sensors give.
QString answer()
{
    QString text;
    for (int i = 0; text.count(QLatin1Char('=')) < parameterCount; ++i) {
        text +=
            QStringLiteral("SA_Measrate%1=%2.25 SA_OutputVideoRaw_ETH%1=%1 IA_Scaled_Name%1=\"Distance %1 (raw)\" "
                           "IA_Scaled_RangeMax%1=%1.5 SA_Address%1=0x%1F ")
                .arg(i)
                .arg(i * 17);
    }
    return text;
}

/// The same with the regular expression that an answer follows.
Parameters parseByPattern(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("([^\\s\"]+)=(\"(?:[^\"\\\\]++|\\\\.)*+\"|[^\"\\s]+)"));
    Parameters result;
    QRegularExpressionMatchIterator matches = pattern.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const QString key = match.captured(1);
        QString value = match.captured(2);
        bool ok = true;
        QVariant converted;
        if (value.startsWith(QLatin1Char('"')))
            converted = value.remove(QLatin1Char('"'));
        else if (value.contains(QLatin1Char('.')))
            converted = value.toDouble(&ok);
        else if (value.contains(QLatin1String("0x")))
            converted = value;
        else
            converted = value.toInt(&ok);
        if (ok)
            result.insert(key, converted);
        else
            result.remove(key);
    }
    return result;
}

void parse(benchmark::State &state)
{
    const QString text = answer();
    for (auto _ : state)
        benchmark::DoNotOptimize(parseAllParameters(text));
}

void parsePattern(benchmark::State &state)
{
    const QString text = answer();
    if (parseByPattern(text) != parseAllParameters(text))
        state.SkipWithError("the two parsers do not agree");
    for (auto _ : state)
        benchmark::DoNotOptimize(parseByPattern(text));
}

/// Fills the map in the answer's order from what is split and converted already.
void fill(benchmark::State &state)
{
    const Parameters parsed = parseAllParameters(answer());
    QVector<QPair<QString, QVariant>> pairs;
    for (const QString &part : answer().split(QLatin1Char(' '))) {
        const QString key = part.section(QLatin1Char('='), 0, 0);
        if (parsed.contains(key))
            pairs.append({key, parsed.value(key)});
    }
    if (pairs.size() != parameterCount || parsed.size() != parameterCount)
        state.SkipWithError("the answer has not the parameters that it should have");
    for (auto _ : state) {
        Parameters map;
        for (const auto &pair : qAsConst(pairs))
            map.insert(pair.first, pair.second);
        benchmark::DoNotOptimize(map);
    }
}

const bool registered = [] {
    benchmark::RegisterBenchmark("fill a map of 200", fill);
    benchmark::RegisterBenchmark("parse 200 parameters", parse);
    benchmark::RegisterBenchmark("parse 200 parameters by pattern", parsePattern);
    report::claim("parsing 200 parameters: times filling the map", "x", 1.5,
                  report::ratio("parse 200 parameters", "fill a map of 200"));
    report::claim("the same with QRegularExpression: times filling the map", "x", std::nullopt,
                  report::ratio("parse 200 parameters by pattern", "fill a map of 200"));
    return true;
}();

} // namespace
