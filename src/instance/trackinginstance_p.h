// SPDX-License-Identifier: MIT
#pragma once

#include "instanceaccess_p.h"
#include "instancelog_p.h"
#include "specialsensorinstance.h"

#include <QScopedValueRollback>

#include <type_traits>

namespace SondixQt {

/// A special instance, \a Base, whose commands return their own result.
///
/// \a Base returns the result of the restart of tracking, even if the command itself was refused. This class restarts
/// tracking after each command that has stopped it, and logs a failure of the restart as a warning: opening the sensor
/// again starts tracking as well.
template<typename Base>
class TrackingInstance final : public Base
{
    static_assert(std::is_base_of_v<SpecialSensorInstance, Base>);
    using Parameters = QMap<QString, QVariant>;
    using ErrorHandling = SensorInstance::ErrorHandling;

public:
    using Base::Base;
    using Base::sendCommand;
    using Base::sendCommandGetAll;
    using Base::sendCommandGetDouble;
    using Base::sendCommandGetInt;
    using Base::sendCommandGetString;

    ErrorCode sendCommand(const QString &command, const Parameters &parameters, const Parameters &results,
                          QString *errorText, ErrorHandling errorHandling) override
    {
        return send(command, [&] {
            return Base::sendCommand(command, parameters, results, Base::ActionBefore, errorText, errorHandling);
        });
    }
    ErrorCode sendCommand(const QString &command, const Parameters &parameters, QString *errorText) override
    {
        return send(command,
                    [&] { return Base::sendCommand(command, parameters, Base::ActionBefore, errorText); });
    }
    ErrorCode sendCommand(const QString &command, QString *errorText) override
    {
        return send(command, [&] { return Base::sendCommand(command, Base::ActionBefore, errorText); });
    }
    ErrorCode sendCommandGetAll(const QString &command, const Parameters &parameters, Parameters &results,
                                QString *errorText, ErrorHandling errorHandling) override
    {
        return send(command, [&] {
            return Base::sendCommandGetAll(command, parameters, results, Base::ActionBefore, errorText,
                                           errorHandling);
        });
    }
    ErrorCode sendCommandGetInt(const QString &command, const QString &resultName, int &value,
                                QString *errorText) override
    {
        return send(command, [&] {
            return Base::sendCommandGetInt(command, resultName, value, Base::ActionBefore, errorText);
        });
    }
    ErrorCode sendCommandGetDouble(const QString &command, const QString &resultName, double &value,
                                   QString *errorText) override
    {
        return send(command, [&] {
            return Base::sendCommandGetDouble(command, resultName, value, Base::ActionBefore, errorText);
        });
    }
    ErrorCode sendCommandGetString(const QString &command, const QString &resultName, QString &value,
                                   QString *errorText) override
    {
        return send(command, [&] {
            return Base::sendCommandGetString(command, resultName, value, Base::ActionBefore, errorText);
        });
    }

protected:
    // Not called for excluded commands, nor for commands that are sent as part of another one.
    ErrorCode actionBeforeSendCommand(const QString &command, QString *errorText) override
    {
        const ErrorCode code = Base::actionBeforeSendCommand(command, errorText);
        m_stopped = code == NoError;
        return code;
    }

private:
    template<typename Send>
    ErrorCode send(const QString &command, Send sendIt)
    {
        const InstanceLock lock(this);
        const QScopedValueRollback<bool> outer(m_stopped, false);
        const ErrorCode code = sendIt();
        if (m_stopped) {
            QString text;
            const ErrorCode restarted = Base::actionAfterSendCommand(command, &text);
            if (restarted != NoError || !text.isEmpty())
                qCWarning(instanceLog).noquote()
                    << QStringLiteral("the sensor did not start to measure again after %1: %2")
                           .arg(command, text.isEmpty() ? QStringLiteral("error %1").arg(restarted) : text);
        }
        return code;
    }

    bool m_stopped = false;
};

} // namespace SondixQt
