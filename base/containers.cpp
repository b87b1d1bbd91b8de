#include "base/containers.h"

#include <cstdlib>
#include <cstring>

#include "config/debug_log.h"

namespace {

constexpr uint32_t hash_seed = 1564184925u;

inline uint32_t hash_step(uint32_t h, uint8_t c) {
    h = (h + c) * 1025u;
    return h ^ (h >> 6);
}

inline uint32_t hash_finish(uint32_t h) {
    h *= 9u;
    h ^= h >> 11;
    return h * 32769u;
}

zorn_bulk_statistics bulk_statistics{0, 0};

}  // namespace

uint32_t zorn_hash_text(const char* text) {
    uint32_t h = hash_seed;
    uint32_t length = 0;
    for (; text && text[length]; ++length) h = hash_step(h, static_cast<uint8_t>(text[length]));
    for (int i = 0; i < 4; ++i) h = hash_step(h, static_cast<uint8_t>(length >> (8 * i)));
    return hash_finish(h);
}

uint32_t zorn_hash_bytes(const void* bytes, size_t length) {
    uint32_t h = static_cast<uint32_t>(length) + hash_seed;
    const auto* p = static_cast<const uint8_t*>(bytes);
    for (size_t i = 0; i < length; ++i) h = hash_step(h, p[i]);
    return hash_finish(h);
}

VoidPointerHashTable::VoidPointerHashTable(thing_hash_fn thing_hash, key_hash_fn key_hash,
                                           thing_matches_fn thing_matches)
    : thing_hash(thing_hash), key_hash(key_hash), thing_matches(thing_matches) {
    buckets = static_cast<node**>(std::calloc(initial_size, sizeof(node*)));
    if (!buckets) {
        zorn_client_debug_event("Error in VoidPointerHashTable(), initial table alloc failed.", zorn_cat_severe);
        return;
    }
    bucket_count = initial_size;
    mask = initial_size - 1;
}

VoidPointerHashTable::~VoidPointerHashTable() {
    clear();
    std::free(buckets);
    buckets = nullptr;
    bucket_count = 0;
    mask = 0;
}

void VoidPointerHashTable::add(void* thing) {
    if (!buckets) return;
    if (static_cast<unsigned>(things) > bucket_count / 2) expand_hash_table();
    const uint32_t hash = thing_hash(thing);
    const unsigned index = hash & mask;
    int chain = 0;
    for (node* n = buckets[index]; n; n = n->next, ++chain) {
        if (n->thing == thing) {
            zorn_client_debug_event("Error in VoidPointerHashTable::add(), attempt to add duplicate thing.",
                                    zorn_cat_error);
            return;
        }
    }
    if (chain >= long_chain_warning)
        zorn_client_debug_eventf(zorn_cat_notice, "Error in VoidPointerHashTable::add(), found %d things in bucket %d.",
                                 chain, static_cast<int>(index));
    auto* added = static_cast<node*>(std::malloc(sizeof(node)));
    if (!added) return;
    *added = node{hash, thing, buckets[index]};
    buckets[index] = added;
    ++things;
}

void* VoidPointerHashTable::find(const void* key) const {
    if (!buckets) return nullptr;
    const uint32_t hash = key_hash(key);
    for (node* n = buckets[hash & mask]; n; n = n->next)
        if (n->hash == hash && thing_matches(n->thing, key)) return n->thing;
    return nullptr;
}

bool VoidPointerHashTable::remove(const void* thing) {
    if (!buckets) return false;
    node** link = &buckets[thing_hash(thing) & mask];
    for (; *link; link = &(*link)->next) {
        if ((*link)->thing == thing) {
            node* gone = *link;
            *link = gone->next;
            std::free(gone);
            --things;
            return true;
        }
    }
    return false;
}

void VoidPointerHashTable::clear() {
    for (unsigned i = 0; i < bucket_count; ++i) {
        for (node* n = buckets[i]; n;) {
            node* next = n->next;
            std::free(n);
            n = next;
        }
        buckets[i] = nullptr;
    }
    things = 0;
}

void VoidPointerHashTable::expand_hash_table() {
    const unsigned new_size = bucket_count * 2;
    auto** grown = static_cast<node**>(std::calloc(new_size, sizeof(node*)));
    if (!grown) {
        zorn_client_debug_eventf(zorn_cat_warning,
                                 "Error in VoidPointerHashTable::expand_hash_table(), unable to allocate table of "
                                 "size %d.  Using old table.",
                                 static_cast<int>(new_size));
        return;
    }
    // The stored hash moves each node without calling the hash functions again.
    for (unsigned i = 0; i < bucket_count; ++i) {
        for (node* n = buckets[i]; n;) {
            node* next = n->next;
            node** head = &grown[n->hash & (new_size - 1)];
            n->next = *head;
            *head = n;
            n = next;
        }
    }
    std::free(buckets);
    buckets = grown;
    bucket_count = new_size;
    mask = new_size - 1;
}

zorn_pointer_vector::~zorn_pointer_vector() {
    if (on_heap()) std::free(slots);
}

void zorn_pointer_vector::push_back(void* pointer) {
    if (count == slot_capacity) {
        const int grown_capacity = slot_capacity * 2;
        auto** grown = static_cast<void**>(std::malloc(sizeof(void*) * grown_capacity));
        if (!grown) {
            zorn_client_debug_event("Error in zorn_pointer_vector::push_back(), allocation failed.", zorn_cat_severe);
            return;
        }
        std::memcpy(grown, slots, sizeof(void*) * count);
        if (on_heap()) std::free(slots);
        slots = grown;
        slot_capacity = grown_capacity;
    }
    slots[count++] = pointer;
}

void* zorn_bulk_allocate(size_t object_size, const char* type_name, size_t block_bytes) {
    size_t size = (object_size + 7) & ~static_cast<size_t>(7);
    if (size < 8) size = 8;
    size_t count = block_bytes / size;
    if (count < 1) count = 1;
    zorn_client_debug_eventf(zorn_cat_verbose, "Allocating %6d objects of size %6d (%9d bytes), type '%s'",
                             static_cast<int>(count), static_cast<int>(size), static_cast<int>(count * size),
                             type_name);
    auto* block = static_cast<char*>(std::malloc(count * size));
    if (!block) {
        zorn_client_debug_eventf(zorn_cat_severe,
                                 "Error in zorn_bulk_allocate(), malloc failed for %6d objects of size %6d (%9d "
                                 "bytes), type '%s'.  Trying single object.",
                                 static_cast<int>(count), static_cast<int>(size), static_cast<int>(count * size),
                                 type_name);
        block = static_cast<char*>(std::malloc(size));
        if (!block) {
            zorn_client_debug_eventf(zorn_cat_severe,
                                     "Error in zorn_bulk_allocate(), malloc failed for %6d objects of size %6d (%9d "
                                     "bytes), type '%s'.  Failing and exiting.",
                                     static_cast<int>(count), static_cast<int>(size), static_cast<int>(count * size),
                                     type_name);
            std::exit(1);
        }
        count = 1;
    }
    bulk_statistics.total_bytes += count * size;
    bulk_statistics.blocks += 1;
    for (size_t i = 0; i + 1 < count; ++i) *reinterpret_cast<void**>(block + i * size) = block + (i + 1) * size;
    *reinterpret_cast<void**>(block + (count - 1) * size) = nullptr;
    return block;
}

zorn_bulk_statistics zorn_bulk_allocate_statistics() { return bulk_statistics; }
