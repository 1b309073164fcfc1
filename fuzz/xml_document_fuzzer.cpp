// Feeds arbitrary text to CXmlDocument::SetDoc, then visits every element
// with every navigation call, reads data and attributes, adds elements and
// checks that what was added reads back.
#include "support/text_encoding.h"
#include "xml/xml_document.h"
#include "xml/xml_tree_builder.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

using namespace cvas;

namespace
{

constexpr int kMaxDepth = 64;

void Check(bool condition)
{
    if (!condition)
        std::abort();
}

// Visits the elements at the current level and, depth first, below them.
void Walk(CXmlDocument& document, int depth)
{
    while (document.FindElem())
    {
        const std::wstring name = document.GetTagName();
        (void)document.GetData();
        (void)document.GetAttrib(L"id");
        (void)document.GetAttrib(name);
        if (depth < kMaxDepth && document.IntoElem())
        {
            Walk(document, depth + 1);
            Check(document.OutOfElem());
        }
        // Paths of every kind among the children of this element.
        (void)document.FindChildElem(name);
        (void)document.FindChildElem(L"*[2]");
        (void)document.FindChildElem(L"[@id]");
        (void)document.FindChildElem(name + L"[" + name + L"]/*");
        (void)document.FindChildElem();
    }
}

void DumpCurrent(CXmlDocument& document, int depth, std::wstring& out);

// The elements after the current position and below them as text: names,
// data and nesting, the way navigation sees them.
void Dump(CXmlDocument& document, int depth, std::wstring& out)
{
    while (document.FindElem())
        DumpCurrent(document, depth, out);
}

void DumpCurrent(CXmlDocument& document, int depth, std::wstring& out)
{
    out += document.GetTagName();
    out += L'(';
    out += document.GetData();
    out += L')';
    if (depth < kMaxDepth && document.IntoElem())
    {
        out += L'{';
        Dump(document, depth + 1, out);
        out += L'}';
        Check(document.OutOfElem());
    }
}

// Takes a piece of the input for a name or a value.
std::wstring_view Slice(std::wstring_view text, std::size_t& at, std::size_t length)
{
    const std::size_t start = std::min(at, text.size());
    const std::wstring_view piece = text.substr(start, length);
    at = start + piece.size();
    return piece;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::uint8_t control = data[0];
    const std::uint8_t editing = data[1];
    const std::string_view bytes(reinterpret_cast<const char*>(data + 2), size - 2);
    const std::wstring text = (control & 1) ? Utf16LeToWide(bytes) : Utf8ToWide(bytes);

    // The fast reading of common tags, on a text handed over in small
    // pieces, must build exactly what the tokenizer builds on the whole text.
    {
        CXmlTreeBuilder fast;
        CXmlTreeBuilder reference;
        reference.SetTokenizerOnly(true);
        CXmlElementTable fastTable;
        CXmlElementTable referenceTable;
        std::wstring pieced;
        CXmlTextPieces pieces(text, 1 + editing % 13);
        std::wstring whole = text;
        const bool ignoreCase = (control & 2) != 0;
        Check(fast.Build(pieced, &pieces, text.size(), ignoreCase, fastTable) ==
              reference.Build(whole, nullptr, text.size(), ignoreCase, referenceTable));
        Check(pieced == text);
        Check(fastTable.End() == referenceTable.End());
        for (std::uint32_t i = 0; i < fastTable.End(); ++i)
            Check(std::memcmp(&fastTable[i], &referenceTable[i], sizeof(XmlElementRecord)) == 0);
    }

    CXmlDocument document;
    document.SetDocFlags((control & 2) ? kXmlDocIgnoreCase : 0);
    document.SetDoc(text);
    Walk(document, 0);

    // Every element again, in document order, from the root.
    document.SetDoc(text);
    for (int i = 0; i < 4096 && document.FindElem(L"//*"); ++i)
        (void)document.GetData();
    document.SetDoc(text);
    if (document.FindElem(L"/*"))
    {
        const std::wstring root = document.GetTagName();
        (void)document.FindElem(L"/" + root + L"/*[1]");
        (void)document.FindElem(L"//" + root + L"[2]");
    }

    // Add elements at a few positions; each must read back what was added.
    std::size_t at = 0;
    for (int step = 0; step < 6; ++step)
    {
        const int flags = ((editing >> (step % 4)) & 1 ? kXmlAddCdata : 0) |
                          ((editing & 0x10) ? kXmlAddSpacedEmpty : 0) |
                          ((editing & 0x20) ? kXmlAddEscapeQuotes : 0);
        std::wstring name(Slice(text, at, 1 + step % 3));
        if (name.empty())
            name = L"n";
        const std::wstring value(Slice(text, at, static_cast<std::size_t>(step * 5)));
        const bool child = (editing >> (4 + step % 4)) & 1;
        if (child)
        {
            if (document.AddChildElem(name, value, flags))
            {
                Check(document.IntoElem());
                Check(document.GetData() == value);
                Check(document.OutOfElem());
            }
        }
        else
        {
            Check(document.AddElem(name, value, flags));
            Check(document.GetData() == value);
        }
        if (step == 2)
            (void)document.AddChildElem(L"open", L"", kXmlAddNotEnded);
        if (step == 3)
            (void)document.IntoElem();
    }
    document.AddElem(L"kept", L"&amp; &#65; &bad", kXmlAddKeepEntities);
    const std::wstring edited = document.GetDoc();
    document.SetDoc(edited);
    Walk(document, 0);

    // Into a well-formed document, elements with plain names: the element
    // table kept up by the insertions must agree with a parse of the result.
    CXmlDocument original;
    original.SetDocFlags(document.GetDocFlags() & kXmlDocIgnoreCase);
    if (!original.SetDoc(text))
        return 0;
    std::size_t from = 0;
    for (int step = 0; step < 8; ++step)
    {
        const std::wstring name = L"n" + std::to_wstring(step);
        const std::wstring value(Slice(text, from, static_cast<std::size_t>(step)));
        const int flags = ((editing >> step) & 1) ? kXmlAddCdata : 0;
        switch ((control >> 2) + step & 3)
        {
        case 0:
            (void)original.FindElem(L"//*");
            (void)original.AddChildElem(name, value, flags);
            break;
        case 1:
            (void)original.FindChildElem();
            (void)original.AddElem(name, value, flags);
            break;
        case 2:
            (void)original.IntoElem();
            (void)original.AddElem(name, value, flags);
            break;
        default:
            (void)original.OutOfElem();
            (void)original.AddChildElem(name, value, flags);
            break;
        }
    }
    CXmlDocument reparsed;
    reparsed.SetDocFlags(original.GetDocFlags() & kXmlDocIgnoreCase);
    reparsed.SetDoc(original.GetDoc());
    std::wstring parsed;
    Dump(reparsed, 0, parsed);
    std::wstring kept;
    if (original.FindElem(L"/*"))
    {
        DumpCurrent(original, 0, kept);
        Dump(original, 0, kept);
    }
    Check(kept == parsed);
    return 0;
}
