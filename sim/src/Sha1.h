// SHA-1 of a document, for URL_INFO_FILE_SHA1_HASH.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace sim {

std::array<uint8_t, 20> Sha1(const std::vector<uint8_t>& aData);

} // namespace sim
