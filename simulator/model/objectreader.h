// SPDX-License-Identifier: MIT
#pragma once

#include "json.h"
#include "rules.h"
#include "value.h"

#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace sondixsim::model {

/// Reads the members of a JSON object by its rules. All functions throw ParseError for what the rules do not allow.
class ObjectReader
{
public:
    ObjectReader(const Node &node, const ObjectRules &rules);
    /// \a what names the object in errors instead of the name in the rules.
    ObjectReader(const Node &node, const ObjectRules &rules, std::string what);

    /// Reads the key that decides on the kind of the object; the keys of other kinds are then absent and not allowed.
    std::string readKind();

    const Node *optional(const char *key); ///< null when absent
    const Node &required(const char *key);

    /// Reads a value. Without it \a target keeps its value, unless the key is required. False when it is absent.
    bool read(const char *key, std::string &target);
    bool read(const char *key, double &target);
    bool read(const char *key, std::int32_t &target);
    bool read(const char *key, std::uint64_t &target);
    bool read(const char *key, bool &target);
    bool read(const char *key, std::pair<double, double> &target);
    template<typename T>
    bool read(const char *key, std::optional<T> &target)
    {
        T value{};
        if (!read(key, value))
            return false;
        target = std::move(value);
        return true;
    }

    /// Reports keys that are missing, or given together, against the groups of the rules.
    void checkGroups() const;
    void finish() const; ///< reports keys that were never asked for, and checks the groups
    int line() const { return m_node.line; }

private:
    const Node *find(const char *key, const KeyRule *&rule);
    const Node *memberNamed(const std::string &key) const;

    const Node &m_node;
    const ObjectRules &m_rules;
    std::string m_what;
    std::string m_kind;
    std::vector<bool> m_asked; ///< for the keys of m_rules
};

// Each throws ParseError with the node's line for a value of another kind or out of range. "what" names the value in
// the error.
std::string readText(const Node &node, const std::string &what); ///< as windows-1250
/// For names: as windows-1250, without control characters; not empty if \a required.
std::string readName(const Node &node, const std::string &what, bool required = false);
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
/// A text that is one of the choices of \a rule.
std::string readChoice(const Node &node, const std::string &what, const ValueRule &rule);
/// A text, a number or true/false (1/0).
Value readValue(const Node &node, const std::string &what);

} // namespace sondixsim::model
