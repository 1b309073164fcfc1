#include "tools/player/scenario.h"

#include <cerrno>
#include <cmath>
#include <cwchar>
#include <map>
#include <optional>

#include "support/text_encoding.h"

namespace cvas::player
{

namespace
{

constexpr unsigned kWmCommand = 0x0111;
constexpr unsigned kWmHotKey = 0x0312;
constexpr unsigned kWmUser = 0x0400;
constexpr unsigned kWmApp = 0x8000;

class CLineError
{
public:
    explicit CLineError(std::wstring what) : m_what(std::move(what)) {}
    const std::wstring& What() const { return m_what; }

private:
    std::wstring m_what;
};

// Blank-separated words; double quotes keep blanks in a word and "" inside
// them is one quote character.
std::vector<std::wstring> SplitWords(std::wstring_view line)
{
    std::vector<std::wstring> words;
    std::size_t at = 0;
    while (true)
    {
        while (at < line.size() && (line[at] == L' ' || line[at] == L'\t'))
            ++at;
        if (at >= line.size())
            return words;
        std::wstring word;
        bool quoted = false;
        for (; at < line.size() && (quoted || (line[at] != L' ' && line[at] != L'\t')); ++at)
        {
            if (line[at] != L'"')
                word += line[at];
            else if (quoted && at + 1 < line.size() && line[at + 1] == L'"')
                word += line[++at];
            else
                quoted = !quoted;
        }
        if (quoted)
            throw CLineError(L"unclosed quote");
        words.push_back(std::move(word));
    }
}

long long ParseInteger(const std::wstring& text, long long low, long long high, const wchar_t* what)
{
    // Decimal, or hexadecimal after "0x"; never octal, so "010" is ten.
    const std::size_t digits = text.rfind(L'-', 0) == 0 ? 1 : 0;
    const bool hex = text.compare(digits, 2, L"0x") == 0 || text.compare(digits, 2, L"0X") == 0;
    wchar_t* end = nullptr;
    errno = 0;
    const long long value = std::wcstoll(text.c_str(), &end, hex ? 16 : 10);
    if (text.empty() || *end != L'\0' || errno != 0 || value < low || value > high)
        throw CLineError(std::wstring(what) + L" must be a whole number from " +
                         std::to_wstring(low) + L" to " + std::to_wstring(high) + L": " + text);
    return value;
}

double ParseDecimal(const std::wstring& text, double high, const wchar_t* what)
{
    wchar_t* end = nullptr;
    const double value = std::wcstod(text.c_str(), &end);
    if (text.empty() || *end != L'\0' || !std::isfinite(value) || value < 0 || value > high)
        throw CLineError(std::wstring(what) + L" must be a number from 0 to " +
                         std::to_wstring(static_cast<long long>(high)) + L": " + text);
    return value;
}

unsigned ParseMessage(const std::wstring& text)
{
    const auto offset = [&](std::size_t prefixLength) {
        return text.size() == prefixLength
                   ? 0
                   : ParseInteger(text.substr(prefixLength + 1), 0, 0x3FFF, L"message offset");
    };
    if (text == L"WM_COMMAND")
        return kWmCommand;
    if (text == L"WM_HOTKEY")
        return kWmHotKey;
    if (text.rfind(L"WM_USER", 0) == 0 && (text.size() == 7 || text[7] == L'+'))
        return kWmUser + static_cast<unsigned>(offset(7));
    if (text.rfind(L"WM_APP", 0) == 0 && (text.size() == 6 || text[6] == L'+'))
        return kWmApp + static_cast<unsigned>(offset(6));
    return static_cast<unsigned>(ParseInteger(text, 1, 0xFFFF, L"message"));
}

class CScenarioReader
{
public:
    explicit CScenarioReader(CScenario& scenario) : m_scenario(scenario) {}

    void ReadLine(int number, std::wstring_view line)
    {
        const std::vector<std::wstring> words = SplitWords(line);
        if (words.empty() || words[0][0] == L'#')
            return;
        const std::wstring& keyword = words[0];
        if (keyword == L"file")
            return ReadFile(words);
        if (keyword == L"playlist")
        {
            for (std::size_t i = 1; i < words.size(); ++i)
                m_playlistKeys.emplace_back(
                    number, static_cast<int>(ParseInteger(words[i], INT32_MIN, INT32_MAX, L"key")));
            return;
        }
        CStep step;
        step.line = number;
        step.text = std::wstring(line.substr(line.find_first_not_of(L" \t")));
        while (!step.text.empty() && (step.text.back() == L' ' || step.text.back() == L'\t'))
            step.text.pop_back();
        ReadStep(keyword, words, step);
        m_scenario.steps.push_back(std::move(step));
    }

    // Checks that need the whole text: playlist keys and play indexes.
    void Finish()
    {
        for (const auto& [line, key] : m_playlistKeys)
        {
            const auto found = m_keys.find(key);
            if (found == m_keys.end())
                throw CLineError(L"line " + std::to_wstring(line) + L": no file has the key " +
                                 std::to_wstring(key));
            m_scenario.playlist.push_back(found->second);
        }
        for (const CStep& step : m_scenario.steps)
        {
            if (step.kind == EStep::Play && step.index >= m_scenario.playlist.size())
                throw CLineError(L"line " + std::to_wstring(step.line) + L": the playlist has " +
                                 std::to_wstring(m_scenario.playlist.size()) + L" entries");
        }
    }

private:
    void ReadFile(const std::vector<std::wstring>& words)
    {
        if (words.size() < 2)
            throw CLineError(L"file needs a key");
        CLibraryFile file;
        file.key = static_cast<int>(ParseInteger(words[1], INT32_MIN, INT32_MAX, L"key"));
        bool hasIdentity = false, hasFileName = false, hasDuration = false;
        for (std::size_t i = 2; i < words.size(); ++i)
        {
            const std::size_t equals = words[i].find(L'=');
            if (equals == std::wstring::npos || equals == 0)
                throw CLineError(L"expected FIELD=VALUE: " + words[i]);
            const std::wstring name = words[i].substr(0, equals);
            const std::wstring value = words[i].substr(equals + 1);
            if (name == L"identity")
            {
                file.identity = value;
                hasIdentity = true;
            }
            else if (name == L"filename")
            {
                file.fileName = value;
                hasFileName = true;
            }
            else if (name == L"duration")
            {
                file.duration =
                    static_cast<int>(ParseInteger(value, INT32_MIN, INT32_MAX, L"duration"));
                hasDuration = true;
            }
            else if (name == L"further")
            {
                file.further = value;
            }
            else if (FieldValue(file, name))
            {
                throw CLineError(L"field given twice or built in: " + name);
            }
            else
            {
                file.fields.emplace_back(Upper(name), value);
            }
        }
        if (!hasFileName || !hasDuration)
            throw CLineError(L"file needs filename= and duration=");
        if (!hasIdentity)
            file.identity = file.fileName;
        if (!m_keys.emplace(file.key, m_scenario.library.size()).second)
            throw CLineError(L"two files have the key " + std::to_wstring(file.key));
        m_scenario.library.push_back(std::move(file));
    }

    static std::wstring Upper(std::wstring text)
    {
        for (wchar_t& c : text)
        {
            if (c >= L'a' && c <= L'z')
                c = static_cast<wchar_t>(c - 32);
        }
        return text;
    }

    static void ReadStep(const std::wstring& keyword, const std::vector<std::wstring>& words,
                         CStep& step)
    {
        const auto count = [&](std::size_t least, std::size_t most) {
            if (words.size() - 1 < least || words.size() - 1 > most)
                throw CLineError(keyword + L" takes " + std::to_wstring(least) +
                                 (least == most ? L"" : L" to " + std::to_wstring(most)) +
                                 L" arguments");
        };
        const auto seconds = [&](std::size_t at) {
            return words.size() > at ? ParseDecimal(words[at], kMaxStepSeconds, L"seconds") : 0.0;
        };
        static const std::map<std::wstring, EStep> kTimed = {
            {L"pause", EStep::Pause}, {L"resume", EStep::Resume}, {L"stop", EStep::Stop}};
        if (keyword == L"play")
        {
            count(1, 2);
            step.kind = EStep::Play;
            step.index = static_cast<std::size_t>(ParseInteger(words[1], 0, INT32_MAX, L"index"));
            step.seconds = seconds(2);
        }
        else if (const auto timed = kTimed.find(keyword); timed != kTimed.end())
        {
            count(0, 1);
            step.kind = timed->second;
            step.seconds = seconds(1);
        }
        else if (keyword == L"run" || keyword == L"seek")
        {
            count(1, 1);
            step.kind = keyword == L"run" ? EStep::Run : EStep::Seek;
            step.seconds = seconds(1);
        }
        else if (keyword == L"speed")
        {
            count(1, 1);
            step.kind = EStep::Speed;
            step.speed = ParseDecimal(words[1], kMaxSpeed, L"speed");
        }
        else if (keyword == L"wait")
        {
            count(1, 1);
            step.kind = EStep::Wait;
            step.milliseconds = static_cast<unsigned>(
                ParseInteger(words[1], 0, kMaxWaitMilliseconds, L"milliseconds"));
        }
        else if (keyword == L"await" && words.size() > 1 && words[1] == L"file")
        {
            count(4, 4);
            step.kind = EStep::AwaitFile;
            step.times = 1;
            step.path = words[2];
            step.needle = WideToUtf8(words[3]);
            if (step.path.empty() || step.needle.empty())
                throw CLineError(L"await file needs a path and a text");
            step.milliseconds = static_cast<unsigned>(
                ParseInteger(words[4], 0, kMaxWaitMilliseconds, L"milliseconds"));
        }
        else if (keyword == L"await")
        {
            count(3, 3);
            step.kind = EStep::Await;
            step.message = words[1] == L"query" ? 0 : ParseMessage(words[1]);
            step.times = static_cast<unsigned>(ParseInteger(words[2], 1, 1000000, L"count"));
            step.milliseconds = static_cast<unsigned>(
                ParseInteger(words[3], 0, kMaxWaitMilliseconds, L"milliseconds"));
        }
        else if (keyword == L"polls")
        {
            count(2, 2);
            step.kind = EStep::Polls;
            step.times = static_cast<unsigned>(ParseInteger(words[1], 1, 1000000, L"count"));
            step.milliseconds = static_cast<unsigned>(
                ParseInteger(words[2], 0, kMaxWaitMilliseconds, L"milliseconds"));
        }
        else if (keyword == L"send" || keyword == L"post")
        {
            count(1, 3);
            step.kind = keyword == L"send" ? EStep::Send : EStep::Post;
            step.message = ParseMessage(words[1]);
            if (words.size() > 2)
                step.wParam = ParseInteger(words[2], INT64_MIN, INT64_MAX, L"wParam");
            if (words.size() > 3)
                step.lParam = ParseInteger(words[3], INT64_MIN, INT64_MAX, L"lParam");
        }
        else if (keyword == L"end")
        {
            count(0, 0);
            step.kind = EStep::End;
        }
        else
        {
            throw CLineError(L"unknown word: " + keyword);
        }
    }

    CScenario& m_scenario;
    std::map<int, std::size_t> m_keys;
    std::vector<std::pair<int, int>> m_playlistKeys; // line, key
};

} // namespace

bool ParseScenario(std::string_view utf8, CScenario& scenario, std::wstring& error)
{
    if (utf8.substr(0, 3) == "\xEF\xBB\xBF")
        utf8.remove_prefix(3);
    const std::wstring text = Utf8ToWide(utf8);
    scenario = CScenario();
    CScenarioReader reader(scenario);
    int number = 0;
    try
    {
        for (std::size_t at = 0; at <= text.size();)
        {
            std::size_t end = text.find(L'\n', at);
            if (end == std::wstring::npos)
                end = text.size();
            std::wstring_view line(text.data() + at, end - at);
            if (!line.empty() && line.back() == L'\r')
                line.remove_suffix(1);
            ++number;
            reader.ReadLine(number, line);
            at = end + 1;
        }
    }
    catch (const CLineError& fault)
    {
        error = L"line " + std::to_wstring(number) + L": " + fault.What();
        return false;
    }
    try
    {
        reader.Finish();
    }
    catch (const CLineError& fault)
    {
        error = fault.What();
        return false;
    }
    return true;
}

} // namespace cvas::player
