#include "support/callback_boundary.h"

#include "support/logs.h"
#include "support/message_box.h"

#include <exception>
#include <new>

namespace cvas
{
namespace
{

// The guard's caller goes on whatever the log does, even when memory or the
// disk has run out.
template <typename... Arguments>
void NoteLine(const wchar_t* format, Arguments... arguments) noexcept
{
    try
    {
        StatusLogIfOpen(0, format, arguments...);
    }
    catch (...)
    {
    }
}

} // namespace

GuardedEnd NoteCaughtException(const wchar_t* boundary) noexcept
{
    try
    {
        throw;
    }
    catch (const CFatalError& error)
    {
        NoteLine(L"Stopped in the %ls: %ls", boundary, error.Text().c_str());
        return GuardedEnd::FatalError;
    }
    catch (const std::bad_alloc&)
    {
        NoteLine(L"Out of memory in the %ls", boundary);
        return GuardedEnd::OutOfMemory;
    }
    catch (const std::exception& error)
    {
        NoteLine(L"Error in the %ls: %hs", boundary, error.what());
        return GuardedEnd::Failed;
    }
    catch (...)
    {
        NoteLine(L"Unknown error in the %ls", boundary);
        return GuardedEnd::Failed;
    }
}

} // namespace cvas
