#pragma once
// The options sheet: "Options for last.fm", with icon 201 and its seven pages
// in their order; no Apply button.

#include "ui/options/options_pages.h"
#include "ui/property_sheet.h"

namespace cvas
{

class CMyPropertySheet : public CPropertySheet
{
public:
    CMyPropertySheet();

    COptionsMain main;
    COptionsLogging logging;
    COptionsReplace replace;
    COptionsAdvancedFilter filter;
    COptionsBuddy buddy;
    COptionsAdvanced advanced;
    COptionsAbout about;
};

} // namespace cvas
