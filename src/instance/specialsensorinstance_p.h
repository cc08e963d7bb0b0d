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

    /// Runs \a send, the base class's own variant of \a command, between the actions.
    template<typename Send>
    ErrorCode sendBetweenActions(const QString &command, SpecialSensorInstance::ExecSpecialAction action,
                                 QString *errorText, Send send);

    QSet<QString> excludedCommands{QStringLiteral("Enable_Logging"), QStringLiteral("Automatic_Setup"),
                                   QStringLiteral("Get_TransmittedDataInfo"), QStringLiteral("Clear_Buffers"),
                                   QStringLiteral("Get_OpenState")};
    bool inAction = false; // keeps a command inside a command from running the actions again

    Q_DECLARE_PUBLIC(SpecialSensorInstance)
};

/// What the models that track have in common. What differs is in their rows.
class TrackingInstancePrivate : public SpecialSensorInstancePrivate
{
public:
    explicit TrackingInstancePrivate(SensorType type);

    QStringList commandsWithoutTracking() const;
    QString commandOf(int mode) const;

    /// Starts tracking in the known mode; asks the sensor for its mode first if it is not known.
    ErrorCode restartTracking(QString *errorText);

    int trackingMode = -1; // unknown

private:
    ErrorCode learnTrackingMode(QString *errorText);

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
