// Expected throws: runs body, checks that it threw a pointer to E (or a class under
// it), and hands the object back so the test can look at its fields. The object is
// owned by the returned pointer, so a failing test leaks nothing.
//
// While the returned object lives it is the thread's current exception, and the next
// Framework exception built adopts it as its cause and deletes it with itself: let
// the pointer go (end its scope) before the next expected throw. An FW exception that
// went through fw_raise is likewise the thread's current FW exception until it is
// deleted; it takes nothing with it.
#pragma once
#include "fw/fw_exception.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>

template <class E, class Body>
std::unique_ptr<E> expectThrown(Body body)
{
    try {
        body();
    } catch (fw_exception* raw) {
        std::unique_ptr<fw_exception> thrown(raw);
        if (E* wanted = dynamic_cast<E*>(raw)) {
            thrown.release();
            return std::unique_ptr<E>(wanted);
        }
        ADD_FAILURE() << "threw " << typeid(*raw).name() << ", wanted " << typeid(E).name();
        return nullptr;
    }
    ADD_FAILURE() << "nothing was thrown, wanted " << typeid(E).name();
    return nullptr;
}

// One field of what body throws, or the field's default when body threw something else
// or nothing (and failed the test): for checks that must not stop the program.
template <class E, class Body, class Owner, class T>
T thrownField(Body body, const T Owner::*field)
{
    const std::unique_ptr<E> thrown = expectThrown<E>(body);
    return thrown ? (*thrown).*field : T();
}

// The class of what body throws, by its type name, the object deleted: for tables
// whose rows each name the exact class they expect ("nothing" when nothing was).
template <class Body>
std::string thrownClass(Body body)
{
    try {
        body();
    } catch (fw_exception* raw) {
        std::unique_ptr<fw_exception> thrown(raw);
        return typeid(*raw).name();
    }
    return "nothing";
}

// What body returns, or the class it throws: for tables whose rows expect either.
template <class Body>
std::string resultOrThrown(Body body)
{
    std::string result;
    const std::string thrown = thrownClass([&] { result = body(); });
    return thrown == "nothing" ? result : thrown;
}
