// SPDX-License-Identifier: MIT
#pragma once

#include "json.h"
#include "sample.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace sondixsim::model {

/// Recorded frames with their numbers. They are played from the start when they have come to their end, and frames that
/// are missing are missing each time.
class Recording
{
public:
    /// Reads a file of lines "frame,scaled value,raw value,...": see docs/bench-files.md. A raw or scaled value that the
    /// file does not have follows from the other and the ranges of the signal. Throws InputError.
    static std::shared_ptr<const Recording> parse(const std::string &content, const std::vector<Signal> &frame);

    /// How many of the frames from \a number on, \a most at most, are there, or if the first one is not, are missing.
    struct Run
    {
        std::uint64_t frames = 0;
        bool isMissing = false;
    };
    Run runFrom(std::uint64_t number, std::uint64_t maxCount) const;

    /// How many of \a frames frames from \a number on are there.
    std::uint64_t presentFrames(std::uint64_t number, std::uint64_t frames) const;

    /// A value of a frame; for a missing frame that of the one before it.
    Sample sample(std::uint64_t number, std::size_t signal) const;

private:
    /// Frames that follow each other.
    struct Part
    {
        std::uint64_t first = 0; ///< number of its first frame
        std::uint64_t end = 0;   ///< number behind its last frame
        std::size_t index = 0;   ///< of its first frame in m_samples, in frames
    };
    const Part &partOf(std::uint64_t position) const; ///< the last one that does not begin behind it

    std::uint64_t presentBefore(std::uint64_t number) const;

    std::size_t m_valuesPerFrame = 1;
    std::vector<Part> m_parts; ///< never empty, and the first one begins with frame 0
    std::vector<Sample> m_samples;
};

/// Reads the file that \a node names, relative to \a folder. Throws ParseError.
std::shared_ptr<const Recording> readRecording(const Node &node, const std::string &folder,
                                               const std::vector<Signal> &frame);

} // namespace sondixsim::model
