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

// Everything about a property but its value. The properties of all the
// instances built from one class share their class's declarations, so an
// instance costs little more than its values. A declaration never changes
// while shared: a property that changes one takes a copy of its own first.
class CIMPropertyDecl
{
public:
    CIMPropertyDecl() = default;
    // A copy starts without the cached variants.
    CIMPropertyDecl(const CIMPropertyDecl& x);
    CIMPropertyDecl& operator=(const CIMPropertyDecl&) = delete;
    ~CIMPropertyDecl();

    CIMName name;
    Uint32 arraySize = 0;
    CIMName referenceClassName;
    CIMName classOrigin;
    Boolean propagated = false;
    // Never exposed: a property that hands out or takes in a qualifier
    // moves the list to one of its own first.
    NamedList<CIMQualifier> qualifiers;

    // This declaration less its qualifiers and/or class origin, made once
    // and shared, for the instances that leave them out.
    std::shared_ptr<const CIMPropertyDecl> stripped(const std::shared_ptr<const CIMPropertyDecl>& self,
                                                    bool dropQualifiers, bool dropClassOrigin) const;

    // Before a change: the variants made so far no longer match.
    void forgetVariants();

private:
    mutable std::atomic<std::shared_ptr<const CIMPropertyDecl>*> _stripped[3] = {};
};

class CIMPropertyRep
{
public:
    CIMPropertyRep() = default;
    CIMPropertyRep(const CIMPropertyRep&) = delete;
    CIMPropertyRep& operator=(const CIMPropertyRep&) = delete;
    ~CIMPropertyRep()
    {
        delete _ownQualifiers.load(std::memory_order_relaxed);
    }

    std::shared_ptr<const CIMPropertyDecl> decl;
    CIMValue value;

    // The declaration, to change: copied first when shared.
    CIMPropertyDecl& ownDecl()
    {
        if (decl.use_count() > 1)
        {
            decl = std::make_shared<CIMPropertyDecl>(*decl);
        }
        CIMPropertyDecl& d = const_cast<CIMPropertyDecl&>(*decl);
        d.forgetVariants();
        return d;
    }

    // The qualifiers as they read.
    const NamedList<CIMQualifier>& qualifiers() const
    {
        NamedList<CIMQualifier>* own = _ownQualifiers.load(std::memory_order_acquire);
        return own ? *own : decl->qualifiers;
    }

    // The list to hand qualifiers out of or take them into: the property's
    // own. Made on first use, also from const readers, hence the exchange.
    NamedList<CIMQualifier>& ownQualifiers() const
    {
        NamedList<CIMQualifier>* own = _ownQualifiers.load(std::memory_order_acquire);
        if (own)
        {
            return *own;
        }
        auto made = std::make_unique<NamedList<CIMQualifier>>(decl->qualifiers);
        if (_ownQualifiers.compare_exchange_strong(own, made.get(), std::memory_order_acq_rel))
        {
            return *made.release();
        }
        return *own;
    }

    // Leaves out the qualifiers and/or the class origin.
    void strip(bool dropQualifiers, bool dropClassOrigin)
    {
        if (dropQualifiers)
        {
            delete _ownQualifiers.exchange(nullptr, std::memory_order_acq_rel);
        }
        if ((dropQualifiers && decl->qualifiers.count()) ||
            (dropClassOrigin && !decl->classOrigin.isNull()))
        {
            decl = decl->stripped(decl, dropQualifiers, dropClassOrigin);
        }
    }

    // A copy sharing the declaration; a property with a list of its own
    // gives the copy a declaration holding a copy of that list (which
    // clones qualifiers that handles reach).
    std::shared_ptr<CIMPropertyRep> clone() const
    {
        auto copy = std::make_shared<CIMPropertyRep>();
        copy->value = value;
        NamedList<CIMQualifier>* own = _ownQualifiers.load(std::memory_order_acquire);
        if (own)
        {
            auto d = std::make_shared<CIMPropertyDecl>(*decl);
            d->qualifiers = *own;
            copy->decl = std::move(d);
        }
        else
        {
            copy->decl = decl;
        }
        return copy;
    }

private:
    mutable std::atomic<NamedList<CIMQualifier>*> _ownQualifiers{nullptr};
};

inline CIMPropertyDecl::CIMPropertyDecl(const CIMPropertyDecl& x)
    : name(x.name), arraySize(x.arraySize), referenceClassName(x.referenceClassName),
      classOrigin(x.classOrigin), propagated(x.propagated), qualifiers(x.qualifiers)
{
}

inline CIMPropertyDecl::~CIMPropertyDecl()
{
    forgetVariants();
}

inline void CIMPropertyDecl::forgetVariants()
{
    for (auto& slot : _stripped)
    {
        delete slot.exchange(nullptr, std::memory_order_relaxed);
    }
}

inline std::shared_ptr<const CIMPropertyDecl>
CIMPropertyDecl::stripped(const std::shared_ptr<const CIMPropertyDecl>& self, bool dropQualifiers,
                          bool dropClassOrigin) const
{
    if (!dropQualifiers && !dropClassOrigin)
    {
        return self;
    }
    auto& slot = _stripped[(dropQualifiers ? 1 : 0) + (dropClassOrigin ? 2 : 0) - 1];
    std::shared_ptr<const CIMPropertyDecl>* made = slot.load(std::memory_order_acquire);
    if (made)
    {
        return *made;
    }
    auto d = std::make_shared<CIMPropertyDecl>(*this);
    if (dropQualifiers)
    {
        d->qualifiers.clear();
    }
    if (dropClassOrigin)
    {
        d->classOrigin = CIMName();
    }
    auto fresh = std::make_unique<std::shared_ptr<const CIMPropertyDecl>>(std::move(d));
    if (slot.compare_exchange_strong(made, fresh.get(), std::memory_order_acq_rel))
    {
        made = fresh.release();
    }
    return *made;
}

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
