#ifndef Pegasus_OperationContextInternal_h
#define Pegasus_OperationContextInternal_h

// Containers that only the server itself sets, kept apart from the ones a
// provider reads in OperationContext.h.

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// The language the requester prefers for messages.
class PEGASUS_COMMON_LINKAGE LocaleContainer : virtual public OperationContext::Container
{
public:
    static const String NAME;

    LocaleContainer(const OperationContext::Container& container);
    LocaleContainer(const String& languageId);
    LocaleContainer(const LocaleContainer& container);
    virtual ~LocaleContainer();
    LocaleContainer& operator=(const LocaleContainer& container);

    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();

    String getLanguageId() const;

private:
    LocaleContainer();

    String _languageId;
};

PEGASUS_NAMESPACE_END

#endif
