// Exceptions, status codes and message formatting.

#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Provider/ProviderException.h>

#include <gtest/gtest.h>

PEGASUS_USING_PEGASUS;

TEST(ExceptionTest, CIMExceptionsKeepCodeAndTextExactly)
{
    struct Case
    {
        CIMException e;
        CIMStatusCode code;
    };
    const String text("ORV_VolumeStatisticalDataProvider: Invalid keys: x ");
    const Case cases[] = {
        {CIMException(CIM_ERR_INVALID_CLASS, text), CIM_ERR_INVALID_CLASS},
        {CIMOperationFailedException(text), CIM_ERR_FAILED},
        {CIMAccessDeniedException(text), CIM_ERR_ACCESS_DENIED},
        {CIMInvalidParameterException(text), CIM_ERR_INVALID_PARAMETER},
        {CIMNotSupportedException(text), CIM_ERR_NOT_SUPPORTED},
        {CIMObjectNotFoundException(text), CIM_ERR_NOT_FOUND},
        {PEGASUS_CIM_EXCEPTION(CIM_ERR_METHOD_NOT_FOUND, text), CIM_ERR_METHOD_NOT_FOUND},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(c.e.getCode(), c.code);
        EXPECT_EQ(c.e.getMessage(), text);
    }
    EXPECT_EQ(CIMException().getCode(), CIM_ERR_SUCCESS);
    EXPECT_EQ(CIMException().getMessage(), "");
}

TEST(ExceptionTest, ThrownSubclassesAreCaughtAsCIMException)
{
    try
    {
        throw CIMNotSupportedException("no");
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_NOT_SUPPORTED);
    }
    try
    {
        throw PEGASUS_CIM_EXCEPTION(CIM_ERR_ACCESS_DENIED, "denied");
    }
    catch (const Exception& e)
    {
        const CIMException* cim = dynamic_cast<const CIMException*>(&e);
        ASSERT_NE(cim, nullptr);
        EXPECT_EQ(cim->getCode(), CIM_ERR_ACCESS_DENIED);
        EXPECT_EQ(e.getMessage(), "denied");
    }
}

TEST(ExceptionTest, TraceableExceptionRecordsWhere)
{
    Uint32 line = __LINE__ + 1;
    TraceableCIMException e = PEGASUS_CIM_EXCEPTION(CIM_ERR_NOT_FOUND, "gone");
    EXPECT_EQ(e.getLine(), line);
    EXPECT_NE(e.getFile().find(String("test_values_exception.cpp")), PEG_NOT_FOUND);
    EXPECT_EQ(e.getDescription(),
              "CIM_ERR_NOT_FOUND: The requested object could not be found: gone");
    EXPECT_NE(e.getTraceDescription().find(String("test_values_exception.cpp(")), PEG_NOT_FOUND);

    TraceableCIMException fromPlain(CIMException(CIM_ERR_FAILED, "x"));
    EXPECT_EQ(fromPlain.getCode(), CIM_ERR_FAILED);
    EXPECT_EQ(fromPlain.getMessage(), "x");

    MessageLoaderParms parms("Some.Id", "bad value $0 for $1", String("7"), String("Port"));
    EXPECT_EQ(PEGASUS_CIM_EXCEPTION_L(CIM_ERR_INVALID_PARAMETER, parms).getMessage(),
              "bad value 7 for Port");
}

TEST(ExceptionTest, StatusCodeAndTypeNames)
{
    EXPECT_EQ(int(CIM_ERR_METHOD_NOT_FOUND), 17);
    EXPECT_EQ(int(CIM_ERR_INVALID_QUERY), 15);
    EXPECT_EQ(cimStatusCodeToString(CIM_ERR_FAILED).subString(0, 15), "CIM_ERR_FAILED:");
    EXPECT_EQ(cimStatusCodeToString(CIM_ERR_METHOD_NOT_AVAILABLE).subString(0, 29),
              "CIM_ERR_METHOD_NOT_AVAILABLE:");
    EXPECT_EQ(cimStatusCodeToString(CIMStatusCode(99)), "Unrecognized CIM status code");

    EXPECT_STREQ(cimTypeToString(CIMTYPE_BOOLEAN), "boolean");
    EXPECT_STREQ(cimTypeToString(CIMTYPE_REFERENCE), "reference");
    EXPECT_STREQ(cimTypeToString(CIMTYPE_INSTANCE), "instance");
    EXPECT_EQ(int(CIMTYPE_INSTANCE), 16);
}

TEST(ExceptionTest, MessagesOfFrameworkExceptions)
{
    EXPECT_EQ(MalformedObjectNameException("x.y").getMessage(), "malformed object name: x.y");
    EXPECT_EQ(InvalidNameException("1a").getMessage(), "invalid CIM name: 1a");
    EXPECT_EQ(IndexOutOfBoundsException().getMessage(), "index out of bounds");
    EXPECT_EQ(TypeMismatchException().getMessage(), "type mismatch");
    EXPECT_EQ(InvalidDateTimeFormatException().getMessage(), "invalid datetime format");
    EXPECT_EQ(CannotConnectException("no dispatcher").getMessage(), "no dispatcher");

    MessageLoaderParms parms("Id", "cost \\$$0 in $1", Uint32(5), Sint64(-2));
    EXPECT_EQ(MessageLoader::getMessage(parms), "cost $5 in -2");
}

TEST(ExceptionTest, ErrorInstancesTravelWithTheException)
{
    Array<CIMInstance> two;
    two.append(CIMInstance(CIMName("CIM_Error")));
    two.append(CIMInstance(CIMName("ORV_Error")));
    CIMException e(CIM_ERR_FAILED, "failed", two);
    EXPECT_EQ(e.getErrorCount(), 2u);
    EXPECT_EQ(e.getError(1).getClassName(), CIMName("ORV_Error"));
    EXPECT_THROW(e.getError(2), IndexOutOfBoundsException);

    // A copy taken before addError keeps its own list.
    CIMException copy = e;
    e.addError(CIMInstance(CIMName("Third")));
    EXPECT_EQ(e.getErrorCount(), 3u);
    EXPECT_EQ(copy.getErrorCount(), 2u);

    try
    {
        throw CIMException(CIM_ERR_NOT_FOUND, "gone", CIMInstance(CIMName("CIM_Error")));
    }
    catch (const CIMException& caught)
    {
        EXPECT_EQ(caught.getCode(), CIM_ERR_NOT_FOUND);
        EXPECT_EQ(caught.getErrorCount(), 1u);
    }
    EXPECT_EQ(CIMException(CIM_ERR_FAILED).getErrorCount(), 0u);
}
