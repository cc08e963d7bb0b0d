// SPDX-License-Identifier: MIT
#include "json.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <unordered_set>

namespace sondixsim::model {

namespace {

/// Counts lines while the parser reads. The parser reads one character beyond a number before it reports the number:
/// a line break counts only when the next character is read.
struct LineCounter
{
    int line = 1;
    bool lastWasNewline = false;

    void consumed(char c)
    {
        if (lastWasNewline)
            ++line;
        lastWasNewline = c == '\n';
    }
};

class CountingIterator
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char *;
    using reference = const char &;

    CountingIterator(const char *position, LineCounter *counter)
        : m_position(position)
        , m_counter(counter)
    {
    }
    reference operator*() const { return *m_position; }
    CountingIterator &operator++()
    {
        m_counter->consumed(*m_position++);
        return *this;
    }
    CountingIterator operator++(int)
    {
        const CountingIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const CountingIterator &other) const { return m_position == other.m_position; }
    bool operator!=(const CountingIterator &other) const { return m_position != other.m_position; }

private:
    const char *m_position;
    LineCounter *m_counter;
};

/// "[json.exception.parse_error.101] parse error at line 3, column 7: syntax error ..." without the part before the colon.
std::string withoutPrefix(const std::string &message)
{
    const std::size_t colon = message.find(": ");
    return colon == std::string::npos ? message : message.substr(colon + 2);
}

class TreeBuilder
{
public:
    using number_integer_t = nlohmann::json::number_integer_t;
    using number_unsigned_t = nlohmann::json::number_unsigned_t;
    using number_float_t = nlohmann::json::number_float_t;
    using string_t = nlohmann::json::string_t;
    using binary_t = nlohmann::json::binary_t;

    explicit TreeBuilder(const LineCounter &counter)
        : m_counter(counter)
    {
    }

    bool null() { return add(Node::Kind::Null) != nullptr; }
    bool boolean(bool value)
    {
        add(Node::Kind::Boolean)->boolean = value;
        return true;
    }
    bool number_integer(number_integer_t value)
    {
        Node *node = add(Node::Kind::Integer);
        node->integer = value;
        node->real = static_cast<double>(value);
        return true;
    }
    bool number_unsigned(number_unsigned_t value)
    {
        if (value > static_cast<number_unsigned_t>(INT64_MAX))
            return number_float(static_cast<number_float_t>(value), {});
        return number_integer(static_cast<number_integer_t>(value));
    }
    bool number_float(number_float_t value, const string_t & /*text*/)
    {
        add(Node::Kind::Real)->real = value;
        return true;
    }
    bool string(string_t &value)
    {
        add(Node::Kind::Text)->text = std::move(value);
        return true;
    }
    bool binary(binary_t & /*value*/) { return false; }
    bool start_object(std::size_t /*count*/) { return open(Node::Kind::Object); }
    bool start_array(std::size_t /*count*/) { return open(Node::Kind::Array); }
    bool end_object() { return close(); }
    bool end_array() { return close(); }
    bool key(string_t &value)
    {
        if (!m_open.back().isNew(value))
            throw ParseError(m_counter.line, "the key \"" + value + "\" is given twice in one object");
        m_open.back().node->members.push_back({std::move(value), m_counter.line, {}});
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string &token, const nlohmann::detail::exception &e)
    {
        constexpr int numberOverflow = 406;
        if (e.id == numberOverflow)
            throw ParseError(m_counter.line, "a number is too large: " + token.substr(0, 20));
        throw ParseError(m_counter.line, withoutPrefix(e.what()));
    }

    Node takeRoot() { return std::move(m_root); }

private:
    /// An array or object whose end has not come.
    struct Open
    {
        Node *node;
        std::unordered_set<std::string> keys; ///< of an object with many members

        /// Most objects have few members, for which a set is slower.
        bool isNew(const std::string &key)
        {
            constexpr std::size_t few = 16;
            const std::vector<Member> &members = node->members;
            if (members.size() < few) {
                return std::none_of(members.begin(), members.end(),
                                    [&key](const Member &member) { return member.key == key; });
            }
            if (keys.empty()) {
                for (const Member &member : members)
                    keys.insert(member.key);
            }
            return keys.insert(key).second;
        }
    };

    Node *add(Node::Kind kind)
    {
        Node *node = &m_root;
        if (!m_open.empty()) {
            Node *parent = m_open.back().node;
            if (parent->kind == Node::Kind::Array)
                parent->elements.emplace_back();
            node = parent->kind == Node::Kind::Array ? &parent->elements.back() : &parent->members.back().value;
        }
        node->kind = kind;
        node->line = m_counter.line;
        return node;
    }
    bool open(Node::Kind kind)
    {
        constexpr std::size_t maxDepth = 32;
        if (m_open.size() == maxDepth)
            throw ParseError(m_counter.line, "nested too deeply");
        m_open.push_back({add(kind), {}});
        return true;
    }
    bool close()
    {
        m_open.pop_back();
        return true;
    }

    const LineCounter &m_counter;
    Node m_root;
    std::vector<Open>
        m_open; // elements are appended to the innermost node only: pointers to the outer ones stay valid
};

} // namespace

Node parseJson(std::string_view text)
{
    LineCounter counter;
    TreeBuilder builder(counter);
    const char *const begin = text.data();
    const CountingIterator first(begin, &counter);
    const CountingIterator last(begin + text.size(), &counter);
    nlohmann::json::sax_parse(first, last, &builder, nlohmann::json::input_format_t::json, true, true);
    return builder.takeRoot();
}

} // namespace sondixsim::model
