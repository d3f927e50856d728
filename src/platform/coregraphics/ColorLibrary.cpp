#include "platform/coregraphics/ColorLibrary.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

#include <stdexcept>

namespace kestrine {

Result<ColorLibrary> loadColorLibrary(std::initializer_list<const char*> names) {
    return DynamicLibrary::load<ColorLibrary>(
        names, missingMessage("pictures need Little CMS", OnDemand::littleCMS),
        [](const DynamicLibrary& library, ColorLibrary& functions) {
            return library.find(functions.buildGamma, "cmsBuildGamma")
                   && library.find(functions.buildParametricCurve, "cmsBuildParametricToneCurve")
                   && library.find(functions.channelsOf, "cmsChannelsOf")
                   && library.find(functions.closeProfile, "cmsCloseProfile")
                   && library.find(functions.createContext, "cmsCreateContext")
                   && library.find(functions.createGrayProfile, "cmsCreateGrayProfileTHR")
                   && library.find(functions.createLabProfile, "cmsCreateLab4ProfileTHR")
                   && library.find(functions.createRGBProfile, "cmsCreateRGBProfileTHR")
                   && library.find(functions.createTransform, "cmsCreateTransformTHR")
                   && library.find(functions.d50, "cmsD50_xyY")
                   && library.find(functions.deleteContext, "cmsDeleteContext")
                   && library.find(functions.deleteTransform, "cmsDeleteTransform")
                   && library.find(functions.transform, "cmsDoTransform")
                   && library.find(functions.freeCurve, "cmsFreeToneCurve")
                   && library.find(functions.connectionSpace, "cmsGetPCS")
                   && library.find(functions.isTag, "cmsIsTag")
                   && library.find(functions.makeText, "cmsMLUalloc")
                   && library.find(functions.freeText, "cmsMLUfree")
                   && library.find(functions.setText, "cmsMLUsetASCII")
                   && library.find(functions.openProfile, "cmsOpenProfileFromMemTHR")
                   && library.find(functions.inputChannels, "cmsPipelineInputChannels")
                   && library.find(functions.outputChannels, "cmsPipelineOutputChannels")
                   && library.find(functions.readRawTag, "cmsReadRawTag")
                   && library.find(functions.readTag, "cmsReadTag")
                   && library.find(functions.saveProfile, "cmsSaveProfileToMem")
                   && library.find(functions.setErrorHandler, "cmsSetLogErrorHandlerTHR")
                   && library.find(functions.setProfileVersion, "cmsSetProfileVersion")
                   && library.find(functions.writeTag, "cmsWriteTag");
        });
}

const Result<ColorLibrary>& installedColorLibrary() {
    static const Result<ColorLibrary> library = loadColorLibrary({systemLibrary(OnDemand::littleCMS).file});
    return library;
}

const ColorLibrary& colorLibrary() {
    if (!installedColorLibrary())
        throw std::runtime_error(installedColorLibrary().failure().text);
    return *installedColorLibrary();
}

} // namespace kestrine
