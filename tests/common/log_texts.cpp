#include "common/log_texts.h"

namespace cvas::test
{

std::vector<std::wstring> LogTexts(const CountedHandle<CLogFile>& log)
{
    std::vector<std::wstring> texts;
    if (!log)
        return texts;
    for (const std::wstring& line : log->Lines())
    {
        const std::size_t mark = line.find(L") > ");
        texts.push_back(mark == std::wstring::npos ? line : line.substr(mark + 4));
    }
    return texts;
}

} // namespace cvas::test
