#include "platform/host/process/ArgumentVector.h"

#include "platform/host/files/PathParts.h"

namespace kestrine {

Result<ArgumentVector> ArgumentVector::make(const std::string& program,
                                            const std::vector<std::string>& arguments) {
    TRY(checkPath(program));
    std::vector<std::string> strings{program};
    for (const std::string& argument : arguments) {
        if (argument.find('\0') != std::string::npos)
            return Failure{Reason::malformed, "an argument contains a zero byte"};
        strings.push_back(argument);
    }
    return ArgumentVector(std::move(strings));
}

ArgumentVector::ArgumentVector(std::vector<std::string> strings) : strings_(std::move(strings)) {
    for (std::string& string : strings_)
        pointers_.push_back(string.data());
    pointers_.push_back(nullptr);
}

} // namespace kestrine
