// SPDX-License-Identifier: MIT
#pragma once

#include "expectation.h"
#include "framerate.h"
#include "place.h"
#include "recording.h"
#include "sample.h"
#include "SondixSimulator/control.h"
#include "timeline.h"
#include "value.h"
#include "video.h"
#include "webinterface.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace sondixsim::model {

/// A command that starts continuous measuring, and the rate at which the sensor then sends.
struct TrackingCommand
{
    std::string command;
    std::int32_t mode = 0; ///< value of the autostart setting that starts it at power-up
    FrameRate rate;
};

/// A measuring mode that differs from the others.
struct MeasuringMode
{
    std::int32_t number = 0;
    bool video = false;          ///< a model with such modes sends video in no others
    std::vector<Signal> signals; ///< empty: those of the sensor
};

/// A fault in a bench file. Its texts are windows-1250.
struct SpecFault
{
    Fault fault;
    int line = 0;
};

/// The data that describe a model or one sensor.
struct SensorSpec
{
    std::int32_t type = 0;
    std::string model;                   ///< name in bench files, also "IP_SensorTypeName"
    std::string name;                    ///< "SA_Sensor"; empty: the sensor names its controller only
    std::string controllerName;          ///< "SA_ControllerName"
    std::vector<std::string> interfaces; ///< to which it can be connected; empty: any
    bool bus = false;
    bool polled = false; ///< values become available with "Get_Measure"
    bool multi = false;  ///< stands for several sensors
    std::int32_t ringFrames = 32768;
    std::int32_t standing = 0; ///< values that are always available and never used up

    std::string serialNumber;
    std::string articleNumber;
    std::string firmware;
    std::string macAddress;
    std::vector<std::string> members; ///< serial numbers, for a sensor that stands for several
    Place place;

    ParameterList info;                                      ///< further answers of "Get_Info"
    ParameterList settings;                                  ///< "SA_" keys
    std::map<std::string, std::vector<std::string>> groups;  ///< which settings "Get_<group>" reads
    std::map<std::string, std::pair<double, double>> limits; ///< of settings
    std::map<std::string, ParameterList> answers;            ///< further commands and what they answer
    FrameRate rate;
    std::vector<Signal> signals;
    std::shared_ptr<const Recording>
        recording;                    ///< values of signals, instead of those of their generators; may be null
    std::string modeParameter;        ///< setting that names the measuring mode
    std::vector<MeasuringMode> modes; ///< only those that differ from the others
    std::string triggerParameter;     ///< setting that makes it wait for a trigger
    std::int32_t triggerOff = 0;      ///< the value with which it does not wait
    double triggerRate = 0.0;         ///< triggers per second
    Video video;
    std::map<std::int32_t, std::string> errorTexts;
    std::int32_t outOfRangeKey = 0; ///< of the major signals, see Signal
    std::string averagingNumber;    ///< setting: how many measurements a frame is the mean of
    std::string averagingType;      ///< setting: 0 means that it does not average; empty: there is none
    std::string autostart;          ///< setting that names the tracking mode at power-up
    std::string stopTracking;
    std::vector<TrackingCommand> tracking; ///< not empty: the sensor measures only while tracking
    WebInterface web;
    std::vector<SpecFault> faults;
    bool answering = true;
    std::vector<TimelineEvent> timeline;
    std::vector<SpecExpectation> expectations;
    std::optional<double> silentAfter; ///< seconds after each opening, also the next two
    std::optional<double> unplugAfter;
    std::optional<double> plugAfter;

    std::int32_t baseType() const { return type % 10000; }
    /// The type that a search reports: for sensors on the bus or behind the converter only the family.
    std::int32_t reportedType() const { return baseType() == 43 || baseType() == 34 ? baseType() : type; }
    bool listsAddresses() const { return baseType() == 53; } ///< in "SA_CurrentIPAddresses"

    ParameterList identity() const;     ///< name, numbers and firmware, as "Get_Info" answers
    std::string errorTextLines() const; ///< "<key>: <text>", as "Get_SensorErrorValueText" answers
};

} // namespace sondixsim::model
