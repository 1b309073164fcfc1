// Exceptions thrown by the handlers of the dialog layer's windows, on real
// windows (Xvfb): a modeless dialog and a page of a modal property sheet.
// WM_CHARTOITEM is one of the messages whose answer the system's dialog code
// hands back as the dialog procedure gave it: TRUE after a CFatalError (the
// message counts as handled), FALSE after anything else (not handled), the
// handler's own answer when nothing was thrown. Everything that is made is
// still there and answers afterwards.
#include "resources/resource_ids.h"
#include "support/boundary_fixture.h"
#include "tools/dialog_driver/dialog_driver.h"
#include "ui/dialog.h"
#include "ui/property_sheet.h"

#include <gtest/gtest.h>

#include <iterator>
#include <vector>

using namespace cvas;
using namespace cvas::test;
using namespace cvas::tools;

namespace
{

constexpr INT_PTR kAnswered = 42;

INT_PTR Expected(Thrown thrown)
{
    return thrown == Thrown::Nothing ? kAnswered : thrown == Thrown::FatalError ? TRUE : FALSE;
}

// Throws from WM_INITDIALOG and WM_CHARTOITEM what it is told to.
template <class Base> class CThrowing : public Base
{
public:
    explicit CThrowing(int templateId) : Base(templateId) {}
    Thrown onInit = Thrown::Nothing;
    Thrown onMessage = Thrown::Nothing;

protected:
    bool OnInitDialog() override
    {
        Throw(onInit);
        return Base::OnInitDialog();
    }
    bool OnMessage(UINT message, WPARAM, LPARAM, INT_PTR& answer) override
    {
        if (message != WM_CHARTOITEM)
            return false;
        Throw(onMessage);
        answer = kAnswered;
        return true;
    }
};

using DialogProcedure = BoundaryTest;

TEST_F(DialogProcedure, DialogAnswersForItsHandlerWhateverItThrows)
{
    for (const Thrown thrown : kEveryThrown)
    {
        SCOPED_TRACE(Describe(thrown));
        CThrowing<CDialog> dialog(IDD_REPLACEMENT);
        dialog.onInit = thrown;
        ASSERT_TRUE(dialog.Create(nullptr)) << "made even though its start threw";
        ExpectNoted(thrown, L"dialog");
        dialog.onMessage = thrown;
        EXPECT_EQ(SendMessageW(dialog.Window(), WM_CHARTOITEM, 0, 0), Expected(thrown));
        ExpectNoted(thrown, L"dialog");
        dialog.onMessage = Thrown::Nothing;
        EXPECT_EQ(SendMessageW(dialog.Window(), WM_CHARTOITEM, 0, 0), kAnswered);
        dialog.Destroy();
        EXPECT_FALSE(IsWindow(dialog.Window()));
    }
}

TEST_F(DialogProcedure, PropertyPageAnswersForItsHandlerWhateverItThrows)
{
    CThrowing<CPropertyPage> page(IDD_OPTIONS_ABOUT);
    page.onInit = Thrown::Other;
    CPropertySheet sheet(L"Guarded sheet");
    sheet.AddPage(page);
    std::vector<INT_PTR> answers;
    CDialogDriver driver;
    driver.Then([&] {
        for (const Thrown thrown : kEveryThrown)
        {
            page.onMessage = thrown;
            answers.push_back(SendMessageW(page.Window(), WM_CHARTOITEM, 0, 0));
        }
    });
    driver.Then([] { SendMessageW(FindDialog(L"Guarded sheet"), PSM_PRESSBUTTON, PSBTN_OK, 0); });
    INT_PTR result = 0;
    EXPECT_TRUE(driver.Run([&] { result = sheet.DoModal(nullptr); }));
    EXPECT_EQ(result, IDOK) << "the sheet still closes as it should";
    ASSERT_EQ(answers.size(), std::size(kEveryThrown));
    for (std::size_t i = 0; i < answers.size(); ++i)
        EXPECT_EQ(answers[i], Expected(kEveryThrown[i])) << Describe(kEveryThrown[i]);
    std::vector<std::wstring> expected = {CaughtLine(Thrown::Other, L"property page")};
    for (const Thrown thrown : kEveryThrown)
        if (thrown != Thrown::Nothing)
            expected.push_back(CaughtLine(thrown, L"property page"));
    EXPECT_EQ(TakeStatusTexts(), expected);
}

} // namespace
