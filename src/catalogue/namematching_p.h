// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>
#include <QVector>

#include <string_view>

namespace SondixQt {

enum SensorType : qint32;

/// The names under which a type can be found.
struct NameCandidate
{
    SensorType type;
    QString name;
    QString shortName;
};

/// Finds the type that a free text names.
///
/// The rules: an exact short name wins, then an exact long name. Otherwise the longest name that the text
/// contains, whatever its case, decides, and of equally long ones the lowest type. Reduced names (without "x"
/// and "-") go before full ones and long names before short ones; names of one or two letters are found by an
/// exact text only. Short names are looked for in the text without its spaces.
///
/// All that depends on the names alone is prepared once, so that a text costs little. Names must be of the
/// basic multilingual plane. Any thread may use a matcher.
class NameMatcher
{
public:
    explicit NameMatcher(const QVector<NameCandidate> &candidates);

    /// The type that \a text names, the type 0 if it names none.
    SensorType match(const QString &text) const;

private:
    struct Needle
    {
        quint64 pairs;
        QString folded;
        SensorType type;
    };
    using Needles = QVector<Needle>;

    static Needles prepared(const QVector<NameCandidate> &candidates, QString NameCandidate::*name, bool reduced);
    static const Needle *longestContained(const Needles &needles, std::u16string_view foldedText);

    QHash<QString, SensorType> m_shortNames;
    QHash<QString, SensorType> m_longNames;
    Needles m_plainShort;
    Needles m_plainLong;
    Needles m_reducedShort;
    Needles m_reducedLong;
};

/// Whether the name that a sensor reports, \a reportedName, means the catalogue's \a catalogueName:
/// the one contains the other once more and more of the characters are left out in which the two
/// customarily differ.
bool confirmsModel(QString catalogueName, QString reportedName);

} // namespace SondixQt
