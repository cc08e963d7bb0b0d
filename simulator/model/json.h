// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sondixsim::model {

/// An error in a JSON text or in what its values mean, with the line number.
class ParseError : public std::runtime_error
{
public:
    ParseError(int lineNumber, const std::string &reason)
        : std::runtime_error(reason)
        , line(lineNumber)
    {
    }
    int line;
};

struct Member;

/// A JSON value with its line, for errors in its meaning, which are found after parsing.
struct Node
{
    enum class Kind { Null, Boolean, Integer, Real, Text, Array, Object };

    Kind kind = Kind::Null;
    int line = 0;
    bool boolean = false;
    std::int64_t integer = 0;
    double real = 0.0; ///< set for an integer, too
    std::string text;  ///< UTF-8
    std::vector<Node> elements;
    std::vector<Member> members;
};

struct Member
{
    std::string key;
    int line = 0;
    Node value;
};

/// Reads JSON with comments; throws ParseError.
Node parseJson(std::string_view text);

} // namespace sondixsim::model
