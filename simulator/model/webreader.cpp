// SPDX-License-Identifier: MIT
#include "webreader.h"

#include "inputfile.h"
#include "platform.h"

#include <algorithm>

namespace sondixsim::model {

namespace {

bool isPrintable(const std::string &text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
}

std::string readContent(const Node &node, const std::string &folder)
{
    const std::string name = readPlainText(node, "\"file\"");
    try {
        return readInputFile(pathFromUtf8(folder) / pathFromUtf8(name));
    } catch (const InputError &error) {
        throw ParseError(node.line, "the page in \"" + name + "\" cannot be read: " + error.what());
    }
}

const ObjectRules &pageRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"page", "a page", {
        {"text", optional, plainText(), "Content"},
        {"file", optional, plainText(), "Content, a file (relative to the bench file)"},
        {"type", optional, plainText(), "\"Content-Type\" (by the extension of the file or the path)"},
    }, nullptr, {}, {{"text", "file"}}};
    // clang-format on
    return rules;
}

const ObjectRules &webInterfaceRules()
{
    using namespace keys;
    // clang-format off
    static const auto &rules = *new ObjectRules{"webInterface", "\"webInterface\"", {
        {"output",    required, plainText(),       "Setting that switches the output of values on the serial line"},
        {"baudrates", required, arrayOf(whole(1)), "Its baud rates"},
    }};
    // clang-format on
    return rules;
}

Page readPage(const Node &node, const std::string &path, const std::string &folder)
{
    ObjectReader reader(node, pageRules(), "the page \"" + path + '"');
    Page page;
    const Node *const text = reader.optional("text");
    const Node *const file = reader.optional("file");
    reader.checkGroups();
    page.content = text != nullptr ? readPlainText(*text, "\"text\"") : readContent(*file, folder);
    page.type = typeOfFile(file != nullptr ? file->text : path);
    if (reader.read("type", page.type)) {
        const bool oneLine =
            std::none_of(page.type.begin(), page.type.end(), [](unsigned char c) { return c < ' ' || c > '~'; });
        if (!oneLine || page.type.find('/') == std::string::npos)
            throw ParseError(reader.required("type").line, "\"type\" must be a media type such as \"text/html\"");
    }
    reader.finish();
    return page;
}

void readPages(const Node &node, SensorSpec &spec, const std::string &folder)
{
    if (!spec.web.present)
        throw ParseError(node.line, spec.model + " has no web interface");
    for (const Member &member : readObject(node, "\"pages\"")) {
        const std::string &path = member.key;
        if (path.empty() || path.front() != '/' || !isPrintable(path) || barePath(path) != path) {
            throw ParseError(member.line,
                             "the path \"" + path + "\" must begin with \"/\" and have no blank, \"?\" or \"#\"");
        }
        spec.web.pages[path] = readPage(member.value, path, folder);
    }
}

WebInterface readWebInterface(const Node &node, const SensorSpec &spec)
{
    ObjectReader reader(node, webInterfaceRules());
    WebInterface web;
    web.present = true;
    reader.read("output", web.output);
    if (spec.settings.find(web.output) == nullptr)
        throw ParseError(reader.required("output").line, spec.model + " has no setting \"" + web.output + '"');
    for (const Node &rate : readArray(reader.required("baudrates"), "\"baudrates\""))
        web.baudrates.push_back(readInt(rate, "a baud rate", 1));
    reader.finish();
    return web;
}

} // namespace

std::vector<KeyRule> webKeys()
{
    using namespace keys;
    // clang-format off
    return {
        {"webInterface", optional, orNull(object(webInterfaceRules)), "Its output switch and its baud rates; null: none (the model's)"},
        {"pages",        optional, mapOf(object(pageRules), "^/[!\"$->@-~]*$"), "Pages of its web interface by path, in addition to the built-in ones"},
    };
    // clang-format on
}

void readWebKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder)
{
    if (const Node *web = reader.optional("webInterface"))
        spec.web = web->kind == Node::Kind::Null ? WebInterface() : readWebInterface(*web, spec);
    if (const Node *pages = reader.optional("pages"))
        readPages(*pages, spec, folder);
}

} // namespace sondixsim::model
