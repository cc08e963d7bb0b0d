// SPDX-License-Identifier: MIT
#include "models.h"

#include "speccheck.h"
#include "specreader.h"

namespace sondixsim::model {

namespace {

struct ModelTable
{
    std::map<std::string, SensorSpec> models;
    std::map<std::string, std::string> aliases; ///< other names of models
};

const ObjectRules &modelRules()
{
    using namespace keys;
    static const auto &rules = *[] {
        // clang-format off
        auto *all = new ObjectRules{"model", "a model", {
            {"extends",    optional, plainText(),          "Model whose properties it has"},
            {"type",       optional, whole(1),             "Its number"},
            {"bus",        optional, boolean(),            "true: a sensor on a bus"},
            {"polled",     optional, boolean(),            "true: values become available with \"Get_Measure\""},
            {"multi",      optional, boolean(),            "true: it stands for several sensors"},
            {"interfaces", optional, arrayOf(plainText()), "To which it can be connected"},
            {"aliases",    optional, arrayOf(plainText()), "Other names"},
        }};
        // clang-format on
        const std::vector<KeyRule> common = commonKeys();
        all->keys.insert(all->keys.end(), common.begin(), common.end());
        return all;
    }();
    return rules;
}

SensorSpec readModel(const Member &member, ModelTable &table)
{
    ObjectReader reader(member.value, modelRules());
    SensorSpec spec;
    if (const Node *base = reader.optional("extends")) {
        const auto found = table.models.find(readPlainText(*base, "\"extends\""));
        if (found == table.models.end())
            throw ParseError(base->line, "there is no model \"" + base->text + "\" to extend");
        spec = found->second;
    }
    spec.model = member.key;
    spec.type = 0;
    reader.read("type", spec.type);
    reader.read("bus", spec.bus);
    reader.read("polled", spec.polled);
    reader.read("multi", spec.multi);
    if (const Node *interfaces = reader.optional("interfaces")) {
        spec.interfaces.clear();
        for (const Node &interface : readArray(*interfaces, "\"interfaces\""))
            spec.interfaces.push_back(readPlainText(interface, "an interface"));
    }
    if (const Node *aliases = reader.optional("aliases")) {
        for (const Node &alias : readArray(*aliases, "\"aliases\""))
            table.aliases[readPlainText(alias, "an alias")] = member.key;
    }
    readCommonKeys(reader, spec, {});
    reader.finish();
    checkReferences(member.value, spec);
    return spec;
}

/// Models whose names begin with "@" only serve as a base for others.
ModelTable readModels()
{
    ModelTable table;
    auto &all = table.models;
    for (unsigned i = 0; i < embeddedModelsCount; ++i) {
        const EmbeddedFile &file = embeddedModels[i];
        const Node root = parseJson({file.text, file.size});
        for (const Member &member : readObject(root, "the models"))
            all[member.key] = readModel(member, table);
    }
    for (auto it = all.begin(); it != all.end();)
        it = it->first.front() == '@' ? all.erase(it) : std::next(it);
    return table;
}

const ModelTable &table()
{
    // Never destroyed: applications may call the library from static destructors.
    static const auto *const read = new ModelTable(readModels());
    return *read;
}

} // namespace

const std::map<std::string, SensorSpec> &models()
{
    return table().models;
}

const SensorSpec *modelNamed(const std::string &name)
{
    const auto alias = table().aliases.find(name);
    const auto found = models().find(alias != table().aliases.end() ? alias->second : name);
    return found != models().end() ? &found->second : nullptr;
}

std::vector<std::string> modelNames()
{
    std::vector<std::string> names;
    for (const auto &[name, spec] : models())
        names.push_back(name);
    for (const auto &[alias, name] : table().aliases)
        names.push_back(alias);
    return names;
}

const SensorSpec *modelOfBaseType(std::int32_t type)
{
    for (const auto &[name, spec] : models()) {
        if (spec.type == type && type < 10000)
            return &spec;
    }
    return nullptr;
}

} // namespace sondixsim::model
