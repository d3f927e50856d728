// Actions of Thunar: elements in one file, which Thunar writes as well and in which users have actions of
// their own. Thunar keeps no comments there, so the element <unique-id> marks our actions:
// "kestrine:WORD:DIGEST", with the word of the set's name and a digest of the other elements.
//
// Thunar gives the command line to a shell, after it has put the selection in as words of the shell.

#include "kestrinectl/desktop/DesktopTargets.h"
#include "kestrinectl/desktop/Quoting.h"
#include "kestrinectl/desktop/ThunarFile.h"
#include "kestrinectl/text/MarkupText.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/Replacement.h"
#include "platform/host/files/ContentDigest.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"

#include <algorithm>

namespace kestrine::desktop {

namespace {

constexpr std::uint64_t maxThunarFile = 1024 * 1024;

const std::string idBegin = "kestrine:";

using Fields = std::map<std::string, std::string>;

/// The mark of our action with these fields.
std::string idFor(const std::string& setName, const Fields& fields) {
    std::string text;
    for (const auto& [name, value] : fields)
        if (name != "unique-id")
            text += name + "=" + value + "\n";
    return idBegin + wordOfSetName(setName) + ":" + std::to_string(digestOf(text).number);
}

/// In labels, Thunar takes "_" as the mark of a key; "__" is shown as "_".
constexpr Replacement inThunarLabels[] = {{'_', "__"}};

Fields fieldsFor(const std::string& setName, const DesktopActions& actions) {
    Fields fields = {
        {"icon", "image-x-generic"},
        {"name", replaced(setName, inThunarLabels)},
        {"submenu", std::string(actionMenu)},
        {"command", shellWord(actions.program) + " " + runArguments(setName) + " -- %F"},
        {"description", "Convert the selected pictures with this set"},
        {"patterns", "*"},
        {"image-files", ""},
    };
    fields["unique-id"] = idFor(setName, fields);
    return fields;
}

std::string element(const Fields& fields) {
    std::string text = "<action>\n";
    for (const auto& [name, value] : fields)
        text += "\t<" + name + (value.empty() ? "/>" : ">" + markupText(value) + "</" + name + ">") + "\n";
    return text + "</action>\n";
}

/// The name of the set of our action; nullopt for an action that is not ours.
std::optional<std::string> setNameOf(const ThunarAction& action) {
    const std::string id = action.field("unique-id");
    if (!id.starts_with(idBegin))
        return std::nullopt;
    return setNameOfWord(id.substr(idBegin.size(), id.rfind(':') - idBegin.size()));
}

struct CustomActions {
    std::string content;
    ThunarFile file;
};

Failure unreadableActions(const std::string& path, const Failure& failure) {
    return {Reason::malformed,
            path + " cannot be read (" + failure.text + "); repair the file or move it away"};
}

/// The user's file or, if there is none, the system's, which a file of the user would hide.
Result<CustomActions> customActions(const std::string& ofUser) {
    std::vector<std::string> places = {ofUser};
    for (const std::string& folder : Environment::ofProcess().xdgConfigDirs())
        places.push_back(joinedPath(folder, "Thunar/uca.xml"));
    const auto place = std::ranges::find_if_not(places, isAbsent);
    std::string content = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n</actions>\n";
    if (place != places.end()) {
        const Result<Bytes> bytes = readSmallFile(*place, maxThunarFile);
        if (!bytes)
            return unreadableActions(*place, bytes.failure());
        content.assign(bytes->begin(), bytes->end());
    }
    Result<ThunarFile> file = parseThunarFile(content);
    if (!file && file.failure().reason == Reason::malformed)
        return unreadableActions(*place, file.failure());
    return CustomActions{std::move(content), TRY(std::move(file))};
}

/// The content without some of its actions, with others at the end.
std::string rewritten(const CustomActions& custom, const std::vector<const ThunarAction*>& removed,
                      const std::string& added) {
    const auto& [content, file] = custom;
    std::string text;
    std::size_t begin = 0;
    for (const ThunarAction* action : removed) {
        text += content.substr(begin, action->begin - begin);
        begin = action->end + (content[action->end] == '\n' ? 1 : 0);
    }
    text += content.substr(begin, file.endTag - begin);
    if (!file.isEmptyElement)
        return text + added + content.substr(file.endTag);
    return text + ">\n" + added + "</actions>" + content.substr(file.endTag + 2);
}

} // namespace

Result<ActionPlan> planOfThunar(const std::string& path, const DesktopActions& actions, bool overwrites) {
    if (actions.setNames.empty() && isAbsent(path))
        return ActionPlan();
    const CustomActions custom = TRY(customActions(path));
    ActionPlan plan;
    std::vector<const ThunarAction*> ours;
    std::vector<std::string> kept; // sets whose actions were edited
    std::string existing, wanted;
    for (const ThunarAction& action : custom.file.actions) {
        const auto name = setNameOf(action);
        if (!name)
            continue;
        ++plan.installed;
        if (idFor(*name, action.fields) == action.field("unique-id") || overwrites) {
            ours.push_back(&action);
            existing += element(action.fields);
            continue;
        }
        kept.push_back(*name);
        const bool isWanted = std::ranges::find(actions.setNames, *name) != actions.setNames.end();
        plan.edited.push_back(
            editedSentence("the action " + quoted(action.field("name")) + " in " + path, isWanted));
    }
    plan.installedAfter = kept.size();
    for (const std::string& name : actions.setNames)
        if (std::ranges::find(kept, name) == kept.end()) {
            wanted += element(fieldsFor(name, actions));
            ++plan.installedAfter;
        }
    if (existing != wanted)
        plan.changes.push_back({path, rewritten(custom, ours, wanted)});
    return plan;
}

} // namespace kestrine::desktop
