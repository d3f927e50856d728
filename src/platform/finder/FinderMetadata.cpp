#include "platform/finder/FinderMetadata.h"

#include "platform/finder/Sidecar.h"
#include "platform/finder/StoredForms.h"
#include "platform/host/files/ExtendedAttributes.h"
#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/PathParts.h"

#include <span>
#include <sys/stat.h>

namespace kestrine {

namespace {

constexpr const char* sidecar = nullptr;

/// A place where a value can be stored.
template <class Value>
struct Place {
    const char* attribute; ///< the name of an extended attribute, or the sidecar
    const StoredForm<Value>* form;
};

// The first place that has a value is used. The first place in each table is our own, which desktops share;
// it is created when it is missing. The others belong to Macs and file servers and are only updated.

constexpr Place<NSString> commentPlaces[] = {
    {"user.xdg.comment", &commentAsText},
    {"user.com.apple.metadata:kMDItemFinderComment", &commentInPropertyList},
    {"user.org.netatalk.Metadata", &commentInAppleDouble},
    {sidecar, &commentInAppleDouble},
};

constexpr Place<FinderInfo> informationPlaces[] = {
    {"user.com.apple.FinderInfo", &plainFinderInfo},
    {"user.org.netatalk.Metadata", &finderInfoInAppleDouble},
    {"user.DosStream.AFP_AfpInfo:$DATA", &finderInfoInAFPInfo},
    {sidecar, &finderInfoInAppleDouble},
};

Result<void> checkExists(const std::string& path) {
    TRY(checkPath(path));
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return systemFailure("cannot examine " + path);
    return {};
}

/// Whether load() failed because nothing usable is stored there.
bool isAbsence(Reason reason) {
    return reason == Reason::notFound || reason == Reason::notRegularFile || reason == Reason::tooLarge;
}

Result<Bytes> load(const char* attribute, const std::string& path) {
    return attribute == sidecar ? readSidecar(path) : getExtendedAttribute(path, attribute);
}

/// Removes the attribute when `bytes` is empty.
Result<void> save(const char* attribute, const std::string& path, ByteView bytes) {
    if (attribute == sidecar)
        return replaceSidecar(path, bytes);
    if (!bytes.empty())
        return setExtendedAttribute(path, attribute, bytes);
    Result<void> removed = removeExtendedAttribute(path, attribute);
    const bool isGone = removed || removed.failure().reason == Reason::notFound;
    return isGone ? Result<void>() : removed;
}

/// Skips a place that the file system does not support; fails with unsupported only when no other place has a
/// value.
template <class Value>
Result<std::optional<Value>> firstValue(std::span<const Place<Value>> places, const std::string& path) {
    TRY(checkExists(path));
    std::optional<Failure> unsupported;
    for (const Place<Value>& place : places) {
        const Result<Bytes> stored = load(place.attribute, path);
        const std::optional<Value> value = stored ? place.form->read(*stored) : std::nullopt;
        if (value)
            return value;
        if (!stored && stored.failure().reason == Reason::unsupported)
            unsupported = stored.failure();
        else if (!stored && !isAbsence(stored.failure().reason))
            return stored.failure();
    }
    if (unsupported)
        return *unsupported;
    return std::optional<Value>();
}

enum class Role {
    own,        ///< our own place; it is created when it is missing
    copy,       ///< a copy for other programs; it may be truncated
    substitute, ///< replaces our own place, which the file system does not support; never truncated
};

/// Returns whether the place now has the complete `value`.
template <class Value>
Result<bool> update(const Place<Value>& place, const std::string& path, const Value& value, Role role) {
    const Result<Bytes> stored = load(place.attribute, path);
    if (!stored && !isAbsence(stored.failure().reason))
        return stored.failure();
    if (!stored && role != Role::own)
        return false;
    const std::optional<Bytes> changed = place.form->changed(stored ? *stored : Bytes(), value);
    if (!changed)
        return false;
    const bool isWhole = place.form->read(*changed).value_or(Value()) == value;
    const bool isAsWanted = stored ? *stored == *changed && !changed->empty() : changed->empty();
    if (isAsWanted || (!isWhole && role == Role::substitute))
        return isWhole;
    TRY(save(place.attribute, path, *changed));
    return isWhole;
}

/// Stops at the first failure. Our own place is set first but cleared last, so that after a failure reading
/// gives either the old value or the new one.
template <class Value>
Result<void> updateAll(std::span<const Place<Value>> places, const std::string& path, const Value& value) {
    TRY(checkExists(path));
    const bool isClearing = value == Value();
    std::optional<Failure> unsupported;
    bool isStored = false;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const std::size_t index = isClearing ? places.size() - 1 - i : i;
        const Role role = index == 0 ? Role::own : unsupported ? Role::substitute : Role::copy;
        const Result<bool> updated = update(places[index], path, value, role);
        if (!updated && updated.failure().reason != Reason::unsupported)
            return updated.failure();
        if (!updated)
            unsupported = updated.failure();
        isStored |= updated && *updated;
    }
    if (unsupported && !isStored)
        return *unsupported;
    return {};
}

} // namespace

Result<OptionalString> finderComment(const std::string& path) {
    Result<OptionalString> comment = firstValue<NSString>(commentPlaces, path);
    if (comment && *comment && (*comment)->isEmpty())
        return OptionalString();
    return comment;
}

Result<void> setFinderComment(const std::string& path, const NSString& comment) {
    return updateAll<NSString>(commentPlaces, path, comment);
}

Result<FinderInfo> finderInformation(const std::string& path) {
    const std::optional<FinderInfo> information = TRY(firstValue<FinderInfo>(informationPlaces, path));
    return information.value_or(FinderInfo());
}

Result<void> setFinderInformation(const std::string& path, const FinderInfo& information) {
    return updateAll<FinderInfo>(informationPlaces, path, information);
}

} // namespace kestrine
