#include "common/captured_messages.h"
#include "support/message_box.h"

#include <gtest/gtest.h>

#include <windows.h>

using namespace cvas;
using cvas::test::SetCapturedAnswer;
using cvas::test::TakeCapturedMessages;

TEST(MessageBoxes, EachHasItsIconTheCaptionAndItsResult)
{
    TakeCapturedMessages();
    SetCapturedAnswer(IDYES);
    const std::wstring longText(3000, L'm');
    InfoMessage(L"info %d %ls", 1, longText.c_str());
    EXPECT_EQ(WarningMessage(L"TIMEOUT WHILE WAITING FOR THE BACKGROUND THREAD TO TERMINATE!"),
              IDYES);
    EXPECT_EQ(AskMessage(MB_YESNO, L"Are you sure you want to delete this %ls?", L"item"), IDYES);
    SetCapturedAnswer(IDOK);
    const auto boxes = TakeCapturedMessages();
    ASSERT_EQ(boxes.size(), 3u);
    EXPECT_EQ(boxes[0].text, L"info 1 " + std::wstring(1016, L'm')) << "cut to 1,023 characters";
    EXPECT_EQ(boxes[0].style, static_cast<unsigned>(MB_ICONINFORMATION));
    EXPECT_EQ(boxes[1].style, static_cast<unsigned>(MB_ICONEXCLAMATION));
    EXPECT_EQ(boxes[2].text, L"Are you sure you want to delete this item?");
    EXPECT_EQ(boxes[2].style, static_cast<unsigned>(MB_ICONQUESTION | MB_YESNO));
    for (const auto& box : boxes)
        EXPECT_EQ(box.caption, L"last.fm");
}

TEST(MessageBoxes, FatalShowsItsTextThenRaises)
{
    TakeCapturedMessages();
    try
    {
        FatalMessage(L"Trying to get a NULL pointer!");
        FAIL() << "FatalMessage returned";
    }
    catch (const CFatalError& error)
    {
        EXPECT_EQ(error.Text(), L"Trying to get a NULL pointer!");
    }
    const auto boxes = TakeCapturedMessages();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].style, static_cast<unsigned>(MB_ICONERROR));
}
