// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace sondixsim::model {

/// Something that the web interface serves.
struct Page
{
    std::string type; ///< of its content, as "Content-Type" tells it
    std::string content;
    bool live = false; ///< made for this one request: neither kept nor compared
};

/// What the web interface of a model is.
struct WebInterface
{
    bool present = false;
    std::string output;                  ///< setting that sends measured values over the serial line
    std::vector<std::int32_t> baudrates; ///< that the line can be set to
    std::map<std::string, Page> pages;   ///< of a bench file, in place of or besides the sensor's own
};

struct HttpRequest
{
    std::string path;
    std::string tag;          ///< of what the asking side has already; empty: nothing
    std::size_t most = 0;     ///< bytes that the answer's body may have
    std::size_t size() const; ///< bytes of it on a line
};

struct HttpAnswer
{
    std::string header; ///< with the blank line
    std::string body;
};

/// The page that every web interface has under \a path, null when there is none.
const Page *ownPage(const std::string &path);

/// "/a" for "/a?b#c".
std::string barePath(const std::string &target);

/// "text/css; charset=utf-8" for "a.css".
std::string typeOfFile(const std::string &name);

/// The answer to a request for \a page, null when there is none under its path.
HttpAnswer answerTo(const HttpRequest &request, const Page *page);

} // namespace sondixsim::model
