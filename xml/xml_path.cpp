#include "xml/xml_path.h"

namespace cvas
{
namespace
{

std::wstring_view LeadingName(std::wstring_view text)
{
    return text.substr(0, XmlPathNameLength(text));
}

} // namespace

XmlPathStep ParseXmlPathStep(std::wstring_view path)
{
    XmlPathStep step;
    step.name = LeadingName(path);
    if (step.name.size() == path.size())
        return step; // a plain name, the common case
    std::size_t at = step.name.size();
    if (at < path.size() && path[at] == L'[')
    {
        const std::size_t close = path.find(L']', at + 1);
        const std::wstring_view inside =
            path.substr(at + 1, (close == std::wstring_view::npos ? path.size() : close) - at - 1);
        if (!inside.empty() && inside[0] >= L'0' && inside[0] <= L'9')
        {
            step.test = XmlPathStep::Test::Position;
            for (std::size_t i = 0; i < inside.size() && inside[i] >= L'0' && inside[i] <= L'9';
                 ++i)
            {
                const std::uint32_t digit = static_cast<std::uint32_t>(inside[i] - L'0');
                step.position = step.position > (UINT32_MAX - digit) / 10
                                    ? UINT32_MAX
                                    : step.position * 10 + digit;
            }
        }
        else if (!inside.empty() && inside[0] == L'@')
        {
            step.test = XmlPathStep::Test::Attribute;
            step.testName = LeadingName(inside.substr(1));
        }
        else
        {
            step.test = XmlPathStep::Test::Child;
            step.testName = LeadingName(inside);
        }
        at = close == std::wstring_view::npos ? path.size() : close + 1;
    }
    const std::size_t slash = at < path.size() ? path.find(L'/', at) : std::wstring_view::npos;
    if (slash != std::wstring_view::npos)
        step.rest = path.substr(slash + 1);
    return step;
}

} // namespace cvas
