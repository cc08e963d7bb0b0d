// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinstance.h>

#include <QStringList>

namespace SondixQt {

class SpecialSensorInstancePrivate;
class SpecialSensorInstanceRG52xPrivate;
class SpecialSensorInstanceRG531Private;

/// A sensor instance with an action before and after every command.
///
/// Some models measure continuously in a tracking mode that a command interrupts; their subclasses
/// fill the two hooks. The command methods are used as those of SensorInstance; the variants with an
/// ExecSpecialAction choose the actions. Threads: as SensorInstance, but only one thread at a time may
/// be inside a command sequence.
class SONDIXQT_EXPORT SpecialSensorInstance : public SensorInstance
{
    Q_OBJECT
public:
    /// Which actions run; bits. A value without any of them runs none.
    enum ExecSpecialAction : qint32 {
        NoSpecialAction = 0,
        ActionBefore = 2,
        ActionAfter = 4,
        ActionBeforeAndAfter = 8,
    };
    Q_ENUM(ExecSpecialAction)

    explicit SpecialSensorInstance(SensorType type, unsigned long handle = 0);
    ~SpecialSensorInstance() override;

    using SensorInstance::sendCommand;

    ErrorCode sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                          const QMap<QString, QVariant> &results, QString *errorText = nullptr,
                          ErrorHandling errorHandling = ReadAfterSuccess) override;
    ErrorCode sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                          QString *errorText = nullptr) override;
    ErrorCode sendCommand(const QString &command, QString *errorText = nullptr) override;
    ErrorCode sendCommandGetAll(const QString &command, const QMap<QString, QVariant> &parameters,
                                QMap<QString, QVariant> &results, QString *errorText = nullptr,
                                ErrorHandling errorHandling = ReadAfterSuccess) override;
    ErrorCode sendCommandGetInt(const QString &command, const QString &resultName, int &value,
                                QString *errorText = nullptr) override;
    ErrorCode sendCommandGetDouble(const QString &command, const QString &resultName, double &value,
                                   QString *errorText = nullptr) override;
    ErrorCode sendCommandGetString(const QString &command, const QString &resultName, QString &value,
                                   QString *errorText = nullptr) override;

    /// \name Command variants that choose their actions
    /// A failing before-action prevents the command. After the variants with maps or results the
    /// after-action runs even when the command failed, and its result replaces the command's.
    /// \{
    ErrorCode sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                          const QMap<QString, QVariant> &results, ExecSpecialAction action,
                          QString *errorText = nullptr, ErrorHandling errorHandling = ReadAfterSuccess);
    ErrorCode sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                          ExecSpecialAction action, QString *errorText = nullptr);
    /// After this one a failed command is returned at once, without the after-action.
    ErrorCode sendCommand(const QString &command, ExecSpecialAction action, QString *errorText = nullptr);
    ErrorCode sendCommandGetAll(const QString &command, const QMap<QString, QVariant> &parameters,
                                QMap<QString, QVariant> &results, ExecSpecialAction action,
                                QString *errorText = nullptr, ErrorHandling errorHandling = ReadAfterSuccess);
    ErrorCode sendCommandGetInt(const QString &command, const QString &resultName, int &value,
                                ExecSpecialAction action, QString *errorText = nullptr);
    ErrorCode sendCommandGetDouble(const QString &command, const QString &resultName, double &value,
                                   ExecSpecialAction action, QString *errorText = nullptr);
    ErrorCode sendCommandGetString(const QString &command, const QString &resultName, QString &value,
                                   ExecSpecialAction action, QString *errorText = nullptr);
    /// \}

    /// Adds commands around which no action runs. "Enable_Logging", "Automatic_Setup",
    /// "Get_TransmittedDataInfo", "Clear_Buffers" and "Get_OpenState" are in the set from the start.
    void addToExcludedCommandList(const QStringList &commands);
    /// Replaces the whole set, the initial commands included.
    void setExcludedCommandList(const QStringList &commands);

protected:
    /// The action before \a command; a failure prevents the command.
    virtual ErrorCode actionBeforeSendCommand(const QString &command, QString *errorText);
    /// The action after \a command.
    virtual ErrorCode actionAfterSendCommand(const QString &command, QString *errorText);

    SpecialSensorInstance(SpecialSensorInstancePrivate &dd, SensorType type, unsigned long handle);

private:
    Q_DECLARE_PRIVATE(SpecialSensorInstance)
};

/// The RG52x models: after every command the distance tracking is started again, best effort.
///
/// The tracking mode is learnt from the sensor after the first command, not by open(); "Get_OpenState",
/// "Get_TransmittedDataInfo" and the other excluded commands do not count. getSampleRateInKhz() depends on it.
///
/// A result of 0 says that the action after the command went well; of the command itself that is true
/// for sendCommand(command) only. A command with maps or results that failed shows in errorMessage().
class SONDIXQT_EXPORT SpecialSensorInstanceRG52x : public SpecialSensorInstance
{
    Q_OBJECT
public:
    explicit SpecialSensorInstanceRG52x(unsigned long handle = 0);
    /// A type is no handle; the type of these models is known.
    explicit SpecialSensorInstanceRG52x(SensorType) = delete;
    ~SpecialSensorInstanceRG52x() override;

    /// The tracking mode that is started again after a command; -1 until it was learnt or set.
    int getTrackingMode() const;
    void setTrackingMode(int mode);
    /// The command that starts tracking in \a mode; empty for a mode that there is not.
    QString convertMeasurementModeToCommand(int mode) const;

protected:
    ErrorCode actionAfterSendCommand(const QString &command, QString *errorText) override;

private:
    Q_DECLARE_PRIVATE(SpecialSensorInstanceRG52x)
};

/// The RG53x models: tracking is stopped before every command and started again after it.
///
/// \copydetails SpecialSensorInstanceRG52x
///
/// Pass parameters in a map: `sendCommand("Set_Average", {{"SP_Average", 50}})`. The forms with one parameter
/// stage it before "StopTracking", which consumes it: the command then goes out without its parameter.
class SONDIXQT_EXPORT SpecialSensorInstanceRG531 : public SpecialSensorInstance
{
    Q_OBJECT
public:
    explicit SpecialSensorInstanceRG531(unsigned long handle = 0);
    /// A type is no handle; the type of these models is known.
    explicit SpecialSensorInstanceRG531(SensorType) = delete;
    ~SpecialSensorInstanceRG531() override;

    /// \copydoc SpecialSensorInstanceRG52x::getTrackingMode
    int getTrackingMode() const;
    void setTrackingMode(int mode);
    /// "SpeedTracking" for mode 5, "DistanceTracking" for every other.
    QString convertMeasurementModeToCommand(int mode) const;

protected:
    ErrorCode actionBeforeSendCommand(const QString &command, QString *errorText) override;
    ErrorCode actionAfterSendCommand(const QString &command, QString *errorText) override;

private:
    Q_DECLARE_PRIVATE(SpecialSensorInstanceRG531)
};

} // namespace SondixQt
