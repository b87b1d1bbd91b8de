#include "base/containers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace {

struct item {
    std::string key;
};
uint32_t item_hash(const void* thing) { return zorn_hash_text(static_cast<const item*>(thing)->key.c_str()); }
uint32_t key_hash(const void* key) { return zorn_hash_text(static_cast<const char*>(key)); }
int item_matches(const void* thing, const void* key) {
    return static_cast<const item*>(thing)->key == static_cast<const char*>(key);
}

}  // namespace

TEST(HashTable, PinnedHashesAndGrowthPastHalfFull) {
    // The finish runs after four zero length steps, so the empty text is not the bare seed.
    EXPECT_EQ(zorn_hash_text(""), 447547777u);
    EXPECT_EQ(zorn_hash_text("abc"), 1257601186u);
    EXPECT_EQ(zorn_hash_bytes("abc", 3), 2564960460u);

    VoidPointerHashTable table(item_hash, key_hash, item_matches);
    std::vector<item> items(1000);
    for (size_t i = 0; i < items.size(); ++i) items[i].key = "key" + std::to_string(i);

    for (int i = 0; i < 129; ++i) table.add(&items[i]);
    EXPECT_EQ(table.size(), 256u);
    table.add(&items[129]);
    EXPECT_EQ(table.size(), 512u);

    for (size_t i = 130; i < items.size(); ++i) table.add(&items[i]);
    EXPECT_EQ(table.count(), 1000);
    EXPECT_EQ(table.size(), 2048u);
    for (const item& it : items) EXPECT_EQ(table.find(it.key.c_str()), &it) << it.key;
    EXPECT_EQ(table.find("absent"), nullptr);
}

TEST(HashTable, DuplicatesRefusedAndRemoveByPointer) {
    VoidPointerHashTable table(item_hash, key_hash, item_matches);
    item a{"same"}, b{"same"};
    table.add(&a);
    table.add(&a);
    table.add(&b);  // equal key, other pointer: both held
    EXPECT_EQ(table.count(), 2);
    EXPECT_TRUE(table.remove(&a));
    EXPECT_FALSE(table.remove(&a));
    EXPECT_EQ(table.find("same"), &b);
    table.clear();
    EXPECT_EQ(table.count(), 0);
    EXPECT_EQ(table.find("same"), nullptr);
}

TEST(PointerVector, KeepsOrderAcrossTheMoveToTheHeap) {
    zorn_pointer_vector v;
    std::vector<int> values(300);
    for (int i = 0; i < 64; ++i) v.push_back(&values[i]);
    EXPECT_FALSE(v.on_heap());
    v.push_back(&values[64]);
    EXPECT_TRUE(v.on_heap());
    EXPECT_EQ(v.capacity(), 128);
    for (int i = 65; i < 300; ++i) v.push_back(&values[i]);
    ASSERT_EQ(v.size(), 300);
    for (int i = 0; i < 300; ++i) EXPECT_EQ(v[i], &values[i]);
}

TEST(BulkPool, ReusesReturnedObjectsAndAllocatesInBlocks) {
    const zorn_bulk_statistics before = zorn_bulk_allocate_statistics();
    zorn_bulk_pool pool(24, "test record", 240);  // ten objects a block
    std::set<void*> seen;
    std::vector<void*> taken;
    for (int i = 0; i < 10; ++i) {
        void* p = pool.get();
        EXPECT_TRUE(seen.insert(p).second);
        std::memset(p, 0xab, 24);  // the whole object is ours to write
        taken.push_back(p);
    }
    EXPECT_EQ(zorn_bulk_allocate_statistics().blocks, before.blocks + 1);
    pool.put(taken[3]);
    EXPECT_EQ(pool.get(), taken[3]);  // last in, first out
    void* second_block = pool.get();  // the eleventh object needs a new block
    EXPECT_EQ(zorn_bulk_allocate_statistics().blocks, before.blocks + 2);
    EXPECT_EQ(zorn_bulk_allocate_statistics().total_bytes, before.total_bytes + 480);
    // A pool never hands its blocks back; the test does, so the leak checker stays quiet. The
    // first object of a fresh block is the block itself.
    std::free(taken[0]);
    std::free(second_block);
}

TEST(BulkAllocate, RoundsSizesAndAlwaysGivesOneObject) {
    const zorn_bulk_statistics before = zorn_bulk_allocate_statistics();
    void* head = zorn_bulk_allocate(1, "tiny", 4);  // size 1 becomes 8; a block smaller than one still gives one
    ASSERT_NE(head, nullptr);
    EXPECT_EQ(*static_cast<void**>(head), nullptr);
    EXPECT_EQ(zorn_bulk_allocate_statistics().total_bytes, before.total_bytes + 8);

    void* chain = zorn_bulk_allocate(13, "odd", 64);  // 16 bytes each, four of them, linked in order
    char* p = static_cast<char*>(chain);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(*reinterpret_cast<void**>(p + 16 * i), p + 16 * (i + 1));
    EXPECT_EQ(*reinterpret_cast<void**>(p + 48), nullptr);
    std::free(head);
    std::free(chain);
}
