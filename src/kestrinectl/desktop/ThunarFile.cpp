#include "kestrinectl/desktop/ThunarFile.h"

#include "kestrinectl/desktop/ExpatLibrary.h"

#include <limits>
#include <memory>
#include <new>

namespace kestrine {

namespace {

/// Elements that say something by being there.
bool isMark(const std::string& name) {
    return name.ends_with("-files") || name == "directories" || name == "startup-notify";
}

class ThunarParsing {
public:
    explicit ThunarParsing(const expat::Functions& functions)
        : expat_(functions), parser_(expat_.createParser("UTF-8"), expat_.freeParser) {
        if (!parser_)
            throw std::bad_alloc();
        // With a random salt, the library would end the program on a system without random numbers.
        expat_.setHashSalt(parser_.get(), 1);
        expat_.setUserData(parser_.get(), this);
        expat_.setElementHandler(
            parser_.get(),
            [](void* self, const char* name, const char**) {
                handle(self, [&](ThunarParsing& parsing) { parsing.begin(name); });
            },
            [](void* self, const char* name) {
                handle(self, [&](ThunarParsing& parsing) { parsing.end(name); });
            });
        expat_.setCharacterDataHandler(parser_.get(), [](void* self, const char* text, int length) {
            handle(self, [&](ThunarParsing& parsing) {
                parsing.data_.append(text, static_cast<std::size_t>(length));
            });
        });
        expat_.setDoctypeHandler(parser_.get(), [](void* self, const char*, const char*, const char*, int) {
            handle(self, [](ThunarParsing& parsing) { parsing.refuse("it has a document type"); });
        });
    }

    Result<ThunarFile> parse(const std::string& content) {
        if (content.size() > std::numeric_limits<int>::max())
            return malformed("it is too long");
        if (content.find('\0') != std::string::npos)
            return malformed("it is not UTF-8"); // the library would read UTF-16
        const bool isWellFormed =
            expat_.parse(parser_.get(), content.data(), static_cast<int>(content.size()), 1) == XML_STATUS_OK;
        if (isOutOfMemory_ || expat_.errorCode(parser_.get()) == XML_ERROR_NO_MEMORY)
            throw std::bad_alloc();
        if (!refusal_.empty())
            return malformed(refusal_);
        if (!isWellFormed)
            return malformed(expat_.errorString(expat_.errorCode(parser_.get())) + std::string(" in line ")
                             + std::to_string(expat_.lineNumber(parser_.get())));
        file_.isEmptyElement = content.compare(file_.endTag, 2, "</") != 0;
        if (file_.isEmptyElement)
            file_.endTag -= 2; // the position is that after the element
        return std::move(file_);
    }

private:
    static Failure malformed(const std::string& reason) { return {Reason::malformed, reason}; }

    /// No exception may leave a handler, since the library could not go on. Nothing is handled after a stop,
    /// although the library still reports the end of an empty element then.
    template <class Handle>
    static void handle(void* self, const Handle& handleEvent) {
        auto& parsing = *static_cast<ThunarParsing*>(self);
        if (parsing.isOutOfMemory_ || !parsing.refusal_.empty())
            return;
        try {
            handleEvent(parsing);
        } catch (const std::bad_alloc&) {
            parsing.isOutOfMemory_ = true;
            parsing.expat_.stop(parsing.parser_.get(), XML_FALSE);
        }
    }

    void refuse(const std::string& reason) {
        refusal_ = reason;
        expat_.stop(parser_.get(), XML_FALSE);
    }

    std::size_t position() const { return static_cast<std::size_t>(expat_.byteIndex(parser_.get())); }

    void begin(const std::string& name) {
        ++depth_;
        data_.clear();
        if (depth_ == 1 && name != "actions")
            refuse("its outermost element is <" + name + ">, not <actions>");
        isAction_ = depth_ == 2 ? name == "action" : isAction_;
        if (depth_ == 2 && isAction_)
            file_.actions.push_back({.begin = position()});
    }

    void end(const std::string& name) {
        if (depth_ == 1)
            file_.endTag = position();
        if (depth_ == 2 && isAction_)
            file_.actions.back().end = position() + static_cast<std::size_t>(expat_.byteCount(parser_.get()));
        if (depth_ == 3 && isAction_ && (!data_.empty() || isMark(name)))
            file_.actions.back().fields[name] = isMark(name) ? "" : data_;
        data_.clear();
        --depth_;
    }

    const expat::Functions& expat_;
    std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser_;
    ThunarFile file_;
    unsigned depth_ = 0;
    bool isAction_ = false; ///< whether the open element of depth 2 is an action
    std::string data_;      ///< since the last tag
    std::string refusal_;
    bool isOutOfMemory_ = false;
};

} // namespace

std::string ThunarAction::field(const std::string& name) const {
    const auto found = fields.find(name);
    return found == fields.end() ? "" : found->second;
}

Result<ThunarFile> parseThunarFile(const std::string& content) {
    const Result<expat::Functions>& functions = expat::installedFunctions();
    if (!functions)
        return functions.failure();
    return ThunarParsing(*functions).parse(content);
}

} // namespace kestrine
