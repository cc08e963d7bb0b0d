// SPDX-License-Identifier: MIT
#include "gzip.h"

#include <new>
#include <zlib.h>

namespace sondixsim::model {

std::string gzip(const std::string &bytes)
{
    constexpr int gzipWindow = 15 + 16; // 15 bits of window, 16 for gzip's own head and check sum
    constexpr int usualMemory = 8;
    z_stream stream{};
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, gzipWindow, usualMemory, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
    std::string packed(deflateBound(&stream, static_cast<uLong>(bytes.size())), '\0');
    std::string plain = bytes; // zlib's input pointer is not const
    stream.next_in = reinterpret_cast<Bytef *>(plain.data());
    stream.avail_in = static_cast<uInt>(plain.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

} // namespace sondixsim::model
