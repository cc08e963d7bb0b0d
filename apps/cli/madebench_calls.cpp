// SPDX-License-Identifier: MIT
#include "madebench.h"
#include "record.h"

#include <QTextCodec>

#include <algorithm>
#include <charconv>

namespace MadeBench {

namespace {

using sondixrec::Call;

/// Commands that the simulator answers itself from the rest of the bench.
const std::set<std::string> ownCommands = {"Get_OpenState",
                                           "Start_FindSensor",
                                           "Get_FindSensorProgress",
                                           "Get_FoundSensor",
                                           "Abort_FindSensor",
                                           "Enable_Logging",
                                           "Get_DrvSetting",
                                           "Get_SensorErrorValueText",
                                           "Get_TransmittedDataInfo",
                                           "Automatic_Setup",
                                           "Clear_Buffers",
                                           "Get_Info",
                                           "Get_AllParameters",
                                           "Get_Measure",
                                           "Get_Video",
                                           "Get_HTTP",
                                           "Cmd_Generic"};

/// Parts of answers that repeat the rest, or are different each time.
const std::set<std::string> leftOutAnswers = {"SA_CompleteAnswer", "SA_SensorInformation"};

std::string utf8(const std::string &windows1250)
{
    static const QTextCodec *const codec = QTextCodec::codecForName("windows-1250");
    return codec->toUnicode(windows1250.data(), static_cast<int>(windows1250.size())).toStdString();
}

bool startsWith(const std::string &text, const char *head)
{
    return text.rfind(head, 0) == 0;
}

/// A value without quotes: a whole number, a number or a text.
Json plainValue(const std::string &text)
{
    const char *const end = text.data() + text.size();
    int whole = 0;
    if (const auto result = std::from_chars(text.data(), end, whole);
        result.ec == std::errc() && result.ptr == end)
        return whole;
    double real = 0.0;
    if (const auto result = std::from_chars(text.data(), end, real);
        result.ec == std::errc() && result.ptr == end && std::isfinite(real))
        return real;
    return text;
}

/// The pairs name=value of an answer, in its order.
std::vector<std::pair<std::string, Json>> pairsOf(const std::string &text)
{
    constexpr const char *space = " \t\r\n";
    std::vector<std::pair<std::string, Json>> pairs;
    for (std::size_t at = 0; (at = text.find_first_not_of(space, at)) != std::string::npos;) {
        const std::size_t equals = text.find_first_of("= \t\r\n", at);
        if (equals == std::string::npos || text[equals] != '=') {
            at = equals == std::string::npos ? text.size() : equals + 1;
            continue;
        }
        const std::string name = text.substr(at, equals - at);
        at = equals + 1;
        if (at < text.size() && text[at] == '"') {
            std::string value;
            for (++at; at < text.size() && text[at] != '"'; ++at) {
                if (text[at] == '\\' && at + 1 < text.size())
                    ++at;
                value += text[at];
            }
            at = std::min(at + 1, text.size());
            pairs.emplace_back(name, utf8(value));
        } else {
            const std::size_t end = std::min(text.find_first_of(space, at), text.size());
            pairs.emplace_back(name, plainValue(utf8(text.substr(at, end - at))));
            at = end;
        }
    }
    return pairs;
}

/// A handle of the recorded program.
struct Instance
{
    int type = 0;
    Parameters staged;
    std::string command; ///< the last one
    bool succeeded = false;
    Sensor *sensor = nullptr; ///< the one that is open
    Fault *failed = nullptr;  ///< the last one, until its text is known
    std::size_t perFrame = 0;
    bool opened = false;            ///< no value was fetched since
    std::vector<double> scaledRest; ///< of a frame that was fetched in part
    std::vector<std::int32_t> rawRest;
};

class Maker
{
public:
    void add(const sondixrec::Process &process)
    {
        m_instances.clear();
        m_counts.clear();
        for (const Call &call : process.calls)
            add(call);
    }

    Bench finish()
    {
        int number = 0;
        for (auto sensor = m_bench.sensors.begin(); sensor != m_bench.sensors.end();) {
            ++number;
            if (sensor->model.empty()) {
                m_bench.notes += QStringLiteral("the sensor of type %1 was left out: the bench has no such model")
                                     .arg(sensor->type);
                sensor = m_bench.sensors.erase(sensor);
                continue;
            }
            if (sensor->serialNumber().empty())
                sensor->identity["SA_SerialNumber"] = "recorded-" + std::to_string(number);
            nameUnknownCommands(*sensor);
            ++sensor;
        }
        return std::move(m_bench);
    }

private:
    void add(const Call &call)
    {
        if (call.function == "CreateSensorInstance") {
            m_instances[static_cast<std::uint32_t>(call.result)].type =
                static_cast<int>(call.integer(call.arguments, "sensorType"));
            return;
        }
        const auto found = m_instances.find(call.handle);
        if (found == m_instances.end())
            return;
        Instance &instance = found->second;
        if (startsWith(call.function, "SetParameter"))
            stage(instance, call);
        else if (call.function == "ClearAllParameters")
            instance.staged.clear();
        else if (call.function == "OpenSensor")
            open(instance, call);
        else if (call.function == "CloseSensor")
            instance.sensor = nullptr;
        else if (call.function == "ReleaseSensorInstance")
            m_instances.erase(found);
        else if (call.function == "SensorCommand")
            command(instance, call);
        else if (startsWith(call.function, "GetParameter"))
            answer(instance, call);
        else if (call.function == "DataAvail" || startsWith(call.function, "TransferData"))
            data(instance, call);
        else if (call.function == "GetError" && instance.failed != nullptr &&
                 call.result == instance.failed->code) {
            instance.failed->text = utf8(call.bytes(call.answers, "text"));
            instance.failed = nullptr;
        }
    }

    static void stage(Instance &instance, const Call &call)
    {
        const std::string name = utf8(call.bytes(call.arguments, "name"));
        if (call.function == "SetParameterInt")
            instance.staged[name] = call.integer(call.arguments, "value");
        else if (call.function == "SetParameterDouble")
            instance.staged[name] = call.real(call.arguments, "value");
        else if (call.function == "SetParameterString")
            instance.staged[name] = utf8(call.bytes(call.arguments, "value"));
    }

    void open(Instance &instance, const Call &call)
    {
        const Parameters staged = std::exchange(instance.staged, {});
        Sensor *const sensor = sensorAt(instance.type, staged);
        instance.command.clear();
        instance.succeeded = call.result == 0;
        instance.sensor = nullptr;
        if (sensor == nullptr)
            return;
        count(instance, *sensor, call, {});
        if (call.result != 0)
            return;
        instance.sensor = sensor;
        instance.opened = true;
        instance.scaledRest.clear();
        instance.rawRest.clear();
    }

    void command(Instance &instance, const Call &call)
    {
        const Parameters staged = std::exchange(instance.staged, {});
        const auto name = staged.find("S_Command");
        instance.command = name != staged.end() && name->second.is_string() ? name->second.get<std::string>() : "";
        instance.succeeded = call.result == 0;
        if (instance.sensor == nullptr || instance.command.empty())
            return;
        count(instance, *instance.sensor, call, instance.command);
        if (call.result != 0)
            return;
        m_known[instance.sensor].insert(instance.command);
        for (const char *writes : {"Set_", "Update_"}) {
            if (startsWith(instance.command, writes)) // its values are no longer those of the beginning
                m_changed[instance.sensor].insert(instance.command.substr(std::string(writes).size()));
        }
    }

    void answer(Instance &instance, const Call &call)
    {
        if (call.result != 0)
            return;
        if (call.function == "GetParameters")
            return take(instance, pairsOf(call.bytes(call.answers, "text")));
        const std::string name = utf8(call.bytes(call.arguments, "name"));
        if (call.function == "GetParameterInt" && call.answers.contains("value"))
            take(instance, {{name, call.integer(call.answers, "value")}});
        else if (call.function == "GetParameterDouble" && call.answers.contains("value"))
            take(instance, {{name, call.real(call.answers, "value")}});
        else if (call.function == "GetParameterString" && call.answers.contains("text"))
            takeText(instance, name, call.bytes(call.answers, "text"));
    }

    void takeText(Instance &instance, const std::string &name, const std::string &text)
    {
        if (name == "SA_SensorInformation" && instance.sensor != nullptr) {
            for (std::size_t begin = 0; begin < text.size();) {
                const std::size_t end = std::min(text.find('\n', begin), text.size());
                takeInformation(*instance.sensor, pairsOf(text.substr(begin, end - begin)));
                begin = end + 1;
            }
        } else if (name == "SA_SensorErrorValueText" && instance.sensor != nullptr) {
            takeErrorTexts(*instance.sensor, utf8(text));
        } else {
            take(instance, {{name, utf8(text)}});
        }
    }

    using Pairs = std::vector<std::pair<std::string, Json>>;

    /// A line of what a sensor reports when it is opened: the command that would set what follows.
    static void takeInformation(Sensor &sensor, const Pairs &pairs)
    {
        if (pairs.empty() || pairs.front().first != "S_Command" || !pairs.front().second.is_string())
            return;
        const auto command = pairs.front().second.get<std::string>();
        for (const auto &[name, value] : pairs) {
            if (command == "Get_Info" && startsWith(name, "SA_"))
                sensor.identity.emplace(name, value);
            else if (startsWith(command, "Set_") && startsWith(name, "SP_"))
                addSetting(sensor, command.substr(4), "SA_" + name.substr(3), value);
        }
    }

    static void addSetting(Sensor &sensor, const std::string &group, const std::string &name, const Json &value)
    {
        Json &settings = sensor.settings[group];
        if (!settings.contains(name))
            settings[name] = value;
    }

    static void takeErrorTexts(Sensor &sensor, const std::string &text)
    {
        for (std::size_t begin = 0; begin < text.size();) {
            const std::size_t end = std::min(text.find('\n', begin), text.size());
            const std::string line = text.substr(begin, end - begin);
            int key = 0;
            const auto result = std::from_chars(line.data(), line.data() + line.size(), key);
            const std::size_t colon = static_cast<std::size_t>(result.ptr - line.data());
            if (result.ec == std::errc() && line.compare(colon, 2, ": ") == 0)
                sensor.errorTexts[key] = QString::fromStdString(line.substr(colon + 2)).trimmed().toStdString();
            begin = end + 1;
        }
    }

    void take(Instance &instance, const Pairs &pairs)
    {
        Parameters values;
        for (const auto &[name, value] : pairs)
            values.emplace(name, value);
        if (instance.sensor == nullptr) {
            takeFound(values);
            return;
        }
        Sensor &sensor = *instance.sensor;
        const std::string &command = instance.command;
        if (!instance.succeeded)
            return;
        if (command == "Get_TransmittedDataInfo") {
            takeFrame(instance, sensor, values);
        } else if (command == "Get_Info") {
            for (const auto &[name, value] : values) {
                if (startsWith(name, "SA_") && leftOutAnswers.count(name) == 0)
                    sensor.identity.emplace(name, value);
            }
        } else if (ownCommands.count(command) == 0) {
            takeAnswer(sensor, command, values);
        }
    }

    void takeAnswer(Sensor &sensor, const std::string &command, const Parameters &values)
    {
        const bool reads = startsWith(command, "Get_");
        if (reads && m_changed[&sensor].count(command.substr(4)) != 0)
            return;
        const bool isGroup = reads && sensor.settings.contains(command.substr(4));
        for (const auto &[name, value] : values) {
            if (!startsWith(name, "SA_") || leftOutAnswers.count(name) != 0)
                continue;
            if (isGroup || command == "Get_Samplerate")
                addSetting(sensor, command.substr(4), name, value);
            else if (!startsWith(command, "Set_") && !startsWith(command, "Update_") &&
                     !sensor.answers[command].contains(name))
                sensor.answers[command][name] = value;
        }
    }

    /// The answer of a search.
    void takeFound(const Parameters &values)
    {
        const auto type = values.find("IP_SensorType");
        if (type == values.end() || !type->second.is_number_integer() || values.count("SA_SerialNumber") == 0)
            return;
        Sensor *const sensor = sensorAt(type->second.get<int>(), values);
        if (sensor == nullptr)
            return;
        for (const auto &[name, value] : values) {
            const bool isPlace = name == "SA_IPAddress" || name == "SA_CurrentIPAddresses";
            if (startsWith(name, "SA_") && !isPlace && leftOutAnswers.count(name) == 0)
                sensor->identity.emplace(name, value);
        }
        if (const auto name = values.find("IP_SensorTypeName"); name != values.end() && name->second.is_string())
            sensor->model = name->second.get<std::string>();
    }

    static void takeFrame(Instance &instance, Sensor &sensor, const Parameters &values)
    {
        const auto text = [&values](const std::string &name) {
            const auto found = values.find(name);
            return found != values.end() && found->second.is_string() ? found->second.get<std::string>() : "";
        };
        const auto number = [&values](const std::string &name) {
            const auto found = values.find(name);
            return found != values.end() && found->second.is_number() ? found->second.get<double>() : 0.0;
        };
        constexpr double maxSignals = 4096.0;
        const double count = number("IA_ValuesPerFrame");
        instance.perFrame = count >= 1.0 && count <= maxSignals ? static_cast<std::size_t>(count) : 0;
        if (!sensor.frame.empty())
            return;
        sensor.rate = number("IA_Datarate");
        for (std::size_t i = 1; i <= instance.perFrame; ++i) {
            const std::string index = std::to_string(i);
            Json signal = Json::object();
            const std::string name = text("IA_Scaled_Name" + index);
            signal["name"] = name.empty() ? "Value " + index : name;
            signal["rawName"] = text("IA_Raw_Name" + index);
            signal["unit"] = text("IA_Scaled_Unit" + index);
            signal["rawUnit"] = text("IA_Raw_Unit" + index);
            signal["info"] = text("IA_AdditionalInfo" + index);
            for (const auto &[key, part] :
                 {std::pair("range", "IA_Scaled_Range"), std::pair("rawRange", "IA_Raw_Range")}) {
                const double low = number(part + ("Min" + index));
                const double high = number(part + ("Max" + index));
                if (low < high)
                    signal[key] = {low, high};
            }
            signal["viewRange"] = number("IA_ViewRange" + index);
            signal["major"] = number("IA_MajorSignal" + index) != 0.0;
            sensor.frame.push_back(std::move(signal));
        }
    }

    void data(Instance &instance, const Call &call)
    {
        if (instance.sensor == nullptr)
            return;
        count(instance, *instance.sensor, call, {});
        const std::size_t perFrame = instance.sensor->frame.size();
        if (call.result != 0 || call.function == "DataAvail" || call.integer(call.answers, "read") <= 0)
            return;
        if (perFrame == 0 || instance.perFrame != perFrame) {
            note(QStringLiteral("values of %1 were left out: their frame is not that of the first description")
                     .arg(QString::fromStdString(instance.sensor->model)));
            return;
        }
        Values values;
        values.isFirst = std::exchange(instance.opened, false);
        // The time is that of the frame to which the first value belongs.
        if (call.answers.contains("timestamp"))
            values.time = call.real(call.answers, "timestamp");
        values.scaled = std::move(instance.scaledRest);
        values.raw = std::move(instance.rawRest);
        for (const nlohmann::json &value : call.answers.value("scaled", nlohmann::json::array()))
            values.scaled.push_back(sondixrec::realOf(value));
        for (const nlohmann::json &value : call.answers.value("raw", nlohmann::json::array()))
            values.raw.push_back(value.get<std::int32_t>());
        instance.scaledRest = restOf(values.scaled, perFrame);
        instance.rawRest = restOf(values.raw, perFrame);
        instance.sensor->values.push_back(std::move(values));
    }

    /// Takes the values of an incomplete frame from the end.
    template<typename Number>
    static std::vector<Number> restOf(std::vector<Number> &values, std::size_t perFrame)
    {
        const auto whole = static_cast<std::ptrdiff_t>(values.size() / perFrame * perFrame);
        std::vector<Number> rest(values.begin() + whole, values.end());
        values.resize(static_cast<std::size_t>(whole));
        return rest;
    }

    /// Counts a call to a sensor, and adds a fault if it has failed.
    void count(Instance &instance, Sensor &sensor, const Call &call, const std::string &command)
    {
        const int number = ++m_counts[{&sensor, call.function + ' ' + command}];
        instance.failed = nullptr;
        if (call.result == 0)
            return;
        sensor.faults.push_back({call.function, command, number, 1, static_cast<std::int32_t>(call.result), {}});
        instance.failed = &sensor.faults.back();
    }

    /// A bench refuses faults of commands that the sensor does not know: it gets those that always failed.
    void nameUnknownCommands(Sensor &sensor)
    {
        std::deque<Fault> joined;
        for (Fault &fault : sensor.faults) {
            const auto same = std::find_if(joined.rbegin(), joined.rend(), [&](const Fault &other) {
                return other.function == fault.function && other.command == fault.command;
            });
            if (same != joined.rend() && same->from + same->times == fault.from && same->code == fault.code &&
                same->text == fault.text)
                ++same->times;
            else
                joined.push_back(std::move(fault));
        }
        sensor.faults = std::move(joined);
        for (const Fault &fault : sensor.faults) {
            if (!fault.command.empty() && ownCommands.count(fault.command) == 0 &&
                m_known[&sensor].count(fault.command) == 0 && !sensor.answers.contains(fault.command))
                sensor.answers[fault.command] = Json::object();
        }
    }

    Sensor *sensorAt(int type, const Parameters &parameters)
    {
        const Json place = placeOf(parameters);
        if (place.is_null()) {
            note(QStringLiteral("a sensor of type %1 was left out: the bench has no such interface").arg(type));
            return nullptr;
        }
        // Two descriptions of a place are compared by the items that both have and that identify it.
        const auto isSame = [&place](const Sensor &sensor) {
            return std::all_of(place.items().begin(), place.items().end(), [&](const auto &item) {
                const std::string &key = item.key();
                if (key == "baudrate" || key == "stopbits" || key == "byteSize" || key == "parity" ||
                    key == "addressFamily" || key == "dataPort")
                    return true;
                return !sensor.place.contains(key) || sensor.place[key] == item.value();
            });
        };
        for (Sensor &sensor : m_bench.sensors) {
            if (sensor.type % 10000 != type % 10000 || !isSame(sensor))
                continue;
            for (const auto &item : place.items()) {
                if (!sensor.place.contains(item.key()))
                    sensor.place[item.key()] = item.value();
            }
            return &sensor;
        }
        m_bench.sensors.emplace_back();
        Sensor &sensor = m_bench.sensors.back();
        sensor.type = type;
        sensor.model = modelOf(type);
        sensor.place = place;
        return &sensor;
    }

    void note(const QString &text)
    {
        if (!m_bench.notes.contains(text))
            m_bench.notes += text;
    }

    Bench m_bench;
    std::map<std::uint32_t, Instance> m_instances;
    std::map<std::pair<const Sensor *, std::string>, int> m_counts; ///< by function and command
    std::map<const Sensor *, std::set<std::string>> m_known;        ///< commands that succeeded
    std::map<const Sensor *, std::set<std::string>> m_changed;      ///< groups of settings
};

} // namespace

Bench ofRecord(const sondixrec::Record &record)
{
    Maker maker;
    for (const sondixrec::Process &process : record.processes)
        maker.add(process);
    return maker.finish();
}

} // namespace MadeBench
