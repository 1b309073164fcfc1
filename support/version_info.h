#pragma once
// The texts of a module's version block (its default language block).

#include <string>

namespace cvas
{

struct CVersionTexts
{
    std::wstring productVersion;
    std::wstring legalCopyright;
    std::wstring companyName;
    std::wstring comments; // may be missing
};

// False unless the first three texts were found.
bool ReadVersionTexts(const std::wstring& modulePath, CVersionTexts& texts);

} // namespace cvas
