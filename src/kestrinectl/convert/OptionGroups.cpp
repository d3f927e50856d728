#include "kestrinectl/convert/OptionGroups.h"

#include <initializer_list>

namespace kestrine {

namespace {

struct OptionGroup {
    const char* title;
    std::initializer_list<const char*> options;
};

} // namespace

void groupOptions(CLI::App& command) {
    static const OptionGroup groups[] = {
        {"Sets", {"--set"}},
        {"Size",
         {"--longest", "--width", "--height", "--percent", "--fit", "--cover", "--gravity", "--pad",
          "--no-enlarge"}},
        {"Format",
         {"--format", "--quality", "--max-bytes", "--lossless", "--effort", "--progressive",
          "--skip-fitting"}},
        {"Orientation and colours", {"--upright", "--background", "--profile"}},
        {"Metadata", {"--metadata", "--exif", "--times"}},
        {"Places and names of results", {"--out", "--name", "--replace", "--root"}},
        {"Choice of files",
         {"--recursive", "--all-folders", "--include", "--exclude", "--files-from", "--null", "--allow-empty",
          "--accept-damaged", "--first-only"}},
        {"Repeated runs", {"--update", "--force", "--manifest", "--no-wait"}},
        {"Output", {"--quiet", "--verbose", "--json", "--dry-run"}},
        {"Safety and resources", {"--no-journal", "--jobs", "--max-pixels", "--isolation"}},
    };
    for (const OptionGroup& group : groups)
        for (const char* option : group.options)
            if (CLI::Option* found = command.get_option_no_throw(option))
                found->group(group.title);
}

} // namespace kestrine
