// Applies a stored preset to a picture, as `kestrine -set PRESET PICTURE` does. Says how the picture was
// taken and how large the result is.
//
// Build: c++ -o resize resize.cpp $(pkg-config --cflags --libs kestrine-desktop)
#include "_MyClasses/Category/StringUtility.h"
#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "models/ResizeUnit.h"
#include "models/StoredPresets.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/foundation/NSUserDefaults.h"

#include <filesystem>
#include <iostream>

using namespace kestrine;

namespace {

/// An array of the stored preset with this name; empty if there is none.
Object presetsNamed(const NSString& name) {
    const auto preferences = NSUserDefaults::standardUserDefaults().persistentDomainForName(presetsDomain);
    const auto stored = preferences ? storedSets(*preferences) : preferences.failure();
    std::vector<Object> found;
    for (const auto& preset : stored ? *stored : ResizeSets())
        if (found.empty() && preset->name() == name)
            found.push_back(preset);
    return std::make_shared<NSArray>(found);
}

void showResults(const NSNotification& finished) {
    const Object paths = finished.userInfo->objectForKey(resultPathsKey);
    for (const Object& element : std::dynamic_pointer_cast<const NSArray>(paths)->elements()) {
        const std::string path = NSString::fromObject(element)->utf8();
        const NSNumber size(std::uint64_t{std::filesystem::file_size(path)});
        std::cout << path << ", " << StringUtility::stringWithByteSize(size).utf8() << "\n";
    }
}

} // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: " << arguments[0] << " PRESET PICTURE\n";
        return 2;
    }
    const NSString path = NSString::fromUTF8(std::filesystem::absolute(arguments[2]).string());
    if (const auto exif = ExifTagReader::initWithPath(path))
        std::cout << exif->fNumber().utf8() << ", " << exif->exposureTime().utf8() << "\n";
    NSNotificationCenter::defaultCenter().addObserver(RUResizeHasDone, nullptr, showResults);
    const auto job = std::make_shared<ResizeUnit>();
    job->setValueForKey(path.object(), u"filepath");
    job->setValueForKey(path.deletingLastPathComponent().object(), u"saveFolderPath");
    job->setValueForKey(presetsNamed(NSString::fromUTF8(arguments[1])), u"resizeSets");
    job->resize();
}
