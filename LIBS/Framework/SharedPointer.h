// A handle under which several holders share one object. The count of handles lives
// in its own small heap counter, apart from the object, so any object can be shared
// without a base class; copying a handle is one interlocked increment.
//
// `owner` says whether the last handle deletes the object: a handle made with owner
// false shares and counts, but leaves the object alive when the count reaches 0.
// An empty handle has neither object nor counter; get() and the dereference
// operators throw ValueNotInitializedException on it.
//
// A handle of a derived type converts to a handle of a base type: the copy holds the
// adjusted pointer and counts on the same counter, so the last handle of either kind
// deletes the object (through a virtual destructor where T is a class of a tree).
//
// The counter is atomic, the handle object itself is not: one handle is not changed
// by two threads at once.
#pragma once
#include "Framework/Exceptions.h"

namespace Framework {

namespace Detail {
// Interlocked operations on a handle counter; return the new value.
inline int32_t incrementCount(volatile int32_t* count) { return __atomic_add_fetch(count, 1, __ATOMIC_SEQ_CST); }
inline int32_t decrementCount(volatile int32_t* count) { return __atomic_sub_fetch(count, 1, __ATOMIC_SEQ_CST); }
}  // namespace Detail

template <class T>
class SharedPointer
{
public:
    SharedPointer() : object(nullptr), count(nullptr), owner(true) {}
    // Takes the object; null gives an empty handle, with no counter.
    explicit SharedPointer(T* pointer, bool owns = true) : object(nullptr), count(nullptr), owner(owns)
    {
        take(pointer);
    }
    SharedPointer(const SharedPointer& other) : object(nullptr), count(nullptr), owner(true) { share(other); }
    // The up-cast: the adjusted pointer on the same counter.
    template <class U>
    SharedPointer(const SharedPointer<U>& other) : object(nullptr), count(nullptr), owner(true)
    {
        share(other);
    }
    // Takes the new share before dropping the old one: self-assignment is safe.
    SharedPointer& operator=(const SharedPointer& other)
    {
        other.acquire();
        T* const newObject = other.object;
        int32_t* const newCount = other.count;
        const bool newOwner = other.owner;
        release();
        object = newObject;
        count = newCount;
        owner = newOwner;
        return *this;
    }
    virtual ~SharedPointer() { release(); }

    // Releases what the handle holds, then takes the new object with a new counter;
    // null leaves the handle empty. `owner` stays as it was.
    void reset(T* pointer = nullptr)
    {
        release();
        take(pointer);
    }
    // Drops this handle's share: the last handle frees the counter and, when it is
    // the owner, deletes the object. The handle is empty afterwards.
    void release()
    {
        int32_t* const oldCount = count;
        T* const oldObject = object;
        object = nullptr;
        count = nullptr;
        if (oldCount && Detail::decrementCount(oldCount) == 0) {
            delete oldCount;
            if (owner)
                delete oldObject;
        }
    }

    T* get() const
    {
        if (!object)
            throw new ValueNotInitializedException(SITE);
        return object;
    }
    T* operator->() const { return get(); }
    T& operator*() const { return *get(); }
    bool isNull() const { return object == nullptr; }
    bool isOwner() const { return owner; }
    // Handles on one object count together.
    bool sharesWith(const SharedPointer& other) const { return count == other.count; }

    // A handle of a derived type, on the same counter, when the object is one;
    // an empty handle otherwise.
    template <class U>
    SharedPointer<U> dynamicCast() const
    {
        SharedPointer<U> result;
        if (U* derived = dynamic_cast<U*>(object)) {
            result.object = derived;
            result.count = count;
            result.owner = owner;
            Detail::incrementCount(count);
        }
        return result;
    }

private:
    template <class U>
    friend class SharedPointer;

    void take(T* pointer)
    {
        if (pointer) {
            count = new int32_t(1);
            object = pointer;
        }
    }
    // One more share of this handle's object. A counter without an object means
    // the handle is broken, and nothing is touched.
    void acquire() const
    {
        if (count && !object)
            throw new ErrorException(SITE);
        if (count)
            Detail::incrementCount(count);
    }
    template <class U>
    void share(const SharedPointer<U>& other)
    {
        other.acquire();
        object = other.object;
        count = other.count;
        owner = other.owner;
    }

    T* object;
    int32_t* count;
    bool owner;
};

}  // namespace Framework
