#include "TavikCPP/FileLogger.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "TavikCPP/MutexGuard.h"

namespace QRX::TvkAPI {

FileLogger::FileLogger(const char* pFileName, bool append) : m_pMutex(new Mutex()) {
    const std::string directory = GetTempPathW();
    // Without a temporary directory there is nowhere to log: stop the process.
    if (directory.empty()) std::abort();
    m_File.open(directory + (pFileName ? pFileName : ""),
                std::ios::out | (append ? std::ios::app : std::ios::trunc));
}

FileLogger::~FileLogger() = default;

void FileLogger::Log(const std::string& StrMessage) {
    MutexGuard guard(m_pMutex);
    if (!m_File.is_open()) return;
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    char text[100] = {};
    // asctime's text ends with a line feed: an entry is two lines.
    if (!localtime_r(&now, &local) || !asctime_r(&local, text)) text[0] = '\0';
    m_File << text << ": " << StrMessage << std::endl;
}

std::string FileLogger::GetTempPathW() {
    std::error_code error;
    const std::filesystem::path directory = std::filesystem::temp_directory_path(error);
    if (error || directory.empty()) return {};
    std::string text = directory.string();
    if (text.back() != '/') text += '/';
    return text;
}

} // namespace QRX::TvkAPI
