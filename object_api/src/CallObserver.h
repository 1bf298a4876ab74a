// Calls into an application's observer from a library thread: whatever it
// throws stops here, so nothing unwinds into the library's threads and the
// next observer is still called.
#pragma once

namespace QRX::TvkAPI {

template <class Call> void CallObserver(Call aCall) noexcept {
    try {
        aCall();
    } catch (...) {
    }
}

} // namespace QRX::TvkAPI
