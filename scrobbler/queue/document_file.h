#pragma once
// Reading and replacing the engine's document files.

#include "xml/xml_document.h"

#include <string>

namespace cvas
{

// The file as a document, or null when it does not exist or cannot be read
// (that is logged). damage gets the first parse error of a file that did not
// read cleanly, and is empty otherwise.
CountedHandle<CXmlDocument> LoadExistingDocument(const std::wstring& path, std::wstring& damage);
// The same, telling also whether the file is there, readable or not.
CountedHandle<CXmlDocument> LoadExistingDocument(const std::wstring& path, std::wstring& damage,
                                                 bool& exists);

// Writes the document beside the file, flushes it to the disk and moves it
// over the file in one step, so that a crash or a power cut during a save
// leaves the old file or the new one, never a part of either. A failure is
// logged and leaves the old file as it was.
bool SaveDocumentReplacing(CXmlDocument& document, const std::wstring& path);

} // namespace cvas
