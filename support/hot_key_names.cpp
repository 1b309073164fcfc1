#include "support/hot_key_names.h"

#include <utility>

namespace cvas
{
namespace
{

std::map<std::wstring, unsigned> g_keyNames;

// The keys with names whose codes do not run in a series.
constexpr std::pair<const wchar_t*, unsigned> kSingleKeys[] = {
    {L"lbutton", 0x01},  {L"rbutton", 0x02},  {L"cancel", 0x03},   {L"mbutton", 0x04},
    {L"back", 0x08},     {L"tab", 0x09},      {L"clear", 0x0C},    {L"return", 0x0D},
    {L"shift", 0x10},    {L"control", 0x11},  {L"menu", 0x12},     {L"pause", 0x13},
    {L"capital", 0x14},  {L"escape", 0x1B},   {L"space", 0x20},    {L"prior", 0x21},
    {L"next", 0x22},     {L"end", 0x23},      {L"home", 0x24},     {L"left", 0x25},
    {L"up", 0x26},       {L"right", 0x27},    {L"down", 0x28},     {L"select", 0x29},
    {L"print", 0x2A},    {L"execute", 0x2B},  {L"snapshot", 0x2C}, {L"insert", 0x2D},
    {L"delete", 0x2E},   {L"help", 0x2F},     {L"lwin", 0x5B},     {L"rwin", 0x5C},
    {L"apps", 0x5D},     {L"multiply", 0x6A}, {L"add", 0x6B},      {L"separator", 0x6C},
    {L"subtract", 0x6D}, {L"decimal", 0x6E},  {L"divide", 0x6F},
};

void BuildKeyNames(std::map<std::wstring, unsigned>& names)
{
    for (const auto& [name, code] : kSingleKeys)
        names.emplace(name, code);
    for (unsigned i = 0; i < 10; ++i)
    {
        names.emplace(std::wstring(1, static_cast<wchar_t>(L'0' + i)), 0x30 + i);
        names.emplace(L"numpad" + std::to_wstring(i), 0x60 + i);
    }
    for (unsigned i = 0; i < 26; ++i)
        names.emplace(std::wstring(1, static_cast<wchar_t>(L'a' + i)), 0x41 + i);
    for (unsigned i = 1; i <= 24; ++i)
        names.emplace(L"f" + std::to_wstring(i), 0x6F + i);
}

// Only ASCII letters: every word and name the reading knows is ASCII, and
// the result must not depend on the C locale.
std::wstring LowerCase(std::wstring_view token)
{
    std::wstring lower(token);
    for (wchar_t& c : lower)
    {
        if (c >= L'A' && c <= L'Z')
            c = static_cast<wchar_t>(c - L'A' + L'a');
    }
    return lower;
}

unsigned ModifierOf(const std::wstring& word)
{
    if (word == L"alt")
        return kModAlt;
    if (word == L"control" || word == L"ctrl")
        return kModControl;
    if (word == L"shift")
        return kModShift;
    if (word == L"win" || word == L"windows")
        return kModWin;
    return 0;
}

} // namespace

const std::map<std::wstring, unsigned>& KeyNameTable()
{
    if (g_keyNames.empty())
        BuildKeyNames(g_keyNames);
    return g_keyNames;
}

void ClearKeyNameTable()
{
    g_keyNames.clear();
}

void ParseHotKey(std::wstring_view text, unsigned& modifiers, unsigned& virtualKey)
{
    modifiers = 0;
    virtualKey = 0;
    constexpr std::wstring_view kSeparators = L",+- ";
    std::size_t start = 0;
    while (start < text.size())
    {
        std::size_t end = text.find_first_of(kSeparators, start);
        if (end == std::wstring_view::npos)
            end = text.size();
        if (end > start)
        {
            const std::wstring token = LowerCase(text.substr(start, end - start));
            // Modifier words come first, so "shift" and "control" never name the key.
            if (const unsigned modifier = ModifierOf(token))
                modifiers |= modifier;
            else if (const auto found = KeyNameTable().find(token); found != KeyNameTable().end())
                virtualKey = found->second;
        }
        start = end + 1;
    }
}

} // namespace cvas
