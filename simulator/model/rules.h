// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace sondixsim::model {

// The rules say which keys the objects of a bench file have and what their values may be. ObjectReader checks files by
// them, and the published schema is made from them.

struct ObjectRules;

/// One of several texts or numbers.
struct Choice
{
    std::string value;
    std::string description;
};

struct ValueRule
{
    enum class Type {
        Text,    ///< characters of windows-1250
        Plain,   ///< any characters
        Name,    ///< without control characters
        Word,    ///< a name that is not empty
        Number,  ///<
        Whole,   ///< fits 32 bits
        Boolean, ///<
        Range,   ///< two numbers, the first less than the second
        Scalar,  ///< a text, a number, true or false
        Null,    ///<
        Object,  ///< with the keys of "object"
        Array,   ///< of parts[0]
        Map,     ///< an object with any keys that match "pattern" and with values of parts[0]
        AnyOf    ///< one of the parts
    };

    Type type = Type::Text;
    double minimum = -std::numeric_limits<double>::max();
    double maximum = std::numeric_limits<double>::max();
    /// The possible values, or usual ones if \a isOpen.
    std::vector<Choice> (*choices)() = nullptr;
    bool isOpen = false;
    const char *noun = nullptr; ///< what one of the choices is
    const ObjectRules &(*object)() = nullptr;
    const char *pattern = nullptr;
    std::vector<ValueRule> parts = {};
};

enum class Presence { Optional, Required };

/// What tables of rules are written with.
namespace keys {

constexpr Presence optional = Presence::Optional;
constexpr Presence required = Presence::Required;

ValueRule text();
ValueRule plainText();
ValueRule name();
ValueRule word();
ValueRule number(double minimum = -std::numeric_limits<double>::max(),
                 double maximum = std::numeric_limits<double>::max());
ValueRule whole(std::int32_t minimum = std::numeric_limits<std::int32_t>::min(),
                std::int32_t maximum = std::numeric_limits<std::int32_t>::max());
ValueRule boolean();
ValueRule range();
ValueRule value();
ValueRule oneOf(std::vector<Choice> (*choices)(), const char *noun); ///< the noun is for errors
ValueRule usually(ValueRule rule, std::vector<Choice> (*choices)()); ///< other values are allowed as well
ValueRule object(const ObjectRules &(*rules)());
ValueRule arrayOf(ValueRule element);
ValueRule mapOf(ValueRule element, const char *pattern = nullptr); ///< the pattern is a regular expression
ValueRule either(ValueRule first, ValueRule second);
ValueRule orNull(ValueRule rule);

} // namespace keys

struct KeyRule
{
    const char *key;
    Presence presence;
    ValueRule value;
    const char *description;
    const char *kinds = nullptr; ///< the kinds of objects that have it, separated by blanks; null: all
    const char *with = nullptr;  ///< keys, separated by blanks, without one of which this one is not allowed
};

/// The words of a text, which are separated by one blank.
std::vector<std::string> wordsOf(const std::string &text);

struct ObjectRules
{
    const char *name; ///< in the schema
    const char *what; ///< in errors, such as "a sensor"
    std::vector<KeyRule> keys;
    const char *kindKey = nullptr; ///< its value decides which other keys there are
    /// Groups of keys. An element may be several keys, separated by blanks, one of which is enough.
    std::vector<std::vector<const char *>> atLeastOneOf = {};
    std::vector<std::vector<const char *>> exactlyOneOf = {};

    /// The key in an object of this kind; null when there is none.
    const KeyRule *find(const std::string &key, const std::string &kind) const;
    bool has(const KeyRule &rule, const std::string &kind) const;
};

} // namespace sondixsim::model
