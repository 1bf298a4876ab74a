// A ZIP image of one file, deflated: how cameras ship compressed documents.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

std::vector<uint8_t> ZipOneFile(const std::string& aName, const std::vector<uint8_t>& aData);

} // namespace sim
