// Every failure message of the object API goes one way: the message, then
// " in function: " and the full name of the function, to the system's log.
#pragma once

#include <string>

namespace QRX::TvkAPI {

void LogFailure(const std::string& aMessage, const char* aFunction);

} // namespace QRX::TvkAPI
