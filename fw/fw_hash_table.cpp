#include "fw/fw_hash_table.h"

const uint32_t fw_hash_primes::table[30] = {
    5,        17,        53,        97,        193,       389,       769,        1543,       3079,       6151,
    12289,    24593,     49157,     98317,     196613,    393241,    786433,     1572869,    3145739,    6291469,
    12582917, 25165843,  50331653,  100663319, 201326611, 402653189, 805306457,  1610612741, 3221225473, 4294967291,
};

uint32_t fw_hash_primes::hash(const char* key)
{
    uint32_t h = 0;
    for (const unsigned char* at = reinterpret_cast<const unsigned char*>(key); *at; ++at)
        h = h * 33 + *at;
    return h;
}
