// The dialog templates as the options sheet's page classes and the
// replacement dialog use them, and the layout check that keeps them tidy.
#include "resources/resource_ids.h"
#include "tools/dialog_layout/dialog_layout.h"
#include "ui/test_window.h"

#include <commctrl.h>
#include <winver.h>

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

std::wstring ClassOf(HWND window)
{
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    return name;
}

std::wstring TextOf(HWND window)
{
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(
        GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

struct CExpectedControl
{
    int id;
    const wchar_t* className;
    DWORD style; // bits the control must have
};

struct CExpectedTemplate
{
    int id;
    bool page;
    const wchar_t* caption;
    int width; // in dialog units
    int height;
    std::vector<CExpectedControl> controls;
};

const DWORD kCheckBox = BS_AUTOCHECKBOX | WS_TABSTOP;
const DWORD kEdit = ES_AUTOHSCROLL | WS_TABSTOP;
const DWORD kReadOnly = ES_READONLY | ES_AUTOHSCROLL | WS_TABSTOP;
const DWORD kIconButton = BS_ICON | WS_TABSTOP;

const std::vector<CExpectedTemplate>& Templates()
{
    static const std::vector<CExpectedTemplate> templates = {
        {IDD_OPTIONS_MAIN,
         true,
         L"Main",
         320,
         199,
         {{IDC_ENABLED, L"Button", kCheckBox},
          {IDC_REATTEMPT, L"Button", kCheckBox},
          {IDC_RUN_AT_START, L"Button", kCheckBox},
          {IDC_SUBMIT_AT_START, L"Button", kCheckBox},
          {IDC_USER_NAME, L"Edit", kEdit},
          {IDC_PASSWORD, L"Edit", ES_PASSWORD | kEdit}}},
        {IDD_OPTIONS_LOGGING,
         true,
         L"Logging",
         320,
         201,
         {{IDC_QUEUE_FILE, L"Edit", kReadOnly},
          {IDC_OPEN_QUEUE_FILE, L"Button", kIconButton},
          {IDC_FAILED_LOG_FILE, L"Edit", kReadOnly},
          {IDC_OPEN_FAILED_LOG, L"Button", kIconButton},
          {IDC_STATUS_LOG_FILE, L"Edit", kReadOnly},
          {IDC_OPEN_STATUS_LOG, L"Button", kIconButton}}},
        {IDD_OPTIONS_REPLACE,
         true,
         L"Replace",
         320,
         199,
         {{IDC_REPLACEMENTS, WC_LISTVIEWW,
           LVS_REPORT | LVS_SHOWSELALWAYS | LVS_SINGLESEL | WS_TABSTOP},
          {IDC_ADD, L"Button", WS_TABSTOP},
          {IDC_DELETE, L"Button", WS_TABSTOP},
          {IDC_MODIFY, L"Button", WS_TABSTOP},
          {IDC_MOVE_UP, L"Button", kIconButton},
          {IDC_MOVE_DOWN, L"Button", kIconButton}}},
        {IDD_OPTIONS_FILTER,
         true,
         L"Filter",
         320,
         199,
         {{IDC_FILTER, L"Edit",
           ES_MULTILINE | ES_WANTRETURN | ES_AUTOVSCROLL | WS_VSCROLL | WS_TABSTOP}}},
        {IDD_OPTIONS_BUDDY,
         true,
         L"Buddy System",
         320,
         199,
         {{IDC_BUDDY_ENABLED, L"Button", kCheckBox}, {IDC_BUDDY_HOTKEY, L"Edit", WS_TABSTOP}}},
        {IDD_OPTIONS_ADVANCED,
         true,
         L"Advanced",
         320,
         199,
         {{IDC_ARTIST, L"Edit", kEdit}, {IDC_ALBUM, L"Edit", kEdit}, {IDC_NAME, L"Edit", kEdit}}},
        {IDD_OPTIONS_ABOUT,
         true,
         L"About",
         320,
         201,
         {{IDC_ABOUT_TITLE, L"Static", 0},
          {IDC_ABOUT_VERSION, L"Static", 0},
          {IDC_ABOUT_LEGAL, L"Static", 0},
          {IDC_ABOUT_COMMENTS, L"Static", 0}}},
        {IDD_REPLACEMENT,
         false,
         L"Replacement",
         238,
         73,
         {{IDC_REPLACE_THIS, L"Edit", kEdit},
          {IDC_WITH_THIS, L"Edit", kEdit},
          {IDOK, L"Button", BS_DEFPUSHBUTTON | WS_TABSTOP},
          {IDCANCEL, L"Button", WS_TABSTOP}}},
    };
    return templates;
}

class DialogTemplateTest : public testing::TestWithParam<CExpectedTemplate>
{
};

// The page classes find their controls by these identifiers and treat them
// as these kinds; the sheet sizes itself to the pages.
TEST_P(DialogTemplateTest, HoldsTheControlsItsClassUsesAtItsSize)
{
    const CExpectedTemplate& expected = GetParam();
    CShownTemplate dialog(expected.id, expected.page);
    ASSERT_NE(dialog.Get(), nullptr);
    EXPECT_EQ(TextOf(dialog.Get()), expected.caption);
    RECT units = {0, 0, expected.width, expected.height};
    MapDialogRect(dialog.Get(), &units);
    RECT client;
    GetClientRect(dialog.Get(), &client);
    EXPECT_EQ(client.right, units.right);
    EXPECT_EQ(client.bottom, units.bottom);
    for (const CExpectedControl& control : expected.controls)
    {
        SCOPED_TRACE(control.id);
        HWND window = GetDlgItem(dialog.Get(), control.id);
        ASSERT_NE(window, nullptr);
        EXPECT_EQ(_wcsicmp(ClassOf(window).c_str(), control.className), 0) << ClassOf(window);
        const DWORD style = static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE));
        EXPECT_EQ(style & control.style, control.style) << std::hex << style;
    }
}

TEST_P(DialogTemplateTest, LayoutHasNoFaultsOnThisScreen)
{
    CShownTemplate dialog(GetParam().id, GetParam().page);
    ASSERT_NE(dialog.Get(), nullptr);
    for (const std::wstring& fault : layout::CheckDialogLayout(dialog.Get()))
        ADD_FAILURE() << std::string(fault.begin(), fault.end());
}

INSTANTIATE_TEST_SUITE_P(AllTemplates, DialogTemplateTest, testing::ValuesIn(Templates()),
                         [](const testing::TestParamInfo<CExpectedTemplate>& info) {
                             std::string name;
                             for (const wchar_t* c = info.param.caption; *c != 0; ++c)
                                 if (*c != L' ')
                                     name += static_cast<char>(*c);
                             return name;
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

// Registration reads the version block's values and the About page shows
// the version, the copyright and the comments.
TEST(VersionBlock, HoldsEveryValueAndOneVersionInBothForms)
{
    wchar_t path[MAX_PATH] = {};
    ASSERT_NE(GetModuleFileNameW(nullptr, path, MAX_PATH), 0u);
    DWORD ignored = 0;
    std::vector<BYTE> block(GetFileVersionInfoSizeW(path, &ignored));
    ASSERT_FALSE(block.empty());
    ASSERT_TRUE(GetFileVersionInfoW(path, 0, static_cast<DWORD>(block.size()), block.data()));
    auto value = [&](const wchar_t* name) {
        wchar_t* text = nullptr;
        UINT length = 0;
        const std::wstring key = std::wstring(L"\\StringFileInfo\\040904b0\\") + name;
        return VerQueryValueW(block.data(), key.c_str(), reinterpret_cast<void**>(&text),
                              &length) &&
                       text != nullptr
                   ? std::wstring(text)
                   : std::wstring();
    };
    for (const wchar_t* name :
         {L"Comments", L"CompanyName", L"FileDescription", L"InternalName", L"LegalCopyright",
          L"OriginalFilename", L"ProductName", L"ProductVersion"})
        EXPECT_NE(value(name), L"") << std::string(name, name + wcslen(name));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &length));
    const std::wstring numbers = std::to_wstring(HIWORD(fixed->dwFileVersionMS)) + L"." +
                                 std::to_wstring(LOWORD(fixed->dwFileVersionMS)) + L"." +
                                 std::to_wstring(HIWORD(fixed->dwFileVersionLS)) + L"." +
                                 std::to_wstring(LOWORD(fixed->dwFileVersionLS));
    EXPECT_EQ(value(L"FileVersion"), numbers);
}

} // namespace
