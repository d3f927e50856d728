// Compares the speed of our own JPEG decoder with libjpeg-turbo. Decodes the given files at every scale with
// both in turn, on one thread. Prints the medians in milliseconds of processor time, and the median of the
// ratios.
#include "platform/host/files/ByteReader.h"
#include "platform/imageio/jpeg/LibraryRows.h"
#include "platform/imageio/jpeg/own/BaselineRows.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
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

/// The time from opening a file to its last row.
template <class Open>
double millisecondsFor(const Open& open) {
    const double start = processorMilliseconds();
    Result<RowSourcePointer> rows = open();
    if (!rows) {
        std::fprintf(stderr, "%s\n", rows.failure().text.c_str());
        std::exit(1);
    }
    Bytes row((*rows)->format().bytesPerRow());
    for (std::uint32_t y = 0; y < (*rows)->format().height; ++y)
        if (const Result<void> read = (*rows)->readRow(row); !read) {
            std::fprintf(stderr, "row %u: %s\n", y, read.failure().text.c_str());
            std::exit(1);
        }
    rows = RowSourcePointer();
    return processorMilliseconds() - start;
}

Result<RowSourcePointer> ownRows(const std::shared_ptr<const ByteReader>& file, int eighths) {
    jpeg::LibraryReader reader(file);
    TRY(reader.readHeader());
    const std::optional<jpeg::FrameHeader> header = jpeg::frameHeaderOf(reader);
    if (!header)
        return Failure{Reason::refused, "our own decoder does not support the header"};
    return jpeg::openBaselineRows(file, *header, eighths);
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

} // namespace

} // namespace kestrine

int main(int count, char** paths) {
    for (int i = 1; i < count; ++i) {
        const auto file = kestrine::readerOfBytes(kestrine::contentsOf(paths[i]));
        std::printf("%s\n", paths[i]);
        for (const int eighths : {8, 4, 2, 1})
            kestrine::compare(file, eighths);
    }
}
