// SPDX-License-Identifier: MIT
#include "recorder.h"

#include "encoding.h"
#include "library.h"

#include "model/platform.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace sondixrec {

using sondixsim::model::environmentVariable;

Line::Line(Redaction *redaction)
    : m_redaction(redaction)
{
}

void Line::begin(std::uint32_t process, std::uint64_t number, unsigned thread, long long time, long long took,
                 const char *function)
{
    m_json = '{';
    m_isFirst = true;
    integer("process", process);
    integer("call", static_cast<long long>(number));
    integer("thread", thread);
    integer("time", time);
    integer("took", took);
    key("function");
    appendUtf8(m_json, function);
}

void Line::handle(std::uint32_t handle)
{
    integer("handle", handle);
    arguments();
}

void Line::arguments()
{
    open("arguments");
}

void Line::open(const char *section)
{
    if (m_isOpen)
        m_json += '}';
    m_isFirst = false;
    key(section);
    m_json += '{';
    m_isFirst = true;
    m_isOpen = true;
}

void Line::answers()
{
    open("answers");
}

const std::string &Line::end(long long result)
{
    if (m_isOpen)
        m_json += '}';
    m_isFirst = false;
    integer("result", result);
    m_json += "}\n";
    return m_json;
}

void Line::key(const char *key)
{
    if (!m_isFirst)
        m_json += ',';
    m_isFirst = false;
    m_json += '"';
    m_json += key;
    m_json += "\":";
}

void Line::integer(const char *key, long long value)
{
    this->key(key);
    appendInteger(m_json, value);
}

void Line::real(const char *key, double value)
{
    this->key(key);
    appendDouble(m_json, value);
}

void Line::flag(const char *key, bool value)
{
    this->key(key);
    m_json += value ? "true" : "false";
}

void Line::null(const char *key)
{
    this->key(key);
    m_json += "null";
}

void Line::name(const char *name)
{
    if (name == nullptr)
        return null("name");
    m_name = name;
    key("name");
    appendBytes(m_json, name);
}

void Line::parameter(const char *key, std::int32_t value)
{
    integer(key, m_redaction != nullptr ? m_redaction->value(m_name, value) : value);
}

void Line::parameter(const char *key, const char *value)
{
    if (value == nullptr)
        null(key);
    else
        parameter(key, std::string_view(value));
}

void Line::parameter(const char *key, std::string_view value)
{
    this->key(key);
    if (m_redaction != nullptr)
        appendBytes(m_json, m_redaction->value(m_name, value));
    else
        appendBytes(m_json, value);
}

void Line::binary(const char *key, std::string_view bytes)
{
    this->key(key);
    if (m_redaction != nullptr)
        appendBase64(m_json, m_redaction->binary(m_name, bytes));
    else
        appendBase64(m_json, bytes);
}

void Line::text(const char *key, std::string_view text)
{
    this->key(key);
    if (m_redaction != nullptr)
        appendBytes(m_json, m_redaction->text(text));
    else
        appendBytes(m_json, text);
}

void Line::privateText(const char *key, const char *text)
{
    if (text == nullptr)
        return null(key);
    this->key(key);
    if (m_redaction != nullptr)
        appendBytes(m_json, m_redaction->whole(text));
    else
        appendBytes(m_json, text);
}

void Line::array(const char *key, const std::int32_t *values, std::size_t count)
{
    this->key(key);
    char separator = '[';
    for (std::size_t i = 0; i < count; ++i, separator = ',') {
        m_json += separator;
        appendInteger(m_json, values[i]);
    }
    m_json += count == 0 ? "[]" : "]";
}

void Line::array(const char *key, const double *values, std::size_t count)
{
    this->key(key);
    char separator = '[';
    for (std::size_t i = 0; i < count; ++i, separator = ',') {
        m_json += separator;
        appendDouble(m_json, values[i]);
    }
    m_json += count == 0 ? "[]" : "]";
}

Recorder &Recorder::get()
{
    // Never destroyed: other threads and other destructors may still call the library.
    static Recorder *const recorder = new Recorder;
    return *recorder;
}

Recorder::Recorder()
{
    const auto file = environmentVariable("SONDIX_RECORD_FILE");
    if (!file || file->empty())
        return;
    m_fileName = *file;
    const auto redactionKey = environmentVariable("SONDIX_RECORD_REDACT");
    if (redactionKey && !redactionKey->empty())
        m_redaction = std::make_unique<Redaction>(*redactionKey);
    std::string problem;
    if (!m_file.open(sondixsim::model::pathFromUtf8(m_fileName), problem)) {
        fail(problem);
        return;
    }
    const auto shown = [this](const std::string &path) {
        return m_redaction ? path.substr(path.find_last_of("/\\") + 1) : path; // folders have names of users
    };
    const auto original = environmentVariable("SONDIX_RECORD_PROGRAM");
    const nlohmann::ordered_json head = {{"format", "sondix calls"},
                                         {"version", 1},
                                         {"process", processNumber()},
                                         {"date", presentDate()},
                                         {"platform", platformName()},
                                         {"program", shown(original ? *original : programPath())},
                                         {"library", shown(libraryBehindName())},
                                         {"redacted", m_redaction != nullptr}};
    m_isOn = true;
    write(head.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + '\n');
}

unsigned Recorder::threadNumber()
{
    thread_local const unsigned number = ++m_threads;
    return number;
}

void Recorder::write(const std::string &line)
{
    std::string problem;
    if (!m_file.append(line, problem))
        fail(problem);
}

void Recorder::fail(const std::string &reason) noexcept
{
    if (m_isOn.exchange(false) || !m_file.isOpen())
        std::fprintf(stderr, "sondixqt: the record %s ends here: %s\n", m_fileName.c_str(), reason.c_str());
}

} // namespace sondixrec
