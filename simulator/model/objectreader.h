// SPDX-License-Identifier: MIT
#pragma once

#include "json.h"
#include "value.h"

#include <limits>
#include <string>
#include <vector>

namespace sondixsim::model {

/// Reads the members of a JSON object by key. finish() reports keys that were never asked for.
class ObjectReader
{
public:
    /// \a what names the object in errors, such as "a sensor".
    ObjectReader(const Node &node, std::string what);

    const Node *optional(const char *key); ///< null when absent
    const Node &required(const char *key);
    void finish() const; ///< throws ParseError for an unknown key
    int line() const { return m_node.line; }

private:
    const Node &m_node;
    std::string m_what;
    std::vector<std::string> m_known;
};

// Each throws ParseError with the node's line for a value of another kind or out of range. "what" names the value in
// the error.
std::string readText(const Node &node, const std::string &what);      ///< as windows-1250
std::string readPlainText(const Node &node, const std::string &what); ///< as UTF-8
double readNumber(const Node &node, const std::string &what, double minimum = -std::numeric_limits<double>::max(),
                  double maximum = std::numeric_limits<double>::max());
std::int32_t readInt(const Node &node, const std::string &what,
                     std::int32_t minimum = std::numeric_limits<std::int32_t>::min(),
                     std::int32_t maximum = std::numeric_limits<std::int32_t>::max());
bool readBool(const Node &node, const std::string &what);
const std::vector<Node> &readArray(const Node &node, const std::string &what);
const std::vector<Member> &readObject(const Node &node, const std::string &what);
/// Two numbers, the first less than the second.
std::pair<double, double> readRange(const Node &node, const std::string &what);
/// A text, a number or true/false (1/0).
Value readValue(const Node &node, const std::string &what);

} // namespace sondixsim::model
