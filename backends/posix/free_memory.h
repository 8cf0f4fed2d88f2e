#pragma once

namespace vistrane {

/// Has all threads that start later take memory from one arena of `malloc`. Otherwise glibc makes
/// up to eight for each processor, and each keeps memory for a few pictures, some of which
/// `returnFreeMemory` cannot return. Does nothing with other C libraries. Call it before threads.
void useOneArena();

/// Returns the memory that `malloc` keeps for later to the system. Takes some milliseconds, in
/// which other threads may wait for memory, and makes the next allocations slower: call it when
/// large work has ended. Does nothing with other C libraries. Any thread.
void returnFreeMemory();

} // namespace vistrane
