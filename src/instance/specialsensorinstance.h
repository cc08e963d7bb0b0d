// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinstance.h>

#include <QStringList>

namespace SondixQt {

class SpecialSensorInstancePrivate;
class SpecialSensorInstanceRG52xPrivate;
class SpecialSensorInstanceRG531Private;

/// A sensor instance that runs an action before and after every command.
///
/// Some models measure continuously in a tracking mode that a command interrupts. Their subclasses reimplement the
/// two action functions. SensorInstance::create() chooses the subclass. The command functions are used like those of
/// SensorInstance; the overloads with an ExecSpecialAction select the actions. Threads: as for SensorInstance, but only
/// one thread at a time may execute a command sequence.
class SONDIXQT_EXPORT SpecialSensorInstance : public SensorInstance
{
    Q_OBJECT
public:
    /// The actions to run, as bits. Other bits are ignored.
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

    /// \name Command functions with a selection of actions
    /// If the action before the command fails, the command is not sent. In the overloads with maps or results, the
    /// action after the command runs even if the command failed, and its result is returned instead of the
    /// command's.
    /// \{
    ErrorCode sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                          const QMap<QString, QVariant> &results, ExecSpecialAction action,
                          QString *errorText = nullptr, ErrorHandling errorHandling = ReadAfterSuccess);
    ErrorCode sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                          ExecSpecialAction action, QString *errorText = nullptr);
    /// If the command fails, this overload returns its result at once, without the action after it.
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

    /// Adds commands to the set of excluded commands, which run no actions. Initially these are "Enable_Logging",
    /// "Automatic_Setup", "Get_TransmittedDataInfo", "Clear_Buffers" and "Get_OpenState".
    void addToExcludedCommandList(const QStringList &commands);
    /// Replaces the set of excluded commands, including the initial ones.
    void setExcludedCommandList(const QStringList &commands);

protected:
    /// The action before \a command. If it fails, the command is not sent.
    virtual ErrorCode actionBeforeSendCommand(const QString &command, QString *errorText);
    /// The action after \a command.
    virtual ErrorCode actionAfterSendCommand(const QString &command, QString *errorText);

    SpecialSensorInstance(SpecialSensorInstancePrivate &dd, SensorType type, unsigned long handle);

private:
    Q_DECLARE_PRIVATE(SpecialSensorInstance)
};

/// An instance for the RG52x models: restarts the distance tracking after every command. A failure to restart it
/// is not returned.
///
/// The tracking mode is read from the sensor after the first command that is not excluded (such as "Get_OpenState"
/// or "Get_TransmittedDataInfo"); open() does not read it. getSampleRateInKhz() depends on it.
///
/// If the action after a command runs, the functions with maps or results return its result: NoError does not
/// mean that the command succeeded, and a failure of the command is reported by errorMessage() alone.
/// sendCommand(command) also returns a failure of the command.
class SONDIXQT_EXPORT SpecialSensorInstanceRG52x : public SpecialSensorInstance
{
    Q_OBJECT
public:
    explicit SpecialSensorInstanceRG52x(unsigned long handle = 0);
    /// Deleted because a type that is passed by mistake would be converted to a handle.
    explicit SpecialSensorInstanceRG52x(SensorType) = delete;
    ~SpecialSensorInstanceRG52x() override;

    /// The tracking mode that is restarted after a command; -1 until it has been read or set.
    int getTrackingMode() const;
    void setTrackingMode(int mode);
    /// The command that starts tracking in \a mode; empty for an invalid mode.
    QString convertMeasurementModeToCommand(int mode) const;

protected:
    ErrorCode actionAfterSendCommand(const QString &command, QString *errorText) override;

private:
    Q_DECLARE_PRIVATE(SpecialSensorInstanceRG52x)
};

/// An instance for the RG53x models: stops tracking before every command and restarts it afterwards.
///
/// The tracking mode is read from the sensor after the first command that is not excluded (such as "Get_OpenState"
/// or "Get_TransmittedDataInfo"); open() does not read it. getSampleRateInKhz() depends on it.
///
/// If the action after a command runs, the functions with maps or results return its result: NoError does not
/// mean that the command succeeded, and a failure of the command is reported by errorMessage() alone.
/// sendCommand(command) also returns a failure of the command.
///
/// Pass parameters in a map: `sendCommand("Set_Average", {{"SP_Average", 50}})`. The overloads with a single
/// parameter stage it before "StopTracking", which consumes it, so that the command is sent without its parameter.
class SONDIXQT_EXPORT SpecialSensorInstanceRG531 : public SpecialSensorInstance
{
    Q_OBJECT
public:
    explicit SpecialSensorInstanceRG531(unsigned long handle = 0);
    /// Deleted because a type that is passed by mistake would be converted to a handle.
    explicit SpecialSensorInstanceRG531(SensorType) = delete;
    ~SpecialSensorInstanceRG531() override;

    /// \copydoc SpecialSensorInstanceRG52x::getTrackingMode
    int getTrackingMode() const;
    void setTrackingMode(int mode);
    /// "SpeedTracking" for mode 5, "DistanceTracking" for any other mode.
    QString convertMeasurementModeToCommand(int mode) const;

protected:
    ErrorCode actionBeforeSendCommand(const QString &command, QString *errorText) override;
    ErrorCode actionAfterSendCommand(const QString &command, QString *errorText) override;

private:
    Q_DECLARE_PRIVATE(SpecialSensorInstanceRG531)
};

} // namespace SondixQt
