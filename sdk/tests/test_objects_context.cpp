// Operation contexts and their containers, including the caller's address.

#include <gtest/gtest.h>

#include <string>

// The sdk test target has no include path to platform/; the header is self-contained.
#include "../../platform/include/ORV_ClientAddressContainer.h"
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/OperationContextInternal.h>

PEGASUS_USING_PEGASUS;

namespace
{

std::string str(const String& s)
{
    return std::string((const char*)s.getCString());
}

TEST(ObjectsContext, MissingContainersThrowAPlainException)
{
    OperationContext context;
    EXPECT_FALSE(context.contains(IdentityContainer::NAME));
    try
    {
        context.get(IdentityContainer::NAME);
        FAIL() << "get of a missing container returned";
    }
    catch (const CIMException&)
    {
        FAIL() << "a missing container is not a CIM error";
    }
    catch (const Exception& e)
    {
        EXPECT_NE(str(e.getMessage()).find("IdentityContainer"), std::string::npos);
    }
    EXPECT_THROW(context.remove(IdentityContainer::NAME), Exception);
    EXPECT_THROW(context.set(IdentityContainer("bob")), Exception);
}

TEST(ObjectsContext, InsertSetRemoveAndClear)
{
    OperationContext context;
    context.insert(IdentityContainer("alice"));
    context.insert(TimeoutContainer(500));
    EXPECT_THROW(context.insert(IdentityContainer("bob")), AlreadyExistsException);

    IdentityContainer first = context.get(IdentityContainer::NAME);
    EXPECT_EQ(str(first.getUserName()), "alice");

    context.set(IdentityContainer("bob"));
    EXPECT_EQ(str(IdentityContainer(context.get(IdentityContainer::NAME)).getUserName()), "bob");
    EXPECT_EQ(TimeoutContainer(context.get(TimeoutContainer::NAME)).getTimeOut(), 500u);

    context.remove(TimeoutContainer::NAME);
    EXPECT_FALSE(context.contains(TimeoutContainer::NAME));
    EXPECT_TRUE(context.contains(IdentityContainer::NAME));
    context.clear();
    EXPECT_FALSE(context.contains(IdentityContainer::NAME));
}

TEST(ObjectsContext, CopiesAreIndependent)
{
    OperationContext original;
    original.insert(IdentityContainer("alice"));
    OperationContext copy(original);
    OperationContext assigned;
    assigned.insert(LocaleContainer("de"));
    assigned = original;

    original.set(IdentityContainer("mallory"));
    EXPECT_EQ(str(IdentityContainer(copy.get(IdentityContainer::NAME)).getUserName()), "alice");
    EXPECT_EQ(str(IdentityContainer(assigned.get(IdentityContainer::NAME)).getUserName()),
              "alice");
    EXPECT_FALSE(assigned.contains(LocaleContainer::NAME));

    // The context keeps its own copy, not the caller's object.
    IdentityContainer local("eve");
    OperationContext c2;
    c2.insert(local);
    EXPECT_NE(&c2.get(IdentityContainer::NAME),
              static_cast<const OperationContext::Container*>(&local));
}

TEST(ObjectsContext, ContainerConversionChecksTheKind)
{
    TimeoutContainer timeout(5);
    EXPECT_THROW(IdentityContainer x(timeout), DynamicCastFailedException);
    EXPECT_THROW(ORV_ClientAddressContainer x(timeout), DynamicCastFailedException);

    IdentityContainer server{String()};
    EXPECT_EQ(str(server.getUserName()), "");
    OperationContext::Container* c = server.clone();
    EXPECT_EQ(str(IdentityContainer(*c).getName()), str(IdentityContainer::NAME));
    c->destroy();
}

TEST(ObjectsClientAddress, PresentAbsentAndCopied)
{
    OperationContext context;
    context.insert(IdentityContainer("alice"));
    EXPECT_EQ(str(ORV_getClientAddress(context)), "");

    context.insert(ORV_ClientAddressContainer("192.0.2.7"));
    EXPECT_EQ(str(ORV_getClientAddress(context)), "192.0.2.7");
    EXPECT_THROW(context.insert(ORV_ClientAddressContainer("198.51.100.1")),
                 AlreadyExistsException);

    OperationContext copy(context);
    context.set(ORV_ClientAddressContainer("::1"));
    EXPECT_EQ(str(ORV_getClientAddress(copy)), "192.0.2.7");
    EXPECT_EQ(str(ORV_getClientAddress(context)), "::1");

    ORV_ClientAddressContainer fromContext =
        context.get(ORV_ClientAddressContainer::NAME);
    EXPECT_EQ(str(fromContext.getAddress()), "::1");
    EXPECT_NE(str(fromContext.getName()), str(IdentityContainer::NAME));
}

} // namespace
