#include "scrobbler/queue/saved_list.h"

#include "xml/xml_names.h"

#include <cassert>
#include <cstdint>

namespace cvas
{

bool ReadItemFields(CXmlDocument& document, std::span<const std::wstring_view> names,
                    std::span<std::wstring> values)
{
    const bool ignoreCase = (document.GetDocFlags() & kXmlDocIgnoreCase) != 0;
    std::size_t found = 0;
    std::uint32_t seen = 0; // a bit for each name found
    assert(names.size() <= 32 && values.size() == names.size());
    while (found < names.size() && document.FindChildElem())
    {
        document.IntoElem();
        const std::wstring tag = document.GetTagName();
        for (std::size_t i = 0; i < names.size(); ++i)
        {
            if ((seen & (1u << i)) == 0 && XmlNamesEqual(tag, names[i], ignoreCase))
            {
                values[i] = document.GetData();
                seen |= 1u << i;
                ++found;
                break;
            }
        }
        document.OutOfElem();
    }
    return found == names.size();
}

} // namespace cvas
