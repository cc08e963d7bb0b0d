// SPDX-License-Identifier: MIT
#include "recording.h"

#include "inputfile.h"
#include "objectreader.h"
#include "platform.h"
#include "sample.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace sondixsim::model {

namespace {

constexpr std::uint64_t longestRecording = 1000000000000; // frames, also missing ones

/// Takes the text up to \a separator from the beginning of \a text.
std::string_view takePart(std::string_view &text, char separator)
{
    const std::string_view part = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return part;
}

template<typename Number>
bool parseNumber(std::string_view text, Number &number)
{
    const char *const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

/// The cells of one line behind the number of the frame.
class LineReader
{
public:
    LineReader(std::string_view line, int number)
        : m_rest(line)
        , m_line(number)
    {
    }

    std::uint64_t frame()
    {
        std::uint64_t number = 0;
        if (!parseNumber(takePart(m_rest, ','), number) || number >= longestRecording)
            fail("does not begin with the number of a frame");
        return number;
    }
    Sample sample(const Signal &signal)
    {
        Sample sample;
        const std::string_view scaled = takePart(m_rest, ',');
        const std::string_view raw = takePart(m_rest, ',');
        if (scaled.empty() && raw.empty())
            fail("has fewer values than a frame");
        if (!scaled.empty() && !parseNumber(scaled, sample.scaled))
            fail("has a scaled value that is no number");
        if (!raw.empty() && !parseNumber(raw, sample.raw))
            fail("has a raw value that is no whole number");
        if (scaled.empty())
            sample.scaled = scaledOf(signal, sample.raw);
        if (raw.empty())
            sample.raw = std::isnan(sample.scaled) ? 0 : rawOf(signal, sample.scaled);
        return sample;
    }
    void finish() const
    {
        if (!m_rest.empty())
            fail("has more values than a frame");
    }
    [[noreturn]] void fail(const std::string &reason) const
    {
        throw InputError("line " + std::to_string(m_line) + ' ' + reason);
    }

private:
    std::string_view m_rest;
    int m_line;
};

} // namespace

std::shared_ptr<const Recording> Recording::parse(const std::string &content, const std::vector<Signal> &frame)
{
    auto recording = std::make_shared<Recording>();
    recording->m_valuesPerFrame = frame.size();
    int number = 0;
    for (std::string_view text = content; !text.empty();) {
        std::string_view line = takePart(text, '\n');
        ++number;
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (line.empty() || line.front() == '#' || line.substr(0, 6) == "frame,")
            continue;
        LineReader reader(line, number);
        std::uint64_t at = reader.frame();
        std::vector<Part> &parts = recording->m_parts;
        if (parts.empty() && at > 0)
            reader.fail("is the first frame, whose number must be 0");
        if (parts.empty() || at > parts.back().end)
            parts.push_back({at, at, recording->m_samples.size() / frame.size()});
        else if (at < parts.back().end)
            reader.fail("has a number that is not greater than the one before");
        ++parts.back().end;
        for (const Signal &signal : frame)
            recording->m_samples.push_back(reader.sample(signal));
        reader.finish();
    }
    if (recording->m_parts.empty())
        throw InputError("it has no frame");
    return recording;
}

Recording::Run Recording::runFrom(std::uint64_t number, std::uint64_t maxCount) const
{
    const std::uint64_t position = number % m_parts.back().end;
    const Part &part = partOf(position);
    if (position < part.end)
        return {std::min(maxCount, part.end - position), false};
    const Part &following = *(&part + 1); // the last part reaches to the end
    return {std::min(maxCount, following.first - position), true};
}

std::uint64_t Recording::presentFrames(std::uint64_t number, std::uint64_t frames) const
{
    return presentBefore(number + frames) - presentBefore(number);
}

std::uint64_t Recording::presentBefore(std::uint64_t number) const
{
    const std::uint64_t length = m_parts.back().end;
    const std::uint64_t position = number % length;
    const Part &part = partOf(position);
    const std::uint64_t inOne = m_samples.size() / m_valuesPerFrame;
    return number / length * inOne + part.index + (std::min(position, part.end) - part.first);
}

Sample Recording::sample(std::uint64_t number, std::size_t signal) const
{
    const std::uint64_t position = number % m_parts.back().end;
    const Part &part = partOf(position);
    const std::uint64_t inPart = std::min(position, part.end - 1) - part.first;
    return m_samples[(part.index + static_cast<std::size_t>(inPart)) * m_valuesPerFrame + signal];
}

const Recording::Part &Recording::partOf(std::uint64_t position) const
{
    const auto behind = std::upper_bound(m_parts.begin(), m_parts.end(), position,
                                         [](std::uint64_t at, const Part &part) { return at < part.first; });
    return *(behind - 1);
}

std::shared_ptr<const Recording> readRecording(const Node &node, const std::string &folder,
                                               const std::vector<Signal> &frame)
{
    const std::string name = readPlainText(node, "\"recording\"");
    if (frame.empty())
        throw ParseError(node.line, "a sensor without \"signals\" has no \"recording\"");
    try {
        return Recording::parse(readInputFile(pathFromUtf8(folder) / pathFromUtf8(name)), frame);
    } catch (const InputError &error) {
        throw ParseError(node.line, "the recording \"" + name + "\" cannot be read: " + error.what());
    }
}

} // namespace sondixsim::model
