#include "tools/player/summary.h"

namespace cvas::player
{

namespace
{

std::wstring Keys(const std::vector<int>& keys)
{
    std::wstring text;
    for (const int key : keys)
        text += (text.empty() ? L": keys " : L", ") + std::to_wstring(key);
    return text;
}

} // namespace

std::vector<std::wstring> SummaryLines(const CPlayerHistory& history)
{
    std::vector<std::wstring> lines;
    lines.push_back(L"plays: " + std::to_wstring(history.plays.size()) + Keys(history.plays));
    lines.push_back(L"queries: " + std::to_wstring(history.queries.size()));
    for (const CQueryRecord& query : history.queries)
    {
        lines.push_back(L"  query \"" + query.text + L"\": " +
                        (query.result.error.empty()
                             ? std::to_wstring(query.result.matches.size()) + L" file(s)"
                             : L"not understood (" + query.result.error + L")"));
    }
    lines.push_back(L"play requests: " + std::to_wstring(history.playRequests.size()) +
                    Keys(history.playRequests));
    std::wstring skinning;
    for (const auto& [thread, flag] : history.skinning)
        skinning += (skinning.empty() ? L": " : L", ") + std::wstring(L"thread ") +
                    std::to_wstring(thread) + (flag != 0 ? L" on" : L" off");
    lines.push_back(L"skinning calls: " + std::to_wstring(history.skinning.size()) + skinning);
    lines.push_back(L"refused calls: " + std::to_wstring(history.refusedCalls));
    return lines;
}

} // namespace cvas::player
