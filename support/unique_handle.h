#pragma once
// Owns one handle of a kind that Traits describes (its type, which values
// are no handle, how to close it) and closes it when it goes.

#include <utility>

namespace cvas
{

template <typename Traits> class CUniqueHandle
{
public:
    using Handle = typename Traits::Handle;

    CUniqueHandle() = default;
    explicit CUniqueHandle(Handle handle) : m_handle(Traits::IsHandle(handle) ? handle : nullptr) {}
    ~CUniqueHandle() { Reset(); }
    CUniqueHandle(CUniqueHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr))
    {
    }
    CUniqueHandle& operator=(CUniqueHandle&& other) noexcept
    {
        if (this != &other)
        {
            Reset();
            m_handle = std::exchange(other.m_handle, nullptr);
        }
        return *this;
    }
    CUniqueHandle(const CUniqueHandle&) = delete;
    CUniqueHandle& operator=(const CUniqueHandle&) = delete;

    Handle Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != nullptr; }
    void Reset()
    {
        if (m_handle != nullptr)
            Traits::Close(std::exchange(m_handle, nullptr));
    }

private:
    Handle m_handle = nullptr;
};

} // namespace cvas
