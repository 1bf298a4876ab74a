#include "engine/Aggregate.h"

#include <cstring>

#include "engine/Producer.h"

namespace tvk {

llk::i4 cAggregate::Initialize(cGlobal* aGlobal) {
    mGlobal = aGlobal;
    mHelper = llk::Retained(cHelper::New(nullptr, aGlobal));
    return mHelper ? llk::kOk : llk::kNoMemory;
}

llk::i4 cAggregate::Initialize(const char* aPath, cGlobal* aGlobal) {
    mProducer = llk::Retained(cProducer::New(aPath));
    if (!mProducer) return llk::kNoMemory;
    mGlobal = aGlobal;
    mHelper = llk::Retained(cHelper::New(mProducer, aGlobal));
    if (!mHelper) return llk::kNoMemory;

    // The transport kind, from the producer's own type text.
    gc::INFO_DATATYPE type = 0;
    size_t size = 0;
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    if (!mProducer->Info(gc::TL_INFO_TLTYPE, &type, nullptr, &size, &error)) return error;
    if (type != gc::INFO_DATATYPE_STRING || size > 32) return llk::kNotImplemented;
    char text[33] = {};
    if (!mProducer->Info(gc::TL_INFO_TLTYPE, &type, text, &size, &error))
        return llk::kNotImplemented;
    if (strcmp(text, "GEV") == 0)
        mType = kInterfaceEthernet;
    else if (strcmp(text, "IIDC") == 0)
        mType = kInterfaceFirewire;
    else if (strcmp(text, "USB3") == 0)
        mType = kInterfaceUsb;
    else
        return llk::kNotImplemented;
    return llk::kOk;
}

cAggregate::~cAggregate() {
    // The helper's threads end before the producer they call goes.
    llk::ReleaseAndClear(mHelper);
    llk::ReleaseAndClear(mProducer);
}

} // namespace tvk
