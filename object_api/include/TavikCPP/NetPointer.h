// The shared pointer of the object API. The count lives in the object itself,
// so a pointer made again from the same raw pointer shares that object's
// count: one native object, one identity, however it is reached.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "TavikCPP/Export.h"

namespace QRX::TvkAPI {

// Base of every object that a NetPointer can hold. A new object has no
// references; it is deleted when the last NetPointer to it lets go.
class TVKCPP_EXPORT ReferenceCounted {
protected:
    ReferenceCounted() noexcept {}
    // A copy is a new object with references of its own.
    ReferenceCounted(const ReferenceCounted&) noexcept {}
    ReferenceCounted& operator=(const ReferenceCounted&) noexcept { return *this; }
    virtual ~ReferenceCounted();

private:
    template <class, class> friend class NetPointer;
    void AddReference() const noexcept;
    // Deletes the object with the last reference.
    void DropReference() const noexcept;
    uint32_t CountReferences() const noexcept;

    mutable std::atomic<uint32_t> m_nReferences{0};
};

// Names the wrapper a pointer stands for in a managed binding; native code
// leaves it at its default.
template <class T> class DefaultWrapper;

// Copies, assignments and drops of different NetPointer objects are safe from
// any thread at once; one NetPointer object is not to be changed by one thread
// while another reads it.
template <class T, class W = DefaultWrapper<T>> class NetPointer {
public:
    NetPointer() noexcept {}
    NetPointer(std::nullptr_t) noexcept {}
    // Takes a reference to the object, which may be held by other pointers already.
    explicit NetPointer(T* pObject) noexcept : m_pObject(pObject) { Acquire(); }
    NetPointer(const NetPointer& rOther) noexcept : m_pObject(rOther.m_pObject) { Acquire(); }
    NetPointer(NetPointer&& rOther) noexcept
        : m_pObject(std::exchange(rOther.m_pObject, nullptr)) {}
    template <class U, class V>
    requires std::is_convertible_v<U*, T*> NetPointer(const NetPointer<U, V>& rOther)
    noexcept : m_pObject(rOther.AccessNative()) { Acquire(); }
    ~NetPointer() { Drop(); }

    NetPointer& operator=(const NetPointer& rOther) noexcept {
        NetPointer(rOther).Swap(*this);
        return *this;
    }
    NetPointer& operator=(NetPointer&& rOther) noexcept {
        NetPointer(std::move(rOther)).Swap(*this);
        return *this;
    }

    void Reset() noexcept { NetPointer().Swap(*this); }
    void Reset(T* pObject) noexcept { NetPointer(pObject).Swap(*this); }
    void Swap(NetPointer& rOther) noexcept { std::swap(m_pObject, rOther.m_pObject); }

    T* AccessNative() const noexcept { return m_pObject; }
    bool IsNull() const noexcept { return m_pObject == nullptr; }
    bool IsEqualTo(const NetPointer& rOther) const noexcept {
        return m_pObject == rOther.m_pObject;
    }
    // How many pointers hold the object now (0 for a null pointer).
    uint32_t UseCount() const noexcept {
        return m_pObject ? Counted(m_pObject)->CountReferences() : 0;
    }

    T* operator->() const noexcept { return m_pObject; }
    T& operator*() const noexcept { return *m_pObject; }
    explicit operator bool() const noexcept { return m_pObject != nullptr; }
    friend bool operator==(const NetPointer& rLeft, const NetPointer& rRight) noexcept {
        return rLeft.m_pObject == rRight.m_pObject;
    }

private:
    static const ReferenceCounted* Counted(const T* pObject) noexcept { return pObject; }
    void Acquire() const noexcept {
        if (m_pObject) Counted(m_pObject)->AddReference();
    }
    void Drop() noexcept {
        if (m_pObject) Counted(std::exchange(m_pObject, nullptr))->DropReference();
    }

    T* m_pObject = nullptr;
};

} // namespace QRX::TvkAPI
