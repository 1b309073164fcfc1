#pragma once
// Owns a kernel handle and closes it when it goes.

#include <windows.h>

#include <utility>

namespace cvas
{

class CHandle
{
public:
    CHandle() = default;
    explicit CHandle(HANDLE handle) : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    ~CHandle() { Reset(); }
    CHandle(CHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    CHandle& operator=(CHandle&& other) noexcept
    {
        if (this != &other)
        {
            Reset();
            m_handle = std::exchange(other.m_handle, nullptr);
        }
        return *this;
    }
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;

    HANDLE Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != nullptr; }
    void Reset()
    {
        if (m_handle != nullptr)
            CloseHandle(std::exchange(m_handle, nullptr));
    }

private:
    HANDLE m_handle = nullptr;
};

} // namespace cvas
