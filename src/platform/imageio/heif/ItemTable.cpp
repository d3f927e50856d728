#include "platform/imageio/heif/ItemTable.h"

#include "platform/imageio/heif/ItemLocations.h"

#include <algorithm>

namespace kestrine::heif {

namespace {

constexpr std::size_t maxItems = 65536;
/// The maximum for all items together; a property can belong to many items.
constexpr std::size_t maxAssociations = std::size_t{1} << 20;
constexpr std::size_t maxReferencedItems = std::size_t{1} << 20;

Failure tooMany(const std::string& what) {
    return {Reason::tooLarge, "the HEIF or AVIF file has too many " + what};
}

/// Item numbers have two bytes, or four in later versions of a box.
ItemID readID(Cursor& cursor, bool isLong) { return isLong ? cursor.u32() : cursor.u16(); }

class Builder {
public:
    Builder(const LoadedBox& meta, std::uint64_t fileBytes) : meta_(meta), fileBytes_(fileBytes) {}

    Result<ItemTable> build() {
        Cursor cursor(meta_.content);
        (void)readFullBoxHeader(cursor);
        boxes_ = TRY(boxesIn(cursor.rest()));
        readPrimary();
        TRY(readInformation());
        TRY(readProperties());
        TRY(readReferences());
        TRY(readLocations());
        return std::move(table_);
    }

private:
    void readPrimary() {
        const std::optional<ByteView> content = contentOf(boxes_, fourCC("pitm"));
        if (!content)
            return;
        Cursor cursor(*content);
        const bool isLong = readFullBoxHeader(cursor).version > 0;
        table_.primary = readID(cursor, isLong);
    }

    Result<void> readInformation() {
        const std::optional<ByteView> content = contentOf(boxes_, fourCC("iinf"));
        if (!content)
            return {};
        Cursor cursor(*content);
        const bool isLong = readFullBoxHeader(cursor).version > 0;
        (void)readID(cursor, isLong); // the number of entries
        const std::vector<Box> entries = TRY(boxesIn(cursor.rest()));
        for (const Box& entry : entries)
            if (entry.type == fourCC("infe"))
                TRY(readEntry(entry.content));
        return {};
    }

    Result<void> readEntry(ByteView content) {
        Cursor cursor(content);
        const FullBoxHeader header = readFullBoxHeader(cursor);
        if (header.version < 2) // items without a type are not pictures
            return {};
        const ItemID id = readID(cursor, header.version > 2);
        const std::uint16_t protection = cursor.u16();
        Item item;
        item.type = cursor.u32();
        item.isHidden = (header.flags & 1) != 0;
        if (protection != 0)
            item.unreadable = Failure{Reason::unsupported, "the picture is encrypted"};
        if (!cursor.isSound())
            return damagedFile("the description of an item is too short");
        if (table_.items.size() == maxItems)
            return tooMany("items");
        table_.items.emplace(id, std::move(item));
        return {};
    }

    Result<void> readProperties() {
        const std::optional<ByteView> content = contentOf(boxes_, fourCC("iprp"));
        if (!content)
            return {};
        const std::vector<Box> boxes = TRY(boxesIn(*content));
        const std::vector<Box> properties =
            TRY(boxesIn(contentOf(boxes, fourCC("ipco")).value_or(ByteView())));
        std::size_t associations = 0;
        for (const Box& box : boxes)
            if (box.type == fourCC("ipma"))
                TRY(associate(box.content, properties, associations));
        return {};
    }

    Result<void> associate(ByteView content, const std::vector<Box>& properties, std::size_t& associations) {
        Cursor cursor(content);
        const FullBoxHeader header = readFullBoxHeader(cursor);
        const std::size_t indexBytes = (header.flags & 1) != 0 ? 2 : 1;
        const std::uint64_t essential = std::uint64_t{0x80} << (8 * (indexBytes - 1));
        for (std::uint32_t left = cursor.u32(); left > 0 && cursor.isSound(); --left) {
            const auto item = table_.items.find(readID(cursor, header.version > 0));
            for (unsigned count = cursor.u8(); count > 0; --count) {
                const std::uint64_t index = cursor.number(indexBytes);
                const std::uint64_t number = index & (essential - 1); // 0: none
                if (item == table_.items.end() || number == 0 || number > properties.size())
                    continue;
                if (++associations > maxAssociations)
                    return tooMany("properties");
                item->second.properties.push_back({properties[number - 1], (index & essential) != 0});
            }
        }
        return cursor.isSound() ? Result<void>() : damagedFile("its properties are incomplete");
    }

    Result<void> readReferences() {
        const std::optional<ByteView> content = contentOf(boxes_, fourCC("iref"));
        if (!content)
            return {};
        Cursor cursor(*content);
        const bool isLong = readFullBoxHeader(cursor).version > 0;
        const std::vector<Box> boxes = TRY(boxesIn(cursor.rest()));
        std::size_t referenced = 0;
        for (const Box& box : boxes) {
            Cursor entry(box.content);
            const ItemID from = readID(entry, isLong);
            std::vector<ItemID> to;
            for (unsigned left = entry.u16(); left > 0 && entry.isSound(); --left)
                to.push_back(readID(entry, isLong));
            if (!entry.isSound())
                return damagedFile("its references are incomplete");
            if ((referenced += to.size()) > maxReferencedItems)
                return tooMany("references");
            table_.references.add(box.type, from, to);
        }
        return {};
    }

    Result<void> readLocations() {
        const std::optional<ByteView> content = contentOf(boxes_, fourCC("iloc"));
        if (!content)
            return {};
        FileRange itemData; // the box idat
        if (const std::optional<ByteView> data = contentOf(boxes_, fourCC("idat")))
            itemData = {meta_.offset + static_cast<std::uint64_t>(data->data() - meta_.content.data()),
                        data->size()};
        ItemLocations locations = TRY(ItemLocations::read(*content));
        for (auto& [id, item] : table_.items) {
            Result<std::vector<FileRange>> data =
                locations.rangesOf(id, {itemData, fileBytes_, [this](ItemID from) {
                                            return table_.references.targets(fourCC("iloc"), from);
                                        }});
            if (data)
                item.data = *std::move(data);
            else if (!item.unreadable)
                item.unreadable = data.failure();
        }
        return {};
    }

    const LoadedBox& meta_;
    const std::uint64_t fileBytes_;
    std::vector<Box> boxes_;
    ItemTable table_;
};

} // namespace

const Item* ItemTable::item(ItemID id) const {
    const auto found = items.find(id);
    return found == items.end() ? nullptr : &found->second;
}

void ItemReferences::add(FourCC type, ItemID from, const std::vector<ItemID>& to) {
    for (const ItemID target : to)
        if (std::vector<ItemID>& sources = sources_[{type, target}];
            sources.empty() || sources.back() != from)
            sources.push_back(from);
    targets_.try_emplace({type, from}, to);
}

const std::vector<ItemID>& ItemReferences::list(const Lists& lists, FourCC type, ItemID id) {
    static const std::vector<ItemID> none;
    const auto found = lists.find({type, id});
    return found == lists.end() ? none : found->second;
}

Result<ItemTable> readItemTable(const LoadedBox& meta, std::uint64_t fileBytes) {
    return Builder(meta, fileBytes).build();
}

} // namespace kestrine::heif
