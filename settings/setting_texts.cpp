#include "settings/setting_texts.h"

#include <climits>
#include <cwctype>

namespace cvas
{

int LeadingInteger(std::wstring_view text)
{
    std::size_t i = 0;
    while (i < text.size() && (text[i] == L' ' || (text[i] >= L'\t' && text[i] <= L'\r')))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == L'+' || text[i] == L'-'))
        negative = text[i++] == L'-';
    long long value = 0;
    for (; i < text.size() && text[i] >= L'0' && text[i] <= L'9'; ++i)
    {
        value = value * 10 + (text[i] - L'0');
        if (value > static_cast<long long>(INT_MAX) + 1)
            value = static_cast<long long>(INT_MAX) + 1;
    }
    if (negative)
        value = -value;
    if (value > INT_MAX)
        return INT_MAX;
    if (value < INT_MIN)
        return INT_MIN;
    return static_cast<int>(value);
}

bool ReadBoolText(std::wstring_view value, bool defaultValue)
{
    if (value.empty())
        return defaultValue;
    std::wstring lower(value);
    for (wchar_t& c : lower)
        c = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
    if (lower.size() == 1)
    {
        const wchar_t c = lower[0];
        if (c == L'e' || c == L't' || c == L'y')
            return true;
        if (c >= L'0' && c <= L'9')
            return c != L'0';
        return false;
    }
    if (lower == L"yes" || lower == L"true" || lower == L"enabled")
        return true;
    return LeadingInteger(lower) >= 1;
}

const wchar_t* BoolText(bool value) { return value ? L"True" : L"False"; }

std::wstring FilterFromStored(std::wstring_view stored)
{
    std::wstring out;
    out.reserve(stored.size());
    for (wchar_t c : stored)
    {
        if (c == L'\t')
            out += L"\r\n";
        else
            out.push_back(c);
    }
    return out;
}

std::wstring FilterToStored(std::wstring_view filter)
{
    std::wstring out;
    out.reserve(filter.size());
    for (std::size_t i = 0; i < filter.size(); ++i)
    {
        if (filter[i] == L'\r' && i + 1 < filter.size() && filter[i + 1] == L'\n')
        {
            out.push_back(L'\t');
            ++i;
        }
        else
        {
            out.push_back(filter[i]);
        }
    }
    return out;
}

} // namespace cvas
