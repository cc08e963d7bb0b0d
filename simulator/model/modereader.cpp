// SPDX-License-Identifier: MIT
#include "modereader.h"

#include "specreader.h"

namespace sondixsim::model {

namespace {

void readModes(const Node &node, SensorSpec &spec, const std::string &folder)
{
    ObjectReader reader(node, "\"measureModes\"");
    spec.modeParameter = readPlainText(reader.required("parameter"), "\"parameter\"");
    spec.modes.clear();
    for (const Node &element : readArray(reader.required("modes"), "\"modes\"")) {
        ObjectReader modeReader(element, "a measuring mode");
        MeasuringMode mode;
        mode.number = readInt(modeReader.required("mode"), "\"mode\"", 0);
        if (const Node *video = modeReader.optional("video"))
            mode.video = readBool(*video, "\"video\"");
        if (const Node *signals = modeReader.optional("signals"))
            mode.signals = readSignals(*signals, folder);
        modeReader.finish();
        spec.modes.push_back(std::move(mode));
    }
    reader.finish();
}

void readTrigger(const Node &node, SensorSpec &spec)
{
    ObjectReader reader(node, "\"trigger\"");
    spec.triggerParameter = readPlainText(reader.required("parameter"), "\"parameter\"");
    spec.triggerOff = readInt(reader.required("off"), "\"off\"");
    reader.finish();
}

VideoLine readLine(const Node &node)
{
    ObjectReader reader(node, "a video line");
    VideoLine line;
    line.answer = readPlainText(reader.required("answer"), "\"answer\"");
    if (const Node *name = reader.optional("switch"))
        line.switchName = readPlainText(*name, "\"switch\"");
    const Node &kind = reader.required("kind");
    line.parts = partsOfLine(readPlainText(kind, "\"kind\""));
    if (line.parts == 0) {
        throw ParseError(kind.line, "there is no video line \"" + kind.text +
                                        "\"; there are: raw, corr, dark, light, darkTable, lightTable, shadow");
    }
    if (const Node *signals = reader.optional("signals")) {
        for (const Node &number : readArray(*signals, "\"signals\""))
            line.signals.push_back(readInt(number, "the number of a signal", 1));
    }
    reader.finish();
    return line;
}

Video readVideo(const Node &node)
{
    ObjectReader reader(node, "\"video\"");
    Video video;
    video.pixels = readInt(reader.required("pixels"), "\"pixels\"", 1, 65536);
    video.resolution = readInt(reader.required("resolution"), "\"resolution\"", 2, 65536);
    if (const Node *other = reader.optional("pixelsAtRange")) {
        ObjectReader otherReader(*other, "\"pixelsAtRange\"");
        video.rangeParameter = readPlainText(otherReader.required("parameter"), "\"parameter\"");
        video.range = readNumber(otherReader.required("range"), "\"range\"");
        video.pixelsAtRange = readInt(otherReader.required("pixels"), "\"pixels\"", 1, 65536);
        otherReader.finish();
    }
    for (const Node &line : readArray(reader.required("lines"), "\"lines\""))
        video.lines.push_back(readLine(line));
    reader.finish();
    return video;
}

} // namespace

void readModeKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder)
{
    if (const Node *modes = reader.optional("measureModes"))
        readModes(*modes, spec, folder);
    if (const Node *trigger = reader.optional("trigger"))
        readTrigger(*trigger, spec);
    if (const Node *rate = reader.optional("triggerRate"))
        spec.triggerRate = readNumber(*rate, "\"triggerRate\"", 0.0, 1000000.0);
    if (const Node *video = reader.optional("video"))
        spec.video = video->kind == Node::Kind::Null ? Video() : readVideo(*video);
}

} // namespace sondixsim::model
