// The functions of libjxl and its pool of threads, which are opened when the first JPEG XL file is read.
// Their headers are used for types only; the program does not link to the libraries.
#pragma once

#include "platform/host/Result.h"

#include <jxl/decode.h>
#include <jxl/encode.h>
#include <jxl/thread_parallel_runner.h>

namespace kestrine::jxl {

/// The functions that are used.
struct Functions {
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
    decltype(&JxlDecoderSetImageOutBuffer) setPixels;
    decltype(&JxlDecoderSetDecompressBoxes) setDecompressBoxes;
    decltype(&JxlDecoderGetBoxType) boxType;
    decltype(&JxlDecoderSetBoxBuffer) setBox;
    decltype(&JxlDecoderReleaseBoxBuffer) releaseBox;
    decltype(&JxlThreadParallelRunner) run;
    decltype(&JxlThreadParallelRunnerCreate) createRunner;
    decltype(&JxlThreadParallelRunnerDestroy) destroyRunner;
};

/// The functions of the installed libraries; opened once. Fails with reason "unsupported" and names the
/// package if one is missing. Any thread.
const Result<Functions>& installedFunctions();

/// The functions that the encoder uses.
struct EncoderFunctions {
    decltype(&JxlEncoderCreate) create;
    decltype(&JxlEncoderDestroy) destroy;
    decltype(&JxlEncoderSetParallelRunner) setRunner;
    decltype(&JxlEncoderInitBasicInfo) initializeInfo;
    decltype(&JxlEncoderSetBasicInfo) setInfo;
    decltype(&JxlEncoderSetCodestreamLevel) setLevel;
    decltype(&JxlColorEncodingSetToSRGB) makeSRGB;
    decltype(&JxlEncoderSetColorEncoding) setColors;
    decltype(&JxlEncoderSetICCProfile) setProfile;
    decltype(&JxlEncoderFrameSettingsCreate) createSettings;
    decltype(&JxlEncoderSetFrameLossless) setLossless;
    decltype(&JxlEncoderSetFrameDistance) setDistance;
    decltype(&JxlEncoderFrameSettingsSetOption) setOption;
    decltype(&JxlEncoderAddImageFrame) addFrame;
    decltype(&JxlEncoderUseBoxes) useBoxes;
    decltype(&JxlEncoderAddBox) addBox;
    decltype(&JxlEncoderCloseInput) closeInput;
    decltype(&JxlEncoderProcessOutput) process;
    decltype(&JxlThreadParallelRunner) run;
    decltype(&JxlThreadParallelRunnerCreate) createRunner;
    decltype(&JxlThreadParallelRunnerDestroy) destroyRunner;
};

/// Those of the installed libraries; opened once. Fails like installedFunctions(). Any thread.
const Result<EncoderFunctions>& installedEncoder();

} // namespace kestrine::jxl
