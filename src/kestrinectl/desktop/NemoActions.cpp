// Actions of Nemo: a file per set. Nemo has no submenus for them that all its versions know, so each entry
// says what it does.
//
// Nemo splits the command line by the rules of the shell, after it has put the selection in without escaping
// it. URIs in quotation marks stay whole in any case.

#include "kestrinectl/desktop/DesktopTargets.h"
#include "kestrinectl/desktop/NumberedFiles.h"
#include "kestrinectl/desktop/Quoting.h"
#include "kestrinectl/text/Replacement.h"

namespace kestrine::desktop {

namespace {

/// In labels, Nemo takes "_" as the mark of a key and "%N", for example, as the name of a file. "__" is shown
/// as "_"; an invisible character after "%" (U+2060) ends it.
constexpr Replacement inNemoLabels[] = {{'_', "__"}, {'%', "%\u2060"}};

std::string nemoAction(const std::string& setName, const std::string& program, const std::string&) {
    return "[Nemo Action]\n"
           "Active=true\n"
           "Name="
           + keyFileValue(std::string(actionMenu) + ": " + replaced(setName, inNemoLabels))
           + "\n"
             "Icon-Name=image-x-generic\n"
             "Exec="
           + keyFileValue(shellWord(program)) + " " + runArguments(setName)
           + " --uris -- %U\n"
             "Quote=double\n"
             "Selection=notnone\n"
             "Mimetypes=image/*;\n";
}

} // namespace

Result<ActionPlan> planOfNemo(const std::string& folder, const DesktopActions& actions, bool overwrites) {
    return planOfFiles(folder, numberedFiles(actions, ".nemo_action", nemoAction), false, overwrites);
}

} // namespace kestrine::desktop
