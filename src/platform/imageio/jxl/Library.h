// The functions of libjxl and its pool of threads, which are opened when the first JPEG XL file is read.
// Their headers are used for types only; the program does not link to the libraries.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>
#include <jxl/decode.h>
#include <jxl/encode.h>
#include <jxl/thread_parallel_runner.h>

namespace kestrine::jxl {

/// The functions that are used.
struct Functions {
    // of the decoder
    decltype(&JxlDecoderCreate) create;
    decltype(&JxlDecoderDestroy) destroy;
    decltype(&JxlDecoderSubscribeEvents) subscribe;
    decltype(&JxlDecoderSetParallelRunner) setRunner;
    decltype(&JxlDecoderSetInput) setInput;
    decltype(&JxlDecoderReleaseInput) releaseInput;
    decltype(&JxlDecoderProcessInput) process;
    decltype(&JxlDecoderGetBasicInfo) basicInfo;
    decltype(&JxlDecoderGetExtraChannelInfo) extraChannel;
    decltype(&JxlDecoderGetColorAsEncodedProfile) encodedProfile;
    decltype(&JxlDecoderGetICCProfileSize) profileSize;
    decltype(&JxlDecoderGetColorAsICCProfile) profile;
    decltype(&JxlDecoderSetPreferredColorProfile) preferColors;
    decltype(&JxlDecoderSetImageOutBuffer) setPixels;
    decltype(&JxlDecoderSetDecompressBoxes) setDecompressBoxes;
    decltype(&JxlDecoderGetBoxType) boxType;
    decltype(&JxlDecoderSetBoxBuffer) setBox;
    decltype(&JxlDecoderReleaseBoxBuffer) releaseBox;
    // of the encoder
    decltype(&JxlEncoderCreate) encoderCreate;
    decltype(&JxlEncoderDestroy) encoderDestroy;
    decltype(&JxlEncoderSetParallelRunner) encoderSetRunner;
    decltype(&JxlEncoderInitBasicInfo) encoderInitializeInfo;
    decltype(&JxlEncoderSetBasicInfo) encoderSetInfo;
    decltype(&JxlEncoderSetCodestreamLevel) encoderSetLevel;
    decltype(&JxlColorEncodingSetToSRGB) makeSRGB;
    decltype(&JxlEncoderSetColorEncoding) encoderSetColors;
    decltype(&JxlEncoderSetICCProfile) encoderSetProfile;
    decltype(&JxlEncoderFrameSettingsCreate) encoderCreateSettings;
    decltype(&JxlEncoderSetFrameLossless) encoderSetLossless;
    decltype(&JxlEncoderSetFrameDistance) encoderSetDistance;
    decltype(&JxlEncoderFrameSettingsSetOption) encoderSetOption;
    decltype(&JxlEncoderAddImageFrame) encoderAddFrame;
    decltype(&JxlEncoderUseBoxes) encoderUseBoxes;
    decltype(&JxlEncoderAddBox) encoderAddBox;
    decltype(&JxlEncoderCloseInput) encoderCloseInput;
    decltype(&JxlEncoderProcessOutput) encoderProcess;
    // of the threads
    decltype(&JxlThreadParallelRunner) run;
    decltype(&JxlThreadParallelRunnerCreate) createRunner;
    decltype(&JxlThreadParallelRunnerDestroy) destroyRunner;
};

/// The functions of the first of these libraries that exist. Fails with reason "unsupported" and names the
/// package if one is missing.
Result<Functions> loadFunctions(std::initializer_list<const char*> coders,
                                std::initializer_list<const char*> threadPools);

/// The functions of the installed libraries; opened once. Any thread.
const Result<Functions>& installedFunctions();

} // namespace kestrine::jxl
