#include <gtest/gtest.h>

#include <string>

#include "items/RowIndex.h"
#include "items/TextArena.h"

namespace vireo {
namespace {

struct Row {
    std::string_view tag;
    std::uint32_t value;

    std::string_view key() const { return tag; }
};

TEST(RowIndexTest, FindsTheFirstRowOfEachKeyHoweverManyThereAre) {
    constexpr std::uint32_t kTags = 5000;
    for (const std::size_t room : {0U, 100U, 2 * kTags}) {
        TextArena tags;
        RowIndex<Row> index;
        EXPECT_EQ(index.find("tag-0"), RowIndex<Row>::kNone);
        index.reserve(room);
        for (std::uint32_t i = 0; i < 2 * kTags; ++i) {
            const std::string_view tag = tags.keep("tag-" + std::to_string(i % kTags));
            EXPECT_EQ(index.add({tag, i}), i % kTags);
        }
        for (std::uint32_t i = 0; i < kTags; ++i) {
            const std::uint32_t found = index.find("tag-" + std::to_string(i));
            ASSERT_NE(found, RowIndex<Row>::kNone);
            EXPECT_EQ(index[found].value, i);
        }
        EXPECT_EQ(index.find("tag-5000"), RowIndex<Row>::kNone);
        EXPECT_EQ(index.rows().size(), 2U * kTags);
    }
}

TEST(RowIndexTest, AddsWhatItDoesNotFindOnce) {
    RowIndex<Row> index;
    int made = 0;
    for (const char* tag : {"a", "", "b", "a", "", "b"}) {
        const std::uint32_t found = index.findOrAdd(tag, [&] {
            ++made;
            return Row{tag, 0};
        });
        EXPECT_EQ(index[found].tag, tag);
    }
    EXPECT_EQ(made, 3);
}

TEST(TextArenaTest, KeepsTextsOfEverySizeWhereTheyAre) {
    TextArena arena;
    std::vector<std::string_view> kept;
    for (std::size_t size = 0; size < 200'000; size = size * 3 / 2 + 1) {
        kept.push_back(arena.keep(std::string(size, static_cast<char>('a' + size % 26))));
    }
    std::size_t size = 0;
    for (const std::string_view text : kept) {
        EXPECT_NE(text.data(), nullptr);
        EXPECT_EQ(text, std::string(size, static_cast<char>('a' + size % 26)));
        size = size * 3 / 2 + 1;
    }
}

}  // namespace
}  // namespace vireo
