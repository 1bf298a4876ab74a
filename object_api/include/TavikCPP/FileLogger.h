// The log of the object API: each entry is the local time, then ": " and
// the message. It is written to a file in the temporary directory.
#pragma once

#include <fstream>
#include <string>

#include "TavikCPP/Mutex.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT FileLogger {
public:
    // Opens the named file in the temporary directory, appending or
    // truncating. A process without a temporary directory stops here.
    FileLogger(const char* pFileName, bool append);
    virtual ~FileLogger();
    FileLogger(const FileLogger&) = delete;
    FileLogger& operator=(const FileLogger&) = delete;

    // Does nothing when the file could not be opened.
    void Log(const std::string& StrMessage);

    // The temporary directory with a trailing "/", or empty when there is none.
    static std::string GetTempPathW();

private:
    std::ofstream m_File;
    MutexPtr m_pMutex;
};

} // namespace QRX::TvkAPI
