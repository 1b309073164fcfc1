#include "scrobbler/saved_list.h"

#include "support/xml_names.h"

#include <vector>

namespace cvas
{

bool ReadItemFields(CXmlDocument& document, std::span<const std::wstring_view> names,
                    std::span<std::wstring> values)
{
    const bool ignoreCase = (document.GetDocFlags() & kXmlDocIgnoreCase) != 0;
    std::size_t found = 0;
    std::vector<bool> seen(names.size(), false);
    while (found < names.size() && document.FindChildElem())
    {
        document.IntoElem();
        const std::wstring tag = document.GetTagName();
        for (std::size_t i = 0; i < names.size(); ++i)
        {
            if (!seen[i] && XmlNamesEqual(tag, names[i], ignoreCase))
            {
                values[i] = document.GetData();
                seen[i] = true;
                ++found;
                break;
            }
        }
        document.OutOfElem();
    }
    return found == names.size();
}

} // namespace cvas
