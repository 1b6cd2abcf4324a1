#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

std::vector<unsigned char> randomBytes(std::size_t count);

// Lower-case hexadecimal text of `bytes` random bytes.
std::string randomHex(std::size_t bytes);

std::string sha256Hex(std::string_view text);

// Takes the same time wherever the first difference lies.
bool equalInConstantTime(std::string_view left, std::string_view right);

} // namespace tarnwick
