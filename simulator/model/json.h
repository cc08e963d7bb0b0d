// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sondixsim::model {

/// Something wrong in a JSON text, with the line where it stands.
class Mistake : public std::runtime_error
{
public:
    Mistake(int lineNumber, const std::string &reason)
        : std::runtime_error(reason)
        , line(lineNumber)
    {
    }
    int line;
};

struct Member;

/// A JSON value that knows its line, so that mistakes in what it means can be named as well as mistakes
/// in how it is written.
struct Node
{
    enum class Kind { Null, Boolean, Integer, Real, Text, Array, Object };

    Kind kind = Kind::Null;
    int line = 0;
    bool boolean = false;
    std::int64_t integer = 0;
    double real = 0.0; ///< of an integer as well
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

/// Reads JSON with comments; throws Mistake.
Node parseJson(std::string_view text);

} // namespace sondixsim::model
