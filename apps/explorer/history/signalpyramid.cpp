// SPDX-License-Identifier: MIT
#include "signalpyramid.h"

#include <SondixQt/errorvalue.h>

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace Explorer {

namespace {

constexpr int factorShift = 4;
constexpr int chunkShift = 2 * factorShift;
static_assert(SignalPyramid::factor == 1 << factorShift && SignalPyramid::chunkSize == 1 << chunkShift);

// What the allocator and the list of chunks add to each chunk.
constexpr qint64 chunkOverhead = 16 + 8;

void addValue(Extremes &sum, double value)
{
    if (isMeasured(value)) {
        sum.minimum = std::min(sum.minimum, value);
        sum.maximum = std::max(sum.maximum, value);
    } else if (sum.errors++ == 0) {
        sum.errorKey = SondixQt::errorValueKey(value);
    }
}

// Welford's method.
void addValue(Moments &sum, double value)
{
    addValue(static_cast<Extremes &>(sum), value);
    if (!isMeasured(value))
        return;
    ++sum.count;
    const double distance = value - sum.mean;
    sum.mean += distance / static_cast<double>(sum.count);
    sum.squares += distance * (value - sum.mean);
}

void addSummary(Extremes &sum, const Extremes &part)
{
    sum.minimum = std::min(sum.minimum, part.minimum);
    sum.maximum = std::max(sum.maximum, part.maximum);
    if (sum.errors == 0)
        sum.errorKey = part.errorKey;
    sum.errors += part.errors;
}

// The method of Chan, Golub and LeVeque.
void addSummary(Moments &sum, const Moments &part)
{
    addSummary(static_cast<Extremes &>(sum), static_cast<const Extremes &>(part));
    if (part.count == 0)
        return;
    const auto count = static_cast<double>(sum.count + part.count);
    const double distance = part.mean - sum.mean;
    const double share = static_cast<double>(part.count) / count;
    sum.mean += distance * share;
    sum.squares += part.squares + distance * distance * static_cast<double>(sum.count) * share;
    sum.count += part.count;
}

} // namespace

bool isMeasured(double value)
{
    return !SondixQt::isErrorValue(value) && value <= std::numeric_limits<double>::max();
}

double Moments::standardDeviation() const
{
    return count < 2 ? 0.0 : std::sqrt(squares / static_cast<double>(count - 1));
}

void SignalPyramid::append(const double *values, qint64 stride, qint64 count)
{
    for (qint64 done = 0; done < count;) {
        Chunk &chunk = m_end % chunkSize == 0 ? openChunk() : *m_chunks.back();
        const auto begin = static_cast<int>(m_end % chunkSize);
        const auto number = static_cast<int>(std::min<qint64>(chunkSize - begin, count - done));
        for (int i = 0; i < number; ++i)
            chunk.values[static_cast<std::size_t>(begin) + static_cast<std::size_t>(i)] =
                values[(done + i) * stride];
        for (int block = begin / factor; block < (begin + number) / factor; ++block)
            closeBlock(chunk, block);
        done += number;
        m_end += number;
        if (m_end % chunkSize == 0)
            closeChunk(chunk);
    }
}

SignalPyramid::Chunk &SignalPyramid::openChunk()
{
    if (m_spare.empty()) {
        // Without value initialisation, which would touch the whole memory.
        m_chunks.emplace_back(new Chunk); // NOLINT
    } else {
        m_chunks.push_back(std::move(m_spare.back()));
        m_spare.pop_back();
    }
    return *m_chunks.back();
}

void SignalPyramid::closeBlock(Chunk &chunk, int block)
{
    Extremes sum;
    const auto index = static_cast<std::size_t>(block);
    for (std::size_t i = 0; i < factor; ++i)
        addValue(sum, chunk.values[index * factor + i]);
    chunk.minimum[index] = sum.minimum;
    chunk.maximum[index] = sum.maximum;
    chunk.errors[index] = static_cast<quint8>(sum.errors);
}

void SignalPyramid::closeChunk(const Chunk &chunk)
{
    Node node;
    for (std::size_t i = 0; i < factor; ++i) {
        node.minimum = std::min(node.minimum, chunk.minimum[i]);
        node.maximum = std::max(node.maximum, chunk.maximum[i]);
        node.errors += chunk.errors[i];
    }
    if (node.errors > 0) {
        const auto error = std::find_if_not(chunk.values.begin(), chunk.values.end(), isMeasured);
        node.errorKey = SondixQt::errorValueKey(*error);
    }
    // The distance to a value of the chunk is small compared with the value, so that the sums are exact enough.
    if (const qint64 count = chunkSize - static_cast<qint64>(node.errors); count > 0) {
        const double reference = node.minimum / 2.0 + node.maximum / 2.0;
        double sum = 0.0;
        double squares = 0.0;
        for (const double value : chunk.values) {
            const double distance = isMeasured(value) ? value - reference : 0.0;
            sum += distance;
            squares += distance * distance;
        }
        const double mean = sum / static_cast<double>(count);
        node.mean = reference + mean;
        node.squares = std::max(0.0, squares - sum * mean);
    }
    appendNode(0, node);
}

void SignalPyramid::Level::append(const Node &node)
{
    if (groups.empty())
        firstGroup = end / factor;
    if (groups.empty() || end % factor == 0)
        groups.push_back(std::make_unique<Group>());
    (*groups.back())[static_cast<std::size_t>(end % factor)] = node;
    ++end;
}

void SignalPyramid::appendNode(std::size_t level, const Node &node)
{
    if (level == m_levels.size()) {
        Level added;
        added.shift = level == 0 ? chunkShift : m_levels.back().shift + factorShift;
        added.end = m_end / added.size() - 1;
        m_levels.push_back(std::move(added));
    }
    m_levels[level].append(node);
    const Level &children = m_levels[level];
    if (children.end % factor != 0)
        return;
    // A node whose first children are gone covers values that are gone: it is never used, but takes its place.
    Moments sum;
    for (const Node &child : *children.groups.back())
        addNode(sum, child, children.size());
    Node parent;
    parent.minimum = sum.minimum;
    parent.maximum = sum.maximum;
    parent.mean = sum.mean;
    parent.squares = sum.squares;
    parent.errors = static_cast<quint32>(sum.errors);
    parent.errorKey = sum.errorKey;
    appendNode(level + 1, parent);
}

void SignalPyramid::dropBefore(qint64 index)
{
    const qint64 chunk = std::min(index, m_end) / chunkSize;
    while (m_firstChunk < chunk && !m_chunks.empty()) {
        if (m_spare.size() < spareChunks)
            m_spare.push_back(std::move(m_chunks.front()));
        m_chunks.pop_front();
        ++m_firstChunk;
    }
    for (Level &level : m_levels)
        while (!level.groups.empty() && ((level.firstGroup + 1) * factor << level.shift) <= first()) {
            level.groups.pop_front();
            ++level.firstGroup;
        }
}

void SignalPyramid::clear()
{
    *this = SignalPyramid();
}

void SignalPyramid::copy(qint64 index, qint64 count, double *to) const
{
    for (qint64 done = 0; done < count;) {
        const auto begin = static_cast<std::ptrdiff_t>((index + done) % chunkSize);
        const auto number = std::min<std::ptrdiff_t>(chunkSize - begin, count - done);
        const auto from = chunkAt(index + done).values.begin() + begin;
        std::copy(from, from + number, to + done);
        done += number;
    }
}

void SignalPyramid::addNode(Extremes &sum, const Node &node, qint64)
{
    sum.minimum = std::min(sum.minimum, node.minimum);
    sum.maximum = std::max(sum.maximum, node.maximum);
    if (sum.errors == 0)
        sum.errorKey = node.errorKey;
    sum.errors += node.errors;
}

void SignalPyramid::addNode(Moments &sum, const Node &node, qint64 size)
{
    Moments part;
    part.minimum = node.minimum;
    part.maximum = node.maximum;
    part.errors = node.errors;
    part.errorKey = node.errorKey;
    part.count = size - part.errors;
    part.mean = node.mean;
    part.squares = node.squares;
    addSummary(sum, part);
}

void SignalPyramid::addBlock(Extremes &sum, qint64 position) const
{
    const Chunk &chunk = chunkAt(position);
    const auto block = static_cast<std::size_t>(position % chunkSize / factor);
    sum.minimum = std::min(sum.minimum, chunk.minimum[block]);
    sum.maximum = std::max(sum.maximum, chunk.maximum[block]);
    if (chunk.errors[block] == 0)
        return;
    if (sum.errors == 0) {
        const auto begin = chunk.values.begin() + static_cast<std::ptrdiff_t>(block) * factor;
        sum.errorKey = SondixQt::errorValueKey(*std::find_if_not(begin, begin + factor, isMeasured));
    }
    sum.errors += chunk.errors[block];
}

// From the largest node that begins at a position and ends within the range to the next.
template<typename Summary>
Summary SignalPyramid::summary(qint64 begin, qint64 end) const
{
    Summary sum;
    end = std::min(end, m_end);
    std::size_t level = 0;
    for (qint64 position = std::max(begin, first()); position < end;) {
        if (position % chunkSize == 0 && position + chunkSize <= end) {
            while (level + 1 < m_levels.size() && m_levels[level + 1].fits(position, end))
                ++level;
            while (!m_levels[level].fits(position, end))
                --level;
            const Level &nodes = m_levels[level];
            addNode(sum, nodes.at(position >> nodes.shift), nodes.size());
            position += nodes.size();
        } else if (std::is_same_v<Summary, Extremes> && position % factor == 0 && position + factor <= end) {
            addBlock(sum, position);
            position += factor;
        } else {
            addValue(sum, value(position));
            ++position;
        }
    }
    return sum;
}

Extremes SignalPyramid::extremes(qint64 begin, qint64 end) const
{
    return summary<Extremes>(begin, end);
}

Moments SignalPyramid::moments(qint64 begin, qint64 end) const
{
    return summary<Moments>(begin, end);
}

qint64 SignalPyramid::bytesFor(qint64 count)
{
    const qint64 chunks = count / chunkSize + 2;
    // All levels together have less than 16/15 as many nodes as there are chunks. Each may have a group more at both ends.
    qint64 levels = 1;
    for (qint64 nodes = chunks; nodes > 1; nodes /= factor)
        ++levels;
    constexpr qint64 listOverhead = 1024;
    const qint64 groups = chunks / (factor - 1) + 2 * levels;
    return (chunks + spareChunks) * static_cast<qint64>(sizeof(Chunk) + chunkOverhead) +
           groups * static_cast<qint64>(sizeof(Level::Group) + chunkOverhead) + levels * listOverhead;
}

qint64 SignalPyramid::bytes() const
{
    qint64 sum = static_cast<qint64>((m_chunks.size() + m_spare.size()) * (sizeof(Chunk) + chunkOverhead));
    for (const Level &level : m_levels)
        sum += static_cast<qint64>(level.groups.size() * (sizeof(Level::Group) + chunkOverhead));
    return sum;
}

} // namespace Explorer
