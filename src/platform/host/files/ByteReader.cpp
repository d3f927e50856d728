#include "platform/host/files/ByteReader.h"

#include "platform/host/files/FileContent.h"

#include <algorithm>
#include <atomic>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {

namespace {

class MemoryReader final : public ByteReader {
public:
    explicit MemoryReader(Bytes bytes) : owned_(std::move(bytes)), bytes_(owned_) {}
    explicit MemoryReader(ByteView borrowed) : bytes_(borrowed) {}

    std::uint64_t size() const override { return bytes_.size(); }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        if (offset >= bytes_.size())
            return 0;
        const std::size_t count = std::min<std::uint64_t>(into.size(), bytes_.size() - offset);
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), count, into.begin());
        return count;
    }

private:
    const Bytes owned_;
    const ByteView bytes_;
};

class FileReader final : public ByteReader {
public:
    FileReader(FileDescriptor file, std::uint64_t size) : file_(std::move(file)), size_(size) {}

    std::uint64_t size() const override { return size_; }
    int descriptor() const override { return file_.number(); }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        if (offset >= size_)
            return 0;
        const PartRead read = kestrine::readAt(file_.number(), into, offset);
        if (read.error != 0)
            note(read.error);
        return read.bytes;
    }

    std::optional<Failure> failure() const override {
        const int error = firstError_;
        return error == 0 ? std::nullopt : std::optional(systemFailure("cannot read the file", error));
    }

private:
    void note(int error) const {
        int none = 0;
        firstError_.compare_exchange_strong(none, error);
    }

    const FileDescriptor file_;
    const std::uint64_t size_;
    mutable std::atomic<int> firstError_ = 0;
};

} // namespace

Result<Bytes> ByteReader::readAll(std::uint64_t limit) const {
    if (size() > limit)
        return Failure{Reason::tooLarge, "the input has more than " + std::to_string(limit) + " bytes"};
    Bytes bytes(static_cast<std::size_t>(size()));
    const bool isComplete = readAt(0, bytes) == bytes.size();
    if (const std::optional<Failure> error = failure())
        return *error;
    if (!isComplete)
        return Failure{Reason::truncated, "the input became shorter while it was read"};
    return bytes;
}

std::shared_ptr<const ByteReader> readerOfBytes(Bytes bytes) {
    return std::make_shared<MemoryReader>(std::move(bytes));
}

std::shared_ptr<const ByteReader> readerOfBorrowedBytes(ByteView bytes) {
    return std::make_shared<MemoryReader>(bytes);
}

Result<std::shared_ptr<const ByteReader>> readerOfFile(FileDescriptor file) {
    struct stat status {};
    if (::fstat(file.number(), &status) != 0)
        return systemFailure("cannot examine the input");
    if (!S_ISREG(status.st_mode))
        return Failure{Reason::notRegularFile, "the input is not a regular file"};
    return readerOfFile(std::move(file), static_cast<std::uint64_t>(status.st_size));
}

std::shared_ptr<const ByteReader> readerOfFile(FileDescriptor file, std::uint64_t size) {
    return std::make_shared<FileReader>(std::move(file), size);
}

Result<std::shared_ptr<const ByteReader>> readerOfPath(const std::string& path) {
    FileDescriptor file = TRY(openForReading(path));
    return readerOfFile(std::move(file));
}

} // namespace kestrine
