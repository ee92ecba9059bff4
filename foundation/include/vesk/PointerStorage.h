#pragma once // SPDX-License-Identifier: MIT

namespace vesk {

/// One pointer, as the handles store it. The two numbers name the policy of the handle; two forms exist:
///
/// - `PointerStorage<T, 0, 3>` in a `SharedResource`: the object is owned and deleted with the last handle;
/// - `PointerStorage<T, 3, 2>` in a `CopiedResource`: the object is not owned.
template <class T, int A, int B>
struct PointerStorage {
    using Element = T; ///< What the pointer points to.

    /// Value of an empty storage.
    static constexpr T* nullValue = nullptr;

    T* value = nullValue; ///< The pointer.
};

} // namespace vesk
