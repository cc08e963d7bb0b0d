// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <array>
#include <deque>
#include <limits>
#include <memory>
#include <vector>

namespace Explorer {

/// Whether \a value is a measured value: neither an error value nor infinite.
bool isMeasured(double value);

/// The lowest and the highest measured value of a range, and its error values.
struct Extremes
{
    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -std::numeric_limits<double>::infinity();
    qint64 errors = 0; ///< the number of values that are not measured values
    int errorKey = 0;  ///< the key of the first of them, see SondixQt::errorValueKey()

    bool hasValues() const { return minimum <= maximum; }
};

/// Extremes and moments of a range.
struct Moments : Extremes
{
    qint64 count = 0;     ///< measured values
    double mean = 0.0;    ///< of the measured values
    double squares = 0.0; ///< the sum of the squared distances of the measured values to their mean

    double standardDeviation() const; ///< of the sample, with count - 1; 0 for less than two values
};

/// All values of one signal, with a pyramid of summaries above them.
///
/// Values are addressed by their index, which counts from the first value that was ever appended. They are kept
/// exactly, in chunks of chunkSize. Level 1 of the pyramid summarises 16 values each, level 2 256, level 3 4096 and so
/// on, so that a range of any length is summarised from a few dozen nodes. Level 1 has only extremes; the levels above it
/// have mean and squared distances as well, which are merged in a way that keeps their accuracy even if the mean is large
/// compared with the deviation.
class SignalPyramid
{
public:
    static constexpr int factor = 16;
    static constexpr int chunkSize = factor * factor;

    SignalPyramid() = default;
    SignalPyramid(SignalPyramid &&) = default;
    SignalPyramid &operator=(SignalPyramid &&) = default;

    /// Appends \a count values that are \a stride apart in memory.
    void append(const double *values, qint64 stride, qint64 count);
    /// Removes the values before \a index, in whole chunks: what remains begins at or before \a index.
    void dropBefore(qint64 index);
    void clear();

    /// The index of the first value that is kept.
    qint64 first() const { return m_firstChunk * chunkSize; }
    /// The index after that of the last value.
    qint64 end() const { return m_end; }
    double value(qint64 index) const { return chunkAt(index).values[static_cast<std::size_t>(index % chunkSize)]; }
    /// Copies the values from \a index on to \a to.
    void copy(qint64 index, qint64 count, double *to) const;

    /// Summarises the values from \a begin up to but not including \a end. Both are limited to what is kept.
    Extremes extremes(qint64 begin, qint64 end) const;
    /// \copydoc extremes
    Moments moments(qint64 begin, qint64 end) const;

    /// The memory that \a count values need at most, including the chunks that are kept for reuse.
    static qint64 bytesFor(qint64 count);
    /// The memory that is used.
    qint64 bytes() const;

private:
    struct Chunk
    {
        std::array<double, chunkSize> values;
        std::array<double, factor> minimum; // level 1
        std::array<double, factor> maximum;
        std::array<quint8, factor> errors;
    };
    struct Node
    {
        double minimum = std::numeric_limits<double>::infinity();
        double maximum = -std::numeric_limits<double>::infinity();
        double mean = 0.0;
        double squares = 0.0;
        quint32 errors = 0;
        qint32 errorKey = 0;
    };
    /// The nodes of one level, in groups that have one parent.
    struct Level
    {
        using Group = std::array<Node, factor>;

        int shift = 0; // a node has 2^shift values
        qint64 firstGroup = 0;
        qint64 end = 0; // the index after that of the last node
        std::deque<std::unique_ptr<Group>> groups;

        Level() = default;
        Level(Level &&) = default;
        Level &operator=(Level &&) = default;

        qint64 size() const { return qint64(1) << shift; }
        bool fits(qint64 position, qint64 limit) const
        {
            return (position & (size() - 1)) == 0 && position + size() <= limit;
        }
        const Node &at(qint64 node) const
        {
            return (*groups[static_cast<std::size_t>(node / factor - firstGroup)])[static_cast<std::size_t>(
                node % factor)];
        }
        void append(const Node &node);
    };

    static constexpr int spareChunks = 4;

    const Chunk &chunkAt(qint64 index) const
    {
        return *m_chunks[static_cast<std::size_t>(index / chunkSize - m_firstChunk)];
    }
    Chunk &openChunk();
    static void closeBlock(Chunk &chunk, int block);
    void closeChunk(const Chunk &chunk);
    void appendNode(std::size_t level, const Node &node);
    static Moments summaryOf(const Node &node, qint64 size);
    template<typename Summary>
    Summary summary(qint64 begin, qint64 end) const;
    static void addNode(Extremes &sum, const Node &node, qint64 size);
    static void addNode(Moments &sum, const Node &node, qint64 size);
    void addBlock(Extremes &sum, qint64 position) const;

    std::deque<std::unique_ptr<Chunk>> m_chunks;
    std::vector<std::unique_ptr<Chunk>> m_spare;
    std::vector<Level> m_levels; // from level 2
    qint64 m_firstChunk = 0;
    qint64 m_end = 0;
};

} // namespace Explorer
