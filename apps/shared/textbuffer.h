// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>
#include <vector>

namespace SondixApp {

/// A growing text to which numbers are appended without temporary objects. Numbers do not depend on the locale.
class TextBuffer
{
public:
    void clear() { m_size = 0; }
    bool isEmpty() const { return m_size == 0; }
    qint64 size() const { return static_cast<qint64>(m_size); }
    /// The text without a copy; valid until the buffer changes.
    QByteArray data() const { return QByteArray::fromRawData(m_data.data(), static_cast<int>(m_size)); }

    void add(char character) { *room(1) = character, ++m_size; }
    void add(std::string_view text)
    {
        if (!text.empty())
            std::memcpy(room(text.size()), text.data(), text.size());
        m_size += text.size();
    }
    void add(const char *text) { add(std::string_view(text)); }
    void add(const QByteArray &text) { add(std::string_view(text.constData(), static_cast<size_t>(text.size()))); }

    /// Adds \a bytes bytes to be filled by the caller.
    char *extend(size_t bytes)
    {
        char *begin = room(bytes);
        m_size += bytes;
        return begin;
    }

    template<typename Integer>
    void addInteger(Integer number)
    {
        char *begin = room(longestNumber);
        m_size += static_cast<size_t>(std::to_chars(begin, begin + longestNumber, number).ptr - begin);
    }
    /// The shortest text that is read as the same number.
    void addNumber(double number, char decimalMark = '.')
    {
        char *begin = room(longestNumber);
        char *end = std::to_chars(begin, begin + longestNumber, number).ptr;
        if (decimalMark != '.')
            std::replace(begin, end, '.', decimalMark);
        m_size += static_cast<size_t>(end - begin);
    }
    /// A number of microseconds as seconds with six decimals.
    void addSeconds(long long microseconds, char decimalMark = '.')
    {
        constexpr int decimals = 6;
        constexpr unsigned long long million = 1'000'000;
        const bool isNegative = microseconds < 0;
        const auto magnitude = isNegative ? 0ULL - static_cast<unsigned long long>(microseconds)
                                          : static_cast<unsigned long long>(microseconds);
        if (isNegative)
            add('-');
        addInteger(magnitude / million);
        char *digits = room(decimals + 1);
        *digits = decimalMark;
        auto rest = static_cast<unsigned>(magnitude % million);
        for (int i = decimals; i > 0; --i, rest /= 10)
            digits[i] = static_cast<char>('0' + rest % 10);
        m_size += decimals + 1;
    }

private:
    static constexpr size_t longestNumber = 32;

    char *room(size_t bytes)
    {
        if (m_size + bytes > m_data.size())
            m_data.resize(std::max<size_t>(4096, 2 * (m_size + bytes)));
        return m_data.data() + m_size;
    }

    std::vector<char> m_data;
    size_t m_size = 0;
};

} // namespace SondixApp
