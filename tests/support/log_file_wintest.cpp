#include "common/captured_messages.h"
#include "common/temp_folder.h"
#include "settings/data_folder.h"
#include "settings/ini_file.h"
#include "settings/log_settings.h"
#include "support/logs.h"
#include "support/text_encoding.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include <chrono>
#include <future>
#include <memory>
#include <regex>
#include <thread>

using namespace cvas;
using cvas::test::CTempFolder;
using cvas::test::ReadFileBytes;
using cvas::test::TakeCapturedMessages;
using cvas::test::WriteFileBytes;

namespace
{

const std::string kMark = "\xEF\xBB\xBF";

// The file's lines after the mark, as written (CR LF ends each).
std::vector<std::string> FileLines(const std::wstring& path)
{
    const std::string bytes = ReadFileBytes(path);
    EXPECT_EQ(bytes.substr(0, 3), kMark);
    std::vector<std::string> lines;
    std::size_t start = 3;
    while (start < bytes.size())
    {
        const std::size_t end = bytes.find("\r\n", start);
        EXPECT_NE(end, std::string::npos) << "every line ends with CR LF";
        if (end == std::string::npos)
            break;
        lines.push_back(bytes.substr(start, end - start));
        start = end + 2;
    }
    return lines;
}

const std::regex kPrefix(R"(^(\d\d/\d\d/\d{4} \d\d:\d\d:\d\d\.\d{3}) \( *(\d+)\) > (.*)$)");

struct ParsedLine
{
    std::string time;
    unsigned number;
    std::string text;
};

ParsedLine Parse(const std::string& line)
{
    std::smatch m;
    EXPECT_TRUE(std::regex_match(line, m, kPrefix)) << line;
    if (m.empty())
        return {};
    EXPECT_EQ(line.find(" > "), 35u) << "the number takes nine places";
    return {m[1], static_cast<unsigned>(std::stoul(m[2])), m[3]};
}

class LogsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        OverrideSpecialFolders(root.Path() + L"Documents", root.Path() + L"AppData");
        TakeCapturedMessages();
    }
    void TearDown() override
    {
        CloseLogs();
        SetStatusLogLevel(1);
        OverrideSpecialFolders(L"", L"");
    }
    CIni WriteIni(const std::string& body)
    {
        WriteFileBytes(root.File(L"test.ini"), "[General]\r\n" + body);
        return CIni(root.File(L"test.ini"));
    }

    CTempFolder root;
};

} // namespace

TEST_F(LogsTest, NewestFirstWithMarkPrefixAndCrLf)
{
    CLogFile log(root.File(L"log.txt"), 10);
    log.Write(7, L"first %ls", L"message");
    log.Write(8, L"a\nb");
    const auto lines = FileLines(root.File(L"log.txt"));
    ASSERT_EQ(lines.size(), 3u);
    const ParsedLine a = Parse(lines[0]), b = Parse(lines[1]), first = Parse(lines[2]);
    EXPECT_EQ(a.text, "a");
    EXPECT_EQ(b.text, "b");
    EXPECT_EQ(a.number, 8u);
    EXPECT_EQ(lines[0].substr(0, 38), lines[1].substr(0, 38)) << "one prefix per message";
    EXPECT_EQ(first.text, "first message");
    EXPECT_EQ(first.number, 7u);
    EXPECT_EQ(lines[2].substr(24, 14), "(        7) > ");
}

TEST_F(LogsTest, LineLimitCountsNewLinesToo)
{
    WriteFileBytes(root.File(L"log.txt"), kMark + "L1\r\nL2\r\nL3\r\n");
    CLogFile log(root.File(L"log.txt"), 3);
    log.Write(1, L"new1\nnew2");
    const auto lines = FileLines(root.File(L"log.txt"));
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(Parse(lines[0]).text, "new1");
    EXPECT_EQ(Parse(lines[1]).text, "new2");
    EXPECT_EQ(lines[2], "L1");
}

TEST_F(LogsTest, OldLinesAreTrimmedAndAFileWithoutMarkLosesThreeCharacters)
{
    WriteFileBytes(root.File(L"log.txt"), "ABCDEF  \t\nblank next\r\n   \r\nend");
    CLogFile log(root.File(L"log.txt"), 10);
    log.Write(1, L"\n\n\n"); // nothing but line feeds adds no line
    const auto lines = FileLines(root.File(L"log.txt"));
    EXPECT_EQ(lines, (std::vector<std::string>{"DEF", "blank next", "", "end"}));
}

TEST_F(LogsTest, NonLatinTextIsWrittenAndReadBackAsUtf8)
{
    CLogFile log(root.File(L"log.txt"), 10);
    const std::wstring artist = L"\x5742\x672C\x9F8D\x4E00 \x0411\x0438-2 \x20AC";
    log.Write(1, L"Artist %ls played", artist.c_str());
    log.Write(2, L"next");
    const auto lines = FileLines(root.File(L"log.txt"));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(Parse(lines[1]).text, "Artist " + WideToUtf8(artist) + " played");
}

TEST_F(LogsTest, LongMessagesAreCutTo2047Characters)
{
    CLogFile log(root.File(L"log.txt"), 10);
    const std::wstring longText(5000, L'x');
    log.WriteText(1, longText);
    auto lines = FileLines(root.File(L"log.txt"));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(Parse(lines[0]).text, std::string(2047, 'x'));
    // Read back, the over-long line comes in two pieces of its own.
    log.WriteText(2, L"later");
    lines = FileLines(root.File(L"log.txt"));
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1].size(), 2047u);
    EXPECT_EQ(lines[2], std::string(38, 'x'));
}

TEST_F(LogsTest, OldLinesOfAnyLengthReadBackTheSameOnEveryWrite)
{
    for (const std::size_t length : {2046u, 2047u, 2048u, 4094u})
    {
        SCOPED_TRACE(length);
        const std::string line(length, 'x');
        WriteFileBytes(root.File(L"log.txt"), kMark + line + "\r\n\r\nend\r\n");
        CLogFile log(root.File(L"log.txt"), 20);
        log.Write(1, L"first");
        const auto once = FileLines(root.File(L"log.txt"));
        const std::size_t pieces = (length + 2046) / 2047;
        ASSERT_EQ(once.size(), 1 + pieces + 2);
        std::string joined;
        for (std::size_t i = 1; i <= pieces; ++i)
            joined += once[i];
        EXPECT_EQ(joined, line);
        EXPECT_EQ(once[pieces + 1], "") << "a blank line stays";

        log.Write(2, L"second");
        log.Write(3, L"third");
        const auto lines = FileLines(root.File(L"log.txt"));
        EXPECT_EQ(std::vector<std::string>(lines.begin() + 2, lines.end()), once);
    }
}

// A log writes from the lines it keeps in memory; the bytes are those a log
// that reads the file again before each write leaves, whatever the lines:
// cut into pieces, trimmed, with a lone CR or half a surrogate pair, beyond
// the limit.
TEST_F(LogsTest, AWriteFromMemoryLeavesTheBytesOfAWriteThatRereadsTheFile)
{
    const std::vector<std::wstring> messages = {L"plain",
                                                L"trailing blanks  \t",
                                                L"a\rb",
                                                L"CR at the end\r",
                                                std::wstring(2030, L'x') + L"   ",
                                                L"one\ntwo\n\nthree",
                                                L"half \xD800 a pair",
                                                L"caf\u00e9 \U0001F3B5",
                                                std::wstring(5000, L'y'),
                                                L"last"};
    CLogFile kept(root.File(L"kept.txt"), 7);
    for (std::size_t i = 0; i < messages.size(); ++i)
    {
        kept.WriteText(static_cast<unsigned>(i), messages[i]);
        CLogFile rereading(root.File(L"reread.txt"), 7); // new each time: reads the file
        rereading.WriteText(static_cast<unsigned>(i), messages[i]);
        const std::regex time(R"(\d\d/\d\d/\d{4} \d\d:\d\d:\d\d\.\d{3})");
        ASSERT_EQ(std::regex_replace(ReadFileBytes(root.File(L"kept.txt")), time, "T"),
                  std::regex_replace(ReadFileBytes(root.File(L"reread.txt")), time, "T"))
            << "after message " << i;
        EXPECT_EQ(kept.Lines(), CLogFile(root.File(L"kept.txt"), 7).Lines())
            << "the lines in memory are those the file gives";
    }
}

// A file that someone else wrote since the log's last write is read again.
TEST_F(LogsTest, AFileChangedBetweenWritesIsReadAgain)
{
    CLogFile log(root.File(L"log.txt"), 10);
    log.Write(1, L"mine");
    WriteFileBytes(root.File(L"log.txt"), kMark + "someone else's\r\n");
    log.Write(2, L"mine again");
    auto lines = FileLines(root.File(L"log.txt"));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(Parse(lines[0]).text, "mine again");
    EXPECT_EQ(lines[1], "someone else's");

    DeleteFileW(root.File(L"log.txt").c_str());
    log.Write(3, L"alone");
    EXPECT_EQ(FileLines(root.File(L"log.txt")).size(), 1u) << "a removed file starts empty";
}

TEST_F(LogsTest, AForeignFileIsReadInPiecesWhateverItsLines)
{
    // 3 MB without a line feed: the pieces within the limit are kept.
    WriteFileBytes(root.File(L"log.txt"), kMark + std::string(3'000'000, 'z'));
    CLogFile log(root.File(L"log.txt"), 3);
    log.Write(1, L"new");
    auto lines = FileLines(root.File(L"log.txt"));
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1], std::string(2047, 'z'));
    EXPECT_EQ(lines[2], std::string(2047, 'z'));

    // Reads cut the sequences of a long line of three-byte characters; a
    // piece is cut before a surrogate pair that would not fit.
    std::string euros;
    for (int i = 0; i < 1500; ++i)
        euros += "\xE2\x82\xAC";
    const std::string smile = "\xF0\x9F\x98\x80";
    WriteFileBytes(root.File(L"log.txt"),
                   kMark + euros + "\r\n" + std::string(2046, 'a') + smile + "b\r\n");
    CLogFile wide(root.File(L"log.txt"), 10);
    wide.Write(2, L"new");
    lines = FileLines(root.File(L"log.txt"));
    EXPECT_EQ(lines,
              (std::vector<std::string>{lines[0], euros, std::string(2046, 'a'), smile + "b"}));
}

TEST_F(LogsTest, CreateLogFileTakesItsNameAndLimitFromTheSettings)
{
    CountedHandle<CLogFile> log;
    CreateLogFile(WriteIni("StatusLogLimit=1\r\n"), L"General", L"StatusLogFilename",
                  L"StatusLogLimit", L"StatusLog.txt", log);
    ASSERT_TRUE(log);
    EXPECT_EQ(log->FileName(), DataFolder() + L"StatusLog.txt");
    EXPECT_EQ(log->LineLimit(), 1024);

    CreateLogFile(WriteIni("StatusLogFilename=relative.txt\r\nStatusLogLimit=0\r\n"), L"General",
                  L"StatusLogFilename", L"StatusLogLimit", L"StatusLog.txt", log);
    ASSERT_TRUE(log);
    EXPECT_EQ(log->FileName(), L"relative.txt");
    EXPECT_EQ(log->LineLimit(), 1024);

    CreateLogFile(WriteIni("FailedLogLimit=2\r\n"), L"General", L"FailedLogFilename",
                  L"FailedLogLimit", L"", log);
    EXPECT_FALSE(log) << "no name and no default makes no log";
}

TEST_F(LogsTest, StatusLevelsAndTheRunningNumber)
{
    OpenLogs(WriteIni("StatusLogLevel=0\r\n"));
    ASSERT_TRUE(StatusLogFile());
    ASSERT_TRUE(FailedLogFile());
    EXPECT_EQ(FailedLogFile()->FileName(), DataFolder() + L"FailedLog.txt");
    const unsigned before = StatusLineCounter();
    StatusLog(1, L"detail that is dropped");
    EXPECT_EQ(StatusLineCounter(), before) << "a dropped message does not count";
    StatusLog(0, L"kept %d", 5);
    EXPECT_EQ(StatusLineCounter(), before + 1);

    auto lines = FileLines(DataFolder() + L"StatusLog.txt");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(Parse(lines[0]).text, "kept 5");
    EXPECT_EQ(Parse(lines[0]).number, before + 1);
    EXPECT_EQ(Parse(lines[1]).text, "Initialising AS plugin");
    EXPECT_EQ(Parse(lines[1]).number, before);

    // A negative level reads as a huge one: everything is written.
    CloseLogs();
    OpenLogs(WriteIni("StatusLogLevel=-1\r\n"));
    EXPECT_EQ(StatusLogLevel(), 0xFFFFFFFFu);
    StatusLog(1000, L"deep detail");
    lines = FileLines(DataFolder() + L"StatusLog.txt");
    EXPECT_EQ(Parse(lines[0]).text, "deep detail");
    EXPECT_TRUE(TakeCapturedMessages().empty());
}

TEST_F(LogsTest, MessagesWithoutALogGoToAnInformationBox)
{
    CloseLogs();
    const unsigned before = StatusLineCounter();
    StatusLog(0, L"no log %ls", L"here");
    FailedLog(1, L"%ls", L"FAILED nope");
    EXPECT_EQ(StatusLineCounter(), before);
    const auto boxes = TakeCapturedMessages();
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[0].text, L"no log here");
    EXPECT_EQ(boxes[0].caption, L"last.fm");
    EXPECT_EQ(boxes[0].style, static_cast<unsigned>(MB_ICONINFORMATION));
    EXPECT_EQ(boxes[1].text, L"FAILED nope");
}

TEST_F(LogsTest, ARefusedSubmissionPutsTheRequestAboveTheAnswer)
{
    OpenLogs(WriteIni(""));
    FailedLog(1, L"%ls", L"FAILED Plugin bug: Not all request variables are set");
    FailedLog(2, L" ... %ls", L"u=someone&s=abc&a[0]=Artist");
    const auto lines = FileLines(DataFolder() + L"FailedLog.txt");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(Parse(lines[0]).number, 2u);
    EXPECT_EQ(Parse(lines[0]).text, " ... u=someone&s=abc&a[0]=Artist");
    EXPECT_EQ(Parse(lines[1]).number, 1u);
}

TEST_F(LogsTest, ConcurrentWritersLoseNothingAndNumbersFollowTheFile)
{
    OpenLogs(WriteIni("StatusLogLimit=500\r\n"));
    constexpr int kPerThread = 40;
    auto writer = [](int id) {
        for (int i = 0; i < kPerThread; ++i)
            StatusLog(0, L"thread %d message %d", id, i);
    };
    std::thread a(writer, 1), b(writer, 2);
    a.join();
    b.join();
    const auto lines = FileLines(DataFolder() + L"StatusLog.txt");
    ASSERT_EQ(lines.size(), 2u * kPerThread + 1);
    for (std::size_t i = 0; i + 1 < lines.size(); ++i)
        EXPECT_EQ(Parse(lines[i]).number, Parse(lines[i + 1]).number + 1);
}

namespace
{
std::vector<std::pair<UINT, std::wstring>> g_viewEvents;

LRESULT CALLBACK RecordingView(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == LVM_DELETEALLITEMS)
        g_viewEvents.push_back({message, L"clear"});
    else if (message == kViewRefillMessage)
        g_viewEvents.push_back({message, wParam ? L"end" : L"begin"});
    else if (message == kViewAddLineMessage)
    {
        std::unique_ptr<std::wstring> line(reinterpret_cast<std::wstring*>(lParam));
        const std::size_t text = line->find(L" > ") == 35 ? 38 : 0;
        g_viewEvents.push_back({message, std::to_wstring(wParam) + L":" + line->substr(text)});
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

HWND CreateRecordingView()
{
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = RecordingView;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = L"CvasLogViewTest";
    RegisterClassW(&windowClass); // fails harmlessly when already there
    return CreateWindowW(L"CvasLogViewTest", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                         GetModuleHandleW(nullptr), nullptr);
}

void DispatchWaitingMessages(HWND view)
{
    MSG message;
    for (int i = 0; i < 100 && PeekMessageW(&message, view, 0, 0, PM_REMOVE); ++i)
        DispatchMessageW(&message);
}
} // namespace

TEST_F(LogsTest, AViewWindowIsFilledOnceAndThenGetsEachNewFirstLine)
{
    HWND view = CreateRecordingView();
    ASSERT_NE(view, nullptr);

    WriteFileBytes(root.File(L"log.txt"), kMark + "old\r\n");
    CLogFile log(root.File(L"log.txt"), 5);
    log.SetViewWindow(view);
    log.Write(1, L"one");
    log.Write(2, L"two\nthree");
    g_viewEvents.clear();
    // The clear was sent at once; the rest waits in the queue.
    DispatchWaitingMessages(view);
    DestroyWindow(view);

    const std::vector<std::pair<UINT, std::wstring>> expected = {{kViewRefillMessage, L"begin"},
                                                                 {kViewAddLineMessage, L"0:one"},
                                                                 {kViewAddLineMessage, L"0:old"},
                                                                 {kViewRefillMessage, L"end"},
                                                                 {kViewAddLineMessage, L"5:two"}};
    EXPECT_EQ(g_viewEvents, expected);
}

TEST_F(LogsTest, AWriteDoesNotWaitForTheThreadOfItsView)
{
    std::promise<HWND> created;
    std::promise<void> written;
    std::future<void> writeReturned = written.get_future();
    bool waitedInVain = false;
    std::thread viewThread([&] {
        HWND view = CreateRecordingView();
        created.set_value(view);
        if (view == nullptr)
            return;
        // Busy until the write returns: this thread takes no messages.
        waitedInVain =
            writeReturned.wait_for(std::chrono::seconds(30)) != std::future_status::ready;
        DispatchWaitingMessages(view);
        DestroyWindow(view);
    });
    HWND view = created.get_future().get();
    if (view != nullptr)
    {
        WriteFileBytes(root.File(L"log.txt"), kMark + "old\r\n");
        CLogFile log(root.File(L"log.txt"), 5);
        log.SetViewWindow(view);
        g_viewEvents.clear();
        log.Write(1, L"one");
    }
    written.set_value();
    viewThread.join();
    ASSERT_NE(view, nullptr);
    EXPECT_FALSE(waitedInVain) << "the write waited for the view's thread";

    const std::vector<std::pair<UINT, std::wstring>> expected = {{LVM_DELETEALLITEMS, L"clear"},
                                                                 {kViewRefillMessage, L"begin"},
                                                                 {kViewAddLineMessage, L"0:one"},
                                                                 {kViewAddLineMessage, L"0:old"},
                                                                 {kViewRefillMessage, L"end"}};
    EXPECT_EQ(g_viewEvents, expected) << "the clear comes before the refill";
}
