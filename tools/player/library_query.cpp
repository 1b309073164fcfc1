#include "tools/player/library_query.h"

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <cwctype>
#include <optional>

namespace cvas::player
{

namespace
{

struct CTerm
{
    std::wstring field;
    std::vector<std::wstring> values;
};

struct CParsedQuery
{
    std::vector<CTerm> terms;
    int order = 0; // 0 library order, 1 ascending key, -1 descending key
};

bool IsBlank(wchar_t c)
{
    return c == L' ' || c == L'\t';
}

bool EndsTerm(std::wstring_view text, std::size_t at)
{
    return at >= text.size() || IsBlank(text[at]);
}

class CQueryParser
{
public:
    explicit CQueryParser(std::wstring_view text) : m_text(text) {}

    std::optional<CParsedQuery> Parse(std::wstring& error)
    {
        CParsedQuery query;
        const auto fail = [&](const wchar_t* what, std::size_t at) {
            Fail(error, what, at);
            return std::optional<CParsedQuery>();
        };
        const std::size_t lineBreak = m_text.find_first_of(L"\r\n");
        if (lineBreak != std::wstring_view::npos)
            return fail(L"line break", lineBreak);
        for (SkipBlanks(); m_at < m_text.size(); SkipBlanks())
        {
            if (m_text[m_at] == L'~')
            {
                const std::size_t start = m_at;
                while (!EndsTerm(m_text, m_at))
                    ++m_at;
                const std::wstring_view option = m_text.substr(start, m_at - start);
                if (option == L"~d=a")
                    query.order = 1;
                else if (option == L"~d=d")
                    query.order = -1;
                else
                    return fail(L"unknown option", start);
                continue;
            }
            CTerm term;
            if (!ParseField(term.field, error))
                return std::nullopt;
            for (;;)
            {
                std::wstring value;
                if (!ParseValue(value, error))
                    return std::nullopt;
                term.values.push_back(std::move(value));
                if (m_at >= m_text.size() || m_text[m_at] != L',')
                    break;
                ++m_at;
            }
            if (!EndsTerm(m_text, m_at))
                return fail(L"unexpected character", m_at);
            query.terms.push_back(std::move(term));
        }
        return query;
    }

private:
    static bool Fail(std::wstring& error, const wchar_t* what, std::size_t at)
    {
        error = std::wstring(what) + L" at character " + std::to_wstring(at + 1);
        return false;
    }

    void SkipBlanks()
    {
        while (m_at < m_text.size() && IsBlank(m_text[m_at]))
            ++m_at;
    }

    bool ParseField(std::wstring& field, std::wstring& error)
    {
        const std::size_t start = m_at;
        if (m_text[m_at] == L'[')
        {
            const std::size_t close = m_text.find(L']', m_at);
            if (close == std::wstring_view::npos)
                return Fail(error, L"unclosed field name", start);
            field = m_text.substr(m_at + 1, close - m_at - 1);
            m_at = close + 1;
        }
        else
        {
            while (m_at < m_text.size() && (std::iswalnum(m_text[m_at]) || m_text[m_at] == L'_'))
                ++m_at;
            field = m_text.substr(start, m_at - start);
        }
        if (field.empty() || m_at >= m_text.size() || m_text[m_at] != L'=')
            return Fail(error, L"expected FIELD=", start);
        ++m_at;
        return true;
    }

    bool ParseValue(std::wstring& value, std::wstring& error)
    {
        const std::size_t start = m_at;
        if (m_at < m_text.size() && m_text[m_at] == L'[')
        {
            for (std::size_t close = m_text.find(L']', m_at); close != std::wstring_view::npos;
                 close = m_text.find(L']', close + 1))
            {
                if (EndsTerm(m_text, close + 1) || m_text[close + 1] == L',')
                {
                    value = m_text.substr(start + 1, close - start - 1);
                    m_at = close + 1;
                    return true;
                }
            }
            return Fail(error, L"unclosed value", start);
        }
        while (!EndsTerm(m_text, m_at) && m_text[m_at] != L',' && m_text[m_at] != L'[' &&
               m_text[m_at] != L']')
            ++m_at;
        if (m_at == start)
            return Fail(error, L"expected a value", start);
        value = m_text.substr(start, m_at - start);
        return true;
    }

    std::wstring_view m_text;
    std::size_t m_at = 0;
};

std::optional<long long> WholeNumber(const std::wstring& text)
{
    if (text.empty() || IsBlank(text[0]))
        return std::nullopt;
    wchar_t* end = nullptr;
    errno = 0;
    const long long number = std::wcstoll(text.c_str(), &end, 10);
    if (errno != 0 || *end != L'\0')
        return std::nullopt;
    return number;
}

bool ValueMatches(const CLibraryFile& file, const std::wstring& field, const std::wstring& value)
{
    if (EqualsIgnoringCase(field, L"KEY") || EqualsIgnoringCase(field, L"DURATION"))
    {
        const auto number = WholeNumber(value);
        return number && *number == (EqualsIgnoringCase(field, L"KEY") ? file.key : file.duration);
    }
    return EqualsIgnoringCase(FieldValue(file, field).value_or(std::wstring()), value);
}

bool Matches(const CLibraryFile& file, const CTerm& term)
{
    return std::any_of(term.values.begin(), term.values.end(), [&](const std::wstring& value) {
        return ValueMatches(file, term.field, value);
    });
}

} // namespace

CQueryResult RunQuery(const std::vector<CLibraryFile>& library, std::wstring_view query)
{
    CQueryResult result;
    const auto parsed = CQueryParser(query).Parse(result.error);
    if (!parsed)
        return result;
    for (std::size_t i = 0; i < library.size(); ++i)
    {
        if (std::all_of(parsed->terms.begin(), parsed->terms.end(),
                        [&](const CTerm& term) { return Matches(library[i], term); }))
            result.matches.push_back(i);
    }
    if (parsed->order != 0)
    {
        std::stable_sort(result.matches.begin(), result.matches.end(),
                         [&](std::size_t a, std::size_t b) {
                             return parsed->order > 0 ? library[a].key < library[b].key
                                                      : library[a].key > library[b].key;
                         });
    }
    return result;
}

} // namespace cvas::player
