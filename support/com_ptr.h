#pragma once
// Holds one reference to a COM interface and releases it when it goes.

#include <unknwn.h>
#include <windows.h>

#include <utility>

namespace cvas
{

template <class T> class CComPtr
{
public:
    CComPtr() = default;
    // Takes a reference of its own.
    explicit CComPtr(T* pointer) : m_pointer(pointer)
    {
        if (m_pointer != nullptr)
            m_pointer->AddRef();
    }
    CComPtr(const CComPtr& other) : CComPtr(other.m_pointer) {}
    CComPtr(CComPtr&& other) noexcept : m_pointer(std::exchange(other.m_pointer, nullptr)) {}
    CComPtr& operator=(CComPtr other) noexcept
    {
        std::swap(m_pointer, other.m_pointer);
        return *this;
    }
    ~CComPtr() { Release(); }

    // Takes over a reference that the caller owns (an out-parameter's).
    static CComPtr Adopt(T* pointer)
    {
        CComPtr held;
        held.m_pointer = pointer;
        return held;
    }
    // Releases what is held and gives the slot for an out-parameter.
    T** Receive()
    {
        Release();
        return &m_pointer;
    }
    void** ReceiveVoid() { return reinterpret_cast<void**>(Receive()); }
    // Hands the reference over to the caller.
    T* Detach() { return std::exchange(m_pointer, nullptr); }

    void Release()
    {
        if (T* pointer = std::exchange(m_pointer, nullptr))
            pointer->Release();
    }

    template <class Other> HRESULT QueryInto(CComPtr<Other>& target, REFIID iid) const
    {
        if (m_pointer == nullptr)
            return E_POINTER;
        return m_pointer->QueryInterface(iid, target.ReceiveVoid());
    }

    T* Get() const { return m_pointer; }
    T* operator->() const { return m_pointer; }
    explicit operator bool() const { return m_pointer != nullptr; }

private:
    T* m_pointer = nullptr;
};

} // namespace cvas
