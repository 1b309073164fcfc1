#pragma once
// Owners of what automation calls hand back and forth: a VARIANT, cleared
// when it goes, a BSTR, freed when it goes, and the texts a failed Invoke
// leaves in its exception information, freed when they go.

#include <oaidl.h>
#include <oleauto.h>

#include <string>
#include <string_view>
#include <utility>

namespace cvas
{

class CVariant
{
public:
    CVariant() { VariantInit(&m_value); }
    ~CVariant() { Clear(); }
    CVariant(const CVariant&) = delete;
    CVariant& operator=(const CVariant&) = delete;

    VARIANT* Get() { return &m_value; }
    const VARIANT* Get() const { return &m_value; }
    VARIANT* operator->() { return &m_value; }
    void Clear() { VariantClear(&m_value); }

private:
    VARIANT m_value;
};

class CBstr
{
public:
    CBstr() = default;
    // Null when the text could not be allocated.
    explicit CBstr(std::wstring_view text)
        : m_text(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())))
    {
    }
    ~CBstr() { SysFreeString(m_text); }
    CBstr(CBstr&& other) noexcept : m_text(std::exchange(other.m_text, nullptr)) {}
    CBstr& operator=(CBstr&& other) noexcept
    {
        std::swap(m_text, other.m_text);
        return *this;
    }
    CBstr(const CBstr&) = delete;
    CBstr& operator=(const CBstr&) = delete;

    BSTR Get() const { return m_text; }
    explicit operator bool() const { return m_text != nullptr; }

private:
    BSTR m_text = nullptr;
};

class CExceptionInfo
{
public:
    CExceptionInfo() = default;
    ~CExceptionInfo()
    {
        SysFreeString(m_info.bstrSource);
        SysFreeString(m_info.bstrDescription);
        SysFreeString(m_info.bstrHelpFile);
    }
    CExceptionInfo(const CExceptionInfo&) = delete;
    CExceptionInfo& operator=(const CExceptionInfo&) = delete;

    EXCEPINFO* Get() { return &m_info; }
    std::wstring Description() const
    {
        return m_info.bstrDescription != nullptr ? m_info.bstrDescription : L"";
    }

private:
    EXCEPINFO m_info{};
};

} // namespace cvas
