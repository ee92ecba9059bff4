#include <vesk/HashTable.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <exception>
#include <new>
#include <random>
#include <utility>

namespace vesk {

namespace {

std::uint64_t rotated(std::uint64_t word, unsigned bits)
{
    return word << bits | word >> (64u - bits);
}

// SipHash-2-4 by Jean-Philippe Aumasson and Daniel J. Bernstein.
class SipHash {
public:
    explicit SipHash(const HashSecret& secret)
        : m_v0(secret.words[0] ^ 0x736F6D6570736575u),
          m_v1(secret.words[1] ^ 0x646F72616E646F6Du),
          m_v2(secret.words[0] ^ 0x6C7967656E657261u),
          m_v3(secret.words[1] ^ 0x7465646279746573u)
    {}

    void take(std::uint64_t word)
    {
        m_v3 ^= word;
        mix();
        mix();
        m_v0 ^= word;
    }

    std::uint64_t result()
    {
        m_v2 ^= 0xFFu;
        for (int i = 0; i < 4; ++i) {
            mix();
        }
        return m_v0 ^ m_v1 ^ m_v2 ^ m_v3;
    }

private:
    void mix()
    {
        m_v0 += m_v1;
        m_v1 = rotated(m_v1, 13) ^ m_v0;
        m_v0 = rotated(m_v0, 32);
        m_v2 += m_v3;
        m_v3 = rotated(m_v3, 16) ^ m_v2;
        m_v0 += m_v3;
        m_v3 = rotated(m_v3, 21) ^ m_v0;
        m_v2 += m_v1;
        m_v1 = rotated(m_v1, 17) ^ m_v2;
        m_v2 = rotated(m_v2, 32);
    }

    std::uint64_t m_v0;
    std::uint64_t m_v1;
    std::uint64_t m_v2;
    std::uint64_t m_v3;
};

// A word of up to eight bytes, the first one lowest on every machine.
std::uint64_t littleEndian(const char* bytes, std::size_t count)
{
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < count; ++i) {
        word |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    }
    return word;
}

// A new secret for each table.
HashSecret newSecret(const void* table) noexcept
{
    HashSecret secret;
    try {
        std::random_device device;
        for (std::uint64_t& word : secret.words) {
            word = std::uint64_t{device()} << 32u | device();
        }
    } catch (const std::exception&) {
        // No source of random numbers. The address of the table and the time are hard to guess, too.
        secret.words[0] = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(table));
        secret.words[1] = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    }
    return secret;
}

} // namespace

unsigned HashFunc<String>::hash(const String& key)
{
    // Takes eight bytes per step, mixes them by a multiplication, and folds the high bits back.
    constexpr std::uint64_t multiplier = 0x9E3779B97F4A7C15u;
    const char* bytes = key.data();
    std::size_t left = key.size();
    std::uint64_t state = left * multiplier;
    while (left > 0) {
        const std::size_t step = left < sizeof(std::uint64_t) ? left : sizeof(std::uint64_t);
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, step);
        state = (state ^ word) * multiplier;
        state ^= state >> 32u;
        bytes += step;
        left -= step;
    }
    state *= multiplier;
    return static_cast<unsigned>(state >> 32u);
}

unsigned HashFunc<String>::keyedHash(const String& key, const HashSecret& secret)
{
    SipHash hash(secret);
    const char* bytes = key.data();
    std::size_t left = key.size();
    for (; left >= sizeof(std::uint64_t); left -= sizeof(std::uint64_t)) {
        hash.take(littleEndian(bytes, sizeof(std::uint64_t)));
        bytes += sizeof(std::uint64_t);
    }
    hash.take(std::uint64_t{key.size()} << 56u | littleEndian(bytes, left));
    return static_cast<unsigned>(hash.result());
}

_BucketBase::~_BucketBase() = default;

namespace {

constexpr unsigned maxHeads = 0x80000000u;

// The null pointer at the end of a chain.
_BucketBase** chainEnd(_BucketBase** slot)
{
    while (*slot != nullptr) {
        slot = &(*slot)->next;
    }
    return slot;
}

_BucketBase** newHeads(unsigned count)
{
    return new _BucketBase*[count]();
}

} // namespace

_HashTableRep::_HashTableRep(unsigned buckets, HashOf hashOf, KeyedHashOf keyedHashOf)
    : m_headCount(buckets == 0 ? 1 : buckets),
      m_heads(newHeads(m_headCount)),
      m_hashOf(hashOf),
      m_keyedHashOf(keyedHashOf)
{}

_HashTableRep::_HashTableRep(const _HashTableRep& other)
    : _HashTableRep(other.m_headCount, other.m_hashOf, other.m_keyedHashOf)
{
    m_secret = other.m_secret;
    m_isKeyed = other.m_isKeyed;
    // The delegated constructor has finished, so the destructor cleans up if `clone` throws.
    for (unsigned i = 0; i < m_headCount; ++i) {
        _BucketBase** slot = &m_heads[i];
        for (const _BucketBase* bucket = other.m_heads[i]; bucket != nullptr; bucket = bucket->next) {
            *slot = bucket->clone();
            slot = &(*slot)->next;
            ++m_size;
        }
    }
}

_HashTableRep& _HashTableRep::operator=(const _HashTableRep& other)
{
    if (this != &other) {
        _HashTableRep copy(other);
        swap(copy);
    }
    return *this;
}

_HashTableRep::~_HashTableRep()
{
    clear();
    delete[] m_heads;
}

void _HashTableRep::clear()
{
    for (unsigned i = 0; i < m_headCount; ++i) {
        _BucketBase* bucket = m_heads[i];
        m_heads[i] = nullptr;
        while (bucket != nullptr) {
            _BucketBase* const next = bucket->next;
            delete bucket;
            bucket = next;
        }
    }
    m_size = 0;
    m_isKeyed = false;
}

const _BucketBase* _HashTableRep::lookup(unsigned hash, const void* key) const
{
    const _BucketBase* bucket = m_heads[headOf(hash, key)];
    while (bucket != nullptr && !bucket->equals(key)) {
        bucket = bucket->next;
    }
    return bucket;
}

bool _HashTableRep::insert(unsigned hash, _BucketBase* bucket, const void* key)
{
    _BucketBase** slot = &m_heads[headOf(hash, key)];
    unsigned chainLength = 0;
    while (*slot != nullptr) {
        if ((*slot)->equals(key)) {
            delete bucket;
            return false;
        }
        slot = &(*slot)->next;
        ++chainLength;
    }
    put(slot, chainLength, bucket);
    return true;
}

void _HashTableRep::insertWithoutCheck(unsigned hash, _BucketBase* bucket, const void* key)
{
    _BucketBase** slot = &m_heads[headOf(hash, key)];
    unsigned chainLength = 0;
    for (; *slot != nullptr; slot = &(*slot)->next) {
        ++chainLength;
    }
    put(slot, chainLength, bucket);
}

unsigned _HashTableRep::headOf(unsigned hash, const void* key) const
{
    return (m_isKeyed ? m_keyedHashOf(nullptr, key, m_secret) : hash) % m_headCount;
}

unsigned _HashTableRep::bucketHash(const _BucketBase* bucket) const
{
    return m_isKeyed ? m_keyedHashOf(bucket, nullptr, m_secret) : m_hashOf(bucket);
}

// `slot` is the null pointer at the end of a chain of `chainLength` buckets.
void _HashTableRep::put(_BucketBase** slot, unsigned chainLength, _BucketBase* bucket)
{
    *slot = bucket;
    ++m_size;
    if (chainLength >= maxChain && m_keyedHashOf != nullptr && !m_isKeyed) {
        goKeyed();
    }
    if (m_size > m_headCount && m_hashOf != nullptr && m_headCount <= maxHeads / 2) {
        growHeads(2);
    }
}

void _HashTableRep::goKeyed() noexcept
{
    // Collects all buckets in one list, in the order of iteration, so that equal keys keep their order.
    _BucketBase* all = nullptr;
    _BucketBase** last = &all;
    for (unsigned i = 0; i < m_headCount; ++i) {
        *last = m_heads[i];
        m_heads[i] = nullptr;
        last = chainEnd(last);
    }
    m_secret = newSecret(this);
    m_isKeyed = true;
    while (all != nullptr) {
        _BucketBase* const bucket = all;
        all = bucket->next;
        bucket->next = nullptr;
        *chainEnd(&m_heads[bucketHash(bucket) % m_headCount]) = bucket;
    }
}

void _HashTableRep::reserve(unsigned size)
{
    unsigned factor = 1;
    while (m_headCount * factor < size && m_headCount * factor <= maxHeads / 2) {
        factor *= 2;
    }
    if (factor > 1 && m_hashOf != nullptr) {
        growHeads(factor);
    }
}

void _HashTableRep::growHeads(unsigned factor)
{
    const unsigned headCount = m_headCount * factor;
    _BucketBase** const heads = new (std::nothrow) _BucketBase*[headCount]();
    if (heads == nullptr) {
        return; // the table works with longer chains, too
    }
    for (unsigned i = 0; i < m_headCount; ++i) {
        // The buckets of head i move to new heads that no other head shares, and keep their order.
        _BucketBase* next = nullptr;
        for (_BucketBase* bucket = m_heads[i]; bucket != nullptr; bucket = next) {
            next = bucket->next;
            bucket->next = nullptr;
            *chainEnd(&heads[bucketHash(bucket) % headCount]) = bucket;
        }
    }
    delete[] m_heads;
    m_heads = heads;
    m_headCount = headCount;
}

void _HashTableRep::swap(_HashTableRep& other) noexcept
{
    std::swap(m_size, other.m_size);
    std::swap(m_headCount, other.m_headCount);
    std::swap(m_heads, other.m_heads);
    std::swap(m_hashOf, other.m_hashOf);
    std::swap(m_keyedHashOf, other.m_keyedHashOf);
    std::swap(m_secret, other.m_secret);
    std::swap(m_isKeyed, other.m_isKeyed);
}

_HashTableIteratorBase::_HashTableIteratorBase(_BucketBase* const* first, _BucketBase* const* last)
    : m_head(first), m_last(last)
{
    findHead();
}

_HashTableIteratorBase& _HashTableIteratorBase::operator++()
{
    if (m_current != nullptr) {
        m_current = m_current->next;
        if (m_current == nullptr) {
            ++m_head;
            findHead();
        }
    }
    return *this;
}

void _HashTableIteratorBase::findHead()
{
    while (m_head != m_last && *m_head == nullptr) {
        ++m_head;
    }
    m_current = m_head == m_last ? nullptr : *m_head;
}

} // namespace vesk
