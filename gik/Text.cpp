#include "gik/Text.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <tinyxml.h>

namespace gik {

bool sText::ReadInteger(const char* aText, i8& aValue) {
    if (!aText) return false;
    const char* p = aText;
    while (IsSpace(*p))
        ++p;
    if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) {
        const char* q = p + 2;
        u8 v = 0;
        int digits = 0;
        for (;; ++q, ++digits) {
            char c = *q;
            u4 d;
            if (c >= '0' && c <= '9')
                d = static_cast<u4>(c - '0');
            else if (c >= 'a' && c <= 'f')
                d = static_cast<u4>(c - 'a' + 10);
            else if (c >= 'A' && c <= 'F')
                d = static_cast<u4>(c - 'A' + 10);
            else
                break;
            if (v >> 60) return false; // more than 64 bits
            v = v * 16 + d;
        }
        if (digits == 0) return false; // "0x" without digits does not scan
        aValue = static_cast<i8>(v);
        return true;
    }
    bool negative = false;
    if (*p == '+' || *p == '-') {
        negative = *p == '-';
        ++p;
    }
    if (*p < '0' || *p > '9') return false;
    u8 v = 0;
    bool over = false;
    for (; *p >= '0' && *p <= '9'; ++p) {
        u8 d = static_cast<u8>(*p - '0');
        if (v > (UINT64_MAX - d) / 10) {
            over = true;
            continue;
        }
        v = v * 10 + d;
    }
    if (negative) {
        if (over || v > static_cast<u8>(INT64_MAX) + 1)
            aValue = INT64_MIN;
        else
            aValue = static_cast<i8>(0 - v);
    } else {
        aValue = (over || v > static_cast<u8>(INT64_MAX)) ? INT64_MAX : static_cast<i8>(v);
    }
    return true;
}

bool sText::ReadAddress(const char* aText, u8& aValue) {
    if (!aText) return false;
    const char* p = aText;
    while (IsSpace(*p))
        ++p;
    bool negative = *p == '-';
    if (*p == '+' || *p == '-') ++p;
    u8 v = 0;
    int digits = 0;
    if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) {
        for (p += 2;; ++p, ++digits) {
            char c = *p;
            u4 d;
            if (c >= '0' && c <= '9')
                d = static_cast<u4>(c - '0');
            else if (c >= 'a' && c <= 'f')
                d = static_cast<u4>(c - 'a' + 10);
            else if (c >= 'A' && c <= 'F')
                d = static_cast<u4>(c - 'A' + 10);
            else
                break;
            if (v >> 60) return false; // more than 64 bits
            v = v * 16 + d;
        }
    } else {
        for (; *p >= '0' && *p <= '9'; ++p, ++digits) {
            u8 d = static_cast<u8>(*p - '0');
            if (v > (UINT64_MAX - d) / 10) return false;
            v = v * 10 + d;
        }
    }
    while (IsSpace(*p))
        ++p;
    if (digits == 0 || *p != '\0') return false;
    aValue = negative ? 0 - v : v;
    return true;
}

bool sText::ReadReal(const char* aText, double& aValue) {
    if (!aText) return false;
    const char* p = aText;
    while (IsSpace(*p))
        ++p;
    if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) {
        i8 v = 0;
        if (!ReadInteger(p, v)) return false;
        aValue = static_cast<double>(static_cast<u8>(v));
        return true;
    }
    bool negative = false;
    if (*p == '+' || *p == '-') {
        negative = *p == '-';
        ++p;
    }
    if (*p == '+' || *p == '-') return false;
    const char* end = p + strlen(p);
    double v = 0.0;
    auto result = std::from_chars(p, end, v, std::chars_format::general);
    if (result.ptr == p) return false;
    if (result.ec == std::errc::result_out_of_range) {
        // Overflow or underflow, decided by the exponent's sign.
        const char* e = p;
        while (e < result.ptr && *e != 'e' && *e != 'E')
            ++e;
        v = (e + 1 < result.ptr && e[1] == '-') ? 0.0 : HUGE_VAL;
    }
    aValue = negative ? -v : v;
    return true;
}

const TiXmlElement* sText::Child(const TiXmlElement* aElement, const char* aName) {
    const TiXmlElement* child = nullptr;
    if (uChildIndex::Find(aElement, aName, child)) return child;
    return aElement ? aElement->FirstChildElement(aName) : nullptr;
}

thread_local uChildIndex* uChildIndex::sCurrent = nullptr;

u8 uChildIndex::Key(const char* aName) {
    u8 key = 0;
    size_t length = 0;
    for (; aName[length] && length < 7; ++length)
        key |= static_cast<u8>(static_cast<u1>(aName[length])) << (8 * length);
    length += strlen(aName + length);
    return key | (static_cast<u8>(length < 255 ? length : 255) << 56);
}

uChildIndex::uChildIndex(const TiXmlElement* aElement) : mOuter(sCurrent), mElement(aElement) {
    sCurrent = this;
    if (!aElement) return;
    for (const TiXmlElement* c = aElement->FirstChildElement(); c; c = c->NextSiblingElement()) {
        if (mCount == kEntries) {
            mComplete = false;
            return;
        }
        mEntries[mCount++] = {Key(c->Value()), c->Value(), c};
    }
}

uChildIndex::~uChildIndex() {
    sCurrent = mOuter;
}

bool uChildIndex::Find(const TiXmlElement* aElement, const char* aName,
                       const TiXmlElement*& aChild) {
    uChildIndex* index = sCurrent;
    if (!index || index->mElement != aElement || !aElement || !index->mComplete) return false;
    u8 key = Key(aName);
    aChild = nullptr;
    for (u4 i = 0; i < index->mCount; ++i) {
        const tEntry& e = index->mEntries[i];
        if (e.key == key && strcmp(e.name, aName) == 0) {
            aChild = e.element;
            break;
        }
    }
    return true;
}

const char* sText::ChildText(const TiXmlElement* aElement, const char* aName) {
    const TiXmlElement* child = Child(aElement, aName);
    return child ? Text(child) : nullptr;
}

const char* sText::Text(const TiXmlElement* aElement) {
    return aElement ? aElement->GetText() : nullptr;
}

} // namespace gik

#include "kit/String.h"

namespace gik {

llk::cString* NewOwnedText(const char* aText) {
    auto* text = new (std::nothrow) llk::cString();
    if (!text) return nullptr;
    if (text->Initialize(aText ? aText : "", false) != llk::kOk) {
        delete text;
        return nullptr;
    }
    return text;
}

} // namespace gik
