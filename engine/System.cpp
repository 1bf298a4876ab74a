#include "engine/System.h"

#include <cstring>

#include "engine/DiscoveryNews.h"
#include "engine/Interface.h"
#include "engine/RequestIds.h"
#include "kit/Env.h"
#include "kit/ObjectList.h"

namespace tvk {

namespace {

constexpr llk::u4 kInterfaceListEvent = 10;
constexpr llk::u4 kFirstScan = 11;
constexpr llk::u4 kTagSet = 0, kTagGet = 1;

bool Same(llk::cString* aA, llk::cString* aB) {
    return aA == aB || strcmp(aA->Chars(), aB->Chars()) == 0;
}

} // namespace

llk::i4 cSystemActor::Prepare() {
    cProducer* producer = Producer();
    mTL = producer->System();
    if (!mTL) return llk::kBadArgument;
    // Interface list changes are the vendor's extension: without it the
    // first scan stands.
    if (producer->EventRegister(mTL, gc::EVENT_INTERFACE_LIST_CHANGED_QRX, &mEvent, nullptr)) {
        llk::i4 status = Helper()->EventListen(this, kInterfaceListEvent, mEvent);
        if (status != llk::kOk) {
            producer->EventUnregister(mTL, gc::EVENT_INTERFACE_LIST_CHANGED_QRX, nullptr);
            mEvent = nullptr;
            return status;
        }
    }
    llk::i4 status = Helper()->AsyncCall(this, kFirstScan, 0, 0);
    if (status != llk::kOk && mEvent) {
        Helper()->EventForget(this, kInterfaceListEvent);
        producer->EventUnregister(mTL, gc::EVENT_INTERFACE_LIST_CHANGED_QRX, nullptr);
        mEvent = nullptr;
    }
    return status;
}

void cSystemActor::Dismiss() {
    pActor::Dismiss();
    RequestsDisable(true);
    RequestsReject();
    if (mEvent) {
        Helper()->EventForget(this, kInterfaceListEvent);
        Producer()->EventUnregister(mTL, gc::EVENT_INTERFACE_LIST_CHANGED_QRX, nullptr);
        mEvent = nullptr;
    }
}

llk::cObjectList* cSystemActor::ListAllInterfaces() {
    cProducer* producer = Producer();
    llk::cObjectList* list = llk::cObjectList::New(8, true);
    if (!list) return nullptr;
    producer->InterfacesUpdate(nullptr, GENTL_INFINITE, nullptr);
    llk::u4 count = producer->InterfacesCount(nullptr);
    for (llk::u4 i = 0; i < count; ++i) {
        char id[256] = {};
        size_t size = sizeof(id) - 1;
        if (producer->InterfacesAtIndex(i, id, &size, nullptr)) list->Append(Global()->Cache(id));
    }
    return list;
}

void cSystemActor::AddInterface(llk::cString* aIdentifier) {
    // One that cannot be opened is left out.
    cInterfaceProxy* proxy = cInterfaceProxy::New(Proxy(), aIdentifier, Aggregate(), mMode);
    if (!proxy || Global()->Insert(proxy, nullptr) != llk::kOk) return;
    TellInterfaceChanged(Global(), aIdentifier->Chars(), true);
}

void cSystemActor::OnAsyncFired(llk::u4 aUid) {
    if (aUid != kFirstScan) return;
    if (llk::cObjectList* now = ListAllInterfaces())
        for (llk::u4 i = 0; i < now->Count(); ++i)
            AddInterface(static_cast<llk::cString*>(now->AtIndex(i)));
    mReady = true;
}

void cSystemActor::OnEventFired(llk::u4 aUid, const void*, llk::u4) {
    if (aUid != kInterfaceListEvent) return;
    llk::cObjectList* now = ListAllInterfaces();
    llk::cObjectList* proxies = llk::cObjectList::New(8, true);
    if (!now || !proxies) return;
    Global()->Enumerate(kTypeInterfaceProxy, Proxy(), proxies);
    CheckMIAInterfaces(now, proxies);
    CheckNewInterfaces(now, proxies);
}

void cSystemActor::CheckMIAInterfaces(llk::cObjectList* aNow, llk::cObjectList* aProxies) {
    for (llk::u4 p = 0; p < aProxies->Count();) {
        auto* proxy = static_cast<pProxy*>(aProxies->AtIndex(p));
        llk::cString* compared = nullptr;
        bool found = false;
        for (llk::u4 i = 0; i < aNow->Count() && !found; ++i) {
            compared = static_cast<llk::cString*>(aNow->AtIndex(i));
            found = Same(compared, proxy->Identifier());
        }
        if (found) {
            ++p;
            continue;
        }
        // The interface ends here, unless a caller still holds it, and
        // reports its devices missing before it is reported itself.
        proxy->Retain();
        aProxies->Remove(p);
        Global()->Remove(proxy);
        proxy->Release();
        // The news names the last identifier compared, and there is none
        // when the list came back empty: listeners have always been told so.
        if (compared) TellInterfaceChanged(Global(), compared->Chars(), false);
    }
}

void cSystemActor::CheckNewInterfaces(llk::cObjectList* aNow, llk::cObjectList* aProxies) {
    for (llk::u4 i = 0; i < aNow->Count(); ++i) {
        auto* identifier = static_cast<llk::cString*>(aNow->AtIndex(i));
        bool known = false;
        for (llk::u4 p = 0; p < aProxies->Count() && !known; ++p)
            known = Same(identifier, static_cast<pProxy*>(aProxies->AtIndex(p))->Identifier());
        if (!known) AddInterface(identifier);
    }
}

template <class Send> llk::i4 cSystemActor::Forward(Send&& aSend) {
    llk::cObjectList* proxies = llk::cObjectList::New(8, true);
    if (!proxies) return llk::kNoMemory;
    Global()->Enumerate(kTypeInterfaceProxy, Proxy(), proxies);
    llk::i4 result = llk::kOk;
    for (llk::u4 p = 0; p < proxies->Count(); ++p) {
        llk::i4 status = aSend(static_cast<cInterfaceProxy*>(proxies->AtIndex(p)));
        if (result == llk::kOk) result = status;
    }
    return result;
}

llk::i4 cSystemActor::SendForceIP(const tCommandForceIP& aCommand) {
    llk::u8 mac = aCommand.mac;
    llk::u4 ip = static_cast<llk::u4>(aCommand.ip),
            mask = static_cast<llk::u4>(aCommand.subnetMask),
            gateway = static_cast<llk::u4>(aCommand.gateway), send = 1;
    gc::PORT_REGISTER_STACK_ENTRY entries[] = {{kRegForceIPMAC, &mac, sizeof(mac)},
                                               {kRegForceIPAddress, &ip, sizeof(ip)},
                                               {kRegForceIPMask, &mask, sizeof(mask)},
                                               {kRegForceIPGateway, &gateway, sizeof(gateway)},
                                               {kRegForceIPSend, &send, sizeof(send)}};
    size_t count = sizeof(entries) / sizeof(entries[0]);
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    Producer()->PortWrite(mTL, entries, &count, &error);
    return error;
}

bool cSystemActor::OnRequest(llk::cRequest* aRequest) {
    void* context = aRequest->GetPointer();
    llk::u4 tag = aRequest->GetTag();
    llk::i4 outcome = llk::kOk;
    switch (aRequest->GetUid()) {
    case request::kDiscoveryMode: {
        auto& mode = *static_cast<tDiscoveryMode*>(context);
        if (tag == kTagGet) {
            mode = mMode;
        } else {
            mMode = mode;
            outcome =
                Forward([&](cInterfaceProxy* aProxy) { return aProxy->SetDiscoveryMode(mode); });
        }
        break;
    }
    case request::kDiscoveryDuration: {
        auto& duration = *static_cast<llk::u8*>(context);
        if (tag == kTagGet) {
            duration = mDuration;
        } else {
            mDuration = duration;
            outcome = Forward(
                [&](cInterfaceProxy* aProxy) { return aProxy->SetDiscoveryDuration(duration); });
        }
        break;
    }
    case request::kSystemReady:
        *static_cast<bool*>(context) = mReady;
        break;
    case request::kForceIP:
        outcome = SendForceIP(*static_cast<const tCommandForceIP*>(context));
        break;
    default:
        return pActor::OnRequest(aRequest);
    }
    aRequest->SetOutcome(outcome);
    return true;
}

// ---- cSystemProxy -----------------------------------------------------------------

llk::i4 cSystemProxy::Initialize(const char* aIdentifier, cAggregate* aAggregate) {
    if (!aAggregate || !aAggregate->Producer()) return llk::kNoMemory;
    SetIdentifier(llk::cString::New(aIdentifier, false));
    SetAggregate(aAggregate);
    mActor = llk::Retained(cSystemActor::New(this, aAggregate));
    if (!Identifier() || !mActor) return llk::kNoMemory;
    llk::i4 status = StartActor(mActor);
    return status == llk::kOk ? mActor->Prepare() : status;
}

cSystemProxy::~cSystemProxy() {
    EndActor(mActor);
    llk::ReleaseAndClear(mActor);
}

llk::i4 cSystemProxy::SetDiscoveryMode(tDiscoveryMode aMode) {
    llk::i4 status = Ask(request::kDiscoveryMode, kTagSet, &aMode);
    // The first answers need their time to come in.
    if (status == llk::kOk && aMode != kDiscoveryOff)
        llk::sEnv::Snooze(static_cast<llk::u4>(mDuration.load()));
    return status;
}

llk::i4 cSystemProxy::GetDiscoveryMode(tDiscoveryMode& aMode) {
    return Ask(request::kDiscoveryMode, kTagGet, &aMode);
}

llk::i4 cSystemProxy::SetDiscoveryDuration(llk::u8 aDuration) {
    llk::i4 status = Ask(request::kDiscoveryDuration, kTagSet, &aDuration);
    if (status == llk::kOk) mDuration = aDuration;
    return status;
}

llk::i4 cSystemProxy::GetDiscoveryDuration(llk::u8& aDuration) {
    llk::i4 status = Ask(request::kDiscoveryDuration, kTagGet, &aDuration);
    if (status == llk::kOk) mDuration = aDuration;
    return status;
}

llk::i4 cSystemProxy::SendForceIP(const tCommandForceIP& aCommand) {
    return Ask(request::kForceIP, 0, const_cast<tCommandForceIP*>(&aCommand));
}

llk::i4 cSystemProxy::IsReady(bool& aReady) {
    return Ask(request::kSystemReady, 0, &aReady);
}

} // namespace tvk
