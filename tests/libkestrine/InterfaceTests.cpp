// kestrine.h as a program in C uses it. tests/endtoend/test_interface.py judges the results; these tests are
// what the sanitizers see.
#include "libkestrine/kestrine.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace {

/// A PPM file of a grey ramp.
std::string pictureFile(unsigned width, unsigned height) {
    std::string file = "P6 " + std::to_string(width) + " " + std::to_string(height) + " 255\n";
    for (unsigned pixel = 0; pixel < width * height; ++pixel)
        file.append(3, static_cast<char>(pixel));
    return file;
}

struct OpenedPicture {
    explicit OpenedPicture(const std::string& file) {
        EXPECT_EQ(kestrine_open_memory(file.data(), file.size(), &picture), KESTRINE_OK);
    }
    ~OpenedPicture() { kestrine_close(picture); }
    OpenedPicture(const OpenedPicture&) = delete;
    OpenedPicture& operator=(const OpenedPicture&) = delete;

    kestrine_picture* picture = nullptr;
};

/// The result as bytes; "" after a failure.
std::string converted(kestrine_picture* picture, const char* options) {
    kestrine_buffer result;
    if (kestrine_convert_to_memory(picture, options, &result) != KESTRINE_OK)
        return "";
    const std::string bytes(static_cast<const char*>(result.bytes), result.length);
    kestrine_free(&result);
    return bytes;
}

const char* const small = R"({"longest": 40, "format": "png"})";

TEST(Interface, picturesMayBeConvertedAtTheSameTime) {
    const std::string file = pictureFile(300, 200);
    const std::string expected = converted(OpenedPicture(file).picture, small);
    ASSERT_FALSE(expected.empty());
    std::vector<std::string> results(6);
    std::vector<std::thread> threads;
    for (std::string& result : results)
        threads.emplace_back([&] { result = converted(OpenedPicture(file).picture, small); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(results, std::vector<std::string>(6, expected));
}

TEST(Interface, aPictureIsConvertedAgainAfterTheFirstResultIsFreed) {
    const std::string file = pictureFile(300, 200);
    const OpenedPicture opened(file);
    const std::string first = converted(opened.picture, small);
    EXPECT_EQ(converted(opened.picture, small), first);
    EXPECT_NE(first, "");
}

TEST(Interface, aCancelledConversionLeavesThePictureUsable) {
    const std::string file = pictureFile(300, 200);
    const OpenedPicture opened(file);
    const auto cancel = [](double share, void*) { return share > 0.3 ? 1 : 0; };
    ASSERT_EQ(kestrine_set_progress(opened.picture, cancel, nullptr), KESTRINE_OK);
    kestrine_buffer result;
    EXPECT_EQ(kestrine_convert_to_memory(opened.picture, small, &result), KESTRINE_CANCELLED);
    EXPECT_EQ(result.bytes, nullptr);
    ASSERT_EQ(kestrine_set_progress(opened.picture, nullptr, nullptr), KESTRINE_OK);
    EXPECT_NE(converted(opened.picture, small), "");
}

TEST(Interface, aLongErrorTextIsNotCutInsideACharacter) {
    std::string path = "/none/";
    for (int count = 0; count < 400; ++count)
        path += "\u00E9";
    for (int shift = 0; shift < 2; ++shift, path.insert(1, "x")) {
        kestrine_picture* picture = nullptr;
        ASSERT_EQ(kestrine_open_path(path.c_str(), &picture), KESTRINE_NOT_FOUND);
        const std::string text = kestrine_error_text();
        EXPECT_GE(text.size(), 510U);
        EXPECT_EQ(text.back(), "\u00E9"[1]);
    }
}

TEST(Interface, aCutOffFileIsMalformedAndLeavesANullPicture) {
    const std::string file = pictureFile(300, 200).substr(0, 5);
    kestrine_picture* picture = nullptr;
    EXPECT_EQ(kestrine_open_memory(file.data(), file.size(), &picture), KESTRINE_MALFORMED);
    EXPECT_EQ(picture, nullptr);
}

} // namespace
