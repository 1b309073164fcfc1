#include "support/version_info.h"

#include <windows.h>

#include <cstdio>
#include <vector>

namespace cvas
{
namespace
{

bool QueryText(const std::vector<char>& block, const std::wstring& language, const wchar_t* name,
               std::wstring& text)
{
    const std::wstring path = L"\\StringFileInfo\\" + language + L"\\" + name;
    wchar_t* value = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block.data(), path.c_str(), reinterpret_cast<void**>(&value), &length) ||
        value == nullptr || length == 0)
        return false;
    text.assign(value, wcsnlen(value, length));
    return true;
}

} // namespace

bool ReadVersionTexts(const std::wstring& modulePath, CVersionTexts& texts)
{
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(modulePath.c_str(), &ignored);
    if (size == 0)
        return false;
    std::vector<char> block(size);
    if (!GetFileVersionInfoW(modulePath.c_str(), 0, size, block.data()))
        return false;
    struct Translation
    {
        WORD language;
        WORD codePage;
    }* translations = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block.data(), L"\\VarFileInfo\\Translation",
                        reinterpret_cast<void**>(&translations), &length) ||
        length < sizeof(Translation))
        return false;
    wchar_t language[16];
    std::swprintf(language, 16, L"%04x%04x", translations[0].language, translations[0].codePage);
    if (!QueryText(block, language, L"Comments", texts.comments))
        texts.comments.clear();
    return QueryText(block, language, L"ProductVersion", texts.productVersion) &&
           QueryText(block, language, L"LegalCopyright", texts.legalCopyright) &&
           QueryText(block, language, L"CompanyName", texts.companyName);
}

} // namespace cvas
