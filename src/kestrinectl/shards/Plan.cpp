#include "kestrinectl/shards/Plan.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/text/ShownPath.h"
#include "platform/host/StringBytes.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace kestrine {

namespace {

constexpr std::string_view signature = "kestrine-plan ";
constexpr std::string_view version = "1";
constexpr std::size_t maxPath = 4095; // of Linux
constexpr std::size_t maxTreatment = 1 << 20;
constexpr std::size_t maxResults = 10'000;
constexpr std::size_t maxNumbers = 64;
constexpr char fieldEnd = '\0';

std::string field(std::string_view text) { return std::string(text) + fieldEnd; }

/// Numbers in a field, separated by single spaces.
class Numbers {
public:
    explicit Numbers(std::string_view text) : text_(text) {}

    template <class Number>
    Numbers& operator>>(Number& number) {
        const char *begin = text_.data(), *const end = begin + text_.size();
        const auto [after, error] = std::from_chars(begin, end, number);
        isRight_ = isRight_ && error == std::errc();
        const std::size_t read = static_cast<std::size_t>(after - begin);
        const bool hasMore = read < text_.size() && text_[read] == ' ';
        text_.remove_prefix(read + (hasMore ? 1 : 0));
        endsInSpace_ = hasMore;
        return *this;
    }

    /// Whether all numbers were read, and nothing else is there.
    bool isRight() const { return isRight_ && text_.empty() && !endsInSpace_; }

private:
    std::string_view text_;
    bool isRight_ = true, endsInSpace_ = false;
};

} // namespace

bool isBelowRoot(const std::string& path) {
    for (std::size_t begin = 0;;) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string_view part = std::string_view(path).substr(begin, end - begin);
        if (part.empty() || part == "." || part == "..")
            return false;
        if (end == path.size())
            return true;
        begin = end + 1;
    }
}

std::string textOf(const PlanHeader& header) {
    return field(std::string(signature) + std::string(version)) + field(std::to_string(header.resultsPerFile))
           + field(header.treatment);
}

std::string textOf(const PlanRecord& record) {
    std::string text = field(record.source)
                       + field(std::to_string(record.bytes) + " " + std::to_string(record.modified) + " "
                               + std::to_string(record.group));
    for (const std::string& result : record.results)
        text += field(result);
    return text;
}

std::string endOfPlan(std::uint64_t recordCount) { return field("") + field(std::to_string(recordCount)); }

PlanReader::PlanReader(std::istream& stream, std::string name) : stream_(stream), name_(std::move(name)) {
    // Other files are recognised by their first bytes, however long they are.
    std::string begin(signature.size(), '\0');
    stream_.read(begin.data(), static_cast<std::streamsize>(begin.size()));
    if (!stream_ || begin != signature)
        throw CommandError(name_ + " is not a plan of 'kestrinectl plan'");
    if (const std::string found = field(maxNumbers); found != version)
        throw CommandError("the plan " + name_ + " has the format " + shownPath(found)
                           + ", and this version of kestrinectl reads the format " + std::string(version));
    if (!(Numbers(field(maxNumbers)) >> header_.resultsPerFile).isRight() || header_.resultsPerFile == 0
        || header_.resultsPerFile > maxResults)
        throwDamaged("the number of results per file is wrong");
    header_.treatment = field(maxTreatment);
}

bool PlanReader::next(PlanRecord& record) {
    record = {};
    record.source = field(maxPath);
    if (record.source.empty()) {
        readEnd();
        return false;
    }
    ++count_;
    if (!isBelowRoot(record.source))
        throwDamaged("the path " + record.source + " leads out of the root");
    readNumbers(record);
    for (std::size_t i = 0; i < header_.resultsPerFile; ++i)
        record.results.push_back(path());
    return true;
}

void PlanReader::readNumbers(PlanRecord& record) {
    const std::string numbers = field(maxNumbers);
    if (!(Numbers(numbers) >> record.bytes >> record.modified >> record.group).isRight())
        throwDamaged("the numbers of the source are wrong");
}

/// Reads the path of a result, which may be empty.
std::string PlanReader::path() {
    std::string path = field(maxPath);
    if (!path.empty() && !isBelowRoot(path))
        throwDamaged("the path " + path + " leads out of the root");
    return path;
}

void PlanReader::readEnd() {
    std::uint64_t count = 0;
    if (!(Numbers(field(maxNumbers)) >> count).isRight() || count != count_)
        throwDamaged("the number of files is wrong");
    if (stream_.peek() != std::istream::traits_type::eof())
        throwDamaged("there is more after the end");
}

std::string PlanReader::field(std::size_t maxLength) {
    using Traits = std::istream::traits_type;
    std::streambuf& buffer = *stream_.rdbuf();
    std::string field;
    for (;;) {
        const Traits::int_type byte = buffer.sbumpc();
        if (Traits::eq_int_type(byte, Traits::eof()))
            throw CommandError("the plan " + name_ + " is cut off after " + std::to_string(count_)
                               + " files; make it again");
        if (Traits::to_char_type(byte) == fieldEnd) {
            digest_.add(bytesOf(field));
            digest_.add(bytesOf(std::string_view(&fieldEnd, 1)));
            return field;
        }
        if (field.size() == maxLength)
            throwDamaged("a field is longer than " + std::to_string(maxLength) + " bytes");
        field += Traits::to_char_type(byte);
    }
}

void PlanReader::throwDamaged(const std::string& what) const {
    throw CommandError("the plan " + name_ + " is damaged at file " + std::to_string(count_) + ": " + what);
}

} // namespace kestrine
