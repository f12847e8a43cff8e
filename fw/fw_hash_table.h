// The FW layer's map from a text key to a value: a chained hash table whose entries
// lie in chunks of about 8 KB (1020 entries of 8 bytes) that never move and are
// linked by index, so growing the table never touches an entry and an index that
// set() returned stays good for the life of the table.
//
// The table stores the key pointer, not a copy: the text must outlive the table (a
// literal does). Keys are compared by content, so two pointers to equal texts are
// one key. There is no removal. A new table holds 1020 entries in 769 buckets; when
// the entries run out it adds a chunk and spreads the chains over more buckets
// (about 2.5 entries a bucket when full), and it never shrinks.
//
// No lock: one thread builds and reads a table. Exhausted memory throws what
// operator new throws (fw_exception_memory while the FW layer is up); a broken
// invariant of the table throws fw_exception_assert.
#pragma once
#include "fw/fw_assert.h"

#include <cstdint>
#include <cstring>

// The bucket counts a table goes through, and the hash of its keys.
struct fw_hash_primes
{
    static const uint32_t table[30];
    static constexpr uint32_t count = 30;
    // h = h * 33 + byte over the unsigned bytes, in 32 bits.
    static uint32_t hash(const char* key);
};

template <class Value>
class fw_hash_table
{
public:
    struct entry
    {
        const char* key;
        Value value;
    };

    // What find() gives: the table, the key asked for, and the entry's index, -1 for
    // an absent key. Compare with end().
    struct iterator
    {
        const fw_hash_table* table;
        const char* key;
        int32_t index;

        bool operator==(const iterator& other) const { return index == other.index && table == other.table; }
        bool operator!=(const iterator& other) const { return !(*this == other); }
    };

    static constexpr uint32_t entriesPerChunk = 8160 / sizeof(entry);

    fw_hash_table();
    fw_hash_table(const fw_hash_table&) = delete;
    fw_hash_table& operator=(const fw_hash_table&) = delete;
    virtual ~fw_hash_table();

    // Stores or overwrites; returns the entry's index.
    uint32_t set(const char* key, const Value& value);
    iterator find(const char* key) const;
    const iterator& end() const { return endIterator; }
    // The entry behind an iterator of find(); end() asserts.
    entry& at(const iterator& position);
    const entry& at(const iterator& position) const;
    // Empties the table and gives its storage back; the next set() builds it anew.
    void clear() { grow(0); }
    // Empties a table that never grew in place, keeping its storage: afterwards it is
    // as a new table is, and only the used entries were touched. False, and nothing
    // done, for a table that grew.
    bool renew();

    uint32_t size() const { return itemCount; }
    uint32_t capacity_count() const { return capacity; }
    uint32_t bucket_count() const { return bucketCount; }
    uint32_t chunk_count() const { return chunkCount; }

private:
    uint32_t initialSize;
    uint32_t capacity;
    uint32_t bucketCount;
    uint32_t chunkCount;
    uint32_t itemCount;
    uint32_t growth;
    entry** chunks;
    int32_t freeHead;
    int32_t* buckets;
    int32_t* next;
    iterator endIterator;

    entry& entry_at(uint32_t index) const { return chunks[index / entriesPerChunk][index % entriesPerChunk]; }
    int32_t find_index(const char* key) const;
    void grow(uint32_t wanted);
    void rehash();
    void free_storage();
};

template <class Value>
fw_hash_table<Value>::fw_hash_table()
    : initialSize(16),
      capacity(0),
      bucketCount(0),
      chunkCount(0),
      itemCount(0),
      growth(8),
      chunks(nullptr),
      freeHead(-1),
      buckets(nullptr),
      next(nullptr),
      endIterator{this, nullptr, -1}
{
    grow(initialSize);
    rehash();
}

template <class Value>
fw_hash_table<Value>::~fw_hash_table()
{
    free_storage();
}

template <class Value>
void fw_hash_table<Value>::free_storage()
{
    for (uint32_t i = 0; i < chunkCount; ++i)
        delete[] chunks[i];
    delete[] chunks;
    delete[] buckets;
    delete[] next;
    chunks = nullptr;
    buckets = nullptr;
    next = nullptr;
    capacity = bucketCount = chunkCount = itemCount = 0;
    freeHead = -1;
}

template <class Value>
int32_t fw_hash_table<Value>::find_index(const char* key) const
{
    if (!buckets || !key)
        return -1;
    for (int32_t i = buckets[fw_hash_primes::hash(key) % bucketCount]; i != -1; i = next[i]) {
        if (std::strcmp(entry_at(uint32_t(i)).key, key) == 0)
            return i;
    }
    return -1;
}

template <class Value>
bool fw_hash_table<Value>::renew()
{
    // One chunk means no growth: the entries went out of the free list in index
    // order and none came back, so the used ones are 0 to itemCount - 1, each linked
    // from its key's bucket.
    if (chunkCount != 1 || !buckets || !next)
        return false;
    for (uint32_t i = 0; i < itemCount; ++i) {
        buckets[fw_hash_primes::hash(entry_at(i).key) % bucketCount] = -1;
        next[i] = i + 1 < capacity ? int32_t(i + 1) : -1;
    }
    freeHead = 0;
    itemCount = 0;
    return true;
}

template <class Value>
typename fw_hash_table<Value>::iterator fw_hash_table<Value>::find(const char* key) const
{
    const int32_t index = find_index(key);
    if (index == -1)
        return endIterator;
    return iterator{this, key, index};
}

template <class Value>
typename fw_hash_table<Value>::entry& fw_hash_table<Value>::at(const iterator& position)
{
    FW_ASSERT(position.index != -1 && position.table == this && uint32_t(position.index) < capacity);
    return entry_at(uint32_t(position.index));
}

template <class Value>
const typename fw_hash_table<Value>::entry& fw_hash_table<Value>::at(const iterator& position) const
{
    FW_ASSERT(position.index != -1 && position.table == this && uint32_t(position.index) < capacity);
    return entry_at(uint32_t(position.index));
}

template <class Value>
uint32_t fw_hash_table<Value>::set(const char* key, const Value& value)
{
    FW_ASSERT(key != nullptr);
    const int32_t existing = find_index(key);
    if (existing != -1) {
        entry_at(uint32_t(existing)).value = value;
        return uint32_t(existing);
    }
    if (freeHead == -1) {
        grow(capacity + growth);
        FW_ASSERT(freeHead != -1);
        rehash();
    }
    FW_ASSERT(buckets != nullptr && next != nullptr);
    const uint32_t bucket = fw_hash_primes::hash(key) % bucketCount;
    const int32_t index = freeHead;
    freeHead = next[index];
    entry& slot = entry_at(uint32_t(index));
    slot.key = key;
    slot.value = value;
    next[index] = buckets[bucket];
    buckets[bucket] = index;
    ++itemCount;
    return uint32_t(index);
}

// New storage is made before any field changes, so running out of memory leaves the
// table as it was.
template <class Value>
void fw_hash_table<Value>::grow(uint32_t wanted)
{
    if (wanted == 0) {
        free_storage();
        return;
    }
    if (wanted < initialSize)
        wanted = initialSize;
    if (wanted <= capacity)
        return;
    const uint32_t newChunkCount = (wanted + entriesPerChunk - 1) / entriesPerChunk;
    const uint32_t newCapacity = newChunkCount * entriesPerChunk;
    entry** newChunks = new entry*[newChunkCount];
    int32_t* newNext = nullptr;
    uint32_t made = chunkCount;
    try {
        newNext = new int32_t[newCapacity];
        for (; made < newChunkCount; ++made)
            newChunks[made] = new entry[entriesPerChunk];
    } catch (...) {
        for (uint32_t i = chunkCount; i < made; ++i)
            delete[] newChunks[i];
        delete[] newChunks;
        delete[] newNext;
        throw;
    }
    for (uint32_t i = 0; i < chunkCount; ++i)
        newChunks[i] = chunks[i];
    if (capacity)
        std::memcpy(newNext, next, capacity * sizeof *next);
    // The new entries go in front of the free list in index order, the last leading
    // on to what was free before.
    for (uint32_t i = capacity; i + 1 < newCapacity; ++i)
        newNext[i] = int32_t(i + 1);
    newNext[newCapacity - 1] = freeHead;
    freeHead = int32_t(capacity);
    delete[] chunks;
    delete[] next;
    chunks = newChunks;
    next = newNext;
    chunkCount = newChunkCount;
    capacity = newCapacity;
}

template <class Value>
void fw_hash_table<Value>::rehash()
{
    const uint32_t wanted = uint32_t(uint64_t(capacity) * 51 / 128);
    uint32_t prime = fw_hash_primes::table[0];
    if (wanted > 5) {
        uint32_t i = 0;
        while (i + 1 < fw_hash_primes::count && fw_hash_primes::table[i] < wanted)
            ++i;
        prime = fw_hash_primes::table[i];
    }
    if (bucketCount >= prime)
        return;
    FW_ASSERT(buckets == nullptr || next != nullptr);

    int32_t* newBuckets = new int32_t[prime];
    for (uint32_t b = 0; b < prime; ++b)
        newBuckets[b] = -1;
    if (itemCount == 0) {
        // Nothing to move, and the free list already runs in index order (grow made
        // it so, and nothing was ever taken): only the buckets are new. Every new
        // table comes this way.
        delete[] buckets;
        buckets = newBuckets;
        bucketCount = prime;
        return;
    }
    int32_t* newNext = nullptr;
    int32_t* previous = nullptr;
    try {
        newNext = new int32_t[capacity];
        previous = new int32_t[capacity];
    } catch (...) {
        delete[] newBuckets;
        delete[] newNext;
        throw;
    }
    // Every entry into the free list in index order; the used ones are taken out
    // again below as their chains are walked.
    for (uint32_t i = 0; i < capacity; ++i) {
        newNext[i] = i + 1 < capacity ? int32_t(i + 1) : -1;
        previous[i] = int32_t(i) - 1;
    }
    int32_t newFreeHead = capacity ? 0 : -1;
    const uint32_t before = itemCount;
    uint32_t moved = 0;
    for (uint32_t b = 0; b < bucketCount && moved < before; ++b) {
        for (int32_t i = buckets[b]; i != -1; i = next[i]) {
            const int32_t after = newNext[i];
            if (previous[i] != -1)
                newNext[previous[i]] = after;
            if (after != -1)
                previous[after] = previous[i];
            if (newFreeHead == i)
                newFreeHead = after;
            const uint32_t bucket = fw_hash_primes::hash(entry_at(uint32_t(i)).key) % prime;
            newNext[i] = newBuckets[bucket];
            newBuckets[bucket] = i;
            ++moved;
        }
    }
    delete[] buckets;
    delete[] next;
    delete[] previous;
    buckets = newBuckets;
    next = newNext;
    bucketCount = prime;
    freeHead = newFreeHead;
    itemCount = moved;
    FW_ASSERT(itemCount == before);
}
