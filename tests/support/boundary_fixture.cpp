#include "support/boundary_fixture.h"

#include "common/captured_messages.h"
#include "support/log_file.h"
#include "support/logs.h"
#include "support/message_box.h"

#include <windows.h>

#include <memory>
#include <new>
#include <stdexcept>

namespace cvas::test
{

const char* Describe(Thrown thrown)
{
    switch (thrown)
    {
    case Thrown::Nothing:
        return "nothing thrown";
    case Thrown::FatalError:
        return "CFatalError";
    case Thrown::OutOfMemory:
        return "std::bad_alloc";
    case Thrown::Other:
        return "std::runtime_error";
    }
    return "?";
}

void Throw(Thrown thrown)
{
    switch (thrown)
    {
    case Thrown::Nothing:
        return;
    case Thrown::FatalError:
        FatalMessage(L"Lost the %ls!", L"player");
    case Thrown::OutOfMemory:
        throw std::bad_alloc();
    case Thrown::Other:
        throw std::runtime_error("broken");
    }
}

std::wstring CaughtLine(Thrown thrown, const std::wstring& boundary)
{
    switch (thrown)
    {
    case Thrown::Nothing:
        return L"";
    case Thrown::FatalError:
        return L"Stopped in the " + boundary + L": Lost the player!";
    case Thrown::OutOfMemory:
        return L"Out of memory in the " + boundary;
    case Thrown::Other:
        return L"Error in the " + boundary + L": broken";
    }
    return L"?";
}

void BoundaryTest::SetUp()
{
    SetStatusLogFile(std::make_shared<CLogFile>(folder.File(L"StatusLog.txt"), 1000));
    SetStatusLogLevel(0); // the guards write at level 0 whatever the level
    TakeCapturedMessages();
}

void BoundaryTest::TearDown()
{
    CloseLogs();
    SetStatusLogLevel(1);
    TakeCapturedMessages();
}

std::vector<std::wstring> BoundaryTest::TakeStatusTexts()
{
    std::vector<std::wstring> texts;
    const CountedHandle<CLogFile> log = StatusLogFile();
    if (!log)
        return texts;
    const std::vector<std::wstring> lines = log->Lines(); // newest first
    for (std::size_t i = lines.size() - m_linesSeen; i-- > 0;)
    {
        const std::size_t text = lines[i].find(L" > ");
        texts.push_back(text == std::wstring::npos ? lines[i] : lines[i].substr(text + 3));
    }
    m_linesSeen = lines.size();
    return texts;
}

void BoundaryTest::ExpectNoted(Thrown thrown, const std::wstring& boundary)
{
    const std::wstring line = CaughtLine(thrown, boundary);
    EXPECT_EQ(TakeStatusTexts(),
              line.empty() ? std::vector<std::wstring>{} : std::vector<std::wstring>{line});
    const std::vector<CapturedMessage> boxes = TakeCapturedMessages();
    if (thrown != Thrown::FatalError)
    {
        EXPECT_TRUE(boxes.empty()) << "a guard shows no box";
        return;
    }
    ASSERT_EQ(boxes.size(), 1u) << "FatalMessage's box, and no other";
    EXPECT_EQ(boxes[0].text, L"Lost the player!");
    EXPECT_EQ(boxes[0].style, static_cast<unsigned>(MB_ICONERROR));
}

} // namespace cvas::test
