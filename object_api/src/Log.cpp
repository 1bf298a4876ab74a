#include "Log.h"

#include "TavikCPP/TavikSystem.h"

namespace QRX::TvkAPI {

void LogFailure(const std::string& aMessage, const char* aFunction) {
    if (FileLogger* logger = TavikSystem::GetInstance().GetLogger())
        logger->Log(aMessage + " in function: " + aFunction);
}

} // namespace QRX::TvkAPI
