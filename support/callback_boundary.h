#pragma once
// The guards of the places where the system calls into this module: window,
// dialog and timer procedures, the threads the module starts, COM methods
// and the DLL's exports. No C++ exception may unwind through the system's
// frames: the i686 build unwinds with DWARF-2 tables, which cannot pass
// them, and an exception that reaches them ends the player's process. Each
// guard runs its body and turns anything it throws into its boundary's
// answer, so every entry point has one line for it instead of a try block.
//
// A CFatalError has had its message box (FatalMessage) before it was
// thrown; a guard only ends what it interrupted. Whatever a guard (other
// than GuardExport) catches is written to the status log at level 0 when
// one is open, and never shown in a box: a guard may run on any thread.

#include <windows.h>

namespace cvas
{

// How a guarded body ended.
enum class GuardedEnd
{
    Returned,
    FatalError,  // a CFatalError: its message box has been shown
    OutOfMemory, // std::bad_alloc
    Failed,      // any other exception
};

// Only inside a catch handler: what the exception being handled is, written
// to the status log with the boundary's name. Never throws.
GuardedEnd NoteCaughtException(const wchar_t* boundary) noexcept;

// A window procedure. A message whose handling threw counts as handled and
// answers handled: handing a half-handled message on to the default
// procedure could only do something nobody asked for.
template <typename Body>
LRESULT GuardWindowProcedure(const wchar_t* boundary, LRESULT handled, Body&& body) noexcept
{
    try
    {
        return body();
    }
    catch (...)
    {
        NoteCaughtException(boundary);
        return handled;
    }
}

// A dialog procedure. After a CFatalError the message counts as handled
// (TRUE); after anything else as not handled (FALSE), so that the system's
// dialog code gives it its default handling, as for a message the dialog
// does not know.
template <typename Body> INT_PTR GuardDialogProcedure(const wchar_t* boundary, Body&& body) noexcept
{
    try
    {
        return body();
    }
    catch (...)
    {
        return NoteCaughtException(boundary) == GuardedEnd::FatalError ? TRUE : FALSE;
    }
}

// Runs body and tells how it ended: the timer and thread guards below.
template <typename Body> GuardedEnd RunGuarded(const wchar_t* boundary, Body&& body) noexcept
{
    try
    {
        body();
        return GuardedEnd::Returned;
    }
    catch (...)
    {
        return NoteCaughtException(boundary);
    }
}

// The part of a timer procedure that may throw. The procedure decides from
// the answer whether its timer runs on.
template <typename Body>
GuardedEnd GuardTimerProcedure(const wchar_t* boundary, Body&& body) noexcept
{
    return RunGuarded(boundary, static_cast<Body&&>(body));
}

// The work of a thread procedure. However the work ends, the thread then
// ends as it would after work that returned.
template <typename Body>
GuardedEnd GuardThreadProcedure(const wchar_t* boundary, Body&& body) noexcept
{
    return RunGuarded(boundary, static_cast<Body&&>(body));
}

// A COM method: E_OUTOFMEMORY when memory ran out, E_UNEXPECTED after
// anything else, a CFatalError included (its box has told the user; the
// caller learns only that the call failed).
template <typename Body> HRESULT GuardComMethod(const wchar_t* boundary, Body&& body) noexcept
{
    try
    {
        return body();
    }
    catch (...)
    {
        return NoteCaughtException(boundary) == GuardedEnd::OutOfMemory ? E_OUTOFMEMORY
                                                                        : E_UNEXPECTED;
    }
}

// An export of the DLL: answers fallback after any exception, and writes
// nothing anywhere. DllMain runs under the loader lock, where no file, lock
// or window may be touched, and registration runs before any log is open.
template <typename Result, typename Body> Result GuardExport(Result fallback, Body&& body) noexcept
{
    try
    {
        return body();
    }
    catch (...)
    {
        return fallback;
    }
}

} // namespace cvas
