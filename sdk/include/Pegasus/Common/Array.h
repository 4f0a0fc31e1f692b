#ifndef Pegasus_Array_h
#define Pegasus_Array_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>

PEGASUS_NAMESPACE_BEGIN

// Lives in the library so that Array.h need not include Exception.h, which
// itself uses Array.
PEGASUS_COMMON_LINKAGE void ArrayThrowIndexOutOfBoundsException();

template <class T> struct ArrayRep
{
    Uint32 size = 0;
    Uint32 capacity = 0;
    T* data = nullptr;

    ArrayRep() = default;
    ArrayRep(const ArrayRep&) = delete;
    ArrayRep& operator=(const ArrayRep&) = delete;

    ~ArrayRep()
    {
        std::destroy_n(data, size);
        ::operator delete(static_cast<void*>(data));
    }

    // Moves the elements into a buffer of the given capacity.
    void realloc(Uint32 newCapacity)
    {
        T* p = static_cast<T*>(::operator new(sizeof(T) * size_t(newCapacity)));
        try
        {
            std::uninitialized_copy_n(data, size, p);
        }
        catch (...)
        {
            ::operator delete(static_cast<void*>(p));
            throw;
        }
        std::destroy_n(data, size);
        ::operator delete(static_cast<void*>(data));
        data = p;
        capacity = newCapacity;
    }
};

// Value-semantics array: copies share one representation until one of them
// is modified (copy on write).
template <class T> class Array
{
public:
    typedef T value_type;

    Array() {}

    Array(const Array<T>& x) : _rep(x._rep) {}

    Array(Array<T>&& x) noexcept : _rep(std::move(x._rep)) {}

    explicit Array(Uint32 size)
    {
        grow(size, T());
    }

    Array(Uint32 size, const T& x)
    {
        grow(size, x);
    }

    Array(const T* items, Uint32 size)
    {
        append(items, size);
    }

    ~Array() {}

    Array<T>& operator=(const Array<T>& x)
    {
        _rep = x._rep;
        return *this;
    }

    Array<T>& operator=(Array<T>&& x) noexcept
    {
        _rep = std::move(x._rep);
        return *this;
    }

    void clear()
    {
        _rep.reset();
    }

    void reserveCapacity(Uint32 capacity)
    {
        if (capacity > getCapacity())
        {
            _unique(capacity);
        }
    }

    void grow(Uint32 size, const T& x)
    {
        if (size == 0)
        {
            return;
        }
        T copy(x);
        _unique(this->size() + size);
        std::uninitialized_fill_n(_rep->data + _rep->size, size, copy);
        _rep->size += size;
    }

    void swap(Array<T>& x)
    {
        _rep.swap(x._rep);
    }

    Uint32 size() const
    {
        return _rep ? _rep->size : 0;
    }

    Uint32 getCapacity() const
    {
        return _rep ? _rep->capacity : 0;
    }

    const T* getData() const
    {
        return _rep ? _rep->data : nullptr;
    }

    T& operator[](Uint32 index)
    {
        if (index >= size())
        {
            ArrayThrowIndexOutOfBoundsException();
        }
        _unique(0);
        return _rep->data[index];
    }

    const T& operator[](Uint32 index) const
    {
        if (index >= size())
        {
            ArrayThrowIndexOutOfBoundsException();
        }
        return _rep->data[index];
    }

    void append(const T& x)
    {
        insert(size(), &x, 1);
    }

    void append(const T* x, Uint32 size)
    {
        insert(this->size(), x, size);
    }

    void appendArray(const Array<T>& x)
    {
        Array<T> keep(x);
        insert(size(), keep.getData(), keep.size());
    }

    void prepend(const T& x)
    {
        insert(0, &x, 1);
    }

    void prepend(const T* x, Uint32 size)
    {
        insert(0, x, size);
    }

    void insert(Uint32 index, const T& x)
    {
        insert(index, &x, 1);
    }

    void insert(Uint32 index, const T* x, Uint32 size)
    {
        if (index > this->size())
        {
            ArrayThrowIndexOutOfBoundsException();
        }
        if (size == 0)
        {
            return;
        }
        // The items may live in this array's own buffer, which growing
        // would free: copy them first when that can happen.
        Uint32 oldSize = this->size();
        const T* begin = getData();
        if (begin && x >= begin && x < begin + oldSize)
        {
            Array<T> tmp(x, size);
            insert(index, tmp.getData(), size);
            return;
        }
        Uint32 needed = oldSize + size;
        Uint32 capacity = getCapacity();
        if (needed > capacity || !_rep || _rep.use_count() > 1)
        {
            // A first insert takes only what it needs: most arrays (key
            // bindings, values) never grow past it.
            Uint32 grown = capacity == 0 ? needed : capacity < 8 ? 8 : capacity * 2;
            _unique(needed > grown ? needed : grown);
        }
        std::uninitialized_copy_n(x, size, _rep->data + oldSize);
        _rep->size = needed;
        std::rotate(_rep->data + index, _rep->data + oldSize, _rep->data + needed);
    }

    void remove(Uint32 index)
    {
        remove(index, 1);
    }

    void remove(Uint32 index, Uint32 size)
    {
        if (index > this->size() || size > this->size() - index)
        {
            ArrayThrowIndexOutOfBoundsException();
        }
        if (size == 0)
        {
            return;
        }
        _unique(0);
        T* p = _rep->data;
        std::move(p + index + size, p + _rep->size, p + index);
        std::destroy_n(p + _rep->size - size, size);
        _rep->size -= size;
    }

private:
    // Makes the representation private to this array with at least the
    // given capacity.
    void _unique(Uint32 capacity)
    {
        if (!_rep)
        {
            _rep = std::make_shared<ArrayRep<T>>();
            if (capacity)
            {
                _rep->realloc(capacity);
            }
            return;
        }
        if (capacity < _rep->capacity)
        {
            capacity = _rep->capacity;
        }
        if (_rep.use_count() > 1)
        {
            auto rep = std::make_shared<ArrayRep<T>>();
            rep->data = static_cast<T*>(::operator new(sizeof(T) * size_t(capacity)));
            rep->capacity = capacity;
            std::uninitialized_copy_n(_rep->data, _rep->size, rep->data);
            rep->size = _rep->size;
            _rep = rep;
        }
        else
        {
            // Another thread may just have dropped its copy: see its last
            // reads before writing.
            std::atomic_thread_fence(std::memory_order_acquire);
            if (capacity > _rep->capacity)
            {
                _rep->realloc(capacity);
            }
        }
    }

    std::shared_ptr<ArrayRep<T>> _rep;
};

PEGASUS_NAMESPACE_END

#endif
