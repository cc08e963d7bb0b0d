// SPDX-License-Identifier: MIT
#include "objectreader.h"

#include "text.h"

#include <algorithm>
#include <cmath>

namespace sondixsim::model {

namespace {

[[noreturn]] void throwWrongKind(const Node &node, const std::string &what, const char *wanted)
{
    throw ParseError(node.line, what + " must be " + wanted);
}

} // namespace

ObjectReader::ObjectReader(const Node &node, std::string what)
    : m_node(node)
    , m_what(std::move(what))
{
    if (node.kind != Node::Kind::Object)
        throwWrongKind(node, m_what, "an object");
}

const Node *ObjectReader::optional(const char *key)
{
    m_known.emplace_back(key);
    for (const Member &member : m_node.members) {
        if (member.key == key)
            return &member.value;
    }
    return nullptr;
}

const Node &ObjectReader::required(const char *key)
{
    const Node *node = optional(key);
    if (node == nullptr)
        throw ParseError(m_node.line, m_what + " needs \"" + key + '"');
    return *node;
}

void ObjectReader::finish() const
{
    for (const Member &member : m_node.members) {
        if (std::find(m_known.begin(), m_known.end(), member.key) != m_known.end())
            continue;
        std::string known;
        for (const std::string &key : m_known)
            known += (known.empty() ? "" : ", ") + key;
        throw ParseError(member.line, m_what + " has no key \"" + member.key + "\"; its keys are: " + known);
    }
}

std::string readPlainText(const Node &node, const std::string &what)
{
    if (node.kind != Node::Kind::Text)
        throwWrongKind(node, what, "a text");
    return node.text;
}

std::string readText(const Node &node, const std::string &what)
{
    if (auto text = toWindows1250(readPlainText(node, what)))
        return *text;
    throw ParseError(node.line, what + " has a character that windows-1250 does not have");
}

double readNumber(const Node &node, const std::string &what, double minimum, double maximum)
{
    if (node.kind != Node::Kind::Integer && node.kind != Node::Kind::Real)
        throwWrongKind(node, what, "a number");
    if (!(node.real >= minimum && node.real <= maximum)) {
        throw ParseError(node.line, what + " is " + formatDouble(node.real) + ", it must be from " +
                                        formatDouble(minimum) + " to " + formatDouble(maximum));
    }
    return node.real;
}

std::int32_t readInt(const Node &node, const std::string &what, std::int32_t minimum, std::int32_t maximum)
{
    if (node.kind != Node::Kind::Integer)
        throwWrongKind(node, what, "a whole number");
    if (node.integer < minimum || node.integer > maximum) {
        throw ParseError(node.line, what + " is " + std::to_string(node.integer) + ", it must be from " +
                                        std::to_string(minimum) + " to " + std::to_string(maximum));
    }
    return static_cast<std::int32_t>(node.integer);
}

bool readBool(const Node &node, const std::string &what)
{
    if (node.kind != Node::Kind::Boolean)
        throwWrongKind(node, what, "true or false");
    return node.boolean;
}

const std::vector<Node> &readArray(const Node &node, const std::string &what)
{
    if (node.kind != Node::Kind::Array)
        throwWrongKind(node, what, "an array");
    return node.elements;
}

const std::vector<Member> &readObject(const Node &node, const std::string &what)
{
    if (node.kind != Node::Kind::Object)
        throwWrongKind(node, what, "an object");
    return node.members;
}

std::pair<double, double> readRange(const Node &node, const std::string &what)
{
    const std::vector<Node> &limits = readArray(node, what);
    if (limits.size() != 2)
        throwWrongKind(node, what, "two numbers");
    const double minimum = readNumber(limits[0], what);
    const double maximum = readNumber(limits[1], what);
    if (!(minimum < maximum))
        throw ParseError(node.line, what + " must begin with the smaller number");
    return {minimum, maximum};
}

Value readValue(const Node &node, const std::string &what)
{
    switch (node.kind) {
    case Node::Kind::Boolean:
        return node.boolean ? 1 : 0;
    case Node::Kind::Integer:
        return readInt(node, what);
    case Node::Kind::Real:
        return readNumber(node, what);
    case Node::Kind::Text:
        return readText(node, what);
    default:
        throwWrongKind(node, what, "a text, a number, true or false");
    }
}

} // namespace sondixsim::model
