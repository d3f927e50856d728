// Landlock: the layer of the system by which a process gives up access to files and networks.
#pragma once

namespace kestrine {

/// From now on the calling thread, and threads that it starts, can open, make and remove nothing by name,
/// connect to no network, and signal no other process, as far as the running system knows these rights.
/// Descriptors that are open stay usable. Needs no_new_privs. Returns false if the system has no Landlock or
/// refuses it.
bool denyAccessByName();

} // namespace kestrine
