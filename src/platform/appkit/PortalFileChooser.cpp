#include "platform/appkit/PortalFileChooser.h"

#include "platform/appkit/FileURI.h"
#include "platform/appkit/SessionBus.h"
#include "platform/host/files/FileDescriptor.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>

namespace kestrine {

namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* chooserInterface = "org.freedesktop.portal.FileChooser";
constexpr const char* requestInterface = "org.freedesktop.portal.Request";
/// The bus names of all programs that show dialogues for the portal begin with this.
constexpr std::string_view backendPrefix = "org.freedesktop.impl.portal.desktop.";

/// Earlier versions of the portal would offer files instead, without an error.
constexpr std::uint32_t firstVersionWithFolders = 3;
/// Last part of the request's path; unique because each conversation has its own connection.
constexpr const char* requestToken = "kestrine_open_panel";

/// The time limit for each reply of the portal and the bus, in microseconds. Long enough to start a portal,
/// short enough for a user who waits for a dialogue. The user's answer arrives later as a signal, without a
/// time limit.
constexpr std::uint64_t replyTimeout = 5'000'000;

enum Response : std::uint32_t { responseChosen = 0, responseCancelled = 1 };

Failure withoutAnswer() { return {Reason::inputOutput, "the desktop's portal ended without an answer"}; }

/// One question to the portal, over its own connection.
class PortalConversation {
public:
    explicit PortalConversation(const BusFunctions& functions) : sd_(functions) {}

    Result<DialogAnswer> ask(const DialogQuestion& question);

private:
    Result<void> connect();
    Result<void> checkVersion(bool forFolder) const;
    Result<void> listen() const;
    Result<void> showDialog(const DialogQuestion& question);
    Result<BusMessage> nextMessage() const;
    bool isAnswer(sd_bus_message* message) const;
    bool reportsPortalIsGone(sd_bus_message* message) const;
    Result<DialogAnswer> answerIn(sd_bus_message* message) const;
    Result<DialogAnswer> chosenPath(sd_bus_message* message) const;
    const char* firstURI(sd_bus_message* message) const;
    bool runsBackend() const;

    const BusFunctions& sd_;
    Bus bus_;
    std::string portal_;  ///< the connection that received the question
    std::string request_; ///< path of the object that will answer
};

Result<DialogAnswer> PortalConversation::ask(const DialogQuestion& question) {
    TRY(connect());
    TRY(checkVersion(question.forFolder));
    TRY(listen());
    TRY(showDialog(question));
    for (;;) {
        const BusMessage message = TRY(nextMessage());
        if (isAnswer(message.get()))
            return answerIn(message.get());
        if (reportsPortalIsGone(message.get()))
            return withoutAnswer();
    }
}

Result<void> PortalConversation::connect() {
    sd_bus* bus = nullptr;
    if (const int status = sd_.openUser(&bus); status < 0)
        return systemFailure("cannot reach the desktop's message bus", -status);
    bus_.reset(bus);
    if (const int status = sd_.setMethodCallTimeout(bus, replyTimeout); status < 0)
        return systemFailure("cannot limit the time of the desktop's portal", -status);
    return {};
}

/// The first call; it also starts a portal that is installed but not running.
Result<void> PortalConversation::checkVersion(bool forFolder) const {
    std::uint32_t version = 0;
    const int status = sd_.getPropertyTrivial(bus_.get(), portalName, portalPath, chooserInterface, "version",
                                              nullptr, SD_BUS_TYPE_UINT32, &version);
    if (status < 0)
        return systemFailure("the desktop has no portal", -status);
    if (forFolder && version < firstVersionWithFolders)
        return Failure{Reason::unsupported, "the desktop's portal cannot offer folders"};
    return {};
}

/// Called before the question is sent, so that no answer can be missed. nextMessage() returns the signals.
Result<void> PortalConversation::listen() const {
    int status = sd_.matchSignal(bus_.get(), nullptr, portalName, nullptr, requestInterface, "Response",
                                 nullptr, nullptr);
    if (status >= 0)
        status = sd_.matchSignal(bus_.get(), nullptr, busName, nullptr, busName, "NameOwnerChanged", nullptr,
                                 nullptr);
    if (status < 0)
        return systemFailure("cannot listen to the desktop's portal", -status);
    return {};
}

Result<void> PortalConversation::showDialog(const DialogQuestion& question) {
    constexpr const char* noParentWindow = "";
    constexpr int optionCount = 3;
    sd_bus_message* message = nullptr;
    const int status =
        sd_.callMethod(bus_.get(), portalName, portalPath, chooserInterface, "OpenFile", nullptr, &message,
                       "ssa{sv}", noParentWindow, question.title.c_str(), optionCount, //
                       "handle_token", "s", requestToken,                              //
                       "directory", "b", static_cast<int>(question.forFolder),         //
                       "multiple", "b", static_cast<int>(question.several));
    const BusMessage reply(message);
    if (status < 0)
        return systemFailure("the desktop's portal refuses", -status);
    const char* request = nullptr;
    const char* sender = sd_.messageGetSender(reply.get());
    if (sd_.messageRead(reply.get(), "o", &request) <= 0 || sender == nullptr)
        return withoutAnswer();
    request_ = request;
    portal_ = sender;
    return {};
}

Result<BusMessage> PortalConversation::nextMessage() const {
    for (;;) {
        sd_bus_message* message = nullptr;
        int progress = sd_.process(bus_.get(), &message);
        if (message != nullptr)
            return BusMessage(message);
        if (progress == 0)
            progress = sd_.wait(bus_.get(), UINT64_MAX);
        if (progress < 0 && progress != -EINTR)
            return systemFailure("the desktop's message bus is gone", -progress);
    }
}

bool PortalConversation::isAnswer(sd_bus_message* message) const {
    const char* path = sd_.messageGetPath(message);
    const char* sender = sd_.messageGetSender(message);
    return sd_.messageIsSignal(message, requestInterface, "Response") > 0 && path != nullptr
           && path == request_ && sender != nullptr && sender == portal_;
}

bool PortalConversation::reportsPortalIsGone(sd_bus_message* message) const {
    const char *name = nullptr, *oldOwner = nullptr, *newOwner = nullptr;
    return sd_.messageIsSignal(message, busName, "NameOwnerChanged") > 0
           && sd_.messageRead(message, "sss", &name, &oldOwner, &newOwner) > 0
           && std::string_view(name) == portalName && oldOwner == portal_;
}

/// A result that is neither a choice nor a cancel has two causes: the window of the dialogue was closed (some
/// desktops do not report that as a cancel), or none could be shown, since no program that shows dialogues is
/// running.
Result<DialogAnswer> PortalConversation::answerIn(sd_bus_message* message) const {
    std::uint32_t response = 0;
    if (sd_.messageRead(message, "u", &response) <= 0)
        return withoutAnswer();
    if (response == responseChosen)
        return chosenPath(message);
    if (response == responseCancelled || runsBackend())
        return DialogAnswer();
    return withoutAnswer();
}

Result<DialogAnswer> PortalConversation::chosenPath(sd_bus_message* message) const {
    const char* uri = firstURI(message);
    if (uri == nullptr)
        return withoutAnswer();
    std::string path = TRY(pathOfFileURI(uri));
    return DialogAnswer(std::move(path));
}

/// The first element of "uris" in the named results; null if there is none.
const char* PortalConversation::firstURI(sd_bus_message* message) const {
    if (sd_.messageEnterContainer(message, SD_BUS_TYPE_ARRAY, "{sv}") <= 0)
        return nullptr;
    while (sd_.messageEnterContainer(message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char *name = nullptr, *uri = nullptr;
        if (sd_.messageRead(message, "s", &name) <= 0)
            return nullptr;
        const bool isList = std::string_view(name) == "uris"
                            && sd_.messageEnterContainer(message, SD_BUS_TYPE_VARIANT, "as") > 0
                            && sd_.messageEnterContainer(message, SD_BUS_TYPE_ARRAY, "s") > 0;
        if (isList)
            return sd_.messageRead(message, "s", &uri) > 0 ? uri : nullptr;
        if (sd_.messageSkip(message, "v") < 0 || sd_.messageExitContainer(message) < 0)
            return nullptr;
    }
    return nullptr;
}

bool PortalConversation::runsBackend() const {
    char** names = nullptr;
    if (sd_.listNames(bus_.get(), &names, nullptr) < 0)
        return false;
    bool found = false;
    for (char** name = names; name != nullptr && *name != nullptr; ++name) {
        found = found || std::string_view(*name).starts_with(backendPrefix);
        std::free(*name);
    }
    std::free(names);
    return found;
}

} // namespace

Result<DialogAnswer> askPortal(const DialogQuestion& question) {
    const Result<BusFunctions>& functions = busFunctions();
    if (!functions)
        return functions.failure();
    return PortalConversation(*functions).ask(question);
}

} // namespace kestrine
