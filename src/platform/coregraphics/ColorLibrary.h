// The functions of Little CMS ("the colour library"), which is opened when the first picture is. Its header
// is used for types only; no program links to the library, because most runs of the tools need no colours at
// once.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>
#include <lcms2.h>

namespace kestrine {

/// The functions that are used.
struct ColorLibrary {
    decltype(&cmsBuildGamma) buildGamma;
    decltype(&cmsBuildParametricToneCurve) buildParametricCurve;
    decltype(&cmsChannelsOf) channelsOf;
    decltype(&cmsCloseProfile) closeProfile;
    decltype(&cmsCreateContext) createContext;
    decltype(&cmsCreateGrayProfileTHR) createGrayProfile;
    decltype(&cmsCreateLab4ProfileTHR) createLabProfile;
    decltype(&cmsCreateRGBProfileTHR) createRGBProfile;
    decltype(&cmsCreateTransformTHR) createTransform;
    decltype(&cmsD50_xyY) d50;
    decltype(&cmsDeleteContext) deleteContext;
    decltype(&cmsDeleteTransform) deleteTransform;
    decltype(&cmsDoTransform) transform;
    decltype(&cmsFreeToneCurve) freeCurve;
    decltype(&cmsGetPCS) connectionSpace;
    decltype(&cmsIsTag) isTag;
    decltype(&cmsMLUalloc) makeText;
    decltype(&cmsMLUfree) freeText;
    decltype(&cmsMLUsetASCII) setText;
    decltype(&cmsOpenProfileFromMemTHR) openProfile;
    decltype(&cmsPipelineInputChannels) inputChannels;
    decltype(&cmsPipelineOutputChannels) outputChannels;
    decltype(&cmsReadRawTag) readRawTag;
    decltype(&cmsReadTag) readTag;
    decltype(&cmsSaveProfileToMem) saveProfile;
    decltype(&cmsSetLogErrorHandlerTHR) setErrorHandler;
    decltype(&cmsSetProfileVersion) setProfileVersion;
    decltype(&cmsWriteTag) writeTag;
};

/// The functions of the first of these libraries that exists. Fails with reason "unsupported" and names the
/// package if there is none.
Result<ColorLibrary> loadColorLibrary(std::initializer_list<const char*> names);

/// The functions of the installed library; opened once. Any thread.
const Result<ColorLibrary>& installedColorLibrary();

/// The same; throws std::runtime_error without the library, so that opening a picture must fail first.
const ColorLibrary& colorLibrary();

} // namespace kestrine
