// Landlock: the layer of the system by which a process gives up access to files and networks.
#pragma once

namespace kestrine {

/// Takes rights from the calling thread and from threads that it starts later: they can no longer open,
/// create or remove files by name, connect to a network, or signal other processes, as far as the running
/// system supports these restrictions. Open descriptors stay usable. Needs no_new_privs. Returns false if the
/// system has no Landlock or refuses it.
bool denyAccessByName();

} // namespace kestrine
