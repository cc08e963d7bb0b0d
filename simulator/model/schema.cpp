// SPDX-License-Identifier: MIT
#include "schema.h"

#include "benchrules.h"
#include "models.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace sondixsim::model {

namespace {

using SchemaJson = nlohmann::ordered_json;

/// A whole number is written without a decimal point.
SchemaJson schemaNumber(double number)
{
    constexpr double largest = 9007199254740992.0; // 2^53
    if (std::fabs(number) <= largest && number == std::floor(number))
        return static_cast<std::int64_t>(number);
    return number;
}

/// At least one of the keys, which are separated by blanks, is present.
SchemaJson oneGiven(const char *keys)
{
    SchemaJson alternatives = SchemaJson::array();
    for (const std::string &key : wordsOf(keys))
        alternatives.push_back({{"required", {key}}});
    return alternatives.size() == 1 ? alternatives.front() : SchemaJson{{"anyOf", alternatives}};
}

class SchemaWriter
{
public:
    SchemaJson write()
    {
        SchemaJson root = {{"$schema", "http://json-schema.org/draft-07/schema#"},
                           {"title", "Bench file of the SondixQt simulator"}};
        root.update(objectSchema(benchRules()));
        addModelConditions(m_definitions.at(sensorRules().name));
        root["definitions"] = m_definitions;
        return root;
    }

private:
    SchemaJson objectSchema(const ObjectRules &rules);
    SchemaJson membersOf(const ObjectRules &rules, const std::string &kind);
    SchemaJson valueSchema(const ValueRule &rule);
    SchemaJson reference(const ObjectRules &rules);
    static SchemaJson choicesOf(const ValueRule &rule);
    static void addBounds(SchemaJson &schema, const ValueRule &rule);
    static void addModelConditions(SchemaJson &sensor);

    SchemaJson m_definitions = SchemaJson::object();
};

void SchemaWriter::addBounds(SchemaJson &schema, const ValueRule &rule)
{
    if (rule.minimum > -std::numeric_limits<double>::max())
        schema["minimum"] = schemaNumber(rule.minimum);
    if (rule.maximum < std::numeric_limits<double>::max())
        schema["maximum"] = schemaNumber(rule.maximum);
}

SchemaJson SchemaWriter::choicesOf(const ValueRule &rule)
{
    SchemaJson values = SchemaJson::array();
    SchemaJson descriptions = SchemaJson::array();
    bool isDescribed = false;
    for (const Choice &choice : rule.choices()) {
        if (rule.type == ValueRule::Type::Whole)
            values.push_back(std::stoi(choice.value));
        else
            values.push_back(choice.value);
        descriptions.push_back(choice.description);
        isDescribed = isDescribed || !choice.description.empty();
    }
    SchemaJson schema = {{"enum", values}};
    if (isDescribed)
        schema["enumDescriptions"] = descriptions; // not of the standard; editors show them
    return schema;
}

SchemaJson SchemaWriter::valueSchema(const ValueRule &rule)
{
    if (rule.choices != nullptr) {
        if (!rule.isOpen)
            return choicesOf(rule);
        ValueRule any = rule;
        any.choices = nullptr;
        return {{"anyOf", {choicesOf(rule), valueSchema(any)}}};
    }
    SchemaJson schema = SchemaJson::object();
    switch (rule.type) {
    case ValueRule::Type::Text:
    case ValueRule::Type::Plain:
        schema["type"] = "string";
        break;
    case ValueRule::Type::Word:
    case ValueRule::Type::Name:
        schema = {{"type", "string"}, {"pattern", "^[^\\u0000-\\u001f\\u007f]*$"}};
        if (rule.type == ValueRule::Type::Word)
            schema["minLength"] = 1;
        break;
    case ValueRule::Type::Number:
    case ValueRule::Type::Whole:
        schema["type"] = rule.type == ValueRule::Type::Whole ? "integer" : "number";
        addBounds(schema, rule);
        break;
    case ValueRule::Type::Boolean:
        schema["type"] = "boolean";
        break;
    case ValueRule::Type::Range:
        schema = {{"type", "array"}, {"items", {{"type", "number"}}}, {"minItems", 2}, {"maxItems", 2}};
        break;
    case ValueRule::Type::Scalar:
        schema["type"] = {"string", "number", "boolean"};
        break;
    case ValueRule::Type::Null:
        schema["type"] = "null";
        break;
    case ValueRule::Type::Object:
        schema = reference(rule.object());
        break;
    case ValueRule::Type::Array:
        schema = {{"type", "array"}, {"items", valueSchema(rule.parts[0])}};
        break;
    case ValueRule::Type::Map:
        schema["type"] = "object";
        if (rule.pattern != nullptr)
            schema["propertyNames"] = {{"pattern", rule.pattern}};
        schema["additionalProperties"] = valueSchema(rule.parts[0]);
        break;
    case ValueRule::Type::AnyOf:
        for (const ValueRule &part : rule.parts)
            schema["anyOf"].push_back(valueSchema(part));
        break;
    }
    return schema;
}

SchemaJson SchemaWriter::reference(const ObjectRules &rules)
{
    if (!m_definitions.contains(rules.name)) {
        m_definitions[rules.name] = nullptr; // keeps the order, and ends recursion
        SchemaJson schema = objectSchema(rules);
        m_definitions[rules.name] = std::move(schema);
    }
    return {{"$ref", std::string("#/definitions/") + rules.name}};
}

/// The keys of an object of one kind.
SchemaJson SchemaWriter::membersOf(const ObjectRules &rules, const std::string &kind)
{
    SchemaJson schema = {{"properties", SchemaJson::object()}};
    for (const KeyRule &rule : rules.keys) {
        if (!rules.has(rule, kind))
            continue;
        SchemaJson described = {{"description", rule.description}};
        SchemaJson value = valueSchema(rule.value);
        if (value.contains("$ref")) // whatever stands beside a reference is ignored
            value = {{"allOf", {value}}};
        described.update(value);
        schema["properties"][rule.key] = std::move(described);
        if (rule.presence == Presence::Required)
            schema["required"].push_back(rule.key);
        if (rule.with != nullptr)
            schema["dependencies"][rule.key] = oneGiven(rule.with);
    }
    schema["additionalProperties"] = false;
    return schema;
}

SchemaJson SchemaWriter::objectSchema(const ObjectRules &rules)
{
    SchemaJson schema = {{"type", "object"}};
    if (rules.kindKey == nullptr) {
        schema.update(membersOf(rules, {}));
    } else {
        const KeyRule &kindRule = *rules.find(rules.kindKey, {});
        SchemaJson kinds = {{"description", kindRule.description}};
        kinds.update(valueSchema(kindRule.value));
        schema["properties"] = {{rules.kindKey, kinds}};
        schema["required"] = {rules.kindKey};
        for (const Choice &kind : kindRule.value.choices()) {
            SchemaJson condition = {{"properties", {{rules.kindKey, {{"const", kind.value}}}}},
                                    {"required", {rules.kindKey}}};
            schema["allOf"].push_back({{"if", condition}, {"then", membersOf(rules, kind.value)}});
        }
    }
    const auto addGroups = [&schema](const char *keyword, const auto &groups) {
        for (const auto &group : groups) {
            SchemaJson alternatives = SchemaJson::array();
            for (const char *const key : group)
                alternatives.push_back(oneGiven(key));
            schema["allOf"].push_back({{keyword, alternatives}});
        }
    };
    addGroups("anyOf", rules.atLeastOneOf);
    addGroups("oneOf", rules.exactlyOneOf);
    return schema;
}

/// The interfaces of models that cannot be connected to all, and which models have members.
void SchemaWriter::addModelConditions(SchemaJson &sensor)
{
    std::map<std::vector<std::string>, SchemaJson> modelsByInterfaces;
    SchemaJson multi = SchemaJson::array();
    for (const std::string &name : modelNames()) {
        const SensorSpec &spec = *modelNamed(name);
        if (!spec.interfaces.empty())
            modelsByInterfaces[spec.interfaces].push_back(name);
        if (spec.multi)
            multi.push_back(name);
    }
    const auto ifModelIn = [](const SchemaJson &names) {
        return SchemaJson{{"properties", {{"model", {{"enum", names}}}}}, {"required", {"model"}}};
    };
    for (const auto &[interfaces, names] : modelsByInterfaces) {
        const SchemaJson place = {{"properties", {{"interface", {{"enum", interfaces}}}}}};
        sensor["allOf"].push_back({{"if", ifModelIn(names)}, {"then", {{"properties", {{"place", place}}}}}});
    }
    sensor["allOf"].push_back({{"if", ifModelIn(multi)},
                               {"then", {{"required", {"members"}}}},
                               {"else", {{"properties", {{"members", false}}}}}});
}

} // namespace

std::string benchSchema()
{
    return SchemaWriter().write().dump(2) + '\n';
}

} // namespace sondixsim::model
