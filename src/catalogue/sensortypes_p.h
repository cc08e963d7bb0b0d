// SPDX-License-Identifier: MIT
#pragma once

#include "sensortypes.h"

#include <QMap>
#include <QStringList>

namespace SondixQt {

struct GroupRecord
{
    QString name;
    QString shortName;
    QString image;
};

struct InterfaceRecord
{
    int index = 0;
    QString name;
    QString libraryName;
    QStringList parameterKeys;
};

const QMap<SensorGroup, GroupRecord> &groupTable();
const QMap<SensorInterface, InterfaceRecord> &interfaceTable();

/// The name that was set with setUsedByApplicationName().
QString usedByApplicationName();

} // namespace SondixQt
