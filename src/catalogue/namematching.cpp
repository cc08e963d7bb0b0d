// SPDX-License-Identifier: MIT
#include "namematching_p.h"

#include <QVarLengthArray>

#include <algorithm>

namespace SondixQt {

namespace {

constexpr SensorType noType = SensorType{};
constexpr int minContainedNameSize = 3;

std::u16string_view view(const QString &text)
{
    return {reinterpret_cast<const char16_t *>(text.utf16()), static_cast<std::size_t>(text.size())};
}

/// The case folding of QString's case-insensitive search, in which the Kelvin sign equals "k" and the long s
/// equals "s". Surrogate pairs fold differently there, but never to a character that occurs in a name.
char16_t folded(QChar character)
{
    return character.toCaseFolded().unicode();
}

/// 64-bit Bloom filter of character pairs: a name can only occur in the text if its bits are a subset. Searching
/// the text for every name instead takes more than ten times as long.
quint64 pairsOf(std::u16string_view text)
{
    quint64 set = 0;
    for (std::size_t i = 1; i < text.size(); ++i)
        set |= quint64{1} << ((text[i - 1] * 31U + text[i]) & 63U);
    return set;
}

void insertLowest(QHash<QString, SensorType> &types, const QString &name, SensorType type)
{
    const auto known = types.find(name);
    if (known == types.end())
        types.insert(name, type);
    else
        *known = std::min(*known, type);
}

} // namespace

NameMatcher::NameMatcher(const QVector<NameCandidate> &candidates)
    : m_plainShort(prepared(candidates, &NameCandidate::shortName, false))
    , m_plainLong(prepared(candidates, &NameCandidate::name, false))
    , m_reducedShort(prepared(candidates, &NameCandidate::shortName, true))
    , m_reducedLong(prepared(candidates, &NameCandidate::name, true))
{
    for (const NameCandidate &candidate : candidates) {
        insertLowest(m_shortNames, candidate.shortName, candidate.type);
        insertLowest(m_longNames, candidate.name, candidate.type);
    }
}

NameMatcher::Needles NameMatcher::prepared(const QVector<NameCandidate> &candidates, QString NameCandidate::*name,
                                           bool reduced)
{
    Needles needles;
    for (const NameCandidate &candidate : candidates) {
        QString text = candidate.*name;
        if (reduced)
            text.remove(QLatin1Char('x'), Qt::CaseInsensitive).remove(QLatin1Char('-'));
        if (text.size() < minContainedNameSize)
            continue;
        for (QChar &character : text)
            character = QChar(folded(character));
        needles.append({pairsOf(view(text)), text, candidate.type});
    }
    std::sort(needles.begin(), needles.end(), [](const Needle &a, const Needle &b) {
        return a.folded.size() != b.folded.size() ? a.folded.size() > b.folded.size() : a.type < b.type;
    });
    return needles;
}

const NameMatcher::Needle *NameMatcher::longestContained(const Needles &needles, std::u16string_view foldedText)
{
    const quint64 present = pairsOf(foldedText);
    for (const Needle &needle : needles) {
        if ((needle.pairs & ~present) == 0 && foldedText.find(view(needle.folded)) != foldedText.npos)
            return &needle;
    }
    return nullptr;
}

SensorType NameMatcher::match(const QString &text) const
{
    if (text.isEmpty())
        return noType;
    if (const auto exact = m_shortNames.find(text); exact != m_shortNames.end())
        return *exact;
    if (const auto exact = m_longNames.find(text); exact != m_longNames.end())
        return *exact;

    QVarLengthArray<char16_t, 128> whole;
    QVarLengthArray<char16_t, 128> withoutSpaces;
    for (const QChar character : text) {
        whole.append(folded(character));
        if (character != QLatin1Char(' '))
            withoutSpaces.append(whole.last());
    }
    const std::u16string_view longText(whole.data(), static_cast<std::size_t>(whole.size()));
    const std::u16string_view shortText(withoutSpaces.data(), static_cast<std::size_t>(withoutSpaces.size()));

    const std::pair<const Needles *, std::u16string_view> searches[] = {{&m_reducedLong, longText},
                                                                        {&m_reducedShort, shortText},
                                                                        {&m_plainLong, longText},
                                                                        {&m_plainShort, shortText}};
    for (const auto &[needles, haystack] : searches) {
        if (const Needle *needle = longestContained(*needles, haystack))
            return needle->type;
    }
    return noType;
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
