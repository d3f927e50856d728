#include "platform/imageio/tiff/PageList.h"

#include <algorithm>
#include <array>
#include <set>
#include <tiff.h>

namespace kestrine::tiff {

namespace {

/// Limit for the sub-pages of one file.
constexpr std::size_t maximumSubPages = 1000;

/// Tags that only sensor data has: the pattern of its colour filters in two forms, and its slices.
constexpr std::array<std::uint16_t, 3> sensorTags = {33422, 50656, 50752};
/// Colour filter array and linear raw.
constexpr std::array<std::uint64_t, 2> sensorPhotometrics = {32803, 34892};

/// The flag of a depth map, which libtiff's header lacks.
constexpr std::uint64_t depthMap = 8;

enum class Role { picture, copy, sensorData };

struct Candidate {
    ListedPage page;
    Role role = Role::picture;
    std::uint64_t width = 0, height = 0; ///< 0 when unknown

    std::uint64_t pixels() const { return width * height; }
    bool isSubPage() const { return page.parent != 0; }
};

std::uint64_t firstNumber(const Structure& file, const Structure::Directory& directory, std::uint16_t tag) {
    constexpr std::size_t enough = 16;
    const std::vector<std::uint64_t> numbers = file.numbers(directory, tag, enough);
    return numbers.empty() ? 0 : numbers.front();
}

/// A side of the page, limited so that the product of two sides fits 64 bits.
std::uint64_t side(const Structure& file, const Structure::Directory& directory, std::uint16_t tag) {
    return std::min<std::uint64_t>(firstNumber(file, directory, tag), 0xFFFF'FFFF);
}

Role roleOf(const Structure& file, const Structure::Directory& directory) {
    const bool hasSensorTag = std::ranges::any_of(directory, [](const Structure::Entry& entry) {
        return std::ranges::count(sensorTags, entry.tag) > 0;
    });
    if (hasSensorTag
        || std::ranges::count(sensorPhotometrics, firstNumber(file, directory, TIFFTAG_PHOTOMETRIC)) > 0)
        return Role::sensorData;
    const std::uint64_t marks = firstNumber(file, directory, TIFFTAG_SUBFILETYPE);
    const bool isMarked = (marks & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK | depthMap)) != 0
                          || firstNumber(file, directory, TIFFTAG_OSUBFILETYPE) == OFILETYPE_REDUCEDIMAGE;
    return isMarked ? Role::copy : Role::picture;
}

/// All pages, each with its sub-pages after it.
class Candidates {
public:
    Candidates(const Structure& file, const std::vector<std::uint64_t>& pages)
        : file_(file), seen_(pages.begin(), pages.end()) {
        for (const std::uint64_t page : pages)
            addPage(page);
        findPreviews();
    }

    bool have(Role role) const { return std::ranges::count(all_, role, &Candidate::role) > 0; }

    std::vector<ListedPage> inOrder() const {
        std::vector<ListedPage> pages;
        for (const Candidate& candidate : all_)
            if (candidate.role == Role::picture
                && (!candidate.isSubPage() || !isPicture(candidate.page.parent)))
                pages.push_back(candidate.page);
        const bool holdsOnlyCopies = pages.empty();
        for (const Candidate& candidate : all_)
            if (candidate.role == Role::copy && (!candidate.isSubPage() || holdsOnlyCopies))
                pages.push_back({candidate.page.directory, candidate.page.parent, true});
        if (holdsOnlyCopies) {
            const auto largest = std::ranges::find(pages, largestCopy(), &ListedPage::directory);
            std::rotate(pages.begin(), largest, largest + 1);
        }
        return pages;
    }

private:
    void addPage(std::uint64_t offset) {
        const Structure::Directory directory = add({offset, 0});
        for (const std::uint64_t sub : file_.numbers(directory, TIFFTAG_SUBIFD, maximumSubPages))
            if (sub != 0 && subPages_ < maximumSubPages && seen_.insert(sub).second) {
                ++subPages_;
                add({sub, offset});
            }
    }

    /// Finds the previews by their size.
    void findPreviews() {
        for (Candidate& candidate : all_)
            if (candidate.role == Role::picture
                && (hasLargerSubPage(candidate) || isSmallerThanSensor(candidate)))
                candidate.role = Role::copy;
    }

    Structure::Directory add(const ListedPage& page) {
        Structure::Directory directory = file_.directoryAt(page.directory);
        all_.push_back({page, roleOf(file_, directory), side(file_, directory, TIFFTAG_IMAGEWIDTH),
                        side(file_, directory, TIFFTAG_IMAGELENGTH)});
        return directory;
    }

    bool isPicture(std::uint64_t directory) const {
        return std::ranges::any_of(all_, [directory](const Candidate& candidate) {
            return candidate.page.directory == directory && candidate.role == Role::picture;
        });
    }

    bool hasLargerSubPage(const Candidate& page) const {
        return std::ranges::any_of(all_, [&page](const Candidate& candidate) {
            return candidate.page.parent == page.page.directory && candidate.role == Role::picture
                   && candidate.pixels() > page.pixels();
        });
    }

    /// The sensor's data has a margin, which developed pictures lack, and may be rotated. Its size may be
    /// unknown.
    bool isSmallerThanSensor(const Candidate& page) const {
        return std::ranges::any_of(all_, [&page](const Candidate& candidate) {
            if (candidate.role != Role::sensorData)
                return false;
            const auto [shorter, longer] = std::minmax(page.width, page.height);
            const auto [sensorShorter, sensorLonger] = std::minmax(candidate.width, candidate.height);
            return sensorShorter == 0 || shorter * 10 < sensorShorter * 9 || longer * 10 < sensorLonger * 9;
        });
    }

    std::uint64_t largestCopy() const {
        const auto sizeOfCopy = [](const Candidate& candidate) {
            return candidate.role == Role::copy ? candidate.pixels() + 1 : 0;
        };
        return std::ranges::max_element(all_, {}, sizeOfCopy)->page.directory;
    }

    const Structure& file_;
    std::vector<Candidate> all_;
    std::set<std::uint64_t> seen_;
    std::size_t subPages_ = 0;
};

} // namespace

bool holdsSensorData(const Structure& file, const Structure::Directory& directory) {
    return roleOf(file, directory) == Role::sensorData;
}

Result<PageList> listPages(const Structure& file) {
    const Structure::Chain chain = file.chain();
    const Candidates candidates(file, chain.pages);
    const bool isRaw = candidates.have(Role::sensorData), hasPicture = candidates.have(Role::picture);
    if (chain.pages.empty() || (chain.isBroken && (isRaw || !hasPicture)))
        TRY(file.pages());
    if (isRaw && !hasPicture)
        return PageList{{}, true};
    return PageList{candidates.inOrder(), isRaw, chain.isBroken};
}

} // namespace kestrine::tiff
