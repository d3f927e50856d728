#include "platform/imageio/jxl/Library.h"

#include "platform/host/process/DynamicLibrary.h"

namespace kestrine::jxl {

namespace {

Result<Functions> loadFunctions() {
    const Failure missing{Reason::unsupported, "JPEG XL pictures need libjxl (package libjxl0.7)"};
    const Result<DynamicLibrary> decoder = DynamicLibrary::open({"libjxl.so.0.7"});
    const Result<DynamicLibrary> threads = DynamicLibrary::open({"libjxl_threads.so.0.7"});
    if (!decoder || !threads)
        return missing;
    Functions functions{};
    const auto find = []<class F>(const DynamicLibrary& library, F*& function, const char* name) {
        function = library.symbol<F>(name);
        return function != nullptr;
    };
    const bool complete = find(*decoder, functions.create, "JxlDecoderCreate")
                          && find(*decoder, functions.destroy, "JxlDecoderDestroy")
                          && find(*decoder, functions.subscribe, "JxlDecoderSubscribeEvents")
                          && find(*decoder, functions.setRunner, "JxlDecoderSetParallelRunner")
                          && find(*decoder, functions.setInput, "JxlDecoderSetInput")
                          && find(*decoder, functions.releaseInput, "JxlDecoderReleaseInput")
                          && find(*decoder, functions.process, "JxlDecoderProcessInput")
                          && find(*decoder, functions.basicInfo, "JxlDecoderGetBasicInfo")
                          && find(*decoder, functions.extraChannel, "JxlDecoderGetExtraChannelInfo")
                          && find(*decoder, functions.encodedProfile, "JxlDecoderGetColorAsEncodedProfile")
                          && find(*decoder, functions.profileSize, "JxlDecoderGetICCProfileSize")
                          && find(*decoder, functions.profile, "JxlDecoderGetColorAsICCProfile")
                          && find(*decoder, functions.setPixels, "JxlDecoderSetImageOutBuffer")
                          && find(*decoder, functions.setDecompressBoxes, "JxlDecoderSetDecompressBoxes")
                          && find(*decoder, functions.boxType, "JxlDecoderGetBoxType")
                          && find(*decoder, functions.setBox, "JxlDecoderSetBoxBuffer")
                          && find(*decoder, functions.releaseBox, "JxlDecoderReleaseBoxBuffer")
                          && find(*threads, functions.run, "JxlThreadParallelRunner")
                          && find(*threads, functions.createRunner, "JxlThreadParallelRunnerCreate")
                          && find(*threads, functions.destroyRunner, "JxlThreadParallelRunnerDestroy");
    if (!complete)
        return missing;
    return functions;
}

Result<EncoderFunctions> loadEncoder() {
    const Failure missing{Reason::unsupported, "JPEG XL pictures need libjxl (package libjxl0.7)"};
    const Result<DynamicLibrary> encoder = DynamicLibrary::open({"libjxl.so.0.7"});
    const Result<DynamicLibrary> threads = DynamicLibrary::open({"libjxl_threads.so.0.7"});
    if (!encoder || !threads)
        return missing;
    EncoderFunctions functions{};
    const auto find = []<class F>(const DynamicLibrary& library, F*& function, const char* name) {
        function = library.symbol<F>(name);
        return function != nullptr;
    };
    const bool complete = find(*encoder, functions.create, "JxlEncoderCreate")
                          && find(*encoder, functions.destroy, "JxlEncoderDestroy")
                          && find(*encoder, functions.setRunner, "JxlEncoderSetParallelRunner")
                          && find(*encoder, functions.initializeInfo, "JxlEncoderInitBasicInfo")
                          && find(*encoder, functions.setInfo, "JxlEncoderSetBasicInfo")
                          && find(*encoder, functions.setLevel, "JxlEncoderSetCodestreamLevel")
                          && find(*encoder, functions.makeSRGB, "JxlColorEncodingSetToSRGB")
                          && find(*encoder, functions.setColors, "JxlEncoderSetColorEncoding")
                          && find(*encoder, functions.setProfile, "JxlEncoderSetICCProfile")
                          && find(*encoder, functions.createSettings, "JxlEncoderFrameSettingsCreate")
                          && find(*encoder, functions.setLossless, "JxlEncoderSetFrameLossless")
                          && find(*encoder, functions.setDistance, "JxlEncoderSetFrameDistance")
                          && find(*encoder, functions.setOption, "JxlEncoderFrameSettingsSetOption")
                          && find(*encoder, functions.addFrame, "JxlEncoderAddImageFrame")
                          && find(*encoder, functions.useBoxes, "JxlEncoderUseBoxes")
                          && find(*encoder, functions.addBox, "JxlEncoderAddBox")
                          && find(*encoder, functions.closeInput, "JxlEncoderCloseInput")
                          && find(*encoder, functions.process, "JxlEncoderProcessOutput")
                          && find(*threads, functions.run, "JxlThreadParallelRunner")
                          && find(*threads, functions.createRunner, "JxlThreadParallelRunnerCreate")
                          && find(*threads, functions.destroyRunner, "JxlThreadParallelRunnerDestroy");
    if (!complete)
        return missing;
    return functions;
}

} // namespace

const Result<EncoderFunctions>& installedEncoder() {
    static const Result<EncoderFunctions> functions = loadEncoder();
    return functions;
}

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions = loadFunctions();
    return functions;
}

} // namespace kestrine::jxl
