#ifndef Pegasus_SdkRepAccess_h
#define Pegasus_SdkRepAccess_h

// Representations behind the object handles, and the one door through which the
// implementation files reach a handle's representation. Not installed.

#include <atomic>
#include <memory>
#include <vector>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CIMScope.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

struct SdkRepAccess
{
    template <class H>
    static auto& rep(H& handle)
    {
        return handle._rep;
    }

    template <class H>
    static const auto& rep(const H& handle)
    {
        return handle._rep;
    }

    template <class H, class R>
    static H wrap(const std::shared_ptr<R>& r)
    {
        H handle;
        handle._rep = r;
        return handle;
    }
};

// Dereferences a handle's representation; a default-constructed handle has none.
template <class R>
inline R& needRep(const std::shared_ptr<R>& rep)
{
    if (!rep)
    {
        throw UninitializedObjectException();
    }
    return *rep;
}

inline void checkIndex(Uint32 index, size_t size)
{
    if (index >= size)
    {
        throw IndexOutOfBoundsException();
    }
}

// Named elements (qualifiers, properties, methods, parameters) kept in declaration
// order and found by name without regard to case.
//
// Copying a list is cheap: the copy shares the elements until either side
// changes. Sharing is only safe while no handle to an element exists outside
// the lists, so a list stops sharing ("exposed") once it hands out an element
// or takes in a caller's handle; from then on it copies element by element,
// as a plain list would. Elements shared between lists are never changed:
// every change first gives the list elements of its own.
//
// A const object may be read from several threads at once, and reading can
// expose a list, so an unexposed list guards its element pointer with a
// small lock; an exposed one changes only through non-const operations.
template <class T>
class NamedList
{
public:
    using Items = std::vector<T>;

    // A stable read-only look at the elements, for internal walks that hand
    // out no element.
    class View
    {
    public:
        explicit View(std::shared_ptr<Items> items) : _items(std::move(items))
        {
        }
        size_t size() const
        {
            return _items ? _items->size() : 0;
        }
        const T& operator[](size_t i) const
        {
            return (*_items)[i];
        }
        const T* begin() const
        {
            return _items ? _items->data() : nullptr;
        }
        const T* end() const
        {
            return _items ? _items->data() + _items->size() : nullptr;
        }

    private:
        std::shared_ptr<Items> _items;
    };

    NamedList() noexcept
    {
    }

    NamedList(const NamedList& x) : _items(x._independentItems())
    {
    }

    NamedList(NamedList&& x) noexcept
        : _items(std::move(x._items)), _exposed(x._exposed.load(std::memory_order_relaxed))
    {
        x._exposed.store(false, std::memory_order_relaxed);
    }

    NamedList& operator=(const NamedList& x)
    {
        if (this != &x)
        {
            std::shared_ptr<Items> items = x._independentItems();
            _items.swap(items);
            _exposed.store(false, std::memory_order_relaxed);
        }
        return *this;
    }

    NamedList& operator=(NamedList&& x) noexcept
    {
        if (this != &x)
        {
            _items = std::move(x._items);
            _exposed.store(x._exposed.load(std::memory_order_relaxed), std::memory_order_relaxed);
            x._exposed.store(false, std::memory_order_relaxed);
        }
        return *this;
    }

    View view() const
    {
        return View(_snapshot());
    }

    Uint32 find(const CIMName& name) const
    {
        View items = view();
        for (size_t i = 0; i < items.size(); i++)
        {
            if (items[i].getName().equal(name))
            {
                return Uint32(i);
            }
        }
        return PEG_NOT_FOUND;
    }

    // Keeps the caller's handle, which therefore still reaches the element.
    void add(const T& x, const char* what)
    {
        if (x.isUninitialized())
        {
            throw UninitializedObjectException();
        }
        if (find(x.getName()) != PEG_NOT_FOUND)
        {
            throw AlreadyExistsException(String(what) + " \"" + x.getName().getString() +
                                         "\" already exists");
        }
        _expose();
        _mutableItems().push_back(x);
    }

    // Appends an element that no handle outside this list refers to.
    void adopt(T&& x)
    {
        if (!_exposed.load(std::memory_order_relaxed))
        {
            _ownVector();
        }
        _mutableItems().push_back(std::move(x));
    }

    void reserve(size_t n)
    {
        if (!_exposed.load(std::memory_order_relaxed))
        {
            _ownVector();
        }
        _mutableItems().reserve(n);
    }

    // The element itself, for a handle that goes out to a caller.
    const T& get(Uint32 index) const
    {
        _expose();
        checkIndex(index, _items ? _items->size() : 0);
        return (*_items)[index];
    }

    void remove(Uint32 index)
    {
        checkIndex(index, count());
        if (!_exposed.load(std::memory_order_relaxed))
        {
            _ownVector();
        }
        _items->erase(_items->begin() + index);
    }

    void clear()
    {
        _items.reset();
        _exposed.store(false, std::memory_order_relaxed);
    }

    Uint32 count() const
    {
        return Uint32(view().size());
    }

    // True when nothing but this list refers to its vector or to any element:
    // the elements can then change without the change being seen elsewhere.
    bool soleOwner() const
    {
        std::shared_ptr<Items> items = _snapshot();
        if (!items)
        {
            return true;
        }
        // The snapshot itself is one more holder of the vector.
        if (items.use_count() > 2)
        {
            return false;
        }
        for (const T& x : *items)
        {
            if (SdkRepAccess::rep(x).use_count() > 1)
            {
                return false;
            }
        }
        return true;
    }

    NamedList deepCopy() const
    {
        return NamedList(*this);
    }

    template <class ConstT>
    bool identical(const NamedList& other) const
    {
        View mine = view();
        View theirs = other.view();
        if (mine.size() != theirs.size())
        {
            return false;
        }
        for (size_t i = 0; i < mine.size(); i++)
        {
            if (!mine[i].identical(ConstT(theirs[i])))
            {
                return false;
            }
        }
        return true;
    }

private:
    class Guard
    {
    public:
        explicit Guard(std::atomic_flag& lock) : _lock(lock)
        {
            while (_lock.test_and_set(std::memory_order_acquire))
            {
            }
        }
        ~Guard()
        {
            _lock.clear(std::memory_order_release);
        }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        std::atomic_flag& _lock;
    };

    std::shared_ptr<Items> _snapshot() const
    {
        if (_exposed.load(std::memory_order_acquire))
        {
            return _items;
        }
        Guard guard(_lock);
        return _items;
    }

    std::shared_ptr<Items> _clonedItems() const
    {
        if (!_items || _items->empty())
        {
            return nullptr;
        }
        auto copy = std::make_shared<Items>();
        copy->reserve(_items->size());
        for (const T& x : *_items)
        {
            copy->push_back(x.clone());
        }
        return copy;
    }

    // What a copy of this list starts from: the same elements while nobody
    // outside can reach them, else clones.
    std::shared_ptr<Items> _independentItems() const
    {
        if (_exposed.load(std::memory_order_acquire))
        {
            return _clonedItems();
        }
        Guard guard(_lock);
        if (_exposed.load(std::memory_order_relaxed))
        {
            return _clonedItems();
        }
        return _items;
    }

    // Gives an unexposed list a vector of its own; the elements may still be
    // shared with other lists.
    void _ownVector() const
    {
        if (_items && _items.use_count() > 1)
        {
            _items = std::make_shared<Items>(*_items);
        }
    }

    // Before a handle goes out or comes in: the vector and every element
    // become this list's own. Until now only lists held the elements, so a
    // use count above one means another list shares it.
    void _expose() const
    {
        if (_exposed.load(std::memory_order_acquire))
        {
            return;
        }
        Guard guard(_lock);
        if (_exposed.load(std::memory_order_relaxed))
        {
            return;
        }
        if (_items && _items.use_count() > 1)
        {
            _items = _clonedItems();
        }
        else if (_items)
        {
            for (T& x : *_items)
            {
                if (SdkRepAccess::rep(x).use_count() > 1)
                {
                    x = x.clone();
                }
            }
        }
        _exposed.store(true, std::memory_order_release);
    }

    Items& _mutableItems()
    {
        if (!_items)
        {
            _items = std::make_shared<Items>();
        }
        return *_items;
    }

    mutable std::shared_ptr<Items> _items;
    mutable std::atomic<bool> _exposed{false};
    mutable std::atomic_flag _lock = ATOMIC_FLAG_INIT;
};

class CIMQualifierRep
{
public:
    CIMName name;
    CIMValue value;
    CIMFlavor flavor;
    Boolean propagated = false;
};

class CIMQualifierDeclRep
{
public:
    CIMName name;
    CIMValue value;
    CIMScope scope;
    CIMFlavor flavor;
    Uint32 arraySize = 0;
};

class CIMPropertyRep
{
public:
    CIMName name;
    CIMValue value;
    Uint32 arraySize = 0;
    CIMName referenceClassName;
    CIMName classOrigin;
    Boolean propagated = false;
    NamedList<CIMQualifier> qualifiers;
};

class CIMParameterRep
{
public:
    CIMName name;
    CIMType type = CIMTYPE_BOOLEAN;
    Boolean isArray = false;
    Uint32 arraySize = 0;
    CIMName referenceClassName;
    NamedList<CIMQualifier> qualifiers;
};

class CIMMethodRep
{
public:
    CIMName name;
    CIMType type = CIMTYPE_BOOLEAN;
    CIMName classOrigin;
    Boolean propagated = false;
    NamedList<CIMQualifier> qualifiers;
    NamedList<CIMParameter> parameters;
};

// One representation serves classes and instances, so that CIMObject can share it
// with either.
class CIMObjectRep
{
public:
    enum Kind
    {
        CLASS,
        INSTANCE
    };

    Kind kind = INSTANCE;
    CIMName className;
    CIMName superClassName;
    CIMObjectPath path;
    NamedList<CIMQualifier> qualifiers;
    NamedList<CIMProperty> properties;
    NamedList<CIMMethod> methods;

    std::shared_ptr<CIMObjectRep> deepCopy() const;
    bool identical(const CIMObjectRep& other) const;
    String toMof() const;
};

// True when the element carries the named boolean qualifier with value true.
template <class List>
inline bool hasTrueQualifier(const List& qualifiers, const char* name)
{
    const auto items = qualifiers.view();
    const CIMName wanted(name);
    const CIMValue* found = nullptr;
    for (const auto& q : items)
    {
        if (q.getName().equal(wanted))
        {
            found = &q.getValue();
            break;
        }
    }
    if (!found)
    {
        return false;
    }
    const CIMValue& v = *found;
    if (v.isNull() || v.isArray() || v.getType() != CIMTYPE_BOOLEAN)
    {
        return false;
    }
    Boolean b = false;
    v.get(b);
    return b;
}

PEGASUS_NAMESPACE_END

#endif
