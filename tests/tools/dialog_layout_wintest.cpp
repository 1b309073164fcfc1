// The dialog templates as the options sheet's page classes and the
// replacement dialog use them, and the layout check that keeps them tidy.
#include "resources/resource_ids.h"
#include "tools/dialog_layout/dialog_layout.h"
#include "ui/test_window.h"

#include <commctrl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <string>
#include <vector>

using namespace cvas;

namespace
{

INT_PTR CALLBACK QuietDialogProc(HWND, UINT, WPARAM, LPARAM)
{
    return FALSE;
}

// A dialog made from one of the test program's templates, destroyed with it.
class CShownTemplate
{
public:
    CShownTemplate(int id, bool page)
    {
        HINSTANCE module = GetModuleHandleW(nullptr);
        if (page)
        {
            m_parent = test::CreateTestWindow(L"CvasDialogLayoutTest");
            m_dialog = layout::CreatePageInside(module, id, m_parent, QuietDialogProc);
        }
        else
        {
            m_dialog =
                CreateDialogParamW(module, MAKEINTRESOURCEW(id), nullptr, QuietDialogProc, 0);
        }
    }
    ~CShownTemplate()
    {
        if (m_dialog != nullptr)
            DestroyWindow(m_dialog);
        if (m_parent != nullptr)
            DestroyWindow(m_parent);
    }
    CShownTemplate(const CShownTemplate&) = delete;
    CShownTemplate& operator=(const CShownTemplate&) = delete;

    HWND Get() const { return m_dialog; }

private:
    HWND m_parent = nullptr;
    HWND m_dialog = nullptr;
};

std::wstring TextOf(HWND window)
{
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(
        GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

struct CTemplate
{
    int id;
    bool page;
    const char* name;
};

const CTemplate kTemplates[] = {
    {IDD_OPTIONS_MAIN, true, "Main"},         {IDD_OPTIONS_LOGGING, true, "Logging"},
    {IDD_OPTIONS_REPLACE, true, "Replace"},   {IDD_OPTIONS_FILTER, true, "Filter"},
    {IDD_OPTIONS_BUDDY, true, "BuddySystem"}, {IDD_OPTIONS_ADVANCED, true, "Advanced"},
    {IDD_OPTIONS_ABOUT, true, "About"},       {IDD_REPLACEMENT, false, "Replacement"},
};

class DialogTemplateTest : public testing::TestWithParam<CTemplate>
{
};

TEST_P(DialogTemplateTest, LayoutHasNoFaultsOnThisScreen)
{
    CShownTemplate dialog(GetParam().id, GetParam().page);
    ASSERT_NE(dialog.Get(), nullptr);
    for (const std::wstring& fault : layout::CheckDialogLayout(dialog.Get()))
        ADD_FAILURE() << std::string(fault.begin(), fault.end());
}

INSTANTIATE_TEST_SUITE_P(AllTemplates, DialogTemplateTest, testing::ValuesIn(kTemplates),
                         [](const testing::TestParamInfo<CTemplate>& info) {
                             return std::string(info.param.name);
                         });

// The texts whose line breaks, quotes and runs of blanks the resource
// compiler must carry through as they are.
TEST(DialogTemplateTexts, KeepTheirLineBreaksQuotesAndBlanks)
{
    std::vector<std::wstring> texts;
    for (int id : {IDD_OPTIONS_FILTER, IDD_OPTIONS_LOGGING})
    {
        CShownTemplate page(id, true);
        ASSERT_NE(page.Get(), nullptr);
        for (HWND child = GetWindow(page.Get(), GW_CHILD); child != nullptr;
             child = GetWindow(child, GW_HWNDNEXT))
            texts.push_back(TextOf(child));
    }
    auto has = [&](const std::wstring& text) {
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    };
    EXPECT_TRUE(has(L"Use this screen to select which tracks to submit to the last.fm server.\n\n"
                    L"The plugin will automatically add:\n\n"
                    L"        ~d=a filename=\"[FILENAME]\""));
    EXPECT_TRUE(has(L"Read the \"Smartlist and Search - Rules and Modifiers\" section in the CV "
                    L"documentation for an explanation on the supported syntax."));
    EXPECT_TRUE(has(L"This logfile contains the list of tracks that failed to submit to the "
                    L"last.fm website.   Submission will not be re-attempted on these tracks:"));
}

// Hand-made controls on a plain window, each with one fault the check must name.
class LayoutCheckTest : public testing::Test
{
protected:
    HWND Add(const wchar_t* className, const wchar_t* text, DWORD style, int x, int y, int width,
             int height)
    {
        return CreateWindowExW(0, className, text, WS_CHILD | WS_VISIBLE | style, x, y, width,
                               height, window, nullptr, GetModuleHandleW(nullptr), nullptr);
    }
    std::wstring Faults()
    {
        std::wstring all;
        for (const std::wstring& fault : layout::CheckDialogLayout(window))
            all += fault + L"\n";
        return all;
    }
    void TearDown() override { DestroyWindow(window); }

    HWND window = test::CreateTestWindow(L"CvasLayoutCheckTest");
};

TEST_F(LayoutCheckTest, AcceptsATidyRow)
{
    Add(L"Static", L"Name:", SS_LEFT, 10, 12, 60, 20);
    Add(L"Edit", L"", WS_BORDER | WS_TABSTOP, 80, 10, 200, 24);
    Add(L"Button", L"OK", BS_PUSHBUTTON | WS_TABSTOP, 290, 10, 80, 24);
    EXPECT_EQ(Faults(), L"");
}

TEST_F(LayoutCheckTest, FindsTextThatDoesNotFit)
{
    Add(L"Static", L"A label much longer than its narrow control could ever show", SS_LEFT, 10, 10,
        60, 16);
    Add(L"Button", L"A check box with a long text", BS_AUTOCHECKBOX | WS_TABSTOP, 10, 40, 50, 16);
    Add(L"Button", L"Cancel", BS_PUSHBUTTON | WS_TABSTOP, 10, 70, 20, 24);
    const std::wstring faults = Faults();
    EXPECT_NE(faults.find(L"\"A label much"), std::wstring::npos) << faults;
    EXPECT_NE(faults.find(L"\"A check box"), std::wstring::npos) << faults;
    EXPECT_NE(faults.find(L"\"Cancel\""), std::wstring::npos) << faults;
}

TEST_F(LayoutCheckTest, FindsControlsAcrossAGroupFrameOrOnEachOther)
{
    Add(L"Button", L"Group", BS_GROUPBOX, 10, 10, 200, 100);
    Add(L"Edit", L"", WS_BORDER | WS_TABSTOP, 20, 90, 100, 30); // through its bottom
    Add(L"Button", L"One", BS_PUSHBUTTON | WS_TABSTOP, 300, 10, 80, 24);
    Add(L"Button", L"Two", BS_PUSHBUTTON | WS_TABSTOP, 320, 20, 80, 24);   // on One
    Add(L"Button", L"Far", BS_PUSHBUTTON | WS_TABSTOP, 1150, 300, 80, 24); // past the edge
    const std::wstring faults = Faults();
    EXPECT_NE(faults.find(L"crosses the frame of"), std::wstring::npos) << faults;
    EXPECT_NE(faults.find(L"\"One\") overlaps"), std::wstring::npos) << faults;
    EXPECT_NE(faults.find(L"\"Far\") reaches outside"), std::wstring::npos) << faults;
}

TEST_F(LayoutCheckTest, FindsInputsWithoutTabStopsAndATabOrderThatGoesBack)
{
    Add(L"Edit", L"", WS_BORDER, 10, 10, 100, 24);
    Add(L"Button", L"Lower", BS_PUSHBUTTON | WS_TABSTOP, 10, 60, 80, 24);
    Add(L"Button", L"Upper", BS_PUSHBUTTON | WS_TABSTOP, 200, 10, 80, 24);
    const std::wstring faults = Faults();
    EXPECT_NE(faults.find(L"(Edit) takes input but has no tab stop"), std::wstring::npos) << faults;
    EXPECT_NE(faults.find(L"goes back from control 0 (Button \"Lower\")"), std::wstring::npos)
        << faults;
}

} // namespace
