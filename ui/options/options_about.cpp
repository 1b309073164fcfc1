#include "resources/resource_ids.h"
#include "support/this_module.h"
#include "support/version_info.h"
#include "ui/options/options_pages.h"

namespace cvas
{
namespace
{

// A Tahoma font, antialiased, of the given character height.
HFONT MakeFont(int height, int weight)
{
    return CreateFontW(-height, 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                       OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, ANTIALIASED_QUALITY,
                       DEFAULT_PITCH | FF_SWISS, L"Tahoma");
}

} // namespace

COptionsAbout::COptionsAbout() : CPropertyPage(IDD_OPTIONS_ABOUT) {}

bool COptionsAbout::OnInitDialog()
{
    CPropertyPage::OnInitDialog();
    m_titleFont = CFont(MakeFont(26, FW_BOLD));
    m_versionFont = CFont(MakeFont(18, FW_NORMAL));
    m_legalFont = CFont(MakeFont(9, FW_NORMAL));
    m_commentsFont = CFont(MakeFont(12, FW_NORMAL));

    CVersionTexts texts;
    ReadVersionTexts(ThisModulePath(), texts);
    const auto label = [this](int id, const CFont& font) {
        SendMessageW(Item(id), WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), TRUE);
    };
    label(IDC_ABOUT_TITLE, m_titleFont);
    label(IDC_ABOUT_VERSION, m_versionFont);
    SetItemText(IDC_ABOUT_VERSION, L"Version: " + texts.productVersion);
    label(IDC_ABOUT_LEGAL, m_legalFont);
    SetItemText(IDC_ABOUT_LEGAL, texts.legalCopyright);
    label(IDC_ABOUT_COMMENTS, m_commentsFont);
    SetItemText(IDC_ABOUT_COMMENTS, texts.comments);
    return true;
}

} // namespace cvas
