#include "platform/imageio/jxl/Library.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::jxl {

Result<Functions> loadFunctions(std::initializer_list<const char*> coders,
                                std::initializer_list<const char*> threadPools) {
    const Failure missing{Reason::unsupported, missingMessage("JPEG XL pictures need libjxl", OnDemand::jxl)};
    const Result<DynamicLibrary> coder = DynamicLibrary::open(coders);
    const Result<DynamicLibrary> threads = DynamicLibrary::open(threadPools);
    if (!coder || !threads)
        return missing;
    Functions functions{};
    const bool complete = coder->find(functions.create, "JxlDecoderCreate")
                          && coder->find(functions.destroy, "JxlDecoderDestroy")
                          && coder->find(functions.subscribe, "JxlDecoderSubscribeEvents")
                          && coder->find(functions.setRunner, "JxlDecoderSetParallelRunner")
                          && coder->find(functions.setInput, "JxlDecoderSetInput")
                          && coder->find(functions.releaseInput, "JxlDecoderReleaseInput")
                          && coder->find(functions.process, "JxlDecoderProcessInput")
                          && coder->find(functions.basicInfo, "JxlDecoderGetBasicInfo")
                          && coder->find(functions.extraChannel, "JxlDecoderGetExtraChannelInfo")
                          && coder->find(functions.encodedProfile, "JxlDecoderGetColorAsEncodedProfile")
                          && coder->find(functions.profileSize, "JxlDecoderGetICCProfileSize")
                          && coder->find(functions.profile, "JxlDecoderGetColorAsICCProfile")
                          && coder->find(functions.preferColors, "JxlDecoderSetPreferredColorProfile")
                          && coder->find(functions.setPixels, "JxlDecoderSetImageOutBuffer")
                          && coder->find(functions.setDecompressBoxes, "JxlDecoderSetDecompressBoxes")
                          && coder->find(functions.boxType, "JxlDecoderGetBoxType")
                          && coder->find(functions.setBox, "JxlDecoderSetBoxBuffer")
                          && coder->find(functions.releaseBox, "JxlDecoderReleaseBoxBuffer")
                          && coder->find(functions.encoderCreate, "JxlEncoderCreate")
                          && coder->find(functions.encoderDestroy, "JxlEncoderDestroy")
                          && coder->find(functions.encoderSetRunner, "JxlEncoderSetParallelRunner")
                          && coder->find(functions.encoderInitializeInfo, "JxlEncoderInitBasicInfo")
                          && coder->find(functions.encoderSetInfo, "JxlEncoderSetBasicInfo")
                          && coder->find(functions.encoderSetLevel, "JxlEncoderSetCodestreamLevel")
                          && coder->find(functions.makeSRGB, "JxlColorEncodingSetToSRGB")
                          && coder->find(functions.encoderSetColors, "JxlEncoderSetColorEncoding")
                          && coder->find(functions.encoderSetProfile, "JxlEncoderSetICCProfile")
                          && coder->find(functions.encoderCreateSettings, "JxlEncoderFrameSettingsCreate")
                          && coder->find(functions.encoderSetLossless, "JxlEncoderSetFrameLossless")
                          && coder->find(functions.encoderSetDistance, "JxlEncoderSetFrameDistance")
                          && coder->find(functions.encoderSetOption, "JxlEncoderFrameSettingsSetOption")
                          && coder->find(functions.encoderAddFrame, "JxlEncoderAddImageFrame")
                          && coder->find(functions.encoderUseBoxes, "JxlEncoderUseBoxes")
                          && coder->find(functions.encoderAddBox, "JxlEncoderAddBox")
                          && coder->find(functions.encoderCloseInput, "JxlEncoderCloseInput")
                          && coder->find(functions.encoderProcess, "JxlEncoderProcessOutput")
                          && threads->find(functions.run, "JxlThreadParallelRunner")
                          && threads->find(functions.createRunner, "JxlThreadParallelRunnerCreate")
                          && threads->find(functions.destroyRunner, "JxlThreadParallelRunnerDestroy");
    if (!complete)
        return missing;
    return functions;
}

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions =
        loadFunctions({systemLibrary(OnDemand::jxl).file}, {systemLibrary(OnDemand::jxlThreads).file});
    return functions;
}

} // namespace kestrine::jxl
