// What a Frame keeps: its buffer, the record the capture engine fills, its
// observer, and where it stands with its camera.
#pragma once

#include <atomic>

#include "TavikCPP/ConditionHelper.h"
#include "TavikCPP/Frame.h"

namespace QRX::TvkAPI {

class [[gnu::visibility("hidden")]] Frame::Impl {
public:
    Impl();

    uint8_t* m_pBuffer = nullptr;
    bool m_bIsUserBuffer = false;
    TvkFrame_t m_Frame;
    IFrameObserverPtr m_pObserver;
    MutexPtr m_pObserverMutex;
    ConditionHelper m_observerConditionHelper;
    std::atomic<bool> m_bAlreadyAnnounced{false};
    std::atomic<bool> m_bAlreadyQueued{false};
};

// The library's own way to a frame's state.
struct FrameAccess {
    static Frame::Impl* Impl(const Frame& rFrame) { return rFrame.m_pImpl; }
};

// The first context word of a frame's record points to its FrameHandler
// while the camera knows the frame. The library's callback thread reads it
// while application threads clear it.
inline void* HandlerOf(TvkFrame_t& rFrame) {
    return std::atomic_ref<void*>(rFrame.context[0]).load(std::memory_order_acquire);
}
inline void SetHandlerOf(TvkFrame_t& rFrame, void* pHandler) {
    std::atomic_ref<void*>(rFrame.context[0]).store(pHandler, std::memory_order_release);
}

} // namespace QRX::TvkAPI
