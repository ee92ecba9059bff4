#pragma once // SPDX-License-Identifier: MIT

#include <vesk/Array.h>
#include <vesk/Export.h>
#include <vesk/Serializable.h>
#include <vesk/String.h>

#include <cstdint>
#include <type_traits>
#include <utility>

namespace vesk {

/// Exact equality of two keys.
template <class K>
struct EqualFunc {
    /// @return `a == b`
    static bool equal(const K& a, const K& b) { return a == b; }
};

/// Hash of a key, the same in every run.
template <class K>
struct HashFunc;

/// Key of a keyed hash.
struct HashSecret {
    std::uint64_t words[2] = {0, 0}; ///< 128 bits.
};

/// Hash of a text by its bytes.
template <>
struct VESK_API HashFunc<String> {
    /// @return the same number for the same bytes in every run
    static unsigned hash(const String& key);
    /// SipHash-2-4: without the secret, nobody can find keys that collide.
    static unsigned keyedHash(const String& key, const HashSecret& secret);
};

/// Node of a chain, without the types of key and value.
class VESK_API _BucketBase {
public:
    _BucketBase() = default;
    _BucketBase(const _BucketBase&) = delete;
    _BucketBase& operator=(const _BucketBase&) = delete;
    virtual ~_BucketBase();

    /// @param key the address of a key of the same type
    virtual bool equals(const void* key) const = 0;
    /// A bucket of its own with the same key and value, `next` null.
    virtual _BucketBase* clone() const = 0;

    _BucketBase* next = nullptr; ///< The next bucket of the chain, null in the last.
};

/// A key with its value.
template <class K, class V, class Equal>
class VESK_API _Bucket : public _BucketBase {
public:
    _Bucket(const K& bucketKey, const V& bucketValue) : key(bucketKey), value(bucketValue) {} ///< Copies both.

    /// @param other the address of a `K`
    bool equals(const void* other) const override { return Equal::equal(key, *static_cast<const K*>(other)); }
    _BucketBase* clone() const override { return new _Bucket(key, value); }

    K key;   ///< The key; not to be changed in a table.
    V value; ///< The value.
};

/// The chains of a hash table, the same for all types of keys and values.
///
/// A chain keeps its buckets in the order of insertion. When there are more buckets than heads, the heads double, as
/// long as the table was told how to find the hash of a bucket.
///
/// Keys that were made to collide would all be in one chain. When a chain grows past `maxChain` buckets, which does not
/// happen by chance, the table draws a random key and switches to its keyed hash, if it has one. From then on it
/// ignores the hashes that it is given.
class VESK_API _HashTableRep {
public:
    using HashOf = unsigned (*)(const _BucketBase*); ///< Hash of the key of a bucket.
    /// Keyed hash of the key of a bucket, or of the key at `key` if `bucket` is null.
    using KeyedHashOf = unsigned (*)(const _BucketBase* bucket, const void* key, const HashSecret& secret);

    static constexpr unsigned maxChain = 32; ///< Buckets of one chain before the table switches to the keyed hash.

    /// An empty table of `buckets` heads, at least one. Without `hashOf` it never gets more; without `keyedHashOf` it
    /// always uses the hashes that it is given.
    explicit _HashTableRep(unsigned buckets, HashOf hashOf = nullptr, KeyedHashOf keyedHashOf = nullptr);
    _HashTableRep(const _HashTableRep& other);            ///< Buckets of its own, in the same chains.
    _HashTableRep& operator=(const _HashTableRep& other); ///< Likewise; unchanged if out of memory.
    ~_HashTableRep();

    /// Deletes all buckets. The table uses the hashes that it is given again.
    void clear();

    /// @return the first bucket with that key, or null
    const _BucketBase* lookup(unsigned hash, const void* key) const;

    /// Takes over the bucket. If there is one with the same key, that one stays and the new one is deleted.
    /// @return whether it was stored
    bool insert(unsigned hash, _BucketBase* bucket, const void* key);
    /// Takes over the bucket, even if there are others with the same key; `lookup` finds the first.
    void insertWithoutCheck(unsigned hash, _BucketBase* bucket, const void* key);

    /// Doubles the heads until there is one for each of `size` buckets, if it may.
    void reserve(unsigned size);

    /// Number of buckets.
    unsigned size() const { return m_size; }
    unsigned headCount() const { return m_headCount; }    ///< Number of chains.
    _BucketBase* const* heads() const { return m_heads; } ///< The first bucket of each chain, null for an empty one.
    bool isKeyed() const { return m_isKeyed; }            ///< Whether the table uses the keyed hash.

private:
    void swap(_HashTableRep& other) noexcept;
    unsigned headOf(unsigned hash, const void* key) const;
    unsigned bucketHash(const _BucketBase* bucket) const;
    void growHeads(unsigned factor);
    void goKeyed() noexcept;
    void put(_BucketBase** slot, unsigned chainLength, _BucketBase* bucket);

    unsigned m_size = 0;
    unsigned m_headCount;
    _BucketBase** m_heads;
    HashOf m_hashOf;
    KeyedHashOf m_keyedHashOf;
    HashSecret m_secret;
    bool m_isKeyed = false;
};

/// Cursor over all buckets: head after head, along each chain. Inserting into the table invalidates it.
class VESK_API _HashTableIteratorBase {
public:
    /// @param first,last the first head, and one past the last
    _HashTableIteratorBase(_BucketBase* const* first, _BucketBase* const* last);

    /// To the next bucket; null after the last.
    _HashTableIteratorBase& operator++();

    _BucketBase* current() const { return m_current; } ///< The current bucket; null after the last.

private:
    void findHead();

    _BucketBase* m_current = nullptr;
    _BucketBase* const* m_head;
    _BucketBase* const* m_last;
};

/// Keyed table with chained buckets. Copies have buckets of their own; keys and values are copied.
///
/// Differs from `std::unordered_map`: a lookup returns the bucket or null; a repeated key keeps its first value; no key
/// can be removed; buckets never move. Lookup and insertion take constant time on average at any size. Iteration has
/// the same order in every run, unless keys were made to collide; if `Hash` has a `keyedHash`, as `HashFunc<String>`
/// has, even such keys take constant time.
template <class K, class V, class Equal, class Hash>
class VESK_API HashTable : public Serializable {
public:
    using Bucket = _Bucket<K, V, Equal>; ///< What `lookup` and the iterators return.

    /// Visits the buckets, in an unspecified order.
    class Iterator {
    public:
        /// At the position of the cursor.
        explicit Iterator(const _HashTableIteratorBase& cursor) : m_cursor(cursor) {}
        /// The bucket; not past the last one.
        const Bucket& operator*() const { return *static_cast<const Bucket*>(m_cursor.current()); }
        /// The bucket; not past the last one.
        const Bucket* operator->() const { return static_cast<const Bucket*>(m_cursor.current()); }
        /// To the next bucket.
        Iterator& operator++()
        {
            ++m_cursor;
            return *this;
        }
        /// Whether both are at the same bucket.
        bool operator==(const Iterator& other) const { return m_cursor.current() == other.m_cursor.current(); }
        /// Not `==`.
        bool operator!=(const Iterator& other) const { return m_cursor.current() != other.m_cursor.current(); }

    private:
        _HashTableIteratorBase m_cursor;
    };

    /// Empty, with that many heads.
    explicit HashTable(unsigned buckets) : m_rep(buckets, &hashOf, keyedHashFunction()) {}
    HashTable(const HashTable&) = default;
    HashTable& operator=(const HashTable&) = default;
    ~HashTable() override = default;

    /// @return false if the key was there already; it keeps its value
    bool insert(const K& key, const V& value)
    {
        _BucketBase* const bucket = new Bucket(key, value);
        return m_rep.insert(Hash::hash(key), bucket, &key);
    }

    /// @return the bucket of `key`, or null
    const Bucket* lookup(const K& key) const { return static_cast<const Bucket*>(m_rep.lookup(Hash::hash(key), &key)); }

    /// Makes room for that many keys in all, so that the table does not grow step by step.
    void reserve(unsigned size) { m_rep.reserve(size); }

    /// Number of keys.
    unsigned size() const { return m_rep.size(); }

    Iterator begin() const { return Iterator(cursor()); } ///< For range-for; the first bucket.
    /// Past the last bucket.
    Iterator end() const
    {
        _BucketBase* const* const last = m_rep.heads() + m_rep.headCount();
        return Iterator(_HashTableIteratorBase(last, last));
    }

    /// "H(" and the inner parts of the names of both arrays.
    static const String& className()
    {
        static String name;
        if (name.empty()) {
            name = "H(";
            name.append(innerName(Array<K>::className())).append(",");
            name.append(innerName(Array<V>::className())).append(")");
        }
        return name;
    }

    const String& getClassName() const override { return className(); }

    /// Writes the keys, then the values, as two arrays.
    /// @throws SerializationFailed where one of these has no serialized form
    void serializeMembers(const String& name, String& xml) override
    {
        Array<K> keys;
        Array<V> values;
        for (const Bucket& bucket : *this) {
            keys.append(bucket.key);
            values.append(bucket.value);
        }
        serializeBegin(name);
        serialize("m_arrKey", keys);
        serialize("m_arrValue", values);
        serializeEnd();
        getSerializedXML(xml);
    }

    /// Replaces the content.
    /// @throws IndexOutOfBounds if there are fewer values than keys; the pairs before are kept
    void deserializeMembers(const XmlElement* element) override
    {
        Array<K> keys;
        Array<V> values;
        deserializeBegin(element);
        Serializable::deserialize("m_arrKey", keys);
        Serializable::deserialize("m_arrValue", values);
        m_rep.clear();
        for (unsigned i = 0; i < keys.size(); ++i) {
            const K& key = keys[i];
            _BucketBase* const bucket = new Bucket(key, values[i]);
            m_rep.insertWithoutCheck(Hash::hash(key), bucket, &key);
        }
        deserializeEnd();
    }

private:
    template <class H, class = void>
    struct HasKeyedHash : std::false_type {};
    template <class H>
    struct HasKeyedHash<
        H, std::void_t<decltype(H::keyedHash(std::declval<const K&>(), std::declval<const HashSecret&>()))>>
        : std::true_type {};

    static unsigned hashOf(const _BucketBase* bucket) { return Hash::hash(static_cast<const Bucket*>(bucket)->key); }

    static _HashTableRep::KeyedHashOf keyedHashFunction()
    {
        if constexpr (HasKeyedHash<Hash>::value) {
            return [](const _BucketBase* bucket, const void* key, const HashSecret& secret) -> unsigned {
                return Hash::keyedHash(
                    bucket != nullptr ? static_cast<const Bucket*>(bucket)->key : *static_cast<const K*>(key), secret);
            };
        } else {
            return nullptr;
        }
    }

    // Without its first two characters and its last.
    static String innerName(const String& name) { return name.size() < 4 ? name : name.subString(2, name.size() - 3); }

    _HashTableIteratorBase cursor() const
    {
        return _HashTableIteratorBase(m_rep.heads(), m_rep.heads() + m_rep.headCount());
    }

    _HashTableRep m_rep;
};

} // namespace vesk
