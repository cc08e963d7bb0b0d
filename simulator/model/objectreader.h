// SPDX-License-Identifier: MIT
#pragma once

#include "json.h"
#include "value.h"

#include <limits>
#include <string>
#include <vector>

namespace sondixsim::model {

/// Reads the members of a JSON object one by one and knows in the end which of them nobody asked for.
class ObjectReader
{
public:
    /// \a what names the object in mistakes, such as "a sensor".
    ObjectReader(const Node &node, std::string what);

    const Node *find(const char *key); ///< null when absent
    const Node &need(const char *key);
    void finish() const; ///< throws for a key that is not known
    int line() const { return m_node.line; }

private:
    const Node &m_node;
    std::string m_what;
    std::vector<std::string> m_known;
};

// Each throws Mistake with the node's line when it is something else; "what" names the value.
std::string readText(const Node &node, const std::string &what);      ///< as windows-1250
std::string readPlainText(const Node &node, const std::string &what); ///< as it stands
double readNumber(const Node &node, const std::string &what, double least = -std::numeric_limits<double>::max(),
                  double greatest = std::numeric_limits<double>::max());
std::int32_t readInt(const Node &node, const std::string &what,
                     std::int32_t least = std::numeric_limits<std::int32_t>::min(),
                     std::int32_t greatest = std::numeric_limits<std::int32_t>::max());
bool readBool(const Node &node, const std::string &what);
const std::vector<Node> &readArray(const Node &node, const std::string &what);
const std::vector<Member> &readObject(const Node &node, const std::string &what);
/// Two numbers, the first below the second.
std::pair<double, double> readRange(const Node &node, const std::string &what);
/// A text, a number or true/false (1/0).
Value readValue(const Node &node, const std::string &what);

} // namespace sondixsim::model
