#include "CountingElement.h"

#include <cstdlib>

namespace testSupport {

CountingElement::Counts& CountingElement::counts()
{
    static Counts all;
    return all;
}

void CountingElement::reset()
{
    counts() = Counts();
}

CountingElement::CountingElement() : m_self(this)
{
    ++counts().alive;
    ++counts().defaultConstructed;
}

CountingElement::CountingElement(int number) : value(number), m_self(this)
{
    ++counts().alive;
}

CountingElement::CountingElement(const CountingElement& other) : value(other.value), m_self(this)
{
    if (counts().copiesUntilThrow == 0) {
        throw CopyRefused();
    }
    if (counts().copiesUntilThrow > 0) {
        --counts().copiesUntilThrow;
    }
    ++counts().alive;
    ++counts().copied;
    counts().history.push_back("copy " + std::to_string(value));
}

CountingElement& CountingElement::operator=(const CountingElement& other)
{
    value = other.value;
    ++counts().assigned;
    return *this;
}

CountingElement::~CountingElement()
{
    if (m_self != this) {
        std::abort(); // moved bytewise, or destroyed twice
    }
    m_self = nullptr;
    --counts().alive;
    ++counts().destroyed;
    counts().history.push_back("destroy " + std::to_string(value));
}

} // namespace testSupport
