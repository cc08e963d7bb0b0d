// SPDX-License-Identifier: MIT
#pragma once

#include "sensorinstance_p.h"
#include "specialsensorinstance.h"

#include <QSet>

namespace SondixQt {

struct TrackingRow;

class SpecialSensorInstancePrivate : public SensorInstancePrivate
{
public:
    bool executeActionBefore(const QString &command, SpecialSensorInstance::ExecSpecialAction action) const;
    bool executeActionAfter(const QString &command, SpecialSensorInstance::ExecSpecialAction action) const;

    /// Calls \a send, which sends \a command with the function of the base class, between the actions.
    template<typename Send>
    ErrorCode sendBetweenActions(const QString &command, SpecialSensorInstance::ExecSpecialAction action,
                                 QString *errorText, Send send);

    QSet<QString> excludedCommands{QStringLiteral("Enable_Logging"), QStringLiteral("Automatic_Setup"),
                                   QStringLiteral("Get_TransmittedDataInfo"), QStringLiteral("Clear_Buffers"),
                                   QStringLiteral("Get_OpenState")};
    bool inAction = false; // a command sent by an action or by another command does not run the actions again

    Q_DECLARE_PUBLIC(SpecialSensorInstance)
};

/// Common to the models with tracking modes; their differences are in their TrackingRow.
class TrackingInstancePrivate : public SpecialSensorInstancePrivate
{
public:
    explicit TrackingInstancePrivate(SensorType type);

    QStringList commandsWithoutTracking() const;
    QString commandOf(int mode) const;

    /// Starts tracking in the current mode; reads it from the sensor first if it is unknown.
    ErrorCode restartTracking(QString *errorText);

    int trackingMode = -1; // unknown

private:
    ErrorCode readTrackingMode(QString *errorText);

    const TrackingRow &row;
};

class SpecialSensorInstanceRG52xPrivate : public TrackingInstancePrivate
{
public:
    SpecialSensorInstanceRG52xPrivate();
    QString distanceTrackingCommand() const override;
};

class SpecialSensorInstanceRG531Private : public TrackingInstancePrivate
{
public:
    SpecialSensorInstanceRG531Private();
    bool isSpeedTracking() const override;
};

} // namespace SondixQt
