// A feature that takes one of a list of named values.
#pragma once

#include <string>
#include <vector>

#include "BaseFeature.h"
#include "TavikCPP/Mutex.h"

namespace QRX::TvkAPI {

class EnumFeature : public BaseFeature {
public:
    using BaseFeature::BaseFeature;
    // The current entry's name, without a terminating NUL.
    TvkErrorType GetValue(char* pValue, uint32_t& length) const override;
    TvkErrorType GetValue(int64_t& value) const override;
    TvkErrorType SetValue(const char* pValue) override;
    TvkErrorType SetValue(const int64_t& value) override;
    TvkErrorType GetEntry(EnumEntry& entry, const char* pEntryName) const override;
    TvkErrorType IsValueAvailable(int64_t value, bool& available) const override;
    TvkErrorType IsValueAvailable(const char* pValue, bool& available) const override;
    TvkErrorType GetValues(int64_t* pValues, uint32_t& size) override;
    TvkErrorType GetValues(const char** pValues, uint32_t& size) override;
    TvkErrorType GetEntries(EnumEntry* pEntries, uint32_t& size) override;
    using BaseFeature::GetValue;
    using BaseFeature::SetValue;

private:
    // Refills the name cache; a count of 0 leaves it as it was.
    TvkErrorType FetchNames(uint32_t& rCount);

    // Answers of the last list call: the names stay valid until the next one.
    std::vector<std::string> m_Names;
    std::vector<int64_t> m_Values;
    std::vector<EnumEntry> m_Entries;
    MutexPtr m_pCacheMutex{new Mutex()};
};

} // namespace QRX::TvkAPI
