#include "engine/Proxy.h"

#include "engine/Actor.h"
#include "engine/Global.h"

namespace tvk {

llk::i4 pProxy::SendRequest(llk::u4 aUid, llk::u4 aTag, void* aContext, llk::u1 aPriority,
                            llk::u4 aTimeoutMs) {
    pActor* actor = Actor();
    if (!actor) return llk::kBadArgument;
    cGlobal* global = actor->Global();
    // Requests are pooled: a proxy call allocates nothing once warm.
    auto* request = static_cast<llk::cRequest*>(global ? global->Recycle("cRequest") : nullptr);
    if (!request && !(request = llk::cRequest::New())) return llk::kNoMemory;
    request->SetUidAndTag(aUid, aTag);
    request->SetPointer(aContext);
    llk::i4 status = actor->SendRequest(request, aTimeoutMs, aPriority);
    if (status == llk::kOk) status = request->GetOutcome();
    request->Clear();
    if (global) global->Discard("cRequest", request);
    return status;
}

llk::i4 pProxy::SendRequest(llk::cRequest* aRequest, llk::u1 aPriority) {
    pActor* actor = Actor();
    if (!actor) return llk::kBadArgument;
    llk::i4 status = actor->SendRequest(aRequest, kRequestTimeoutMs, aPriority);
    return status == llk::kOk ? aRequest->GetOutcome() : status;
}

llk::i4 pProxy::PostMessage(llk::cMessage* aMessage, llk::u1 aPriority) {
    pActor* actor = Actor();
    return actor ? actor->PostMessage(aMessage, aPriority) : llk::kBadArgument;
}

llk::i4 pProxy::PostFlash(llk::u4 aUid, llk::u4 aArgument, llk::u1 aPriority) {
    pActor* actor = Actor();
    return actor ? actor->Helper()->FlashSend(actor, aUid, aArgument, aPriority)
                 : llk::kBadArgument;
}

llk::i4 pProxy::StartActor(pActor* aActor) {
    return aActor->Helper()->Attach(aActor, 0);
}

void pProxy::EndActor(pActor* aActor) {
    if (!aActor) return;
    cHelper* helper = aActor->Helper();
    helper->Kill(aActor, true);
    aActor->Dismiss();
    helper->Detach(aActor);
}

} // namespace tvk
