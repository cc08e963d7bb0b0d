// SPDX-License-Identifier: MIT
#include "objectreader.h"

#include "text.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace sondixsim::model {

namespace {

[[noreturn]] void throwWrongKind(const Node &node, const std::string &what, const char *wanted)
{
    throw ParseError(node.line, what + " must be " + wanted);
}

std::string quoted(const char *key)
{
    return '"' + std::string(key) + '"';
}

} // namespace

ObjectReader::ObjectReader(const Node &node, const ObjectRules &rules)
    : ObjectReader(node, rules, rules.what)
{
}

ObjectReader::ObjectReader(const Node &node, const ObjectRules &rules, std::string what)
    : m_node(node)
    , m_rules(rules)
    , m_what(std::move(what))
    , m_asked(rules.keys.size())
{
    if (node.kind != Node::Kind::Object)
        throwWrongKind(node, m_what, "an object");
}

std::string ObjectReader::readKind()
{
    std::string kind;
    read(m_rules.kindKey, kind);
    m_kind = kind;
    return kind;
}

/// Also returns the rule. Both are null for a key that objects of another kind have.
const Node *ObjectReader::find(const char *key, const KeyRule *&rule)
{
    rule = nullptr;
    bool isKnown = false;
    for (std::size_t i = 0; i < m_rules.keys.size(); ++i) {
        if (std::strcmp(m_rules.keys[i].key, key) != 0)
            continue;
        isKnown = true;
        if (m_rules.has(m_rules.keys[i], m_kind)) {
            rule = &m_rules.keys[i];
            m_asked[i] = true;
            break;
        }
    }
    if (!isKnown) // the schema would lack it
        throw std::logic_error(m_what + " has no rule for " + quoted(key));
    if (rule == nullptr)
        return nullptr;
    const Node *const node = memberNamed(key);
    if (node == nullptr && rule->presence == Presence::Required)
        throw ParseError(m_node.line, m_what + " needs " + quoted(key));
    if (node != nullptr && rule->with != nullptr) {
        const std::vector<std::string> others = wordsOf(rule->with);
        const auto isGiven = [this](const std::string &other) { return memberNamed(other) != nullptr; };
        if (std::none_of(others.begin(), others.end(), isGiven))
            throw ParseError(node->line, quoted(key) + " needs " + quoted(others.front().c_str()));
    }
    return node;
}

const Node *ObjectReader::optional(const char *key)
{
    const KeyRule *rule = nullptr;
    return find(key, rule);
}

const Node &ObjectReader::required(const char *key)
{
    const Node *node = optional(key);
    if (node == nullptr)
        throw ParseError(m_node.line, m_what + " needs " + quoted(key));
    return *node;
}

bool ObjectReader::read(const char *key, std::string &target)
{
    const KeyRule *rule = nullptr;
    const Node *const node = find(key, rule);
    if (node == nullptr)
        return false;
    const ValueRule &value = rule->value;
    if (value.choices != nullptr && !value.isOpen)
        target = readChoice(*node, quoted(key), value);
    else if (value.type == ValueRule::Type::Plain)
        target = readPlainText(*node, quoted(key));
    else if (value.type == ValueRule::Type::Text)
        target = readText(*node, quoted(key));
    else
        target = readName(*node, quoted(key), value.type == ValueRule::Type::Word);
    return true;
}

bool ObjectReader::read(const char *key, double &target)
{
    const KeyRule *rule = nullptr;
    const Node *const node = find(key, rule);
    if (node != nullptr)
        target = readNumber(*node, quoted(key), rule->value.minimum, rule->value.maximum);
    return node != nullptr;
}

bool ObjectReader::read(const char *key, std::int32_t &target)
{
    const KeyRule *rule = nullptr;
    const Node *const node = find(key, rule);
    if (node != nullptr)
        target = readInt(*node, quoted(key), static_cast<std::int32_t>(rule->value.minimum),
                         static_cast<std::int32_t>(rule->value.maximum));
    return node != nullptr;
}

bool ObjectReader::read(const char *key, std::uint64_t &target)
{
    std::int32_t number = 0;
    if (!read(key, number))
        return false;
    target = static_cast<std::uint64_t>(number);
    return true;
}

bool ObjectReader::read(const char *key, bool &target)
{
    const Node *const node = optional(key);
    if (node != nullptr)
        target = readBool(*node, quoted(key));
    return node != nullptr;
}

bool ObjectReader::read(const char *key, std::pair<double, double> &target)
{
    const Node *const node = optional(key);
    if (node != nullptr)
        target = readRange(*node, quoted(key));
    return node != nullptr;
}

const Node *ObjectReader::memberNamed(const std::string &key) const
{
    const auto found = std::find_if(m_node.members.begin(), m_node.members.end(),
                                    [&key](const Member &member) { return member.key == key; });
    return found != m_node.members.end() ? &found->value : nullptr;
}

void ObjectReader::checkGroups() const
{
    using Group = std::vector<const char *>;
    const auto givenOf = [this](const Group &group) {
        return std::count_if(group.begin(), group.end(), [this](const char *keys) {
            const std::vector<std::string> words = wordsOf(keys);
            return std::any_of(words.begin(), words.end(),
                               [this](const std::string &key) { return memberNamed(key) != nullptr; });
        });
    };
    const auto namesOf = [](const Group &group) {
        std::string names;
        for (const char *keys : group) {
            std::string alternatives;
            for (const std::string &key : wordsOf(keys))
                alternatives += (alternatives.empty() ? "" : " or ") + quoted(key.c_str());
            names += (names.empty() ? "" : ", ") + alternatives;
        }
        return names;
    };
    for (const Group &group : m_rules.atLeastOneOf) {
        if (givenOf(group) == 0)
            throw ParseError(m_node.line, m_what + " needs at least one of these: " + namesOf(group));
    }
    for (const Group &group : m_rules.exactlyOneOf) {
        if (givenOf(group) != 1)
            throw ParseError(m_node.line, m_what + " needs exactly one of these: " + namesOf(group));
    }
}

void ObjectReader::finish() const
{
    for (const Member &member : m_node.members) {
        bool isRead = false;
        for (std::size_t i = 0; i < m_rules.keys.size() && !isRead; ++i)
            isRead = m_asked[i] && member.key == m_rules.keys[i].key;
        if (isRead)
            continue;
        std::string known;
        for (std::size_t i = 0; i < m_rules.keys.size(); ++i) {
            if (m_asked[i])
                known += (known.empty() ? "" : ", ") + std::string(m_rules.keys[i].key);
        }
        throw ParseError(member.line, m_what + " has no key \"" + member.key + "\"; its keys are: " + known);
    }
    checkGroups();
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

std::string readName(const Node &node, const std::string &what, bool required)
{
    std::string text = readText(node, what);
    if (std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }))
        throw ParseError(node.line, what + " has a control character");
    if (required && text.empty())
        throw ParseError(node.line, what + " must not be empty");
    return text;
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

std::string readChoice(const Node &node, const std::string &what, const ValueRule &rule)
{
    std::string text = readPlainText(node, what);
    const std::vector<Choice> choices = rule.choices();
    std::string known;
    for (std::size_t i = 0; i < choices.size(); ++i) {
        if (choices[i].value == text)
            return text;
        if (i > 0)
            known += i + 1 < choices.size() ? ", " : " or ";
        known += choices[i].value;
    }
    throw ParseError(node.line,
                     "there is no " + std::string(rule.noun) + " \"" + text + "\": " + what + " must be " + known);
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
