#include "scrobbler/queue/replacements_document.h"

#include "scrobbler/queue/saved_list.h"

#include <array>
#include <string_view>
#include <utility>

namespace cvas
{
namespace
{

constexpr std::array<std::wstring_view, 2> kReplacementFields = {L"lhs", L"rhs"};

} // namespace

CountedHandle<CXmlDocument> BuildReplacementsDocument(const CReplacementTable& table)
{
    return BuildSavedList(L"replacements", L"replacement", table, [](const CReplacement& entry) {
        return std::array<std::pair<std::wstring_view, std::wstring_view>, 2>{{
            {kReplacementFields[0], entry.lhs},
            {kReplacementFields[1], entry.rhs},
        }};
    });
}

bool ReadReplacementsDocument(CXmlDocument& document, CReplacementTable& table)
{
    return ForEachSavedItem(document, L"replacements", L"replacement", [&] {
        std::array<std::wstring, 2> texts;
        if (ReadItemFields(document, kReplacementFields, texts))
            table.push_back({std::move(texts[0]), std::move(texts[1])});
    });
}

} // namespace cvas
