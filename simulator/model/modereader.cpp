// SPDX-License-Identifier: MIT
#include "modereader.h"

#include "specreader.h"

namespace sondixsim::model {

namespace {

const ObjectRules &modeRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"measuringMode", "a measuring mode", {
        {"mode",    required, whole(0),                  "Its number"},
        {"video",   optional, boolean(),                 "true: video is sent in this mode. A model without such a mode sends video in all of them (false)"},
        {"signals", optional, arrayOf(object(signalRules)), "The signals in this mode (the sensor's)"},
    }};
    // clang-format on
    return rules;
}

const ObjectRules &modesRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"measureModes", "\"measureModes\"", {
        {"parameter", required, plainText(),                "Setting that selects the mode"},
        {"modes",     required, arrayOf(object(modeRules)), "The modes that differ from the others"},
    }};
    // clang-format on
    return rules;
}

const ObjectRules &triggerRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"trigger", "\"trigger\"", {
        {"parameter", required, plainText(), "Setting for the trigger"},
        {"off",       required, whole(),     "Its value without a trigger; with any other the sensor waits for triggers"},
    }};
    // clang-format on
    return rules;
}

const ObjectRules &videoLineRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"videoLine", "a video line", {
        {"answer",  required, plainText(),        "Name of the answer, such as \"SA_VideoRaw\""},
        {"switch",  optional, plainText(),        "Setting that switches it, without \"SA_\" and without \"_ETH\" or \"_RS422\" (always on)"},
        {"kind",    required, oneOf(videoKinds, "video line"),  "What it shows"},
        {"signals", optional, arrayOf(whole(1)),  "Numbers of the signals that it shows, from 1"},
    }};
    // clang-format on
    return rules;
}

const ObjectRules &otherPixelsRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"pixelsAtRange", "\"pixelsAtRange\"", {
        {"parameter", required, plainText(),     "Answer of \"Get_Info\" that decides"},
        {"range",     required, number(),        "Its value"},
        {"pixels",    required, whole(1, 65536), "Pixels of a line with this value"},
    }};
    // clang-format on
    return rules;
}

const ObjectRules &videoRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"video", "\"video\"", {
        {"pixels",        required, whole(1, 65536),                 "Pixels of a line"},
        {"resolution",    required, whole(2, 65536),                 "Pixel values are less than this"},
        {"pixelsAtRange", optional, object(otherPixelsRules),        "Another number of pixels for one of the model's ranges"},
        {"lines",         required, arrayOf(object(videoLineRules)), "The video signals"},
    }};
    // clang-format on
    return rules;
}

void readModes(const Node &node, SensorSpec &spec, const std::string &folder)
{
    ObjectReader reader(node, modesRules());
    reader.read("parameter", spec.modeParameter);
    spec.modes.clear();
    for (const Node &element : readArray(reader.required("modes"), "\"modes\"")) {
        ObjectReader modeReader(element, modeRules());
        MeasuringMode mode;
        modeReader.read("mode", mode.number);
        modeReader.read("video", mode.video);
        if (const Node *signals = modeReader.optional("signals"))
            mode.signals = readSignals(*signals, folder);
        modeReader.finish();
        spec.modes.push_back(std::move(mode));
    }
    reader.finish();
}

void readTrigger(const Node &node, SensorSpec &spec)
{
    ObjectReader reader(node, triggerRules());
    reader.read("parameter", spec.triggerParameter);
    reader.read("off", spec.triggerOff);
    reader.finish();
}

VideoLine readLine(const Node &node)
{
    ObjectReader reader(node, videoLineRules());
    VideoLine line;
    std::string kind;
    reader.read("answer", line.answer);
    reader.read("switch", line.switchName);
    reader.read("kind", kind);
    line.parts = partsOfLine(kind);
    if (const Node *signals = reader.optional("signals")) {
        for (const Node &number : readArray(*signals, "\"signals\""))
            line.signals.push_back(readInt(number, "the number of a signal", 1));
    }
    reader.finish();
    return line;
}

Video readVideo(const Node &node)
{
    ObjectReader reader(node, videoRules());
    Video video;
    reader.read("pixels", video.pixels);
    reader.read("resolution", video.resolution);
    if (const Node *other = reader.optional("pixelsAtRange")) {
        ObjectReader otherReader(*other, otherPixelsRules());
        otherReader.read("parameter", video.rangeParameter);
        otherReader.read("range", video.range);
        otherReader.read("pixels", video.pixelsAtRange);
        otherReader.finish();
    }
    for (const Node &line : readArray(reader.required("lines"), "\"lines\""))
        video.lines.push_back(readLine(line));
    reader.finish();
    return video;
}

} // namespace

std::vector<KeyRule> modeKeys()
{
    using namespace keys;
    // clang-format off
    return {
        {"measureModes", optional, object(modesRules),        "Measuring modes that differ from the others (the model's)"},
        {"trigger",      optional, object(triggerRules),      "The setting for the trigger (the model's)"},
        {"triggerRate",  optional, number(0.0, 1000000.0),    "Triggers per second at its input (0)"},
        {"video",        optional, orNull(object(videoRules)), "Its video lines; null: none (the model's)"},
    };
    // clang-format on
}

void readModeKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder)
{
    if (const Node *modes = reader.optional("measureModes"))
        readModes(*modes, spec, folder);
    if (const Node *trigger = reader.optional("trigger"))
        readTrigger(*trigger, spec);
    reader.read("triggerRate", spec.triggerRate);
    if (const Node *video = reader.optional("video"))
        spec.video = video->kind == Node::Kind::Null ? Video() : readVideo(*video);
}

} // namespace sondixsim::model
