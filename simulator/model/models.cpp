// SPDX-License-Identifier: MIT
#include "models.h"

#include "specreader.h"

namespace sondixsim::model {

namespace {

SensorSpec readModel(const Member &member, const std::map<std::string, SensorSpec> &known)
{
    ObjectReader reader(member.value, "a model");
    SensorSpec spec;
    if (const Node *base = reader.optional("extends")) {
        const auto found = known.find(readPlainText(*base, "\"extends\""));
        if (found == known.end())
            throw ParseError(base->line, "there is no model \"" + base->text + "\" to extend");
        spec = found->second;
    }
    spec.model = member.key;
    spec.type = 0;
    if (const Node *type = reader.optional("type"))
        spec.type = readInt(*type, "\"type\"", 1);
    const auto flag = [&reader](const char *key, bool &target) {
        if (const Node *value = reader.optional(key))
            target = readBool(*value, '"' + std::string(key) + '"');
    };
    flag("bus", spec.bus);
    flag("polled", spec.polled);
    flag("multi", spec.multi);
    readCommonKeys(reader, spec, {});
    reader.finish();
    return spec;
}

/// Models whose names begin with "@" only serve as a base for others.
std::map<std::string, SensorSpec> readModels()
{
    std::map<std::string, SensorSpec> all;
    for (unsigned i = 0; i < embeddedModelsCount; ++i) {
        const EmbeddedFile &file = embeddedModels[i];
        const Node root = parseJson({file.text, file.size});
        for (const Member &member : readObject(root, "the models"))
            all[member.key] = readModel(member, all);
    }
    for (auto it = all.begin(); it != all.end();)
        it = it->first.front() == '@' ? all.erase(it) : std::next(it);
    return all;
}

} // namespace

const std::map<std::string, SensorSpec> &models()
{
    // Never destroyed: applications may call the library from static destructors.
    static const auto *const all = new std::map<std::string, SensorSpec>(readModels());
    return *all;
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
