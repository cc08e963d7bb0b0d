// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

/// One thing that was checked.
struct CheckCase
{
    enum State { Met, NotMet, Skipped };

    QString name;
    QString expected;
    QString found;
    State state = Met;
    int line = 0;         ///< in the bench file; 0: it is not from there
    double seconds = 0.0; ///< how long it took

    QString text() const { return QStringLiteral("%1: expected %2, found %3").arg(name, expected, found); }
};

/// What the check of a program has found.
struct CheckReport
{
    QString benchFile;
    QDateTime begun;
    QList<CheckCase> cases;

    int count(CheckCase::State state) const;
    /// JUnit XML, as CI servers read it.
    QByteArray junit() const;
};
