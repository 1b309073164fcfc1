#pragma once
// Finds the innermost open element of a given name without looking at every
// open element, so that end tags that match none (or one far out) cost the
// same in a deeply nested document as in a flat one. Kept only once the
// parser has met an end tag that does not close the innermost element:
// well-formed documents never pay for it.

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace cvas
{

class CXmlOpenNames
{
public:
    bool Active() const { return m_active; }
    // Starts keeping the index; position 0 is the document and has no name.
    void Activate(bool ignoreCase);
    void Reset();

    // The element at the next position (1, 2, …) was opened with this name.
    void Push(std::wstring_view name);
    // Positions count and above were closed.
    void PopTo(std::size_t count);
    // The innermost open position with this name; 0 when none has it.
    std::size_t Innermost(std::wstring_view name);

private:
    using Positions = std::vector<std::uint32_t>;

    bool m_active = false;
    bool m_ignoreCase = false;
    std::unordered_map<std::wstring, Positions> m_byName;
    // The positions list of each open position's name, by position.
    std::vector<Positions*> m_lists;
    std::wstring m_key;
};

} // namespace cvas
