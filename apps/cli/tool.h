// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// Runs the tool with the command line \a given, without the name of the program; returns its exit code. Needs a
/// QCoreApplication; a test may call it more than once.
int runTool(const QStringList &given);

/// A Qt message handler: writes what the user asked for to stderr.
void onLogMessage(QtMsgType type, const QMessageLogContext &context, const QString &text);
