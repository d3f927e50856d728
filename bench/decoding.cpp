// Compares the speed of our own JPEG decoder with libjpeg-turbo. Decodes the given files at every scale with
// both in turn, on one thread. Prints the medians in milliseconds of processor time, and the median of the
// ratios. Files that our own decoder leaves to the library are named with the reason.
//   kestrine_bench_decoding FILE...               compares
//   kestrine_bench_decoding --fallbacks FILE...   only counts the reasons
#include "platform/host/files/ByteReader.h"
#include "platform/imageio/jpeg/LibraryRows.h"
#include "platform/imageio/jpeg/own/OwnRows.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <time.h>
#include <vector>

namespace kestrine {

namespace {

constexpr int pairs = 11;

/// Reads the whole file, so that reading is not measured. Ends the program on failure.
Bytes contentsOf(const char* path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "cannot read %s\n", path);
        std::exit(1);
    }
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

double processorMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Result<void> readRows(RowSource& rows) {
    Bytes row(rows.format().bytesPerRow());
    for (std::uint32_t y = 0; y < rows.format().height; ++y)
        TRY(rows.readRow(row));
    return {};
}

/// The time from opening a file to its last row. Ends the program on failure.
template <class Open>
double millisecondsFor(const Open& open) {
    const double start = processorMilliseconds();
    Result<RowSourcePointer> rows = open();
    const Result<void> read = rows ? readRows(**rows) : rows.failure();
    if (!read) {
        std::fprintf(stderr, "%s\n", read.failure().text.c_str());
        std::exit(1);
    }
    rows = RowSourcePointer();
    return processorMilliseconds() - start;
}

Result<RowSourcePointer> ownRows(const std::shared_ptr<const ByteReader>& file, int eighths) {
    jpeg::LibraryReader reader(file);
    TRY(reader.readHeader());
    const jpeg::FrameHeader header = TRY(jpeg::frameHeaderOf(reader));
    return jpeg::openOwnRows(file, header, eighths);
}

void compare(const std::shared_ptr<const ByteReader>& file, int eighths) {
    const Result<RowSourcePointer> opened = ownRows(file, eighths);
    const RowFormat format{.model = opened ? (*opened)->format().model : ColorModel::rgb};
    std::vector<double> own, library, ratios;
    for (int i = 0; i < pairs; ++i) {
        own.push_back(millisecondsFor([&] { return ownRows(file, eighths); }));
        library.push_back(millisecondsFor(
            [&] { return jpeg::openLibraryRows(file, format, eighths, std::make_shared<DamageRecord>()); }));
        ratios.push_back(own.back() / library.back());
    }
    std::printf("  %d/8  own %7.2f  library %7.2f  ratio %.3f\n", eighths, median(own), median(library),
                median(ratios));
}

/// Why our own decoder does not decode the file; empty if it does.
std::string reasonForFallback(const std::shared_ptr<const ByteReader>& file) {
    const Result<RowSourcePointer> rows = ownRows(file, 1);
    const Result<void> read = rows ? readRows(**rows) : rows.failure();
    return read ? "" : read.failure().text;
}

void countFallbacks(int count, char** paths) {
    std::map<std::string, int> reasons;
    for (int i = 0; i < count; ++i) {
        const std::string reason = reasonForFallback(readerOfBytes(contentsOf(paths[i])));
        ++reasons[reason];
        if (!reason.empty())
            std::printf("%s: %s\n", paths[i], reason.c_str());
    }
    for (const auto& [reason, files] : reasons)
        std::printf("%6d  %s\n", files, reason.empty() ? "decoded by our own decoder" : reason.c_str());
}

void compareFiles(int count, char** paths) {
    for (int i = 0; i < count; ++i) {
        const auto file = readerOfBytes(contentsOf(paths[i]));
        const std::string reason = reasonForFallback(file);
        std::printf("%s%s%s\n", paths[i], reason.empty() ? "" : ": ", reason.c_str());
        for (const int eighths : {8, 4, 2, 1})
            if (reason.empty())
                compare(file, eighths);
    }
}

} // namespace

} // namespace kestrine

int main(int count, char** arguments) {
    if (count > 1 && std::string_view(arguments[1]) == "--fallbacks")
        kestrine::countFallbacks(count - 2, arguments + 2);
    else
        kestrine::compareFiles(count - 1, arguments + 1);
}
