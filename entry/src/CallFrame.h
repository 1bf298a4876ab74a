// The frame every gated flat function runs in: thread tag test, parameter
// checks, the gate, an autorelease pool around the work, normalisation and
// the "returned" trace line.
#pragma once

#include "CallTrace.h"
#include "ErrorTable.h"
#include "Module.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"

// aCheck is the parameter checks' verdict (0 when they pass); aWork runs
// inside the gate and returns an internal or public status.
template <class Work>
TvkError_t RunGated(uCallTrace& aTrace, llk::u4 aTagMask, TvkError_t aCheck, Work&& aWork) {
    TvkError_t status;
    if (aTagMask != 0 && (llk::sEnv::GetThreadTag() & aTagMask) != 0) {
        status = TvkErrorInvalidCall;
    } else if (aCheck != TvkErrorSuccess) {
        status = aCheck;
    } else if ((status = TvkAPIEnter()) == TvkErrorSuccess) {
        llk::uAutoreleasePool pool;
        try {
            status = aWork();
        } catch (...) {
            status = TvkErrorInternalFault;
        }
        pool.Sink();
        TvkAPILeave();
    }
    return aTrace.Returned(TvkAPINormalizeError(status));
}

// Verdict helpers for the parameter checks, in the order they are written.
inline TvkError_t Require(bool aPresent) {
    return aPresent ? TvkErrorSuccess : TvkErrorBadParameter;
}
inline TvkError_t RequireSize(uint32_t aSize, size_t aExpected) {
    return aSize == aExpected ? TvkErrorSuccess : TvkErrorStructSize;
}
inline TvkError_t FirstFailure(std::initializer_list<TvkError_t> aChecks) {
    for (TvkError_t check : aChecks)
        if (check != TvkErrorSuccess) return check;
    return TvkErrorSuccess;
}

// Runs aCall on the retained proxy of aHandle, or answers aNoProxy.
template <class Call> TvkError_t WithProxy(TvkHandle_t aHandle, TvkError_t aNoProxy, Call&& aCall) {
    tvk::pProxy* proxy = Handle2Proxy(aHandle);
    if (!proxy) return aNoProxy;
    TvkError_t status = aCall(proxy);
    ReleaseProxy(proxy);
    return status;
}
