// SPDX-License-Identifier: MIT
#include "rules.h"

#include <algorithm>
#include <string_view>

namespace sondixsim::model {

namespace {

using Type = ValueRule::Type;

ValueRule ofType(Type type)
{
    ValueRule rule;
    rule.type = type;
    return rule;
}

} // namespace

namespace keys {

ValueRule text()
{
    return ofType(Type::Text);
}

ValueRule plainText()
{
    return ofType(Type::Plain);
}

ValueRule name()
{
    return ofType(Type::Name);
}

ValueRule word()
{
    return ofType(Type::Word);
}

ValueRule number(double minimum, double maximum)
{
    ValueRule rule = ofType(Type::Number);
    rule.minimum = minimum;
    rule.maximum = maximum;
    return rule;
}

ValueRule whole(std::int32_t minimum, std::int32_t maximum)
{
    ValueRule rule = number(minimum, maximum);
    rule.type = Type::Whole;
    return rule;
}

ValueRule boolean()
{
    return ofType(Type::Boolean);
}

ValueRule range()
{
    return ofType(Type::Range);
}

ValueRule value()
{
    return ofType(Type::Scalar);
}

ValueRule oneOf(std::vector<Choice> (*choices)(), const char *noun)
{
    ValueRule rule = plainText();
    rule.choices = choices;
    rule.noun = noun;
    return rule;
}

ValueRule usually(ValueRule rule, std::vector<Choice> (*choices)())
{
    rule.choices = choices;
    rule.isOpen = true;
    return rule;
}

ValueRule object(const ObjectRules &(*rules)())
{
    ValueRule rule = ofType(Type::Object);
    rule.object = rules;
    return rule;
}

ValueRule arrayOf(ValueRule element)
{
    ValueRule rule = ofType(Type::Array);
    rule.parts.push_back(std::move(element));
    return rule;
}

ValueRule mapOf(ValueRule element, const char *pattern)
{
    ValueRule rule = ofType(Type::Map);
    rule.parts.push_back(std::move(element));
    rule.pattern = pattern;
    return rule;
}

ValueRule either(ValueRule first, ValueRule second)
{
    ValueRule rule = ofType(Type::AnyOf);
    rule.parts = {std::move(first), std::move(second)};
    return rule;
}

ValueRule orNull(ValueRule rule)
{
    return either(std::move(rule), ofType(Type::Null));
}

} // namespace keys

std::vector<std::string> wordsOf(const std::string &text)
{
    std::vector<std::string> words;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return words;
}

bool ObjectRules::has(const KeyRule &rule, const std::string &kind) const
{
    // Without a copy: benches have thousands of sensors.
    if (rule.kinds == nullptr)
        return true;
    for (std::string_view kinds = rule.kinds; !kinds.empty();) {
        const std::string_view first = kinds.substr(0, kinds.find(' '));
        if (first == kind)
            return true;
        kinds.remove_prefix(std::min(first.size() + 1, kinds.size()));
    }
    return false;
}

const KeyRule *ObjectRules::find(const std::string &key, const std::string &kind) const
{
    for (const KeyRule &rule : keys) {
        if (key == rule.key && has(rule, kind))
            return &rule;
    }
    return nullptr;
}

} // namespace sondixsim::model
