// A shared, growing list. An Array is a handle, not a value: a copy shares the same
// list, there is no copy on write, and a change through one handle is seen through
// all of them. The default constructor makes a new empty list, so a default Array is
// usable at once. Code that must hand out an independent list makes a new Array and
// copies the elements over.
//
// Elements sit in one block; Array<bool> keeps one byte an element, and at() gives a
// real bool& into it.
//
//   Array<int> a;  Array<int> b = a;  b.add(7);   ->  a.size() == 1, a.at(0) == 7
//   a.at(1)                                       ->  RangeException(0, 1, 1)
//
// An Array shared between threads needs its users' lock.
#pragma once
#include "Framework/SharedPointer.h"

#include <cstdint>
#include <vector>

namespace Framework {

namespace Detail {
// What the list stores for an element type: the type itself, except for bool, which
// std::vector would pack into bits.
template <class T>
struct ArraySlot
{
    T value;
};
}  // namespace Detail

// Three positions in a list: begin, end, and the current one. A loop compares
// current with end itself:
//   for (auto it = array.iterator(0); it.current != it.end; it.next()) use(it.value());
// Valid as long as the list doesn't change.
template <class T>
class ArrayIterator
{
public:
    using Slot = Detail::ArraySlot<T>;

    ArrayIterator(Slot* first, Slot* last, Slot* at) : begin(first), end(last), current(at) {}

    // At end, both throw IterationException.
    T& value() const
    {
        if (current == end)
            throw new IterationException(SITE);
        return current->value;
    }
    void next()
    {
        if (current == end)
            throw new IterationException(SITE);
        ++current;
    }

    Slot* begin;
    Slot* end;
    Slot* current;
};

template <class T>
class Array : public SharedPointer<std::vector<Detail::ArraySlot<T>>>
{
public:
    using List = std::vector<Detail::ArraySlot<T>>;

    Array() : SharedPointer<List>(new List, true) {}

    uint32_t size() const { return uint32_t(this->get()->size()); }
    // index >= size() gives RangeException(0, size(), index).
    T& at(uint32_t index) const
    {
        List& list = *this->get();
        if (index >= list.size())
            throw new RangeException(SITE, 0, list.size(), index);
        return list[index].value;
    }
    void add(const T& value) { this->get()->push_back(Detail::ArraySlot<T>{value}); }
    void reserve(uint32_t elements) { this->get()->reserve(elements); }
    // Removes `elements` elements from position; position + elements beyond size()
    // gives RangeException(0, size(), position + elements), checked before 0 elements
    // are let go.
    void erase(uint32_t position, uint32_t elements)
    {
        List& list = *this->get();
        const uint64_t stop = uint64_t(position) + elements;
        if (stop >= uint64_t(list.size()) + 1)
            throw new RangeException(SITE, 0, list.size(), int64_t(stop));
        if (elements == 0)
            return;
        list.erase(list.begin() + position, list.begin() + stop);
    }
    // skip > size() gives RangeException(0, size(), skip).
    ArrayIterator<T> iterator(uint32_t skip) const
    {
        List& list = *this->get();
        if (skip > list.size())
            throw new RangeException(SITE, 0, list.size(), skip);
        Detail::ArraySlot<T>* first = list.data();
        return ArrayIterator<T>(first, first + list.size(), first + skip);
    }
};

}  // namespace Framework
