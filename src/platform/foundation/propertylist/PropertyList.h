// PropertyList: a property list whose top is a dictionary, in memory. Whatever it holds is kept when it is
// written again, so that one value can be changed in a file that others care for.
#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/text/NSString.h"
#include "platform/host/Result.h"

#include <memory>

namespace kestrine {

/// Move-only; owns what it holds.
class PropertyList {
public:
    enum class Form { binary, xml };

    /// An empty dictionary, to be written in the binary form.
    static PropertyList empty();

    /// Reads either form, telling them apart by content. tooLarge, malformed, truncated, refused or
    /// unsupported when it cannot be had.
    static Result<PropertyList> fromBytes(ByteView content);

    /// The form it was read in.
    Form form() const { return form_; }

    /// The data under `key`; null when there is nothing or something else.
    std::shared_ptr<const NSData> dataForKey(const NSString& key) const;
    void setData(const NSString& key, ByteView data);

    Bytes toBinary() const;
    Bytes toXML() const;
    /// In the form it was read in.
    Bytes toBytes() const { return form_ == Form::binary ? toBinary() : toXML(); }

private:
    struct Release {
        void operator()(void* node) const;
    };
    using Node = std::unique_ptr<void, Release>;

    PropertyList(Node root, Form form) : root_(std::move(root)), form_(form) {}

    Node root_; // a dictionary
    Form form_;
};

} // namespace kestrine
