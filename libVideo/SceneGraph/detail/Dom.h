#pragma once

/// @file
/// Reading from the elements of a document, with the tests that a broken one calls for.

#include <libVideo/ColladaDom.h>

#include <libMath/Vector.h>

#include <vesk/Exception.h>
#include <vesk/String.h>

#include <cstddef>

namespace libVideo::detail {

/// What a reference leads to, if that is an element of type `Element`; else null.
template <class Element>
daeSmartRef<Element> resolve(const daeURI& reference)
{
    return daeSmartRef<Element>(daeSafeCast<Element>(reference.getElement()));
}

/// The values of a value array, one behind the other.
template <class Value>
const Value* dataOf(const daeTArray<Value>& values)
{
    return reinterpret_cast<const Value*>(values.getRawData());
}

/// The value at a place of a value array. Arrays have the length that the document gave them; what is missing is 0.
inline double valueAt(const daeTArray<double>& values, std::size_t index)
{
    return index < values.getCount() ? values[index] : 0.0;
}

inline float floatAt(const daeTArray<double>& values, std::size_t index)
{
    return static_cast<float>(valueAt(values, index));
}

/// The first three values.
inline libMath::Vector<float, 3> vectorOf(const daeTArray<double>& values)
{
    return {floatAt(values, 0), floatAt(values, 1), floatAt(values, 2)};
}

/// The low 32 bits of a number that the document model keeps in 64.
inline unsigned low32(domUint number)
{
    return static_cast<unsigned>(number);
}

/// A host may hand over a null reference where an element is needed. @throws vesk::NullPointer
template <class Element>
void expectElement(const daeSmartRef<Element>& element, const char* loader)
{
    if (element == nullptr) {
        throw vesk::NullPointer("Asked to load from a null element: " + vesk::String(loader));
    }
}

} // namespace libVideo::detail
