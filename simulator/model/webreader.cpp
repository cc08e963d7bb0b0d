// SPDX-License-Identifier: MIT
#include "webreader.h"
#include "platform.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace sondixsim::model {

namespace {

bool isPrintable(const std::string &text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
}

std::string readContent(const Node &node, const std::string &folder)
{
    const std::string name = readPlainText(node, "\"file\"");
    std::ifstream file(pathFromUtf8(folder) / pathFromUtf8(name), std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file)
        throw ParseError(node.line, "the page in \"" + name + "\" cannot be read");
    return content;
}

Page readPage(const Node &node, const std::string &path, const std::string &folder)
{
    ObjectReader reader(node, "the page \"" + path + '"');
    Page page;
    const Node *const text = reader.optional("text");
    const Node *const file = reader.optional("file");
    if ((text == nullptr) == (file == nullptr))
        throw ParseError(node.line, "the page \"" + path + "\" needs either a \"text\" or a \"file\"");
    page.content = text != nullptr ? readPlainText(*text, "\"text\"") : readContent(*file, folder);
    page.type = typeOfFile(file != nullptr ? file->text : path);
    if (const Node *type = reader.optional("type")) {
        page.type = readPlainText(*type, "\"type\"");
        const bool oneLine =
            std::none_of(page.type.begin(), page.type.end(), [](unsigned char c) { return c < ' ' || c > '~'; });
        if (!oneLine || page.type.find('/') == std::string::npos)
            throw ParseError(type->line, "\"type\" must be a media type such as \"text/html\"");
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
    ObjectReader reader(node, "\"webInterface\"");
    WebInterface web;
    web.present = true;
    const Node &output = reader.required("output");
    web.output = readPlainText(output, "\"output\"");
    if (spec.settings.find(web.output) == nullptr)
        throw ParseError(output.line, spec.model + " has no setting \"" + web.output + '"');
    for (const Node &rate : readArray(reader.required("baudrates"), "\"baudrates\""))
        web.baudrates.push_back(readInt(rate, "a baud rate", 1));
    reader.finish();
    return web;
}

} // namespace

void readWebKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder)
{
    if (const Node *web = reader.optional("webInterface"))
        spec.web = web->kind == Node::Kind::Null ? WebInterface() : readWebInterface(*web, spec);
    if (const Node *pages = reader.optional("pages"))
        readPages(*pages, spec, folder);
}

} // namespace sondixsim::model
