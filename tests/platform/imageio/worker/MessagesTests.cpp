#include "platform/imageio/worker/Messages.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <set>

namespace kestrine::worker {
namespace {

Recipe anyRecipe() {
    const Resampling resampling{{0.5, 1.25, 320}, {0.25, -2, 200}, ResampleFilter::lanczos, Light::linear};
    return {std::nullopt,
            3,
            {QuarterTurn::counterclockwise, resampling, Flatten{{1, 2, 3}}, Fade{0.5F}, IntoGenericRGBA{},
             Mirror{}, Pad{1, 2, 3, 4, {5, 6, 7}}, IntoSRGB{}}};
}

Recipe canvasRecipe() {
    return {RowFormat{30, 20, ColorModel::rgb, true, SampleDepth::bits8}, 0, {QuarterTurn::clockwise}};
}

OutputOrder anyOutput() {
    return {.type = FileType::gif,
            .quality = 0.7,
            .isLossless = true,
            .isProgressive = false, // unlike the fields beside it, so that a swap is noticed
            .effort = Effort::max,
            .ditherTransparency = true,
            .resolution = {300, 150},
            .profileModel = ColorModel::gray,
            .profile = {1, 2, 3},
            .exif = {4, 5},
            .colorTable = {6, 7, 8},
            .keepsProfile = true,
            .keepsExif = false,
            .exifSelection = ExifSelection::rights,
            .maxBytes = 200'000};
}

std::vector<Request> requestsOfAllKinds() {
    const std::vector<Order> orders = {OpenFile{2},
                                       OpenFile{},
                                       AnswerQuestion{1},
                                       ReadProperty{anyRecipe(), PictureProperty::exif},
                                       RenderFile{anyRecipe(), anyOutput()},
                                       RenderFile{canvasRecipe(), {}},
                                       ReadPixels{anyRecipe()},
                                       ForgetSource{}};
    std::vector<Request> requests;
    for (const Order& order : orders) {
        requests.push_back({7, 1000, 2000, true, false, 3000, order, 5});
        requests.push_back({7, 1000, 2000, false, true, 3000, order, 5});
    }
    requests.push_back({.fileBytes = 1000, .order = AskFile{3}});
    return requests;
}

FrameDescription frameOf(std::uint32_t width, std::uint32_t height) {
    FrameDescription frame;
    frame.format = {width, height, ColorModel::gray, true, SampleDepth::bits16};
    frame.resolution = {300, 72};
    frame.quarterTurns = 3;
    frame.maxHalvings = 5;
    frame.storedBitsPerPixel = 1;
    frame.heldBytes = 12345;
    return frame;
}

Response responseWithFrame(const FrameDescription& frame) {
    Response response;
    response.frames = {frame};
    return response;
}

/// Whether the parent accepts this frame from a worker.
bool isAccepted(const FrameDescription& frame) {
    return responseIn(bytesOf(responseWithFrame(frame)), {}).has_value();
}

TEST(WorkerMessages, areTestedForEveryOrder) {
    std::set<std::size_t> orders;
    for (const Request& request : requestsOfAllKinds())
        orders.insert(request.order.index());
    EXPECT_EQ(orders.size(), std::variant_size_v<Order>);
}

TEST(WorkerMessages, carryEveryRequestUnchanged) {
    for (const Request& request : requestsOfAllKinds()) {
        const std::optional<Request> received = requestIn(bytesOf(request));
        ASSERT_TRUE(received) << request.order.index();
        EXPECT_EQ(*received, request) << request.order.index();
    }
}

TEST(WorkerMessages, thatEndTooEarlyOrGoOnAreNoRequests) {
    for (const Request& request : requestsOfAllKinds()) {
        Bytes bytes = bytesOf(request);
        for (std::size_t size = 0; size < bytes.size(); ++size)
            EXPECT_FALSE(requestIn(ByteView(bytes).first(size))) << request.order.index() << ' ' << size;
        bytes.push_back(0);
        EXPECT_FALSE(requestIn(bytes));
    }
}

TEST(WorkerMessages, withChangedBytesAreReadWithoutHarm) {
    std::mt19937 random(1);
    std::size_t accepted = 0;
    for (const Request& request : requestsOfAllKinds())
        for (int i = 0; i < 2000; ++i) {
            Bytes bytes = bytesOf(request);
            bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
            accepted += requestIn(bytes) ? 1 : 0;
        }
    EXPECT_GT(accepted, 0u);
}

TEST(WorkerMessages, refuseStepsThatNoProgramAsksFor) {
    const auto isRefused = [](const PictureStep& step) {
        return !requestIn(bytesOf({.source = 1, .order = ReadPixels{{std::nullopt, 0, {step}}}}));
    };
    const AxisMap axis{1, 0, 10};
    EXPECT_FALSE(isRefused(Resampling{axis, axis}));
    for (const double number : {0.0, -1.0, 1e30, std::numeric_limits<double>::quiet_NaN(),
                                std::numeric_limits<double>::infinity()}) {
        EXPECT_TRUE(isRefused((Resampling{{number, 0, 10}, axis}))) << number;
        EXPECT_EQ(isRefused((Resampling{axis, {1, number, 10}})), number != 0 && number != -1) << number;
    }
    EXPECT_TRUE(isRefused(Fade{1.5F}));
    EXPECT_TRUE(isRefused(Fade{std::numeric_limits<float>::quiet_NaN()}));
}

TEST(WorkerMessages, refuseAQuestionThatIsNotAsked) {
    Bytes bytes = bytesOf({.source = 1, .order = OpenFile{}});
    EXPECT_TRUE(requestIn(bytes));
    bytes.back() = 1;
    EXPECT_FALSE(requestIn(bytes));
}

TEST(WorkerMessages, refuseMoreStepsThanTheLimit) {
    Recipe recipe{std::nullopt, 0, std::vector<PictureStep>(maxSteps, Flatten{})};
    EXPECT_TRUE(requestIn(bytesOf({.source = 1, .order = ReadPixels{recipe}})));
    recipe.steps.emplace_back(Flatten{});
    EXPECT_FALSE(requestIn(bytesOf({.source = 1, .order = ReadPixels{recipe}})));
}

TEST(WorkerMessages, carryAResponse) {
    Response response = responseWithFrame(frameOf(30, 20));
    response.damage = Failure{Reason::truncated, "the file ends too early"};
    const std::optional<Response> received = responseIn(bytesOf(response), {1, 2});
    ASSERT_TRUE(received);
    ASSERT_EQ(received->frames.size(), 1u);
    const FrameDescription& frame = received->frames.front();
    EXPECT_EQ(frame.format, response.frames.front().format);
    EXPECT_EQ(frame.resolution, (Resolution{300, 72}));
    EXPECT_EQ(frame.quarterTurns, 3);
    EXPECT_EQ(frame.maxHalvings, 5);
    EXPECT_FALSE(frame.isUncompressed);
    EXPECT_EQ(frame.storedBitsPerPixel, 1u);
    EXPECT_EQ(frame.heldBytes, 12345u);
    EXPECT_EQ(received->damage->reason, Reason::truncated);
    EXPECT_EQ(received->damage->text, "the file ends too early");
    EXPECT_EQ(*received->content, (Bytes{1, 2}));
}

TEST(WorkerMessages, carryAFailureWithoutContent) {
    Response response;
    response.content = Failure{Reason::malformed, std::string(maxFailureText + 1, 'x')};
    const std::optional<Response> received = responseIn(bytesOf(response), {1, 2});
    ASSERT_TRUE(received);
    ASSERT_FALSE(received->content);
    EXPECT_EQ(received->content.failure().reason, Reason::malformed);
    EXPECT_EQ(received->content.failure().text, std::string(maxFailureText, 'x'));
}

TEST(WorkerMessages, bringNoControlCharactersOfAHostileWorker) {
    Response response;
    response.content = Failure{Reason::malformed, "a\x1b[2J\nb\x7f"};
    EXPECT_EQ(responseIn(bytesOf(response), {})->content.failure().text, "a?[2J?b?");
}

TEST(WorkerMessages, refuseFramesBeyondTheLimits) {
    EXPECT_TRUE(isAccepted(frameOf(30, 20)));
    EXPECT_FALSE(isAccepted(frameOf(0, 20)));
    EXPECT_FALSE(isAccepted(frameOf(30, maximumSide + 1)));
    FrameDescription frame = frameOf(30, 20);
    frame.resolution.vertical = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(isAccepted(frame));
    frame = frameOf(30, 20);
    frame.format.model = static_cast<ColorModel>(2);
    EXPECT_FALSE(isAccepted(frame));
    frame = frameOf(30, 20);
    frame.format.depth = static_cast<SampleDepth>(0);
    EXPECT_FALSE(isAccepted(frame));
}

TEST(WorkerMessages, refuseReasonsThatDoNotExist) {
    for (const int reason : {0, 18, 255}) {
        Response response;
        response.content = Failure{static_cast<Reason>(reason), ""};
        EXPECT_FALSE(responseIn(bytesOf(response), {})) << reason;
    }
}

TEST(WorkerMessages, thatClaimMoreFramesThanTheyHoldAreNoResponses) {
    Bytes bytes = bytesOf(responseWithFrame(frameOf(30, 20)));
    for (const std::uint8_t count : {std::uint8_t{2}, std::uint8_t{255}}) {
        bytes.front() = count;
        EXPECT_FALSE(responseIn(bytes, {}));
    }
    bytes[7] = 255; // the highest byte of the count
    EXPECT_FALSE(responseIn(bytes, {}));
}

} // namespace
} // namespace kestrine::worker
