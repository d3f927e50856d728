#include "libkestrine/CallFailure.h"

#include <algorithm>

namespace kestrine {

namespace {

/// The message of the last failure on this thread. Long messages are truncated to a fixed size, so that
/// storing one cannot fail.
thread_local char errorText[512] = "";

bool continuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

/// The number of bytes of a UTF-8 text that fit, without half a character.
std::size_t fittingLength(std::string_view text) {
    std::size_t length = std::min(text.size(), sizeof errorText - 1);
    while (length > 0 && length < text.size() && continuesCharacter(text[length]))
        --length;
    return length;
}

kestrine_status statusOf(Reason reason) {
    switch (reason) {
    case Reason::notFound:
        return KESTRINE_NOT_FOUND;
    case Reason::alreadyExists:
        return KESTRINE_ALREADY_EXISTS;
    case Reason::notPermitted:
        return KESTRINE_NOT_PERMITTED;
    case Reason::notRegularFile:
        return KESTRINE_NOT_A_FILE;
    case Reason::tooLarge:
        return KESTRINE_TOO_LARGE;
    case Reason::malformed:
    case Reason::truncated:
    case Reason::empty:
    case Reason::implausible:
        return KESTRINE_MALFORMED;
    case Reason::unsupported:
    case Reason::otherFormat:
    case Reason::refused:
        return KESTRINE_UNSUPPORTED;
    case Reason::noSpace:
        return KESTRINE_NO_SPACE;
    case Reason::inputOutput:
        return KESTRINE_INPUT_OUTPUT;
    case Reason::crashed:
    case Reason::timeLimit:
        return KESTRINE_DECODER_ENDED;
    case Reason::outOfMemory:
        return KESTRINE_OUT_OF_MEMORY;
    }
    return KESTRINE_INTERNAL;
}

} // namespace

CallFailure callFailure(const Failure& failure) { return {statusOf(failure.reason), failure.text}; }

void requireArgument(const void* argument, const char* name) {
    if (argument == nullptr)
        throw CallFailure{KESTRINE_WRONG_ARGUMENT, "the argument '" + std::string(name) + "' is null"};
}

kestrine_status remembered(kestrine_status status, std::string_view text) noexcept {
    errorText[text.copy(errorText, fittingLength(text))] = '\0';
    return status;
}

const char* lastErrorText() noexcept { return errorText; }

} // namespace kestrine
