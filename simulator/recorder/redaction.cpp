// SPDX-License-Identifier: MIT
#include "redaction.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace sondixrec {

namespace {

using std::string_view;

/// Parts of parameter names, in small letters.
constexpr std::array<string_view, 13> privateNames = {
    "serialnumber", "serialno",     "macaddr",  "ipaddr",   "remoteaddr", "hostname", "dhcpname",
    "gateway",      "computername", "username", "filename", "logfile",    "domain"};

/// A shorter value also occurs by chance.
constexpr std::size_t shortestKnown = 3;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isHexLetter(char c)
{
    return (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
}

bool isWordCharacter(char c)
{
    return isDigit(c) || isLetter(c);
}

bool isNameCharacter(char c)
{
    return isWordCharacter(c) || c == '_' || c == '#';
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isPrivate(string_view name)
{
    std::string lowered(name);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(), lower);
    return std::any_of(privateNames.begin(), privateNames.end(),
                       [&](string_view part) { return lowered.find(part) != std::string::npos; });
}

/// Pseudo-random numbers that depend on a key and a text.
class Stream
{
public:
    Stream(string_view key, string_view text)
    {
        for (const string_view part : {key, string_view("\0", 1), text}) {
            for (const char c : part)
                m_state = mixed((m_state ^ static_cast<unsigned char>(c)) + 0x9E3779B97F4A7C15U);
        }
    }
    unsigned below(unsigned limit)
    {
        m_state += 0x9E3779B97F4A7C15U;
        return static_cast<unsigned>(mixed(m_state) >> 33U) % limit;
    }

private:
    static std::uint64_t mixed(std::uint64_t z)
    {
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }
    std::uint64_t m_state = 0x6A09E667F3BCC908U;
};

std::vector<string_view> split(string_view text, string_view separators)
{
    std::vector<string_view> parts;
    while (true) {
        const std::size_t end = text.find_first_of(separators);
        parts.push_back(text.substr(0, end));
        if (end == string_view::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

bool isDecimal(string_view text, std::size_t longest)
{
    return !text.empty() && text.size() <= longest && std::all_of(text.begin(), text.end(), isDigit);
}

bool isHexadecimal(string_view text, std::size_t longest)
{
    return text.size() <= longest &&
           std::all_of(text.begin(), text.end(), [](char c) { return isDigit(c) || isHexLetter(c); });
}

bool isIpv4(string_view token)
{
    const auto parts = split(token, ".");
    return parts.size() == 4 &&
           std::all_of(parts.begin(), parts.end(), [](string_view part) { return isDecimal(part, 3); });
}

/// Six pairs of digits, which is a hardware address, or an IPv6 address. A time of day has only two colons.
bool hasHexGroups(string_view token)
{
    for (const string_view separator : {string_view(":"), string_view("-")}) {
        const auto parts = split(token, separator);
        const bool areHex =
            std::all_of(parts.begin(), parts.end(), [](string_view part) { return isHexadecimal(part, 4); });
        const bool arePairs =
            std::all_of(parts.begin(), parts.end(), [](string_view part) { return part.size() == 2; });
        if (areHex && parts.size() == 6 && arePairs)
            return true;
        if (areHex && separator == ":" && parts.size() >= 3 && parts.size() <= 9 && token.size() > 2 &&
            (parts.size() >= 8 || token.find("::") != string_view::npos))
            return true;
    }
    return false;
}

/// Where the IPv4 address begins at the end of an IPv6 address, such as "::ffff:192.0.2.1".
std::size_t embeddedIpv4(string_view token)
{
    const std::size_t colon = token.rfind(':');
    if (colon == string_view::npos || !isIpv4(token.substr(colon + 1)))
        return string_view::npos;
    const auto parts = split(token.substr(0, colon), ":");
    const bool areHex =
        std::all_of(parts.begin(), parts.end(), [](string_view part) { return isHexadecimal(part, 4); });
    const bool isShort = token.find("::") != string_view::npos && parts.size() <= 7;
    return areHex && (isShort || parts.size() == 6) ? colon + 1 : string_view::npos;
}

bool isInt32(string_view text)
{
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

/// The characters of the kind of \a c; empty if it stays as it is. The first digit of a number is not replaced by 0.
string_view alphabetOf(char c, bool isHexadecimal, bool isFirst)
{
    constexpr string_view hexadecimal = "0123456789abcdef";
    constexpr string_view digits = "0123456789";
    constexpr string_view capitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    constexpr string_view smalls = "abcdefghijklmnopqrstuvwxyz";
    // Of windows-1250.
    constexpr string_view others =
        "\x8A\x8C\x8D\x8E\x8F\x9A\x9C\x9D\x9E\x9F\xA3\xA5\xAA\xAF\xB3\xB9\xBA\xBC\xBE\xBF\xC0\xC1\xC2\xC3\xC4\xC5"
        "\xC6\xC7\xC8\xC9\xCA\xCB\xCC\xCD\xCE\xCF\xD0\xD1\xD2\xD3\xD4\xD5\xD6\xD8\xD9\xDA\xDB\xDC\xDD\xDE\xDF\xE0"
        "\xE1\xE2\xE3\xE4\xE5\xE6\xE7\xE8\xE9\xEA\xEB\xEC\xED\xEE\xEF\xF0\xF1\xF2\xF3\xF4\xF5\xF6\xF8\xF9\xFA\xFB"
        "\xFC\xFD\xFE";
    if (isHexadecimal)
        return hexadecimal.find(c) != string_view::npos ? hexadecimal : string_view();
    if (isFirst && isDigit(c))
        return c == '0' ? string_view() : digits.substr(1);
    for (const string_view alphabet : {digits, capitals, smalls, others}) {
        if (alphabet.find(c) != string_view::npos)
            return alphabet;
    }
    return {};
}

} // namespace

Redaction::Redaction(std::string key)
    : m_key(std::move(key))
{
}

std::string Redaction::value(string_view name, string_view text)
{
    if (!isPrivate(name))
        return this->text(text);
    // Addresses of different lengths, ports and lists keep their form.
    std::string replaced = addresses(text);
    if (replaced != text)
        return replaced;
    learn(text);
    return whole(text);
}

std::int32_t Redaction::value(string_view name, std::int32_t number)
{
    const std::string digits = std::to_string(number);
    const std::string replaced = value(name, digits);
    std::int32_t substitute = 0;
    const auto [end, error] = std::from_chars(replaced.data(), replaced.data() + replaced.size(), substitute);
    return error == std::errc() && end == replaced.data() + replaced.size() ? substitute : 0;
}

std::string Redaction::binary(string_view name, string_view bytes)
{
    if (name.find("HTTP") == string_view::npos)
        return known(bytes);
    const bool isCompressed = bytes.substr(0, 2) == "\x1f\x8b";
    return isCompressed ? std::string(bytes.size(), '\0') : text(bytes);
}

std::string Redaction::text(string_view text)
{
    return known(addresses(pairs(text)));
}

std::string Redaction::pairs(string_view text)
{
    std::string replaced;
    for (std::size_t equals = 0; (equals = text.find('=')) != string_view::npos;) {
        std::size_t begin = equals;
        while (begin > 0 && isNameCharacter(text[begin - 1]))
            --begin;
        const string_view name = text.substr(begin, equals - begin);
        replaced += text.substr(0, equals + 1);
        text.remove_prefix(equals + 1);
        if (!isPrivate(name))
            continue;
        // An answer within an answer has escaped quotes.
        const std::size_t quote = std::min(text.find_first_not_of("\\\""), text.size());
        replaced += text.substr(0, quote);
        text.remove_prefix(quote);
        const char *const after = quote > 0 ? "\\\"\r\n" : " \t\r\n";
        const std::size_t end = std::min(text.find_first_of(after), text.size());
        replaced += value(name, text.substr(0, end));
        text.remove_prefix(end);
    }
    return replaced += text;
}

std::string Redaction::whole(string_view text) const
{
    return substitute(text, Decimal);
}

void Redaction::permute(std::vector<Symbol> &symbols) const
{
    // Each step adds a number that depends on the other symbols, so that it could be taken back: two lists never get the
    // same values.
    constexpr char rounds = 6;
    std::string others;
    for (char round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < symbols.size(); ++i) {
            others = {round, static_cast<char>(i)};
            for (std::size_t j = 0; j < symbols.size(); ++j)
                others += static_cast<char>(j == i ? 0 : symbols[j].value);
            symbols[i].value =
                (symbols[i].value + Stream(m_key, others).below(symbols[i].radix)) % symbols[i].radix;
        }
    }
}

std::string Redaction::substitute(string_view text, Digits digits) const
{
    std::vector<string_view> alphabets;
    std::vector<Symbol> symbols;
    std::string replaced(text);
    for (std::size_t i = 0; i < replaced.size(); ++i) {
        if (digits == Hexadecimal)
            replaced[i] = lower(replaced[i]);
        const bool isFirst = replaced.find_first_not_of('-') == i;
        alphabets.push_back(alphabetOf(replaced[i], digits == Hexadecimal, isFirst));
        if (!alphabets.back().empty())
            symbols.push_back({static_cast<unsigned>(alphabets.back().find(replaced[i])),
                               static_cast<unsigned>(alphabets.back().size())});
    }
    constexpr std::size_t longest = 24; // two longer texts do not get the same by chance
    if (symbols.size() > longest) {
        Stream random(m_key, replaced);
        for (Symbol &symbol : symbols)
            symbol.value = random.below(symbol.radix);
    }
    const bool isNumber = isInt32(text);
    do {
        if (symbols.size() <= longest)
            permute(symbols);
        auto symbol = symbols.begin();
        for (std::size_t i = 0; i < replaced.size(); ++i) {
            if (!alphabets[i].empty())
                replaced[i] = alphabets[i][(symbol++)->value];
        }
    } while (isInt32(replaced) != isNumber); // texts that are no numbers of 32 bits keep to themselves, too
    return replaced;
}

std::string Redaction::ipv4Address(string_view token) const
{
    const auto parts = split(token, ".");
    // Masks and the addresses of every computer tell nothing.
    if (parts.front() == "0" || parts.front() == "255" || parts.front() == "127")
        return std::string(token);
    std::vector<Symbol> symbols;
    std::vector<unsigned> firsts;
    for (const string_view part : parts) {
        unsigned number = 0;
        std::from_chars(part.data(), part.data() + part.size(), number);
        const unsigned first = part.size() == 1 ? 0 : part.size() == 2 ? 10 : 100;
        const unsigned end = part.size() == 1 ? 10 : part.size() == 2 ? 100 : 256;
        if (number < first || number >= end)
            return substitute(token, Decimal); // no address
        firsts.push_back(first);
        symbols.push_back({number - first, end - first});
    }
    const auto isOfDevice = [&] {
        const unsigned first = symbols.front().value + firsts.front();
        const unsigned last = symbols.back().value + firsts.back();
        return first > 0 && first < 224 && first != 127 && last > 0 && last < 255;
    };
    const bool wasOfDevice = isOfDevice();
    do {
        permute(symbols);
    } while (isOfDevice() != wasOfDevice);
    std::string replaced;
    for (std::size_t i = 0; i < symbols.size(); ++i)
        replaced += (i == 0 ? "" : ".") + std::to_string(symbols[i].value + firsts[i]);
    return replaced;
}

std::string Redaction::ipv6Address(string_view token) const
{
    if (token == "::1" || token == "::")
        return std::string(token); // of every computer
    if (const std::size_t ipv4 = embeddedIpv4(token); ipv4 != string_view::npos)
        return substitute(token.substr(0, ipv4), Hexadecimal) + ipv4Address(token.substr(ipv4));
    return substitute(token, Hexadecimal);
}

std::string Redaction::addresses(string_view text) const
{
    const auto isPart = [](char c) { return isWordCharacter(c) || c == '.' || c == ':' || c == '-'; };
    std::string replaced;
    while (!text.empty()) {
        const auto length =
            static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isPart) - text.begin());
        string_view token = text.substr(0, length);
        std::size_t tail = token.size();
        while (tail > 0 && (token[tail - 1] == '.' || token[tail - 1] == '-' || token[tail - 1] == ':') &&
               !hasHexGroups(token.substr(0, tail)))
            --tail; // the end of a sentence
        // "192.168.0.1:23" has a port.
        const std::size_t port = std::min(token.find(':'), tail);
        if (isIpv4(token.substr(0, port)))
            replaced += ipv4Address(token.substr(0, port)) + std::string(token.substr(port));
        else if (hasHexGroups(token.substr(0, tail)) || embeddedIpv4(token.substr(0, tail)) != string_view::npos)
            replaced += ipv6Address(token.substr(0, tail)) + std::string(token.substr(tail));
        else
            replaced += token;
        text.remove_prefix(length);
        if (!text.empty()) {
            replaced += text.front();
            text.remove_prefix(1);
        }
    }
    return replaced;
}

std::string Redaction::known(string_view text)
{
    const std::lock_guard lock(m_mutex);
    std::string replaced;
    while (!text.empty()) {
        const bool startsWord = replaced.empty() || !isWordCharacter(replaced.back());
        auto longest = m_known.end();
        for (auto it = m_known.begin(); startsWord && it != m_known.end(); ++it) {
            const std::size_t size = it->first.size();
            const bool fits =
                text.substr(0, size) == it->first && (text.size() == size || !isWordCharacter(text[size]));
            if (fits && (longest == m_known.end() || size > longest->first.size()))
                longest = it;
        }
        if (longest != m_known.end()) {
            replaced += longest->second;
            text.remove_prefix(longest->first.size());
        } else {
            replaced += text.front();
            text.remove_prefix(1);
        }
    }
    return replaced;
}

void Redaction::learn(string_view text)
{
    if (text.size() < shortestKnown)
        return;
    const std::lock_guard lock(m_mutex);
    m_known.emplace(text, whole(text));
}

} // namespace sondixrec
