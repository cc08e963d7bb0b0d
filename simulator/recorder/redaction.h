// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace sondixrec {

/// Replaces private texts: serial numbers, addresses in the network, names of hosts and files, and log texts.
///
/// The same text always gets the same substitute, which has the same length and the same kind of characters; different
/// texts get different ones. Hexadecimal addresses are compared without their case. A value of a parameter with a private
/// name is also replaced wherever it occurs later. All texts are windows-1250. Threads: any.
class Redaction
{
public:
    /// The substitutes depend on \a key, without which nobody can find out what they stand for.
    explicit Redaction(std::string key);

    /// The value of a parameter of this name.
    std::string value(std::string_view name, std::string_view text);
    std::int32_t value(std::string_view name, std::int32_t number);
    std::string binary(std::string_view name, std::string_view bytes);
    /// A text that may contain private ones, such as an error text, or pairs name="value".
    std::string text(std::string_view text);
    /// A text that is private as a whole.
    std::string whole(std::string_view text) const;

private:
    enum Digits { Decimal, Hexadecimal };

    /// A number from 0 on that is less than the radix.
    struct Symbol
    {
        unsigned value;
        unsigned radix;
    };

    void permute(std::vector<Symbol> &symbols) const;
    std::string substitute(std::string_view text, Digits digits) const;
    std::string pairs(std::string_view text);
    std::string addresses(std::string_view text) const;
    std::string ipv4Address(std::string_view token) const;
    std::string ipv6Address(std::string_view token) const; ///< or a hardware address
    std::string known(std::string_view text);
    void learn(std::string_view text);

    const std::string m_key;
    std::mutex m_mutex;
    std::map<std::string, std::string, std::less<>> m_known;
};

} // namespace sondixrec
