#pragma once

#include <string>
#include <vector>

namespace testSupport {

/// An element that counts constructions and destructions, so that leaks and double destruction show up as numbers. It
/// can also refuse to be copied.
class CountingElement {
public:
    /// Counts over all elements of a test; call `reset` at its start.
    struct Counts {
        int alive = 0;
        int defaultConstructed = 0;
        int copied = 0;
        int destroyed = 0;
        int assigned = 0;
        int copiesUntilThrow = -1;        ///< how many copies succeed before one throws `CopyRefused`; negative: all
        std::vector<std::string> history; ///< "copy 3", "destroy 3": what happened to which value, in order
    };
    struct CopyRefused {};

    static Counts& counts();
    static void reset();

    CountingElement();
    CountingElement(int number); // implicit, so that lists of numbers make elements
    CountingElement(const CountingElement& other);
    CountingElement& operator=(const CountingElement& other);
    ~CountingElement();

    bool operator==(const CountingElement& other) const { return value == other.value; }

    int value = 0;

private:
    void* m_self; // its own address, so that a bytewise move is noticed
};

} // namespace testSupport
