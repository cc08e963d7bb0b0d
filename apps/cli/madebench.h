// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <nlohmann/json.hpp>

#include <cmath>
#include <deque>
#include <limits>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace sondixrec {
struct Record;
}

/// A bench file that is made of what happened to real sensors. All texts are UTF-8.
namespace MadeBench {

/// Keeps the order of the members and writes 2.0 for a number that is no whole one.
using Json = nlohmann::ordered_json;
/// Values by parameter.
using Parameters = std::map<std::string, Json>;

/// Values of whole frames that follow each other.
struct Values
{
    std::optional<double> time;    ///< of the first frame
    std::optional<qint64> missing; ///< frames that are missing before these; nothing if the times show it
    bool isFirst = false;          ///< the sensor was opened before
    std::vector<double> scaled;    ///< empty if unknown
    std::vector<std::int32_t> raw; ///< empty if unknown
};

/// A call that failed.
struct Fault
{
    std::string function;
    std::string command;
    int from = 1;
    int times = 1;
    std::int32_t code = 0;
    std::string text;
};

struct Sensor
{
    int type = 0;
    std::string model;
    Json place;
    Parameters identity; ///< what "Get_Info" answers
    Json settings = Json::object();
    Json answers = Json::object();
    Json frame = Json::array(); ///< "signals" of a bench file
    std::map<int, std::string> errorTexts;
    double rate = 0.0; ///< frames per second; 0: unknown
    std::vector<Values> values;
    std::deque<Fault> faults; ///< keeps addresses

    std::string serialNumber() const;
};

struct Bench
{
    std::list<Sensor> sensors; ///< keeps addresses
    QStringList notes;         ///< what could not be taken over
};

Bench ofRecord(const sondixrec::Record &record);
/// The sensor of a file of 'sondixqt record'. Throws Failure.
Bench ofRecording(const QString &path);

/// The place of a sensor with these interface parameters; null if a bench has no such place.
Json placeOf(const Parameters &parameters);
/// The name of a model in bench files; empty if there is no such type.
std::string modelOf(int type);

/// Whether both are the same file, perhaps by a link.
bool isSameFile(const QString &a, const QString &b);
/// Writes the bench, and a file of values beside it for each sensor that has some. Throws Failure, also where \a input,
/// which it is made of, would be overwritten.
void write(Bench &bench, const QString &path, const QString &input = {});
/// The lines of a file of values, with the numbers of their frames.
QByteArray valueLines(const Sensor &sensor);

} // namespace MadeBench
