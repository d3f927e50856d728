#include "kestrinectl/desktop/NumberedFiles.h"

namespace kestrine::desktop {

namespace {

std::string idAt(std::size_t position) {
    const std::string number = std::to_string(position + 1);
    return "kestrine-" + std::string(number.size() < 2 ? 1 : 0, '0') + number;
}

} // namespace

std::vector<ActionFile> numberedFiles(const DesktopActions& actions, const std::string& ending,
                                      ContentOfAction* content) {
    std::vector<ActionFile> files;
    for (const std::string& setName : actions.setNames) {
        const std::string id = idAt(files.size());
        files.push_back({id + ending, content(setName, actions.program, id)});
    }
    return files;
}

} // namespace kestrine::desktop
