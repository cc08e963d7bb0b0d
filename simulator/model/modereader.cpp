// SPDX-License-Identifier: MIT
#include "modereader.h"

#include "specreader.h"

namespace sondixsim::model {

namespace {

void readModes(const Node &node, SensorSpec &spec, const std::string &folder)
{
    ObjectReader reader(node, "\"measureModes\"");
    spec.modeParameter = readPlainText(reader.need("parameter"), "\"parameter\"");
    spec.modes.clear();
    for (const Node &element : readArray(reader.need("modes"), "\"modes\"")) {
        ObjectReader modeReader(element, "a measuring mode");
        MeasuringMode mode;
        mode.number = readInt(modeReader.need("mode"), "\"mode\"", 0);
        if (const Node *video = modeReader.find("video"))
            mode.video = readBool(*video, "\"video\"");
        if (const Node *signals = modeReader.find("signals"))
            mode.signals = readSignals(*signals, folder);
        modeReader.finish();
        spec.modes.push_back(std::move(mode));
    }
    reader.finish();
}

void readTrigger(const Node &node, SensorSpec &spec)
{
    ObjectReader reader(node, "\"trigger\"");
    spec.triggerParameter = readPlainText(reader.need("parameter"), "\"parameter\"");
    spec.triggerOff = readInt(reader.need("off"), "\"off\"");
    reader.finish();
}

VideoLine readLine(const Node &node)
{
    ObjectReader reader(node, "a video line");
    VideoLine line;
    line.answer = readPlainText(reader.need("answer"), "\"answer\"");
    if (const Node *name = reader.find("switch"))
        line.switchName = readPlainText(*name, "\"switch\"");
    const Node &kind = reader.need("kind");
    line.parts = partsOfLine(readPlainText(kind, "\"kind\""));
    if (line.parts == 0) {
        throw Mistake(kind.line, "there is no video line \"" + kind.text +
                                     "\"; there are: raw, corr, dark, light, darkTable, lightTable, shadow");
    }
    if (const Node *signals = reader.find("signals")) {
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
    video.pixels = readInt(reader.need("pixels"), "\"pixels\"", 1, 65536);
    video.resolution = readInt(reader.need("resolution"), "\"resolution\"", 2, 65536);
    if (const Node *other = reader.find("pixelsAtRange")) {
        ObjectReader otherReader(*other, "\"pixelsAtRange\"");
        video.rangeParameter = readPlainText(otherReader.need("parameter"), "\"parameter\"");
        video.range = readNumber(otherReader.need("range"), "\"range\"");
        video.pixelsAtRange = readInt(otherReader.need("pixels"), "\"pixels\"", 1, 65536);
        otherReader.finish();
    }
    for (const Node &line : readArray(reader.need("lines"), "\"lines\""))
        video.lines.push_back(readLine(line));
    reader.finish();
    return video;
}

} // namespace

void readModeKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder)
{
    if (const Node *modes = reader.find("measureModes"))
        readModes(*modes, spec, folder);
    if (const Node *trigger = reader.find("trigger"))
        readTrigger(*trigger, spec);
    if (const Node *rate = reader.find("triggerRate"))
        spec.triggerRate = readNumber(*rate, "\"triggerRate\"", 0.0, 1000000.0);
    if (const Node *video = reader.find("video"))
        spec.video = video->kind == Node::Kind::Null ? Video() : readVideo(*video);
}

} // namespace sondixsim::model
