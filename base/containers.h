#pragma once
// Small containers the client keeps for itself: a chained hash table of untyped pointers,
// a pool fed in big blocks, and a pointer array that lives inside its owner until it grows.
//
// Allocation failure: the hash table logs and carries on at its old size; the pool logs and
// exits with code 1 when not even one object can be had (there is nothing sane to go on with).

#include <cstddef>
#include <cstdint>

uint32_t zorn_hash_text(const char* text);
uint32_t zorn_hash_bytes(const void* bytes, size_t length);

class VoidPointerHashTable {
public:
    using thing_hash_fn = uint32_t (*)(const void* thing);
    using key_hash_fn = uint32_t (*)(const void* key);
    using thing_matches_fn = int (*)(const void* thing, const void* key);

    static constexpr unsigned initial_size = 256;
    static constexpr int long_chain_warning = 51;

    VoidPointerHashTable(thing_hash_fn thing_hash, key_hash_fn key_hash, thing_matches_fn thing_matches);
    ~VoidPointerHashTable();
    VoidPointerHashTable(const VoidPointerHashTable&) = delete;
    VoidPointerHashTable& operator=(const VoidPointerHashTable&) = delete;

    void add(void* thing);
    void* find(const void* key) const;
    // Found by pointer, not by key.
    bool remove(const void* thing);
    void clear();

    int count() const { return things; }
    unsigned size() const { return bucket_count; }

private:
    struct node {
        uint32_t hash;
        void* thing;
        node* next;
    };
    void expand_hash_table();

    node** buckets = nullptr;
    unsigned bucket_count = 0;
    unsigned mask = 0;
    int things = 0;
    thing_hash_fn thing_hash;
    key_hash_fn key_hash;
    thing_matches_fn thing_matches;
};

// Pointers kept in 64 inline slots first; the 65th moves them to the heap, doubling after that.
class zorn_pointer_vector {
public:
    static constexpr int inline_capacity = 64;

    zorn_pointer_vector() = default;
    ~zorn_pointer_vector();
    zorn_pointer_vector(const zorn_pointer_vector&) = delete;
    zorn_pointer_vector& operator=(const zorn_pointer_vector&) = delete;

    void push_back(void* pointer);
    void* operator[](int index) const { return slots[index]; }
    int size() const { return count; }
    int capacity() const { return slot_capacity; }
    bool on_heap() const { return slots != inline_slots; }
    void clear() { count = 0; }

private:
    int count = 0;
    int slot_capacity = inline_capacity;
    void** slots = inline_slots;
    void* inline_slots[inline_capacity];
};

// Links a fresh block of objects into a free list and returns its head.
void* zorn_bulk_allocate(size_t object_size, const char* type_name, size_t block_bytes);

struct zorn_bulk_statistics {
    size_t total_bytes;
    int blocks;
};
zorn_bulk_statistics zorn_bulk_allocate_statistics();

// Free-list pool for many small equal records. Objects are never handed back to the system.
// GUI thread only.
class zorn_bulk_pool {
public:
    zorn_bulk_pool(size_t object_size, const char* type_name, size_t block_bytes = 65536)
        : object_size(object_size), type_name(type_name), block_bytes(block_bytes) {}

    void* get() {
        if (!free_list) free_list = zorn_bulk_allocate(object_size, type_name, block_bytes);
        void* object = free_list;
        free_list = *static_cast<void**>(object);
        return object;
    }
    void put(void* object) {
        *static_cast<void**>(object) = free_list;
        free_list = object;
    }

private:
    void* free_list = nullptr;
    size_t object_size;
    const char* type_name;
    size_t block_bytes;
};
