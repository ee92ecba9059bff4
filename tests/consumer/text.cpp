// A project of its own that takes the foundation alone.

#include <vesk/vesk.h>

int main()
{
    vesk::Array<vesk::String> words;
    words.append("lamp");
    try {
        return words[1].size() == 0 ? 1 : 2;
    } catch (const vesk::IndexOutOfBounds& exception) { // thrown in the library, caught here
        return exception.index() == 1 ? 0 : 3;
    }
}
