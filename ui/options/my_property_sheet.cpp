#include "ui/options/my_property_sheet.h"

#include "resources/resource_ids.h"

namespace cvas
{

CMyPropertySheet::CMyPropertySheet() : CPropertySheet(L"Options for last.fm")
{
    for (CPropertyPage* page : std::initializer_list<CPropertyPage*>{
             &main, &logging, &replace, &filter, &buddy, &advanced, &about})
        AddPage(*page);
    SetIconId(IDI_OPTIONS);
}

} // namespace cvas
