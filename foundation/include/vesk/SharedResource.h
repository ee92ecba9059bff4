#pragma once // SPDX-License-Identifier: MIT

#include <vesk/Export.h>
#include <vesk/PointerStorage.h>

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace vesk {

/// Deletes a resource when it is deleted itself. The base does not know the resource's type.
class VESK_API SharedResourceDestroyerBase {
public:
    SharedResourceDestroyerBase() = default;
    SharedResourceDestroyerBase(const SharedResourceDestroyerBase&) = delete;
    SharedResourceDestroyerBase& operator=(const SharedResourceDestroyerBase&) = delete;
    virtual ~SharedResourceDestroyerBase();

    /// Releases the resource, so that nothing is deleted later.
    virtual void disarm() = 0;
};

template <class Storage>
class SharedResourceDestroyer;

/// Made where a resource is adopted, the only place where its type has to be complete.
template <class T>
class SharedResourceDestroyer<PointerStorage<T, 0, 3>> : public SharedResourceDestroyerBase {
public:
    /// @param resource fresh from `new`, or null
    explicit SharedResourceDestroyer(T* resource) { m_resource.value = resource; }

    ~SharedResourceDestroyer() override
    {
        if (m_resource.value != m_resource.nullValue) {
            delete m_resource.value;
            m_resource.value = m_resource.nullValue;
        }
    }

    void disarm() override { m_resource.value = m_resource.nullValue; }

private:
    PointerStorage<T, 0, 3> m_resource;
};

template <class Storage, int Policy>
class SharedResource;

/// Owning handle: the resource lives until the last of its handles is destroyed.
///
/// Differs from `std::shared_ptr`: the count is a plain integer, so handles and resource belong to one thread; there
/// are no weak handles and no conversions between types, and cycles are not detected. A handle that adopts a null
/// pointer counts it like any resource. `->` and `*` check nothing: test a handle that may be empty.
///
/// Copying costs one increment; adopting a resource allocates its count and its destroyer, in one small block. `make`
/// puts the resource into that block, too.
template <class T>
class SharedResource<PointerStorage<T, 0, 3>, 0> {
public:
    /// Empty.
    SharedResource() = default;

    /// Takes over a resource from `new`, even if this throws `std::bad_alloc`.
    explicit SharedResource(T* resource) { adopt(resource); }

    /// A new object together with its count and its destroyer, in one block.
    /// @tparam Object `T`, or a class derived from it
    template <class Object = T, class... Arguments>
    static SharedResource make(Arguments&&... arguments)
    {
        return SharedResource(*new ObjectBlock<Object>(std::forward<Arguments>(arguments)...));
    }

    /// Shares the resource of the other handle.
    SharedResource(const SharedResource& other)
        : m_storage(other.m_storage), m_count(other.m_count), m_destroyer(other.m_destroyer)
    {
        if (m_count != nullptr) {
            ++*m_count; // NOLINT(clang-analyzer-cplusplus.NewDelete): see release()
        }
    }

    ~SharedResource() { release(); }

    /// Releases its resource, then takes over one from `new`, even if this throws `std::bad_alloc`.
    SharedResource& operator=(T* resource)
    {
        release();
        adopt(resource);
        return *this;
    }

    /// Shares the resource of `other`. It does so before it releases the old one, so `other` may be part of the object
    /// that is destroyed here.
    SharedResource& operator=(const SharedResource& other)
    {
        if (this != &other) {
            SharedResource shared(other);
            swap(shared);
        }
        return *this;
    }

    /// Exchanges the resources of two handles.
    void swap(SharedResource& other) noexcept
    {
        exchange(m_storage.value, other.m_storage.value);
        exchange(m_count, other.m_count);
        exchange(m_destroyer, other.m_destroyer);
    }

    T* get() const { return m_storage.value; }        ///< The object, or null.
    T* operator->() const { return m_storage.value; } ///< The object, unchecked.
    T& operator*() const { return *m_storage.value; } ///< The object, unchecked.

    /// True if the handle holds an object.
    explicit operator bool() const { return m_storage.value != m_storage.nullValue; }

    /// Number of handles that share the resource, this one included; 0 when empty.
    unsigned useCount() const { return m_count == nullptr ? 0 : *m_count; }

    /// Whether both have the same object, or none.
    friend bool operator==(const SharedResource& a, const SharedResource& b) { return a.get() == b.get(); }
    /// Not `==`.
    friend bool operator!=(const SharedResource& a, const SharedResource& b) { return a.get() != b.get(); }
    /// Whether the handle is empty.
    friend bool operator==(const SharedResource& a, std::nullptr_t) { return a.get() == nullptr; }
    /// Whether the handle holds an object.
    friend bool operator!=(const SharedResource& a, std::nullptr_t) { return a.get() != nullptr; }
    /// Whether the handle is empty.
    friend bool operator==(std::nullptr_t, const SharedResource& a) { return a.get() == nullptr; }
    /// Whether the handle holds an object.
    friend bool operator!=(std::nullptr_t, const SharedResource& a) { return a.get() != nullptr; }

private:
    template <class Field>
    static void exchange(Field& a, Field& b) noexcept
    {
        Field kept = a;
        a = b;
        b = kept;
    }

    // One block for both, since a scene has many resources.
    struct CountingDestroyer final : SharedResourceDestroyer<PointerStorage<T, 0, 3>> {
        using SharedResourceDestroyer<PointerStorage<T, 0, 3>>::SharedResourceDestroyer;
        unsigned count = 1;
    };

    // An object with its count.
    template <class Object>
    class ObjectBlock final : public SharedResourceDestroyerBase {
    public:
        template <class... Arguments>
        explicit ObjectBlock(Arguments&&... arguments)
        {
            new (m_memory) Object(std::forward<Arguments>(arguments)...);
        }
        ~ObjectBlock() override
        {
            if (m_isArmed) {
                std::destroy_at(object());
            }
        }

        void disarm() override { m_isArmed = false; }
        Object* object() { return std::launder(reinterpret_cast<Object*>(m_memory)); }

        unsigned count = 1;

    private:
        bool m_isArmed = true;
        alignas(Object) unsigned char m_memory[sizeof(Object)];
    };

    template <class Object>
    explicit SharedResource(ObjectBlock<Object>& block) : m_count(&block.count), m_destroyer(&block)
    {
        m_storage.value = block.object();
    }

    void adopt(T* resource)
    {
        CountingDestroyer* destroyer = nullptr;
        try {
            destroyer = new CountingDestroyer(resource);
        } catch (...) {
            delete resource;
            throw;
        }
        m_storage.value = resource;
        m_count = &destroyer->count;
        m_destroyer = destroyer;
    }

    void release()
    {
        if (m_count == nullptr) {
            return;
        }
        // The handle is emptied first, because destroying the resource may lead back to this handle.
        unsigned* const count = m_count;
        m_storage.value = m_storage.nullValue;
        m_count = nullptr;
        // The count is destroyed with the destroyer around it. The analyzer does not see this across several handles.
        if (--*count == 0) { // NOLINT(clang-analyzer-cplusplus.NewDelete)
            delete m_destroyer;
        }
    }

    PointerStorage<T, 0, 3> m_storage;
    unsigned* m_count = nullptr;
    SharedResourceDestroyerBase* m_destroyer = nullptr; // stale in an emptied handle: read only with a count
};

} // namespace vesk
