#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/OperationContextInternal.h>

#include <vector>

PEGASUS_NAMESPACE_BEGIN

// The context owns clones of the inserted containers.
class OperationContextRep
{
public:
    std::vector<OperationContext::Container*> containers;

    size_t find(const String& name) const
    {
        for (size_t i = 0; i < containers.size(); i++)
        {
            if (String::equal(containers[i]->getName(), name))
            {
                return i;
            }
        }
        return containers.size();
    }

    void clear()
    {
        for (OperationContext::Container* c : containers)
        {
            c->destroy();
        }
        containers.clear();
    }

    void copyFrom(const OperationContextRep& other)
    {
        containers.reserve(other.containers.size());
        for (const OperationContext::Container* c : other.containers)
        {
            containers.push_back(c->clone());
        }
    }
};

namespace
{
Exception notFound(const String& name)
{
    return Exception(String("operation context holds no container named \"") + name + "\"");
}
} // namespace

OperationContext::Container::~Container()
{
}

OperationContext::OperationContext() : _rep(new OperationContextRep)
{
}

OperationContext::OperationContext(const OperationContext& context) : _rep(new OperationContextRep)
{
    try
    {
        _rep->copyFrom(*context._rep);
    }
    catch (...)
    {
        _rep->clear();
        delete _rep;
        throw;
    }
}

OperationContext::~OperationContext()
{
    _rep->clear();
    delete _rep;
}

OperationContext& OperationContext::operator=(const OperationContext& context)
{
    if (this != &context)
    {
        OperationContextRep copy;
        try
        {
            copy.copyFrom(*context._rep);
        }
        catch (...)
        {
            copy.clear();
            throw;
        }
        _rep->clear();
        _rep->containers.swap(copy.containers);
    }
    return *this;
}

void OperationContext::clear()
{
    _rep->clear();
}

const OperationContext::Container& OperationContext::get(const String& containerName) const
{
    size_t i = _rep->find(containerName);
    if (i == _rep->containers.size())
    {
        throw notFound(containerName);
    }
    return *_rep->containers[i];
}

Boolean OperationContext::contains(const String& containerName) const
{
    return _rep->find(containerName) != _rep->containers.size();
}

void OperationContext::set(const Container& container)
{
    size_t i = _rep->find(container.getName());
    if (i == _rep->containers.size())
    {
        throw notFound(container.getName());
    }
    Container* copy = container.clone();
    _rep->containers[i]->destroy();
    _rep->containers[i] = copy;
}

void OperationContext::insert(const Container& container)
{
    if (contains(container.getName()))
    {
        throw AlreadyExistsException(String("operation context already holds a container named \"") +
                                     container.getName() + "\"");
    }
    Container* copy = container.clone();
    try
    {
        _rep->containers.push_back(copy);
    }
    catch (...)
    {
        copy->destroy();
        throw;
    }
}

void OperationContext::remove(const String& containerName)
{
    size_t i = _rep->find(containerName);
    if (i == _rep->containers.size())
    {
        throw notFound(containerName);
    }
    _rep->containers[i]->destroy();
    _rep->containers.erase(_rep->containers.begin() + i);
}

// IdentityContainer

const String IdentityContainer::NAME = "IdentityContainer";

IdentityContainer::IdentityContainer(const OperationContext::Container& container)
{
    const IdentityContainer* p = dynamic_cast<const IdentityContainer*>(&container);
    if (p == 0)
    {
        throw DynamicCastFailedException();
    }
    _userName = p->_userName;
}

IdentityContainer::IdentityContainer(const IdentityContainer& container)
    : OperationContext::Container(), _userName(container._userName)
{
}

IdentityContainer::IdentityContainer(const String& userName) : _userName(userName)
{
}

IdentityContainer::~IdentityContainer()
{
}

IdentityContainer& IdentityContainer::operator=(const IdentityContainer& container)
{
    _userName = container._userName;
    return *this;
}

String IdentityContainer::getName() const
{
    return NAME;
}

OperationContext::Container* IdentityContainer::clone() const
{
    return new IdentityContainer(*this);
}

void IdentityContainer::destroy()
{
    delete this;
}

String IdentityContainer::getUserName() const
{
    return _userName;
}

// TimeoutContainer

const String TimeoutContainer::NAME = "TimeoutContainer";

TimeoutContainer::TimeoutContainer(const OperationContext::Container& container)
{
    const TimeoutContainer* p = dynamic_cast<const TimeoutContainer*>(&container);
    if (p == 0)
    {
        throw DynamicCastFailedException();
    }
    _value = p->_value;
}

TimeoutContainer::TimeoutContainer(Uint32 timeout) : _value(timeout)
{
}

TimeoutContainer::TimeoutContainer(const TimeoutContainer& container)
    : OperationContext::Container(), _value(container._value)
{
}

TimeoutContainer::~TimeoutContainer()
{
}

TimeoutContainer& TimeoutContainer::operator=(const TimeoutContainer& container)
{
    _value = container._value;
    return *this;
}

String TimeoutContainer::getName() const
{
    return NAME;
}

OperationContext::Container* TimeoutContainer::clone() const
{
    return new TimeoutContainer(*this);
}

void TimeoutContainer::destroy()
{
    delete this;
}

Uint32 TimeoutContainer::getTimeOut() const
{
    return _value;
}

// LocaleContainer

const String LocaleContainer::NAME = "LocaleContainer";

LocaleContainer::LocaleContainer(const OperationContext::Container& container)
{
    const LocaleContainer* p = dynamic_cast<const LocaleContainer*>(&container);
    if (p == 0)
    {
        throw DynamicCastFailedException();
    }
    _languageId = p->_languageId;
}

LocaleContainer::LocaleContainer(const String& languageId) : _languageId(languageId)
{
}

LocaleContainer::LocaleContainer(const LocaleContainer& container)
    : OperationContext::Container(), _languageId(container._languageId)
{
}

LocaleContainer::~LocaleContainer()
{
}

LocaleContainer& LocaleContainer::operator=(const LocaleContainer& container)
{
    _languageId = container._languageId;
    return *this;
}

String LocaleContainer::getName() const
{
    return NAME;
}

OperationContext::Container* LocaleContainer::clone() const
{
    return new LocaleContainer(*this);
}

void LocaleContainer::destroy()
{
    delete this;
}

String LocaleContainer::getLanguageId() const
{
    return _languageId;
}

PEGASUS_NAMESPACE_END
