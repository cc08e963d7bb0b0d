// SPDX-License-Identifier: MIT
#include "encoding.h"

#include "model/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace sondixrec {

namespace {

constexpr std::string_view base64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view nanPrefix = "nan:";

std::uint64_t bitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

template<typename... Base>
void appendNumber(std::string &json, Base... value)
{
    char digits[32];
    json.append(digits, std::to_chars(digits, digits + sizeof digits, value...).ptr);
}

bool isPlain(char c)
{
    return c >= ' ' && c != '"' && c != '\\' && c != '\x7f';
}

} // namespace

void appendInteger(std::string &json, long long value)
{
    appendNumber(json, value);
}

void appendDouble(std::string &json, double value)
{
    if (std::isfinite(value)) {
        const std::size_t begin = json.size();
        appendNumber(json, value);
        if (json.find_first_of(".e", begin) == std::string::npos)
            json += ".0";
    } else if (std::isinf(value)) {
        json += value < 0 ? "\"-inf\"" : "\"inf\"";
    } else if (bitsOf(value) == bitsOf(std::numeric_limits<double>::quiet_NaN())) {
        json += "\"nan\"";
    } else {
        json += '"';
        json += nanPrefix;
        appendNumber(json, bitsOf(value), 16);
        json += '"';
    }
}

void appendUtf8(std::string &json, std::string_view text)
{
    json += '"';
    while (!text.empty()) {
        const auto *const special = std::find_if(
            text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80 && !isPlain(c); });
        const auto plain = static_cast<std::size_t>(special - text.begin());
        json += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty())
            break;
        const char c = text.front();
        text.remove_prefix(1);
        if (c == '"' || c == '\\') {
            json += '\\';
            json += c;
        } else if (c == '\n') {
            json += "\\n";
        } else if (c == '\r') {
            json += "\\r";
        } else {
            constexpr std::string_view hex = "0123456789abcdef";
            const auto code = static_cast<unsigned char>(c);
            json += "\\u00";
            json += hex[code >> 4U];
            json += hex[code & 15U];
        }
    }
    json += '"';
}

void appendBytes(std::string &json, std::string_view bytes)
{
    if (std::all_of(bytes.begin(), bytes.end(), isPlain)) {
        json += '"';
        json += bytes;
        json += '"';
        return;
    }
    const std::string utf8 = sondixsim::model::fromWindows1250(bytes);
    if (sondixsim::model::toWindows1250(utf8) == bytes)
        appendUtf8(json, utf8);
    else
        appendBase64(json, bytes);
}

void appendBase64(std::string &json, std::string_view bytes)
{
    json += "{\"base64\":\"";
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto at = [&](std::size_t k) {
            return k < bytes.size() ? static_cast<unsigned>(static_cast<unsigned char>(bytes[k])) : 0U;
        };
        const unsigned group = at(i) << 16U | at(i + 1) << 8U | at(i + 2);
        json += base64Digits[group >> 18U];
        json += base64Digits[(group >> 12U) & 63U];
        json += i + 1 < bytes.size() ? base64Digits[(group >> 6U) & 63U] : '=';
        json += i + 2 < bytes.size() ? base64Digits[group & 63U] : '=';
    }
    json += "\"}";
}

std::optional<double> doubleOfText(std::string_view text)
{
    if (text == "inf")
        return std::numeric_limits<double>::infinity();
    if (text == "-inf")
        return -std::numeric_limits<double>::infinity();
    if (text == "nan")
        return std::numeric_limits<double>::quiet_NaN();
    if (text.substr(0, nanPrefix.size()) != nanPrefix)
        return std::nullopt;
    text.remove_prefix(nanPrefix.size());
    std::uint64_t bits = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bits, 16);
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isnan(value))
        return std::nullopt;
    return value;
}

std::optional<std::string> bytesOfBase64(std::string_view text)
{
    if (text.size() % 4 != 0)
        return std::nullopt;
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += 4) {
        std::size_t digits = 4;
        if (i + 4 == text.size()) {
            while (digits > 2 && text[i + digits - 1] == '=')
                --digits;
        }
        unsigned group = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            const std::size_t value = k < digits ? base64Digits.find(text[i + k]) : 0;
            if (value == std::string_view::npos)
                return std::nullopt;
            group = group << 6U | static_cast<unsigned>(value);
        }
        for (std::size_t k = 0; k + 1 < digits; ++k)
            bytes += static_cast<char>(group >> (16U - 8U * static_cast<unsigned>(k)) & 255U);
    }
    return bytes;
}

} // namespace sondixrec
