// SPDX-License-Identifier: MIT
#include "webinterface.h"

#include "gzip.h"
#include "models.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace sondixsim::model {

namespace {

struct FileType
{
    std::string_view ending;
    const char *type;
};

// clang-format off
constexpr FileType fileTypes[] = {
    {".html", "text/html; charset=utf-8"},
    {".css",  "text/css; charset=utf-8"},
    {".js",   "text/javascript; charset=utf-8"},
    {".json", "application/json"},
    {".svg",  "image/svg+xml"},
    {".png",  "image/png"},
    {".jpg",  "image/jpeg"},
    {".txt",  "text/plain; charset=utf-8"},
};
// clang-format on

std::map<std::string, Page> readOwnPages()
{
    std::map<std::string, Page> pages;
    for (unsigned i = 0; i < embeddedPagesCount; ++i) {
        const EmbeddedFile &file = embeddedPages[i];
        pages['/' + std::string(file.name)] = {typeOfFile(file.name), std::string(file.text, file.size), false};
    }
    pages["/"] = pages.at("/index.html");
    return pages;
}

std::string tagOf(const std::string &content)
{
    std::uint64_t hash = 14695981039346656037u;
    for (const char c : content)
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
    char text[17];
    std::snprintf(text, sizeof text, "%08x%08x", static_cast<unsigned>(hash >> 32),
                  static_cast<unsigned>(hash & 0xFFFFFFFFu));
    return text;
}

/// \a text without blanks and quotes around it.
std::string tagAlone(std::string_view text)
{
    constexpr std::string_view around = " \t\"";
    const std::size_t first = text.find_first_not_of(around);
    if (first == std::string_view::npos)
        return {};
    return std::string(text.substr(first, text.find_last_not_of(around) - first + 1));
}

/// Whether an If-None-Match list contains \a tag. Weak tags count as well.
bool listContains(std::string_view list, const std::string &tag)
{
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(','), list.size());
        std::string one = tagAlone(list.substr(0, end));
        if (one.compare(0, 2, "W/") == 0)
            one = tagAlone(one.substr(2));
        if (one == tag || one == "*")
            return true;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

struct Status
{
    const char *text;
    bool cacheable; ///< a browser may cache the answer and revalidate it
};
constexpr Status ok{"200 OK", true};
constexpr Status notFound{"404 Not Found", false};
constexpr Status tooLong{"500 Internal Server Error", false};

HttpAnswer compose(const Status &status, const Page &page, const std::string &tag, std::string body,
                   bool compressed)
{
    const bool cacheable = status.cacheable && !page.live;
    HttpAnswer answer;
    answer.header = "HTTP/1.1 " + std::string(status.text) + "\r\nContent-Type: " + page.type +
                    "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n";
    if (compressed)
        answer.header += "Content-Encoding: gzip\r\n";
    if (cacheable)
        answer.header += "ETag: \"" + tag + "\"\r\n";
    answer.header +=
        "Connection: keep-alive\r\nCache-Control: " + std::string(cacheable ? "no-cache" : "no-store") +
        "\r\n\r\n";
    answer.body = std::move(body);
    return answer;
}

HttpAnswer notModified(const std::string &tag)
{
    return {"HTTP/1.1 304 Not Modified\r\nETag: \"" + tag +
                "\"\r\nConnection: keep-alive\r\nCache-Control: no-cache\r\n\r\n",
            {}};
}

HttpAnswer answerWith(const Status &status, const HttpRequest &request, const Page &page)
{
    const bool compressed = page.content.size() > request.maxLength;
    std::string body = compressed ? gzip(page.content) : page.content;
    if (body.size() > request.maxLength) {
        if (status.text == tooLong.text) // not even the error page fits
            return compose(status, page, {}, {}, false);
        return answerWith(tooLong, request, *ownPage("/500.html"));
    }
    // A cached plain body must not be taken for the compressed one: each has a tag of its own.
    const std::string tag = tagOf(page.content) + (compressed ? "-gz" : "");
    if (status.cacheable && !page.live && listContains(request.tag, tag))
        return notModified(tag);
    return compose(status, page, tag, std::move(body), compressed);
}

} // namespace

std::size_t HttpRequest::size() const
{
    constexpr std::string_view line = "GET  HTTP/1.1\r\n\r\n";
    constexpr std::string_view condition = "If-None-Match: \"\"\r\n";
    return line.size() + path.size() + (tag.empty() ? 0 : condition.size() + tag.size());
}

const Page *ownPage(const std::string &path)
{
    // Never destroyed: applications may call the library from static destructors.
    static const auto *const pages = new std::map<std::string, Page>(readOwnPages());
    const auto found = pages->find(path);
    return found != pages->end() ? &found->second : nullptr;
}

std::string barePath(const std::string &target)
{
    return target.substr(0, target.find_first_of("?#"));
}

std::string typeOfFile(const std::string &name)
{
    for (const FileType &known : fileTypes) {
        if (name.size() >= known.ending.size() &&
            name.compare(name.size() - known.ending.size(), std::string::npos, known.ending) == 0)
            return known.type;
    }
    return "application/octet-stream";
}

HttpAnswer answerTo(const HttpRequest &request, const Page *page)
{
    return page != nullptr ? answerWith(ok, request, *page) : answerWith(notFound, request, *ownPage("/404.html"));
}

} // namespace sondixsim::model
