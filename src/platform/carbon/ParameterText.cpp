#include "platform/carbon/ParameterText.h"

#include "platform/carbon/DescriptorData.h"
#include "platform/carbon/RecordFields.h"

#include <optional>

namespace kestrine {
namespace {

constexpr int maxDepth = 16;
constexpr std::size_t codeLength = 4;

bool isCodeCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// Each function reads one construct at the current position. It returns nullopt or false on failure, with
/// the error in the outcome.
class Reader {
public:
    Reader(std::string_view text, std::span<const AEDesc* const> descriptors, ParameterTextOutcome& outcome)
        : text_(text), descriptors_(descriptors), outcome_(outcome) {}

    void readAll() {
        AERecord& parameters = outcome_.parameters;
        skipBlanks();
        if (!atEnd() && !readFields(parameters))
            return;
        skipBlanks();
        if (!atEnd())
            fail(aeBuildSyntaxNoEOF);
        else if (used_ != descriptors_.size())
            failWith(paramErr);
    }

private:
    bool atEnd() const { return place_ == text_.size(); }

    void skipBlanks() {
        while (!atEnd() && (text_[place_] == ' ' || text_[place_] == '\t'))
            place_++;
    }

    /// Consumes the character if it is next.
    bool take(char c) {
        skipBlanks();
        if (atEnd() || text_[place_] != c)
            return false;
        place_++;
        return true;
    }

    bool failWith(OSStatus status) {
        outcome_.status = status;
        return false;
    }

    bool fail(AEBuildErrorCode code) {
        outcome_.error = {atEnd() && code != aeBuildSyntaxMissingQuote ? aeBuildSyntaxBadEOF : code,
                          static_cast<std::uint32_t>(place_)};
        return failWith(errAEBuildSyntaxError);
    }

    bool expect(char c, AEBuildErrorCode code) { return take(c) || fail(code); }

    static FourCharCode codeFrom(std::string_view characters) {
        FourCharCode code = 0;
        for (std::size_t i = 0; i < codeLength; i++)
            code = code << 8 | static_cast<std::uint8_t>(i < characters.size() ? characters[i] : ' ');
        return code;
    }

    std::optional<FourCharCode> readQuotedCode() {
        const std::string_view rest = text_.substr(place_);
        if (rest.size() <= codeLength || rest[codeLength] != '\'')
            return fail(aeBuildSyntaxMissingQuote), std::nullopt;
        place_ += codeLength + 1;
        return codeFrom(rest.substr(0, codeLength));
    }

    /// `missing` is the error when there is no code.
    std::optional<FourCharCode> readCode(AEBuildErrorCode missing) {
        if (take('\''))
            return readQuotedCode();
        const std::size_t start = place_;
        while (!atEnd() && isCodeCharacter(text_[place_]))
            place_++;
        const std::size_t length = place_ - start;
        if (length == 0 || length > codeLength)
            return place_ = start, fail(length == 0 ? missing : aeBuildSyntaxBadToken), std::nullopt;
        return codeFrom(text_.substr(start, length));
    }

    /// After "(@".
    std::optional<AEDesc> readDescriptor() {
        if (!expect(')', aeBuildSyntaxNoCloseParen))
            return std::nullopt;
        if (used_ == descriptors_.size() || descriptors_[used_] == nullptr)
            return failWith(paramErr), std::nullopt;
        return *descriptors_[used_++];
    }

    /// After "type(".
    std::optional<AEDesc> readTypedCode(DescType type) {
        const std::optional<FourCharCode> code = readCode(aeBuildSyntaxBadDesc);
        if (!code || !expect(')', aeBuildSyntaxNoCloseParen))
            return std::nullopt;
        return codeDescriptor(type, *code);
    }

    /// After the opening brace.
    std::optional<AEDesc> readRecord(DescType type) {
        AERecord record{type, nullptr};
        if (++depth_ > maxDepth)
            return fail(aeBuildSyntaxBadDesc), std::nullopt;
        if (!take('}') && (!readFields(record) || !expect('}', aeBuildSyntaxNoCloseBrace)))
            return std::nullopt;
        depth_--;
        return record;
    }

    std::optional<AEDesc> readValue() {
        if (take('{'))
            return readRecord(typeAERecord);
        if (take('('))
            return expect('@', aeBuildSyntaxBadDesc) ? readDescriptor() : std::nullopt;
        const std::optional<FourCharCode> code = readCode(aeBuildSyntaxBadDesc);
        if (!code)
            return std::nullopt;
        if (take('('))
            return readTypedCode(*code);
        if (take('{'))
            return readRecord(*code);
        return codeDescriptor(typeEnumerated, *code);
    }

    bool readFields(AERecord& record) {
        do {
            const std::optional<AEKeyword> key = readCode(aeBuildSyntaxNoKey);
            if (!key || !expect(':', aeBuildSyntaxNoColon))
                return false;
            const std::optional<AEDesc> value = readValue();
            if (!value)
                return false;
            const OSErr status = putField(record, *key, *value);
            if (status != noErr)
                return failWith(status);
        } while (take(','));
        return true;
    }

    const std::string_view text_;
    const std::span<const AEDesc* const> descriptors_;
    ParameterTextOutcome& outcome_;
    std::size_t place_ = 0;
    std::size_t used_ = 0;
    int depth_ = 0;
};

} // namespace

ParameterTextOutcome readParameterText(std::string_view text, std::span<const AEDesc* const> descriptors) {
    ParameterTextOutcome outcome;
    Reader(text, descriptors, outcome).readAll();
    return outcome;
}

} // namespace kestrine
