// SPDX-License-Identifier: MIT
#pragma once

#include "sensorinstance_p.h"
#include "specialsensorinstance.h"

#include <QSet>

namespace SondixQt {

class SpecialSensorInstancePrivate : public SensorInstancePrivate
{
public:
    bool executeActionBefore(const QString &command, SpecialSensorInstance::ExecSpecialAction action) const;
    bool executeActionAfter(const QString &command, SpecialSensorInstance::ExecSpecialAction action) const;

    /// Runs \a send, the base class's own variant of \a command, between the actions.
    template<typename Send>
    ErrorCode sendBetweenActions(const QString &command, SpecialSensorInstance::ExecSpecialAction action,
                                 QString *errorText, Send send);

    /// Reads the tracking mode that the sensor starts in by itself, without any action.
    ErrorCode readAutostartMode(int &mode, QString *errorText);

    QSet<QString> excludedCommands{QStringLiteral("Enable_Logging"), QStringLiteral("Automatic_Setup"),
                                   QStringLiteral("Get_TransmittedDataInfo"), QStringLiteral("Clear_Buffers"),
                                   QStringLiteral("Get_OpenState")};
    bool inAction = false; // keeps a command inside a command from running the actions again

    Q_DECLARE_PUBLIC(SpecialSensorInstance)
};

class SpecialSensorInstanceRG52xPrivate : public SpecialSensorInstancePrivate
{
public:
    ErrorCode learnTrackingMode(QString *errorText);

    int trackingMode = -1;
};

class SpecialSensorInstanceRG531Private : public SpecialSensorInstancePrivate
{
public:
    ErrorCode learnTrackingMode(QString *errorText);

    int trackingMode = -1;
};

} // namespace SondixQt
