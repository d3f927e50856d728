// Service: the worker's side. Carries out requests, one after another.
#pragma once

#include "platform/host/files/MemoryFile.h"
#include "platform/host/process/MessageSocket.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/worker/Messages.h"

namespace kestrine::worker {

/// For one thread. Each request comes with two descriptors, the source's file and the shared file, or with a
/// third one, of the empty file that a result is written into instead of being the answer. The source of the
/// last request stays open, with its kept pixels.
class Service {
public:
    /// `questions` is the table of the questions that can be asked; it must outlive this object.
    explicit Service(std::span<const FileQuestion> questions) : questions_(questions) {}

    /// Answers until the other end is closed, or sends something that is not a parcel.
    void serve(const MessageSocket& requests);

    /// Carries out one request; `file` is the source's, `resultFile` the one for the result, if any. A lack
    /// of memory becomes a failure.
    Response responseTo(const Request& request, FileDescriptor file, FileDescriptor resultFile);

private:
    /// A request that is being carried out.
    struct Call {
        const Request& request;
        FileDescriptor file;
        FileDescriptor resultFile;
        Response& response;
    };

    Result<void> open(Call& call);
    Result<FileQuestion> questionNumbered(std::uint32_t number) const;
    Result<Picture> pictureOf(const Recipe& recipe) const;

    // Each carries out one order. All but AskFile are for a source, which they open unless it is open.
    Result<Bytes> carryOut(const OpenFile& order, Call& call);
    Result<Bytes> carryOut(const AnswerQuestion& order, Call& call);
    Result<Bytes> carryOut(const ReadProperty& order, Call& call);
    Result<Bytes> carryOut(const RenderFile& order, Call& call);
    Result<Bytes> carryOut(const ReadPixels& order, Call& call);
    Result<Bytes> carryOut(const ForgetSource& order, Call& call);
    Result<Bytes> carryOut(const AskFile& order, Call& call);

    const std::span<const FileQuestion> questions_;
    std::uint64_t sourceNumber_ = 0; ///< 0 if source_ is null
    std::shared_ptr<LocalSource> source_;
};

} // namespace kestrine::worker
