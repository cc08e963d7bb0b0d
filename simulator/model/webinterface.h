// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace sondixsim::model {

/// A page of the web interface.
struct Page
{
    std::string type; ///< "Content-Type"
    std::string content;
    bool live = false; ///< generated for each request, never cached
};

/// The web interface of a model.
struct WebInterface
{
    bool present = false;
    std::string output;                  ///< setting that switches measured values on the serial line
    std::vector<std::int32_t> baudrates; ///< that "BAUDRATE" accepts
    std::map<std::string, Page> pages;   ///< from a bench file; they replace built-in ones with the same path
};

struct HttpRequest
{
    std::string path;
    std::string tag;           ///< entity tag of the client's copy; empty without one
    std::size_t maxLength = 0; ///< of the body of the answer, in bytes
    std::size_t size() const;  ///< of the request on the line, in bytes
};

struct HttpAnswer
{
    std::string header; ///< including the blank line
    std::string body;
};

/// The built-in page \a path of every web interface, null when there is none.
const Page *ownPage(const std::string &path);

/// "/a" for "/a?b#c".
std::string barePath(const std::string &target);

/// "text/css; charset=utf-8" for "a.css".
std::string typeOfFile(const std::string &name);

/// The answer to a request for \a page; null is answered with 404.
HttpAnswer answerTo(const HttpRequest &request, const Page *page);

} // namespace sondixsim::model
