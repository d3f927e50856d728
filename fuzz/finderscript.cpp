// Reads any bytes as a script, and makes scripts with any file names. A script that is made and accepted must
// contain exactly these names.
#include "_MyClasses/Category/FinderScripts.h"
#include "fuzz/Require.h"
#include "platform/appkit/AppleScriptParser.h"

namespace {

using namespace kestrine;
using fuzzing::require;

void readAsScript(const NSString& text) {
    const auto parsed = parseAppleScript(text);
    if (const auto* error = std::get_if<AppleScriptError>(&parsed)) {
        require(error->range.end() <= text.length() && error->number < 0 && !error->message.isEmpty());
        return;
    }
    for (const ScriptedPath& item : std::get<FinderCommand>(parsed).items)
        require(text.substring(item.range) == NSString(u"\"") + item.finderPath + u"\"");
}

void readBack(const FinderScript& script, const std::vector<NSString>& items) {
    if (rangeOfMisleadingPath(script))
        return;
    const auto parsed = parseAppleScript(script.source);
    require(std::holds_alternative<FinderCommand>(parsed));
    const FinderCommand& command = std::get<FinderCommand>(parsed);
    require(command.items.size() == items.size());
    for (std::size_t i = 0; i < items.size(); ++i)
        require(command.items[i].finderPath == items[i]);
    require(!command.destination || command.destination->finderPath == items.back());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const NSString text = NSString::fromUTF8({reinterpret_cast<const char*>(bytes), size});
    readAsScript(text);
    const std::vector<NSString> names = text.componentsSeparatedBy(NSString(std::u16string(1, u'\0')));
    readBack(deletingScript(names), names);
    readBack(movingScript(names, names.back(), size % 2 == 0), names);
    readBack(fileMovingScript(names.back(), names.back(), false), {names.back()});
    return 0;
}
