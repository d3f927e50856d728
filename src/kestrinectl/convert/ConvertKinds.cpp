#include "kestrinectl/convert/ConvertKinds.h"

namespace kestrine {

std::string_view kindOf(Reason reason) {
    switch (reason) {
    case Reason::notFound:
        return "not found";
    case Reason::alreadyExists:
        return "name taken";
    case Reason::notPermitted:
        return "not permitted";
    case Reason::notRegularFile:
        return "not a file";
    case Reason::tooLarge:
        return "too large";
    case Reason::malformed:
    case Reason::truncated:
        return "damaged";
    case Reason::unsupported:
    case Reason::otherFormat:
        return "not supported";
    case Reason::noSpace:
        return "no space";
    case Reason::inputOutput:
        return "system error";
    case Reason::refused:
        return "refused";
    case Reason::empty:
        return "no result";
    case Reason::crashed:
        return "decoder crashed";
    case Reason::timeLimit:
        return "too slow";
    case Reason::outOfMemory:
        return "out of memory";
    case Reason::implausible:
        return "implausible";
    }
    return "other";
}

} // namespace kestrine
