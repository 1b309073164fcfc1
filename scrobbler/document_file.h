#pragma once
// Reading and replacing the engine's document files.

#include "support/xml_document.h"

#include <string>

namespace cvas
{

struct CDocumentLoad
{
    bool read{false};     // the file could be opened and read
    std::wstring problem; // why it could not be read, or its first parse error
};

// Loads the file into the document and tells whether it read cleanly.
CDocumentLoad LoadDocumentFile(CXmlDocument& document, const std::wstring& path);

// Writes the document beside the file, flushes it to the disk and moves it
// over the file in one step, so that a crash or a power cut during a save
// leaves the old file or the new one, never a part of either. A failure is
// logged and leaves the old file as it was.
bool SaveDocumentReplacing(CXmlDocument& document, const std::wstring& path);

} // namespace cvas
