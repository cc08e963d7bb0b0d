// SPDX-License-Identifier: MIT
#include "namelookup.h"

#include "sensorfeatures.h"

#include <QVector>

#include <algorithm>

namespace SondixQt {

namespace {

constexpr int maxSuggestions = 3;

// The comparison takes time and memory proportional to the length.
constexpr int longestComparedText = 100;

template<typename T>
struct Candidate
{
    QString name;
    T value;
};

// Spaces, hyphens, slashes and letter case do not count in a comparison.
QString normalized(const QString &text)
{
    QString result;
    for (const QChar c : text)
        if (c.isLetterOrNumber())
            result += c.toLower();
    return result;
}

// Damerau-Levenshtein distance (restricted form): swaps, deletions, insertions and substitutions count 1 each.
int editDistance(const QString &a, const QString &b)
{
    QVector<int> before;
    QVector<int> above(b.size() + 1);
    for (int j = 0; j <= b.size(); ++j)
        above[j] = j;
    for (int i = 1; i <= a.size(); ++i) {
        QVector<int> row(b.size() + 1, i);
        for (int j = 1; j <= b.size(); ++j) {
            const int substitution = above[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({substitution, above[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = above;
        above = row;
    }
    return above.last();
}

QStringList allNearNames(const QString &text, const QStringList &names)
{
    struct Near
    {
        int distance;
        QString name;
    };
    if (text.size() > longestComparedText)
        return {};
    const QString wanted = normalized(text);
    QVector<Near> near;
    for (const QString &name : names) {
        const QString candidate = normalized(name);
        int distance = editDistance(wanted, candidate);
        if (wanted.size() >= 3 && candidate.contains(wanted))
            distance = std::min(distance, 1);
        const bool known = std::any_of(near.cbegin(), near.cend(), [&](const Near &n) { return n.name == name; });
        if (distance <= std::max(1, wanted.size() / 3) && !known)
            near.append({distance, name});
    }
    std::stable_sort(near.begin(), near.end(),
                     [](const Near &a, const Near &b) { return a.distance < b.distance; });
    QStringList result;
    for (const Near &n : qAsConst(near))
        result += n.name;
    return result;
}

// If several names have the same value, only the nearest of them is suggested.
template<typename T>
QStringList nearestOfEach(const QList<Candidate<T>> &candidates, const QString &text, const QStringList &names)
{
    QStringList result;
    QList<T> known;
    for (const QString &name : allNearNames(text, names)) {
        const auto candidate = std::find_if(candidates.cbegin(), candidates.cend(),
                                            [&](const Candidate<T> &c) { return c.name == name; });
        if (known.contains(candidate->value) || result.size() == maxSuggestions)
            continue;
        known += candidate->value;
        result += name;
    }
    return result;
}

QString unknown(const QString &what, const QString &text, const QStringList &near, const QString &otherwise)
{
    const QString hint =
        near.isEmpty() ? otherwise : QStringLiteral("did you mean %1?").arg(near.join(QStringLiteral(" or ")));
    return QStringLiteral("there is no %1 '%2'; %3").arg(what, text, hint);
}

template<typename T>
std::optional<T> findIn(const QList<Candidate<T>> &candidates, const QString &text, const QString &what,
                        const QString &otherwise, QString *problem)
{
    const QString wanted = text.trimmed();
    bool isNumber = false;
    const int number = wanted.toInt(&isNumber);
    QStringList names;
    for (const Candidate<T> &candidate : candidates) {
        if (wanted.isEmpty() || candidate.name.isEmpty())
            continue;
        if (candidate.name.compare(wanted, Qt::CaseInsensitive) == 0 || (isNumber && candidate.value == number))
            return candidate.value;
        names += candidate.name;
    }
    if (problem)
        *problem = unknown(what, text, nearestOfEach(candidates, wanted, names), otherwise);
    return std::nullopt;
}

} // namespace

QStringList similarNames(const QString &text, const QStringList &names)
{
    return allNearNames(text, names).mid(0, maxSuggestions);
}

QString unknownNameText(const QString &what, const QString &text, const QStringList &names,
                        const QString &otherwise)
{
    return unknown(what, text, similarNames(text, names), otherwise);
}

std::optional<SensorType> findSensorType(const QString &text, QString *problem)
{
    QList<Candidate<SensorType>> candidates;
    const auto &features = getSensorFeatures();
    for (auto it = features.cbegin(); it != features.cend(); ++it)
        if (it.key() != NoSensor)
            candidates.append({it->shortName, it.key()});
    for (auto it = features.cbegin(); it != features.cend(); ++it)
        if (it.key() != NoSensor)
            candidates.append({it->name, it.key()});
    return findIn(candidates, text, QStringLiteral("model"), QStringLiteral("models have names such as TX270"),
                  problem);
}

std::optional<SensorGroup> findSensorGroup(const QString &text, QString *problem)
{
    QList<Candidate<SensorGroup>> candidates;
    QStringList names;
    for (const SensorGroup group : sensorGroups()) {
        candidates.append({sensorGroupName(group), group});
        candidates.append({sensorGroupName(group, true), group});
        if (group != NoGroup)
            names += sensorGroupName(group);
    }
    return findIn(candidates, text, QStringLiteral("group"),
                  QStringLiteral("the groups are %1").arg(names.join(QStringLiteral(", "))), problem);
}

std::optional<SensorInterface> findSensorInterface(const QString &text, QString *problem)
{
    QList<Candidate<SensorInterface>> candidates;
    QStringList names;
    for (const SensorInterface iface : sensorInterfaces()) {
        candidates.append({interfaceName(iface), iface});
        candidates.append({interfaceName(iface, true), iface});
        names += interfaceName(iface);
    }
    return findIn(candidates, text, QStringLiteral("interface"),
                  QStringLiteral("the interfaces are %1").arg(names.join(QStringLiteral(", "))), problem);
}

QList<SensorInterface> sensorInterfaces()
{
    return {RS232, XA100_USB, TCPIP, XA200, WinUSB, XA100, XA200_ETH};
}

} // namespace SondixQt
