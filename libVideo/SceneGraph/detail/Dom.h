#pragma once

/// @file
/// Reads values of the elements of a document, with checks for broken documents.

#include <libVideo/ColladaDom.h>

#include <libMath/Vector.h>

#include <vesk/Exception.h>
#include <vesk/String.h>

#include <cstddef>

namespace libVideo::detail {

/// The element that a reference refers to, if its type is `Element`; otherwise null.
template <class Element>
daeSmartRef<Element> resolve(const daeURI& reference)
{
    return daeSmartRef<Element>(daeSafeCast<Element>(reference.getElement()));
}

/// The values of a value array, as a plain array.
template <class Value>
const Value* dataOf(const daeTArray<Value>& values)
{
    return reinterpret_cast<const Value*>(values.getRawData());
}

/// A value of a value array, or 0 if `index` is beyond its end, since documents may give arrays any length.
inline double valueAt(const daeTArray<double>& values, std::size_t index)
{
    return index < values.getCount() ? values[index] : 0.0;
}

inline float floatAt(const daeTArray<double>& values, std::size_t index)
{
    return static_cast<float>(valueAt(values, index));
}

/// The first three values of a value array.
inline libMath::Vector<float, 3> vectorOf(const daeTArray<double>& values)
{
    return {floatAt(values, 0), floatAt(values, 1), floatAt(values, 2)};
}

/// The low 32 bits of a 64-bit number of the document model.
inline unsigned low32(domUint number)
{
    return static_cast<unsigned>(number);
}

/// Checks an element passed by the host. @throws vesk::NullPointer if it is null
template <class Element>
void expectElement(const daeSmartRef<Element>& element, const char* loader)
{
    if (element == nullptr) {
        throw vesk::NullPointer("Asked to load from a null element: " + vesk::String(loader));
    }
}

} // namespace libVideo::detail
