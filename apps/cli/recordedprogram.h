// SPDX-License-Identifier: MIT
#pragma once

#include "childprogram.h"

#include <QTemporaryDir>

/// A program that finds the recorder in place of the sensor-access library.
class RecordedProgram : public ChildProgram
{
public:
    using ChildProgram::ChildProgram;
    ~RecordedProgram() override;

protected:
    bool prepare(QString &problem) override;

private:
    bool prepareFor(const QString &recorder, QString &problem);

    QTemporaryDir m_folder;
};
