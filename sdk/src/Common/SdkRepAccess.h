#ifndef Pegasus_SdkRepAccess_h
#define Pegasus_SdkRepAccess_h

// Representations behind the object handles, and the one door through which the
// implementation files reach a handle's representation. Not installed.

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
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

#include <cstring>

#include "StringRep.h"

PEGASUS_NAMESPACE_BEGIN

template <class T>
class Ref;

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

    static const String& text(const CIMName& name)
    {
        return name.cimName;
    }

    template <class H, class R>
    static H wrap(const std::shared_ptr<R>& r)
    {
        H handle;
        handle._rep = r;
        return handle;
    }

    // For handles holding a bare counted pointer.
    template <class H, class R>
    static H wrap(const Ref<R>& r)
    {
        H handle;
        handle._rep = holdRep(r.get());
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

// Counted in place, as OpenPegasus counts its representations: the handle
// is one bare pointer (a list slot half the size of a shared_ptr) and the
// count costs no allocation of its own. A copy starts uncounted.
class Counted
{
public:
    Counted() noexcept
    {
    }
    Counted(const Counted&) noexcept
    {
    }
    Counted& operator=(const Counted&) noexcept
    {
        return *this;
    }

    // Acquire: a caller that finds itself the only holder may change the
    // representation, after whatever the holders that let go did with it.
    long useCount() const noexcept
    {
        return long(_refs.load(std::memory_order_acquire));
    }
    void retain() const noexcept
    {
        _refs.fetch_add(1, std::memory_order_relaxed);
    }
    // True when that was the last reference.
    bool release() const noexcept
    {
        return _refs.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }

private:
    mutable std::atomic<Uint32> _refs{0};
};

// One more holder of `rep` (which may be null); returns it.
template <class T>
T* holdRep(T* rep) noexcept
{
    if (rep)
    {
        rep->retain();
    }
    return rep;
}

// One holder fewer; the last one deletes it.
template <class T>
void dropRep(T* rep) noexcept
{
    if (rep && rep->release())
    {
        delete rep;
    }
}

// An owning pointer to a Counted representation, with the shared_ptr
// operations the lists use.
template <class T>
class Ref
{
public:
    Ref() noexcept
    {
    }
    explicit Ref(T* p) noexcept : _p(holdRep(p))
    {
    }
    Ref(const Ref& x) noexcept : Ref(x._p)
    {
    }
    template <class U>
    Ref(const Ref<U>& x) noexcept : Ref(x.get())
    {
    }
    Ref(Ref&& x) noexcept : _p(x._p)
    {
        x._p = nullptr;
    }
    ~Ref()
    {
        dropRep(_p);
    }
    Ref& operator=(Ref x) noexcept
    {
        std::swap(_p, x._p);
        return *this;
    }

    T* get() const noexcept
    {
        return _p;
    }
    T& operator*() const noexcept
    {
        return *_p;
    }
    T* operator->() const noexcept
    {
        return _p;
    }
    explicit operator bool() const noexcept
    {
        return _p != nullptr;
    }
    long use_count() const noexcept
    {
        return _p ? _p->useCount() : 0;
    }
    void reset() noexcept
    {
        Ref().swap(*this);
    }
    void swap(Ref& x) noexcept
    {
        std::swap(_p, x._p);
    }
    // Hands this reference to the caller, who drops it in time.
    T* detach() noexcept
    {
        T* p = _p;
        _p = nullptr;
        return p;
    }

private:
    T* _p = nullptr;
};

template <class T, class... Args>
Ref<T> makeRef(Args&&... args)
{
    return Ref<T>(new T(std::forward<Args>(args)...));
}

// A handle's representation as a bare counted pointer: dereferenced, and
// counted, like the shared ones.
template <class R>
inline R& needRep(R* rep)
{
    if (!rep)
    {
        throw UninitializedObjectException();
    }
    return *rep;
}

template <class R>
inline long useCount(const std::shared_ptr<R>& rep)
{
    return rep.use_count();
}

inline long useCount(const Counted* rep)
{
    return rep ? rep->useCount() : 0;
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
// Copying a list is cheap: the copy shares the element vector, and each
// element, until one side changes it. Sharing an element is only safe while
// no handle to it exists outside the lists, so the list tracks, element by
// element, which ones it has handed out ("out"): an element that is out is
// never shared with another list, and one that is not is cloned before it
// goes out if anything else still refers to it. An instance built from a
// class thus costs only the elements that were reached, not the whole list.
//
// A const object may be read from several threads at once, and reading can
// hand out an element, so every look at the vector holder goes through a
// small lock; the vector itself changes in place only while nothing else
// refers to it.
// Element names compared in place: the same text or the same bytes settle
// most comparisons without a call; only a difference in case is left to
// String.
inline bool sameName(const CIMName& a, const CIMName& b)
{
    const StringRep* x = SdkRepAccess::rep(SdkRepAccess::text(a));
    const StringRep* y = SdkRepAccess::rep(SdkRepAccess::text(b));
    if (x == y)
    {
        return true;
    }
    const Uint32 n = x ? x->size : 0;
    if (n != (y ? y->size : 0))
    {
        return false;
    }
    return n == 0 || memcmp(x->data, y->data, size_t(n) * sizeof(Char16)) == 0 ||
           String::equalNoCase(SdkRepAccess::text(a), SdkRepAccess::text(b));
}

// An element's name, read as directly as its kind allows.
template <class T>
struct NameOf
{
    static const CIMName& of(const T& x)
    {
        return x.getName();
    }
};

// Whether anything outside a list may reach an element: a handle to it, or,
// for elements holding lists of their own, a handle into those.
template <class T>
struct OutsideReach
{
    static bool reached(const T& x)
    {
        return useCount(SdkRepAccess::rep(x)) > 1;
    }
};

// Which elements of a list are out: a flag each, the first 64 in place so
// that most lists need no allocation for them.
class OutSet
{
public:
    OutSet() noexcept
    {
    }
    OutSet(const OutSet& x)
        : _low(x._low), _high(x._high ? std::make_unique<std::vector<unsigned char>>(*x._high) : nullptr),
          _count(x._count)
    {
    }
    OutSet& operator=(const OutSet&) = delete;

    bool any() const
    {
        return _count != 0;
    }
    bool test(size_t i) const
    {
        return i < 64 ? ((_low >> i) & 1) != 0 : (_high && i - 64 < _high->size() && (*_high)[i - 64]);
    }
    void set(size_t i)
    {
        if (test(i))
        {
            return;
        }
        _count++;
        if (i < 64)
        {
            _low |= _bit(i);
            return;
        }
        if (!_high)
        {
            _high = std::make_unique<std::vector<unsigned char>>();
        }
        if (_high->size() <= i - 64)
        {
            _high->resize(i - 63, 0);
        }
        (*_high)[i - 64] = 1;
    }
    void reset(size_t i)
    {
        if (!test(i))
        {
            return;
        }
        _count--;
        if (i < 64)
        {
            _low &= ~_bit(i);
        }
        else
        {
            (*_high)[i - 64] = 0;
        }
    }
    void clear()
    {
        _low = 0;
        _high.reset();
        _count = 0;
    }
    // Element i left the list: the flags after it move down by one.
    void erase(size_t i)
    {
        if (test(i))
        {
            _count--;
        }
        if (i >= 64)
        {
            if (_high && i - 64 < _high->size())
            {
                _high->erase(_high->begin() + (i - 64));
            }
            return;
        }
        const uint64_t below = _low & (_bit(i) - 1);
        const uint64_t above = i == 63 ? 0 : (_low >> (i + 1)) << i;
        _low = below | above;
        if (_high && !_high->empty())
        {
            if ((*_high)[0])
            {
                _low |= _bit(63);
            }
            _high->erase(_high->begin());
        }
    }

private:
    static uint64_t _bit(size_t i)
    {
        return uint64_t(1) << i;
    }

    uint64_t _low = 0;
    // Flags past the first 64, in the rare list that long.
    std::unique_ptr<std::vector<unsigned char>> _high;
    Uint32 _count = 0;
};

template <class T>
class NamedList
{
    // Only property lists lay values over a shared block (see Overlay).
    static constexpr bool OVERLAID = std::is_same<T, CIMProperty>::value;

    struct Block : Counted
    {
        Block() = default;
        // A copy starts private.
        Block(const Block& x) : Counted(), items(x.items), out(x.out)
        {
        }
        Block& operator=(const Block&) = delete;

        // Once given to a second list a block never changes again, even
        // after the other list has let go: whatever that list's thread read
        // of it is not ordered before a change made here. (Beside the count,
        // where it costs no room.)
        std::atomic<bool> shared{false};
        std::vector<T> items;
        // Per element: handed out by the list owning this block. A block
        // with one set is never shared.
        OutSet out;
    };

    // The values a list sets on the elements of a block that it shares (an
    // instance sharing its class's properties): the instance costs the
    // values it sets rather than a copy of every element. A handle to an
    // element needs a representation of its own, so the one handed out
    // last is kept here, the list's own, until nothing else holds it; its
    // value is then folded back into the entries, and the representation
    // serves the next element handed out. Changes to anything but its
    // value, or a second element going out while it is held, end the
    // overlay: the list then takes a block of its own as any other list.
    // Copied before a change while a view holds it, as blocks are.
    struct Overlay : Counted
    {
        static constexpr Uint32 NONE = 0xFFFFFFFF;

        struct Entry
        {
            Uint32 index;
            CIMValue value;
        };

        Overlay() = default;
        Overlay(const Overlay& x) : Counted(), outIndex(x.outIndex), entries(x.entries), out(x.out)
        {
        }
        Overlay& operator=(const Overlay&) = delete;

        const CIMValue* find(Uint32 index) const
        {
            auto it = _at(index);
            return it != entries.end() && it->index == index ? &it->value : nullptr;
        }
        void set(Uint32 index, const CIMValue& value)
        {
            // Mostly set in list order.
            if (entries.empty() || entries.back().index < index)
            {
                _grow();
                entries.push_back(Entry{index, value});
                return;
            }
            auto it = _at(index);
            if (it != entries.end() && it->index == index)
            {
                it->value = value;
                return;
            }
            const size_t at = size_t(it - entries.begin());
            _grow();
            entries.insert(entries.begin() + at, Entry{index, value});
        }

        // The element out, or NONE; `out` may then hold a representation
        // kept for the next one.
        Uint32 outIndex = NONE;
        std::vector<Entry> entries; // by index
        T out;

    private:
        // Grown by half rather than doubled: an instance sets a dozen or so
        // values, and the room left over is kept as long as it.
        void _grow()
        {
            if (entries.size() == entries.capacity())
            {
                entries.reserve(entries.size() + entries.size() / 2 + 2);
            }
        }
        typename std::vector<Entry>::const_iterator _at(Uint32 index) const
        {
            return std::lower_bound(entries.begin(), entries.end(), index,
                                    [](const Entry& e, Uint32 i) { return e.index < i; });
        }
        typename std::vector<Entry>::iterator _at(Uint32 index)
        {
            return std::lower_bound(entries.begin(), entries.end(), index,
                                    [](const Entry& e, Uint32 i) { return e.index < i; });
        }
    };

public:
    // A stable read-only look at the elements, for internal walks that hand
    // out no element. The elements give names, types, declarations and
    // qualifiers; a property's value is read through value().
    class View
    {
    public:
        explicit View(Ref<const Block> block, Ref<const Overlay> overlay = Ref<const Overlay>())
            : _block(std::move(block)), _overlay(std::move(overlay))
        {
        }
        size_t size() const
        {
            return _block ? _block->items.size() : 0;
        }
        const T& operator[](size_t i) const
        {
            return _block->items[i];
        }
        const T* begin() const
        {
            return _block ? _block->items.data() : nullptr;
        }
        const T* end() const
        {
            return _block ? _block->items.data() + _block->items.size() : nullptr;
        }
        // The value of property i as the list holds it.
        const CIMValue& value(size_t i) const
        {
            if (_overlay)
            {
                if (_overlay->outIndex == i)
                {
                    return SdkRepAccess::rep(_overlay->out)->value;
                }
                if (const CIMValue* v = _overlay->find(Uint32(i)))
                {
                    return *v;
                }
            }
            return SdkRepAccess::rep(_block->items[i])->value;
        }
        // Property i whole, for the few walks that need it as a handle: a
        // copy of its own when its value lies in the overlay.
        T item(size_t i) const
        {
            if constexpr (OVERLAID)
            {
                return _overlaid(i);
            }
            return _block->items[i];
        }

    private:
        T _overlaid(size_t i) const
        {
            if (_overlay)
            {
                if (_overlay->outIndex == i)
                {
                    return _overlay->out;
                }
                if (const CIMValue* v = _overlay->find(Uint32(i)))
                {
                    return _ownCopy(_block->items[i], v);
                }
            }
            return _block->items[i];
        }

        Ref<const Block> _block;
        Ref<const Overlay> _overlay;
    };

    NamedList() noexcept
    {
    }

    NamedList(const NamedList& x) : _block(x._shareable())
    {
    }

    NamedList(NamedList&& x) noexcept
        : _block(std::move(x._block)), _overlay(std::move(x._overlay))
    {
    }

    NamedList& operator=(const NamedList& x)
    {
        if (this != &x)
        {
            Ref<Block> block = x._shareable();
            _block.swap(block);
            _overlay.reset();
        }
        return *this;
    }

    NamedList& operator=(NamedList&& x) noexcept
    {
        if (this != &x)
        {
            _block = std::move(x._block);
            _overlay = std::move(x._overlay);
        }
        return *this;
    }

    View view() const
    {
        Guard guard(_lock);
        _settle();
        return View(_block, _overlay);
    }

    // Names are unique in a list. Callers tend to look elements up in list
    // order (a provider filling an instance property by property), so the
    // search starts after the last hit.
    Uint32 find(const CIMName& name) const
    {
        // Under the lock rather than through a view: a lookup per property
        // set is the commonest call, and a view costs two more atomics.
        Guard guard(_lock);
        if (!_block)
        {
            return PEG_NOT_FOUND;
        }
        // A renamed element shows under its new name.
        _settle();
        const std::vector<T>& items = _block->items;
        const size_t n = items.size();
        // Where this name was found last on this thread, in whatever list:
        // the instances a provider fills are alike, so it is mostly right.
        // A guess only, checked like any other candidate.
        const StringRep* key = SdkRepAccess::rep(SdkRepAccess::text(name));
        FoundAt& memo = _foundAt[(reinterpret_cast<uintptr_t>(key) >> 4) % FOUND_AT_SLOTS];
        if (memo.name == key && memo.index < n && sameName(NameOf<T>::of(items[memo.index]), name))
        {
            _hint.store(memo.index + 1, std::memory_order_relaxed);
            return memo.index;
        }
        size_t i = _hint.load(std::memory_order_relaxed);
        if (i >= n)
        {
            i = 0;
        }
        for (size_t k = 0; k < n; k++, i++)
        {
            if (i == n)
            {
                i = 0;
            }
            if (sameName(NameOf<T>::of(items[i]), name))
            {
                _hint.store(Uint32(i + 1), std::memory_order_relaxed);
                memo.name = key;
                memo.index = Uint32(i);
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
        Block& block = _ownBlock();
        block.items.push_back(x);
        _markOut(block, block.items.size() - 1);
    }

    // Appends an element that no handle outside this list refers to.
    void adopt(T&& x)
    {
        Block& block = _ownBlock();
        block.items.push_back(std::move(x));
    }

    void reserve(size_t n)
    {
        _ownBlock().items.reserve(n);
    }

    // The element itself, for a handle that goes out to a caller. Readers
    // of a const object may be walking the block meanwhile, so a change
    // goes into a copy of it.
    T get(Uint32 index) const
    {
        Guard guard(_lock);
        checkIndex(index, _block ? _block->items.size() : 0);
        T item;
        if (_overlaidGet(index, item))
        {
            return item;
        }
        if (_block->out.test(index))
        {
            return _block->items[index];
        }
        auto block = makeRef<Block>(*_block);
        T& own = block->items[index];
        // The old block still holds it: this list's own from now on.
        own = own.clone();
        _markOut(*block, index);
        _block = std::move(block);
        return own;
    }

    // The same for the object's owner, which may change its own block in
    // place while nothing else holds it.
    T get(Uint32 index)
    {
        Guard guard(_lock);
        checkIndex(index, _block ? _block->items.size() : 0);
        T overlaid;
        if (_overlaidGet(index, overlaid))
        {
            return overlaid;
        }
        if (_block->out.test(index))
        {
            return _block->items[index];
        }
        if (_block->shared.load(std::memory_order_relaxed) || _block.use_count() > 1)
        {
            _block = makeRef<Block>(*_block);
        }
        T& item = _block->items[index];
        if (useCount(SdkRepAccess::rep(item)) > 1)
        {
            item = item.clone();
        }
        _markOut(*_block, index);
        return item;
    }

    void remove(Uint32 index)
    {
        checkIndex(index, count());
        Block& block = _ownBlock();
        block.items.erase(block.items.begin() + index);
        block.out.erase(index);
    }

    void clear()
    {
        _block.reset();
        _overlay.reset();
    }

    Uint32 count() const
    {
        Guard guard(_lock);
        return _block ? Uint32(_block->items.size()) : 0;
    }

    // True when no handle outside the lists reaches an element: every change
    // through this list then stays this list's (shared elements are copied
    // as they are reached).
    bool soleOwner() const
    {
        Guard guard(_lock);
        _settle();
        if (_overlay && _overlay->outIndex != Overlay::NONE)
        {
            // Still held, or it would have been folded back.
            return false;
        }
        if (!_block || !_block->out.any())
        {
            return true;
        }
        for (size_t i = 0; i < _block->items.size(); i++)
        {
            if (_block->out.test(i) && OutsideReach<T>::reached(_block->items[i]))
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
            if (!mine.item(i).identical(ConstT(theirs.item(i))))
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

    static void _markOut(Block& block, size_t index)
    {
        block.out.set(index);
    }

    // A copy of property `x` of the list's own, with `value` when given.
    static T _ownCopy(const T& x, const CIMValue* value)
    {
        T copy = x.clone();
        if (value)
        {
            SdkRepAccess::rep(copy)->value = *value;
        }
        return copy;
    }

    // Under the lock. Hands element `index` out through the overlay, when
    // the list shares its block; false when the list has (or now takes) a
    // block of its own, for the caller to go on as without one.
    bool _overlaidGet(Uint32 index, T& item) const
    {
        if constexpr (!OVERLAID)
        {
            (void)index;
            (void)item;
            return false;
        }
        else
        {
            _settle();
            if (!_overlay && !_block->shared.load(std::memory_order_relaxed))
            {
                return false;
            }
            if (_overlay && _overlay->outIndex != Overlay::NONE)
            {
                if (_overlay->outIndex == index)
                {
                    item = _overlay->out;
                    return true;
                }
                // A second element out at once: not worth tracking.
                _flatten();
                return false;
            }
            Overlay& overlay = _ownOverlay();
            const auto* base = SdkRepAccess::rep(_block->items[index]);
            const CIMValue* set = overlay.find(index);
            auto* kept = SdkRepAccess::rep(overlay.out);
            if (kept && kept->useCount() == 1 && !base->hasOwnQualifiers())
            {
                // The last one out, folded back and held by nothing else.
                kept->decl = base->decl;
                kept->value = set ? *set : base->value;
            }
            else
            {
                overlay.out = _ownCopy(_block->items[index], set);
            }
            overlay.outIndex = index;
            item = overlay.out;
            return true;
        }
    }

    // Under the lock: brings the overlay up to date with its element out.
    // Folds that element back once nothing else holds it; ends the overlay
    // when the element changed in more than its value.
    void _settle() const
    {
        if constexpr (OVERLAID)
        {
            if (!_overlay || _overlay->outIndex == Overlay::NONE)
            {
                return;
            }
            const auto* out = SdkRepAccess::rep(_overlay->out);
            const auto* base = SdkRepAccess::rep(_block->items[_overlay->outIndex]);
            if (out->decl.get() != base->decl.get() || out->hasOwnQualifiers())
            {
                _flatten();
                return;
            }
            if (out->useCount() == 1)
            {
                Overlay& overlay = _ownOverlay();
                // A value read but left as it was costs nothing (a class
                // read property by property keeps sharing its block).
                if (overlay.find(overlay.outIndex) || !(out->value == base->value))
                {
                    overlay.set(overlay.outIndex, out->value);
                }
                overlay.outIndex = Overlay::NONE;
            }
        }
    }

    Overlay& _ownOverlay() const
    {
        if (!_overlay)
        {
            _overlay = makeRef<Overlay>();
        }
        else if (_overlay.use_count() > 1)
        {
            _overlay = makeRef<Overlay>(*_overlay);
        }
        return *_overlay;
    }

    // Under the lock: the elements as they read, in a block of their own.
    // The element out is the list's own for the list itself, a copy for
    // another list.
    Ref<Block> _composed(bool forAnotherList) const
    {
        auto block = makeRef<Block>();
        const std::vector<T>& items = _block->items;
        block->items.reserve(items.size());
        const bool hasOut = _overlay->outIndex != Overlay::NONE;
        for (size_t i = 0; i < items.size(); i++)
        {
            if (hasOut && i == _overlay->outIndex)
            {
                block->items.push_back(forAnotherList ? _overlay->out.clone() : _overlay->out);
                if (!forAnotherList)
                {
                    _markOut(*block, i);
                }
            }
            else if (const CIMValue* v = _overlay->find(Uint32(i)))
            {
                block->items.push_back(_ownCopy(items[i], v));
            }
            else
            {
                // Nothing in a shared block is out: the element may be
                // shared on.
                block->items.push_back(items[i]);
            }
        }
        return block;
    }

    // Under the lock: ends the overlay, the list taking its own block.
    void _flatten() const
    {
        if constexpr (OVERLAID)
        {
            _block = _composed(false);
            _overlay.reset();
        }
    }

    // What a copy of this list starts from. An element handed out earlier
    // whose handles are all gone is no longer out and can be shared again;
    // one that a handle still reaches is cloned for the copy.
    Ref<Block> _shareable() const
    {
        Guard guard(_lock);
        if (!_block)
        {
            return _block;
        }
        if constexpr (OVERLAID)
        {
            _settle();
            if (_overlay && (_overlay->outIndex != Overlay::NONE || !_overlay->entries.empty()))
            {
                return _composed(true);
            }
        }
        if (!_block->out.any())
        {
            _block->shared.store(true, std::memory_order_relaxed);
            return _block;
        }
        bool reached = false;
        for (size_t i = 0; i < _block->items.size(); i++)
        {
            if (_block->out.test(i) && !OutsideReach<T>::reached(_block->items[i]))
            {
                _block->out.reset(i);
            }
            reached = reached || _block->out.test(i);
        }
        if (!reached)
        {
            _block->out.clear();
            _block->shared.store(true, std::memory_order_relaxed);
            return _block;
        }
        auto copy = makeRef<Block>();
        copy->items.reserve(_block->items.size());
        for (size_t i = 0; i < _block->items.size(); i++)
        {
            const T& x = _block->items[i];
            copy->items.push_back(_block->out.test(i) ? x.clone() : x);
        }
        return copy;
    }

    // The block, to change: this list's own (elements may still be shared).
    Block& _ownBlock()
    {
        if constexpr (OVERLAID)
        {
            if (_overlay)
            {
                Guard guard(_lock);
                _settle();
                if (_overlay)
                {
                    _flatten();
                }
            }
        }
        if (!_block)
        {
            _block = makeRef<Block>();
        }
        else if (_block->shared.load(std::memory_order_relaxed) || _block.use_count() > 1)
        {
            // Another list shares it or did (then nothing is out), or a
            // reader's view holds it (then what is out stays out).
            _block = makeRef<Block>(*_block);
        }
        return *_block;
    }

    struct FoundAt
    {
        const StringRep* name = nullptr;
        Uint32 index = 0;
    };
    static const size_t FOUND_AT_SLOTS = 64;
    static thread_local FoundAt _foundAt[FOUND_AT_SLOTS];

    mutable Ref<Block> _block;
    // Only ever set on a property list sharing its block.
    mutable Ref<Overlay> _overlay;
    mutable std::atomic_flag _lock = ATOMIC_FLAG_INIT;
    // Only where find() starts; any value is correct.
    mutable std::atomic<Uint32> _hint{0};
};

template <class T>
thread_local typename NamedList<T>::FoundAt NamedList<T>::_foundAt[NamedList<T>::FOUND_AT_SLOTS];

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
class CIMPropertyDecl : public Counted
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
    Ref<const CIMPropertyDecl> stripped(bool dropQualifiers, bool dropClassOrigin) const;

    // Before a change: the variants made so far no longer match.
    void forgetVariants();

    // What a CIM-XML writer makes of a property of this declaration up to
    // its qualifiers (the start tag less its '>'), for the value type it was
    // made for: made once, shared by every instance of the class.
    struct EncodedTag
    {
        CIMType type;
        bool isArray;
        std::string text;
    };
    const EncodedTag* encodedTag() const
    {
        return _encodedTag.load(std::memory_order_acquire);
    }
    // Keeps `tag` unless another thread was first; returns the one kept.
    const EncodedTag* keepEncodedTag(std::unique_ptr<EncodedTag> tag) const
    {
        EncodedTag* none = nullptr;
        if (_encodedTag.compare_exchange_strong(none, tag.get(), std::memory_order_acq_rel))
        {
            return tag.release();
        }
        return none;
    }

private:
    // Each holds a reference to the variant it points at.
    mutable std::atomic<const CIMPropertyDecl*> _stripped[3] = {};
    mutable std::atomic<EncodedTag*> _encodedTag{nullptr};
};

class CIMPropertyRep : public Counted
{
public:
    CIMPropertyRep() = default;
    CIMPropertyRep(const CIMPropertyRep&) = delete;
    CIMPropertyRep& operator=(const CIMPropertyRep&) = delete;
    ~CIMPropertyRep()
    {
        delete _ownQualifiers.load(std::memory_order_relaxed);
    }

    Ref<const CIMPropertyDecl> decl;
    CIMValue value;

    // The declaration, to change: copied first when shared.
    CIMPropertyDecl& ownDecl()
    {
        if (decl.use_count() > 1)
        {
            decl = makeRef<CIMPropertyDecl>(*decl);
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

    bool hasOwnQualifiers() const
    {
        return _ownQualifiers.load(std::memory_order_acquire) != nullptr;
    }

    // True when strip() with these arguments would change anything.
    bool carries(bool qualifiers, bool classOrigin) const
    {
        return (qualifiers && (_ownQualifiers.load(std::memory_order_acquire) != nullptr ||
                               decl->qualifiers.count() != 0)) ||
               (classOrigin && !decl->classOrigin.isNull());
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
            decl = decl->stripped(dropQualifiers, dropClassOrigin);
        }
    }

    // A copy sharing the declaration; a property with a list of its own
    // gives the copy a declaration holding a copy of that list (which
    // clones qualifiers that handles reach).
    Ref<CIMPropertyRep> clone() const
    {
        auto copy = makeRef<CIMPropertyRep>();
        copy->value = value;
        NamedList<CIMQualifier>* own = _ownQualifiers.load(std::memory_order_acquire);
        if (own)
        {
            auto d = makeRef<CIMPropertyDecl>(*decl);
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
    : Counted(), name(x.name), arraySize(x.arraySize), referenceClassName(x.referenceClassName),
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
        dropRep(slot.exchange(nullptr, std::memory_order_relaxed));
    }
    delete _encodedTag.exchange(nullptr, std::memory_order_relaxed);
}

inline Ref<const CIMPropertyDecl> CIMPropertyDecl::stripped(bool dropQualifiers,
                                                            bool dropClassOrigin) const
{
    if (!dropQualifiers && !dropClassOrigin)
    {
        return Ref<const CIMPropertyDecl>(this);
    }
    auto& slot = _stripped[(dropQualifiers ? 1 : 0) + (dropClassOrigin ? 2 : 0) - 1];
    const CIMPropertyDecl* made = slot.load(std::memory_order_acquire);
    if (made)
    {
        return Ref<const CIMPropertyDecl>(made);
    }
    auto d = makeRef<CIMPropertyDecl>(*this);
    if (dropQualifiers)
    {
        d->qualifiers.clear();
    }
    if (dropClassOrigin)
    {
        d->classOrigin = CIMName();
    }
    // The slot holds a reference of its own.
    const CIMPropertyDecl* fresh = holdRep(d.get());
    if (slot.compare_exchange_strong(made, fresh, std::memory_order_acq_rel))
    {
        return d;
    }
    dropRep(fresh);
    return Ref<const CIMPropertyDecl>(made);
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

template <>
struct NameOf<CIMProperty>
{
    static const CIMName& of(const CIMProperty& x)
    {
        return SdkRepAccess::rep(x)->decl->name;
    }
};

// A property whose qualifiers were handed out may be reached through them.
template <>
struct OutsideReach<CIMProperty>
{
    static bool reached(const CIMProperty& x)
    {
        const auto& rep = SdkRepAccess::rep(x);
        return useCount(rep) > 1 || rep->hasOwnQualifiers();
    }
};

// Methods and parameters hold lists that handles may reach into; they are
// not worth tracking, so once handed out they stay out.
template <>
struct OutsideReach<CIMMethod>
{
    static bool reached(const CIMMethod&)
    {
        return true;
    }
};

template <>
struct OutsideReach<CIMParameter>
{
    static bool reached(const CIMParameter&)
    {
        return true;
    }
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
