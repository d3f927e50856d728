// PropertyList: a property list in memory whose root is a dictionary. Writing it keeps all values that were
// read, so that one value can be changed in a file of another program.
#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/text/NSString.h"
#include "platform/host/Result.h"

#include <memory>

namespace kestrine {

/// Move-only; owns its content.
class PropertyList {
public:
    enum class Form { binary, xml };

    /// An empty dictionary in the binary form.
    static PropertyList empty();

    /// Reads the binary or the XML form, which it detects from the content. Fails with malformed if the root
    /// is not a dictionary, and for the reasons of checkPropertyListBounds().
    static Result<PropertyList> fromBytes(ByteView content);

    /// The form from which it was read.
    Form form() const { return form_; }

    /// The data for `key`; null if there is no value or a value of another type.
    std::shared_ptr<const NSData> dataForKey(const NSString& key) const;
    void setData(const NSString& key, ByteView data);

    Bytes toBinary() const;
    Bytes toXML() const;
    /// The bytes of the list, in the form from which it was read.
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
