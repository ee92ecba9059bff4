#include <vesk/HashTable.h>

#include <cstdint>
#include <cstring>
#include <new>

namespace vesk {

unsigned HashFunc<String>::hash(const String& key)
{
    // Eight bytes at a step, each mixed by a multiplication whose high bits are folded back.
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

_BucketBase::~_BucketBase() = default;

namespace {

constexpr unsigned mostHeads = 0x80000000u;

// The null behind the last bucket of a chain.
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

_HashTableRep::_HashTableRep(unsigned buckets, HashOf hashOf)
    : m_headCount(buckets == 0 ? 1 : buckets), m_heads(newHeads(m_headCount)), m_hashOf(hashOf)
{}

_HashTableRep::_HashTableRep(const _HashTableRep& other) : _HashTableRep(other.m_headCount, other.m_hashOf)
{
    // The constructor above is through, so the destructor cleans up if a clone cannot be had.
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
}

const _BucketBase* _HashTableRep::lookup(unsigned hash, const void* key) const
{
    const _BucketBase* bucket = m_heads[hash % m_headCount];
    while (bucket != nullptr && !bucket->equals(key)) {
        bucket = bucket->next;
    }
    return bucket;
}

bool _HashTableRep::insert(unsigned hash, _BucketBase* bucket, const void* key)
{
    _BucketBase** slot = &m_heads[hash % m_headCount];
    while (*slot != nullptr) {
        if ((*slot)->equals(key)) {
            delete bucket;
            return false;
        }
        slot = &(*slot)->next;
    }
    put(slot, bucket);
    return true;
}

void _HashTableRep::insertWithoutCheck(unsigned hash, _BucketBase* bucket, const void* /*key*/)
{
    put(chainEnd(&m_heads[hash % m_headCount]), bucket);
}

void _HashTableRep::put(_BucketBase** slot, _BucketBase* bucket)
{
    *slot = bucket;
    ++m_size;
    if (m_size > m_headCount && m_hashOf != nullptr && m_headCount <= mostHeads / 2) {
        growHeads(2);
    }
}

void _HashTableRep::reserve(unsigned size)
{
    unsigned factor = 1;
    while (m_headCount * factor < size && m_headCount * factor <= mostHeads / 2) {
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
        return; // longer chains do as well
    }
    for (unsigned i = 0; i < m_headCount; ++i) {
        // What hung at head i spreads over heads that nothing else comes to, each bucket behind those before it.
        _BucketBase* next = nullptr;
        for (_BucketBase* bucket = m_heads[i]; bucket != nullptr; bucket = next) {
            next = bucket->next;
            bucket->next = nullptr;
            *chainEnd(&heads[m_hashOf(bucket) % headCount]) = bucket;
        }
    }
    delete[] m_heads;
    m_heads = heads;
    m_headCount = headCount;
}

void _HashTableRep::swap(_HashTableRep& other) noexcept
{
    const unsigned size = m_size;
    const unsigned headCount = m_headCount;
    _BucketBase** const heads = m_heads;
    const HashOf hashOf = m_hashOf;
    m_size = other.m_size;
    m_headCount = other.m_headCount;
    m_heads = other.m_heads;
    m_hashOf = other.m_hashOf;
    other.m_size = size;
    other.m_headCount = headCount;
    other.m_heads = heads;
    other.m_hashOf = hashOf;
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
