// Holds one of each kind of value while a debugger looks.
#include <libVideo/Handles.h>

#include <libMath/Matrix.h>

#include <vesk/vesk.h>

#include <cstdio>

// What the test stops at.
extern "C" void stopHere()
{
    std::puts("stopped");
}

int main()
{
    const vesk::String text("lamp \xC3\xA4 \"x\"");
    const vesk::String none;
    const vesk::CString narrow = text.getUTF8String();
    vesk::Array<int> numbers;
    numbers.append(10);
    numbers.append(20);
    numbers.append(30);
    vesk::Array<vesk::String> words;
    words.append("sea");
    words.append("rock");
    const vesk::Array<double> nothing;
    vesk::Buffer<unsigned char> bytes;
    bytes.resize(2, true);
    bytes[1] = 7;
    libVideo::TableByName<int> table(1);
    table.insert("lamp", 7);
    table.insert("lens", 8);
    libVideo::TableByName<vesk::Array<int>> nested(4);
    nested.insert("all", numbers);
    const libVideo::SharedHandle<int> shared(new int(5));
    const libVideo::SharedHandle<int> other = shared;
    const libVideo::SharedHandle<int> single(new int(6));
    const libVideo::SharedHandle<int> empty;
    const libVideo::Link<int> link(shared);
    const libVideo::Link<int> loose;
    const libMath::Vector<float, 3> vector(1.0f, 2.5f, -3.0f);
    libMath::Matrix<float, 2, 2> matrix;
    matrix(0, 1) = 4.0f;
    stopHere();
    return text.size() + none.size() + numbers.size() + words.size() + nothing.size() + table.size() + nested.size() +
                           shared.useCount() + other.useCount() + single.useCount() + empty.useCount() >
                       0 &&
                   link && !loose && vector[0] > 0.0f && matrix[0] == 0.0f && narrow != nullptr
               ? 0
               : 1;
}
