#pragma once
// Objects shared between threads or subsystems (log files, documents, buddy
// lists, snapshots, dialogs made on worker threads) travel in counted
// handles: the last handle to go deletes the object through its virtual
// destructor. std::shared_ptr is exactly that, with counts that are safe to
// copy on any thread.

#include <memory>

namespace cvas
{

template <class T> using CountedHandle = std::shared_ptr<T>;

} // namespace cvas
