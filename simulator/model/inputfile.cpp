// SPDX-License-Identifier: MIT
#include "inputfile.h"

#include <fstream>
#include <vector>

namespace sondixsim::model {

namespace {

constexpr std::size_t maxSize = std::size_t(1) << 30;

[[noreturn]] void refuseSize()
{
    throw InputError("the file is larger than 1 GiB");
}

void checkKind(const std::filesystem::path &path)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_type type = fs::status(path, error).type();
    if (type == fs::file_type::not_found)
        throw InputError("there is no such file");
    if (type == fs::file_type::none)
        throw InputError("the file cannot be found: " + error.message());
    if (type == fs::file_type::directory)
        throw InputError("this is a folder, not a file");
    if (type != fs::file_type::regular)
        throw InputError("this is a pipe or a device, not a file");
    const auto size = fs::file_size(path, error);
    if (!error && size > maxSize)
        refuseSize();
}

} // namespace

std::string readInputFile(const std::filesystem::path &path)
{
    checkKind(path);
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw InputError("the file cannot be opened");
    std::string content;
    std::vector<char> block(1 << 16);
    // Stream iterators would throw the system's error; read() only sets badbit.
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())) || file.gcount() > 0) {
        content.append(block.data(), static_cast<std::size_t>(file.gcount()));
        if (content.size() > maxSize)
            refuseSize();
    }
    if (file.bad())
        throw InputError("the file cannot be read");
    return content;
}

} // namespace sondixsim::model
