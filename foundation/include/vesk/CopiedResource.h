#pragma once // SPDX-License-Identifier: MIT

#include <vesk/PointerStorage.h>
#include <vesk/SharedResource.h>

#include <cstddef>

namespace vesk {

template <class Storage>
class CopiedResource;

/// Non-owning handle: a pointer that keeps nothing alive, and dangles once its object is destroyed.
///
/// Differs from `std::weak_ptr`: it costs one pointer, does not notice when its object is destroyed, and cannot become
/// an owning handle. `->` and `*` check nothing: test a handle that may be empty.
template <class T>
class CopiedResource<PointerStorage<T, 3, 2>> {
public:
    /// Empty.
    CopiedResource() = default;

    /// Implicit, so that a plain pointer can be passed as a handle.
    CopiedResource(T* resource) { m_storage.value = resource; }

    /// Takes the pointer; the count does not change.
    CopiedResource(const SharedResource<PointerStorage<T, 0, 3>, 0>& resource) { m_storage.value = resource.get(); }

    T* get() const { return m_storage.value; }        ///< The object, or null.
    T* operator->() const { return m_storage.value; } ///< The object, unchecked.
    T& operator*() const { return *m_storage.value; } ///< The object, unchecked.

    /// True if the handle holds an object.
    explicit operator bool() const { return m_storage.value != m_storage.nullValue; }

    /// Whether both refer to the same object, or to none.
    friend bool operator==(const CopiedResource& a, const CopiedResource& b) { return a.get() == b.get(); }
    /// Not `==`.
    friend bool operator!=(const CopiedResource& a, const CopiedResource& b) { return a.get() != b.get(); }
    /// Whether the handle is empty.
    friend bool operator==(const CopiedResource& a, std::nullptr_t) { return a.get() == nullptr; }
    /// Whether the handle holds an object.
    friend bool operator!=(const CopiedResource& a, std::nullptr_t) { return a.get() != nullptr; }
    /// Whether the handle is empty.
    friend bool operator==(std::nullptr_t, const CopiedResource& a) { return a.get() == nullptr; }
    /// Whether the handle holds an object.
    friend bool operator!=(std::nullptr_t, const CopiedResource& a) { return a.get() != nullptr; }

private:
    PointerStorage<T, 3, 2> m_storage;
};

} // namespace vesk
