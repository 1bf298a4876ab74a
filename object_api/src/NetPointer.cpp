#include "TavikCPP/NetPointer.h"

namespace QRX::TvkAPI {

ReferenceCounted::~ReferenceCounted() = default;

void ReferenceCounted::AddReference() const noexcept {
    m_nReferences.fetch_add(1, std::memory_order_relaxed);
}

void ReferenceCounted::DropReference() const noexcept {
    if (m_nReferences.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

uint32_t ReferenceCounted::CountReferences() const noexcept {
    return m_nReferences.load(std::memory_order_acquire);
}

} // namespace QRX::TvkAPI
