// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>
#include <QVector>

#include <string_view>

namespace SondixQt {

enum SensorType : qint32;

/// A type and its names.
struct NameCandidate
{
    SensorType type;
    QString name;
    QString shortName;
};

/// Finds the type that a free text names.
///
/// A text that equals a short name gives its type, then a text that equals a long name. Otherwise the text is
/// searched for names, ignoring case: first for long names without "x" and "-", then for such short names, then
/// for unchanged long names, then for unchanged short names. Within each search the longest name that the text
/// contains is used, and the lowest type among names of equal length. Names shorter than three characters only
/// match the exact text. Spaces in the text are ignored when it is searched for short names.
///
/// The constructor prepares everything that depends on the names alone, so that match() is fast. Names must be
/// limited to the basic multilingual plane. match() is thread-safe.
class NameMatcher
{
public:
    explicit NameMatcher(const QVector<NameCandidate> &candidates);

    /// The type that \a text names, or the type 0 if it names none.
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

/// Whether the name \a reportedName that a sensor reports matches \a catalogueName: whether one of them contains
/// the other. The comparison is repeated while the characters in which the two usually differ are removed one by
/// one.
bool confirmsModel(QString catalogueName, QString reportedName);

} // namespace SondixQt
