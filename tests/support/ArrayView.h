// A Framework Array as std::vector, so that a test compares a whole list at once and
// a failure prints every element.
#pragma once
#include "Framework/Array.h"

#include <vector>

template <class T>
std::vector<T> asVector(const Framework::Array<T>& array)
{
    std::vector<T> result;
    for (uint32_t i = 0; i < array.size(); ++i)
        result.push_back(array.at(i));
    return result;
}
