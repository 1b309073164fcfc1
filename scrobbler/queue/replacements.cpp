#include "scrobbler/queue/replacements.h"

namespace cvas
{

std::wstring ApplyReplacements(const CReplacementTable& table, std::wstring text)
{
    for (const CReplacement& replacement : table)
    {
        // An empty lhs would match between every two characters.
        if (replacement.lhs.empty())
            continue;
        std::size_t found = text.find(replacement.lhs);
        if (found == std::wstring::npos)
            continue;
        std::wstring replaced;
        replaced.reserve(text.size());
        std::size_t from = 0;
        for (; found != std::wstring::npos; found = text.find(replacement.lhs, from))
        {
            replaced.append(text, from, found - from);
            replaced += replacement.rhs;
            from = found + replacement.lhs.size();
        }
        replaced.append(text, from, std::wstring::npos);
        text = std::move(replaced);
    }
    return text;
}

} // namespace cvas
