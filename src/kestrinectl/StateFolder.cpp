#include "kestrinectl/StateFolder.h"

#include "platform/host/files/PathParts.h"
#include "platform/host/process/Environment.h"

namespace kestrine {

std::string stateFolder(const std::string& name) {
    const std::string home = Environment::ofProcess().xdgStateHome();
    return home.empty() ? "" : joinedPath(joinedPath(home, "kestrine"), name);
}

} // namespace kestrine
