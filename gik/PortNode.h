// gik::cPortNode: the "Port" element, bound at Resolve to the
// gik::pPort attached to the runtime under the node's own name. Every
// register transfer passes through here.
#pragma once

#include "gik/Node.h"

namespace gik {

class pPort;

class cPortNode : public pNode {
public:
    static cPortNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cPortNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    ~cPortNode() override;
    u4 ClassCode() const override { return kTagPort; }
    const char* ClassName() const override { return "cPortNode"; }

    i4 Resolve(cRuntime* aRuntime) override;
    // Also needs a port that is writeable.
    bool IsWriteable(cRuntime* aRuntime) override;

    // kAccessDenied unless readable; kNothing without an attached port.
    i4 Fetch(cRuntime* aRuntime, u8 aAddress, u4 aLength, void* aBuffer, u4& aFetched);
    // kAccessDenied unless writeable; on success the port node's dependents
    // hear of it (type 1).
    i4 Store(cRuntime* aRuntime, u8 aAddress, u4 aLength, const void* aBuffer, u4& aStored);

    pPort* Port() const { return mPort; }
    // Binds a port by hand (the runtime does it at Resolve).
    void SetPort(pPort* aPort);

private:
    pPort* mPort = nullptr;
};

} // namespace gik
