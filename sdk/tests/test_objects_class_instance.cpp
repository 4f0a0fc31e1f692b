// Class and instance objects: building instances from a class, name lookup,
// duplicate detection, shared handles versus clones, paths from keys.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/MessageLoader.h> // InternalException.h needs it first
#include <Pegasus/Common/InternalException.h>

PEGASUS_USING_PEGASUS;

namespace
{

std::string str(const String& s)
{
    return std::string((const char*)s.getCString());
}

CIMQualifier keyQualifier()
{
    return CIMQualifier(CIMName("Key"), CIMValue(Boolean(true)),
                        CIMFlavor::DISABLEOVERRIDE + CIMFlavor::TOSUBCLASS);
}

// Test_Element : Test_Base, keyed by InstanceID, with one inherited and one local property.
CIMClass makeClass()
{
    CIMClass c(CIMName("Test_Element"), CIMName("Test_Base"));
    c.addQualifier(CIMQualifier(CIMName("Description"), CIMValue(String("an element"))));

    CIMProperty id(CIMName("InstanceID"), CIMValue(CIMTYPE_STRING, false), 0, CIMName(),
                   CIMName("Test_Base"), true);
    id.addQualifier(keyQualifier());
    c.addProperty(id);

    CIMProperty name(CIMName("ElementName"), CIMValue(String("none")), 0, CIMName(),
                     CIMName("Test_Element"));
    name.addQualifier(CIMQualifier(CIMName("MaxLen"), CIMValue(Uint32(64))));
    c.addProperty(name);

    c.addProperty(CIMProperty(CIMName("Count"), CIMValue(Uint32(7)), 0, CIMName(),
                              CIMName("Test_Element")));

    CIMMethod m(CIMName("Reset"), CIMTYPE_UINT32, CIMName("Test_Element"));
    m.addParameter(CIMParameter(CIMName("Force"), CIMTYPE_BOOLEAN));
    c.addMethod(m);
    return c;
}

std::vector<std::string> propertyNames(const CIMInstance& inst)
{
    std::vector<std::string> names;
    for (Uint32 i = 0; i < inst.getPropertyCount(); i++)
    {
        names.push_back(str(inst.getProperty(i).getName().getString()));
    }
    return names;
}

CIMPropertyList listOf(const std::vector<const char*>& names)
{
    Array<CIMName> a;
    for (const char* n : names)
    {
        a.append(CIMName(n));
    }
    return CIMPropertyList(a);
}

struct BuildCase
{
    const char* description;
    bool nullList;
    std::vector<const char*> list;
    bool includeQualifiers;
    bool includeClassOrigin;
    std::vector<std::string> expectedProperties;
};

TEST(ObjectsBuildInstance, PropertyListAndIncludeFlags)
{
    const BuildCase cases[] = {
        {"null list keeps every property", true, {}, true, true,
         {"InstanceID", "ElementName", "Count"}},
        {"empty list keeps none", false, {}, true, true, {}},
        {"partial list, names matched without case, unknown names ignored", false,
         {"elementname", "NoSuchProperty"}, true, true, {"ElementName"}},
        {"list order does not reorder properties", false, {"Count", "InstanceID"}, false, false,
         {"InstanceID", "Count"}},
        {"flags off still keep the properties", true, {}, false, false,
         {"InstanceID", "ElementName", "Count"}},
    };
    CIMClass c = makeClass();
    for (const BuildCase& tc : cases)
    {
        SCOPED_TRACE(tc.description);
        CIMPropertyList pl = tc.nullList ? CIMPropertyList() : listOf(tc.list);
        CIMInstance inst = c.buildInstance(tc.includeQualifiers, tc.includeClassOrigin, pl);

        EXPECT_EQ(str(inst.getClassName().getString()), "Test_Element");
        EXPECT_EQ(propertyNames(inst), tc.expectedProperties);
        EXPECT_EQ(inst.getQualifierCount(), tc.includeQualifiers ? 1u : 0u);
        for (Uint32 i = 0; i < inst.getPropertyCount(); i++)
        {
            CIMConstProperty p = static_cast<const CIMInstance&>(inst).getProperty(i);
            CIMConstProperty decl = c.getProperty(c.findProperty(p.getName()));
            EXPECT_TRUE(p.getValue() == decl.getValue()) << str(p.getName().getString());
            EXPECT_EQ(p.getQualifierCount(), tc.includeQualifiers ? decl.getQualifierCount() : 0u);
            EXPECT_EQ(str(p.getClassOrigin().getString()),
                      tc.includeClassOrigin ? str(decl.getClassOrigin().getString()) : "");
            EXPECT_EQ(p.getPropagated(), decl.getPropagated());
        }
    }
}

TEST(ObjectsBuildInstance, InstanceIsIndependentOfTheClass)
{
    CIMClass c = makeClass();
    CIMInstance inst = c.buildInstance(true, true, CIMPropertyList());
    inst.getProperty(inst.findProperty("Count")).setValue(CIMValue(Uint32(99)));
    inst.getProperty(inst.findProperty("InstanceID")).getQualifier(0).setValue(
        CIMValue(Boolean(false)));

    Uint32 v = 0;
    c.getProperty(c.findProperty("Count")).getValue().get(v);
    EXPECT_EQ(v, 7u);
    EXPECT_TRUE(c.hasKeys());
    EXPECT_FALSE(inst.getProperty(inst.findProperty("Count")).getValue() ==
                 c.getProperty(c.findProperty("Count")).getValue());
}

TEST(ObjectsLookup, NamesAreFoundWithoutRegardToCase)
{
    CIMClass c = makeClass();
    CIMInstance inst = c.buildInstance(true, true, CIMPropertyList());
    EXPECT_EQ(inst.findProperty(CIMName("elementNAME")), 1u);
    EXPECT_EQ(inst.findProperty(CIMName("Missing")), PEG_NOT_FOUND);
    EXPECT_EQ(c.findMethod(CIMName("RESET")), 0u);
    EXPECT_EQ(c.findQualifier(CIMName("description")), 0u);
    EXPECT_EQ(c.getMethod(0).findParameter(CIMName("force")), 0u);
    EXPECT_EQ(inst.getProperty(0).findQualifier(CIMName("KEY")), 0u);
}

TEST(ObjectsLookup, DuplicatesAreRefusedWhateverTheCase)
{
    CIMClass c = makeClass();
    CIMInstance inst = c.buildInstance(true, true, CIMPropertyList());
    EXPECT_THROW(inst.addProperty(CIMProperty(CIMName("COUNT"), CIMValue(Uint32(1)))),
                 AlreadyExistsException);
    EXPECT_THROW(c.addProperty(CIMProperty(CIMName("instanceid"), CIMValue(String("x")))),
                 AlreadyExistsException);
    EXPECT_THROW(c.addQualifier(CIMQualifier(CIMName("DESCRIPTION"), CIMValue(String("y")))),
                 AlreadyExistsException);
    EXPECT_THROW(c.addMethod(CIMMethod(CIMName("reset"), CIMTYPE_UINT32)),
                 AlreadyExistsException);
    CIMMethod m = c.getMethod(0);
    EXPECT_THROW(m.addParameter(CIMParameter(CIMName("FORCE"), CIMTYPE_BOOLEAN)),
                 AlreadyExistsException);
    EXPECT_EQ(inst.getPropertyCount(), 3u);
}

TEST(ObjectsLookup, BadIndexesAndUninitializedHandlesThrow)
{
    CIMClass c = makeClass();
    EXPECT_THROW(c.getProperty(3), IndexOutOfBoundsException);
    EXPECT_THROW(c.removeProperty(3), IndexOutOfBoundsException);
    EXPECT_THROW(c.getMethod(1), IndexOutOfBoundsException);
    EXPECT_THROW(c.getQualifier(1), IndexOutOfBoundsException);

    CIMInstance none;
    CIMClass noClass;
    CIMProperty noProperty;
    EXPECT_TRUE(none.isUninitialized());
    EXPECT_THROW(none.getClassName(), UninitializedObjectException);
    EXPECT_THROW(noClass.buildInstance(true, true, CIMPropertyList()),
                 UninitializedObjectException);
    EXPECT_THROW(noProperty.getValue(), UninitializedObjectException);
    EXPECT_THROW(c.addProperty(noProperty), UninitializedObjectException);
}

TEST(ObjectsValues, SetValueKeepsTheDeclaredType)
{
    CIMProperty p(CIMName("Count"), CIMValue(Uint32(1)));
    EXPECT_THROW(p.setValue(CIMValue(Uint64(1))), TypeMismatchException);
    EXPECT_THROW(p.setValue(CIMValue(Array<Uint32>())), TypeMismatchException);
    p.setValue(CIMValue(CIMTYPE_UINT32, false));
    EXPECT_TRUE(p.getValue().isNull());
    EXPECT_THROW(CIMProperty(CIMName("R"), CIMValue(String("x")), 0, CIMName("Test_Element")),
                 TypeMismatchException);
}

TEST(ObjectsHandles, CopiesShareAndClonesAreIndependent)
{
    CIMInstance a = makeClass().buildInstance(true, true, CIMPropertyList());
    CIMInstance shared = a;
    CIMInstance deep = a.clone();

    a.getProperty(a.findProperty("Count")).setValue(CIMValue(Uint32(42)));
    a.getProperty(0).getQualifier(0).setValue(CIMValue(Boolean(false)));
    a.removeProperty(a.findProperty("ElementName"));
    a.setPath(CIMObjectPath("Test_Element.InstanceID=\"a\""));

    Uint32 v = 0;
    shared.getProperty(shared.findProperty("Count")).getValue().get(v);
    EXPECT_EQ(v, 42u);
    EXPECT_EQ(shared.getPropertyCount(), 2u);
    EXPECT_EQ(str(shared.getPath().toString()), str(a.getPath().toString()));

    deep.getProperty(deep.findProperty("Count")).getValue().get(v);
    EXPECT_EQ(v, 7u);
    EXPECT_EQ(deep.getPropertyCount(), 3u);
    Boolean key = false;
    deep.getProperty(0).getQualifier(0).getValue().get(key);
    EXPECT_TRUE(key);
    EXPECT_FALSE(deep.identical(a));
    EXPECT_TRUE(deep.identical(deep.clone()));

    CIMClass c = makeClass();
    CIMClass cc = c.clone();
    cc.getMethod(0).removeParameter(0);
    EXPECT_EQ(c.getMethod(0).getParameterCount(), 1u);
    EXPECT_TRUE(c.identical(makeClass()));
    EXPECT_FALSE(c.identical(cc));
}

TEST(ObjectsPaths, BuildPathFromKeyProperties)
{
    CIMClass c = makeClass();
    Array<CIMName> keys;
    c.getKeyNames(keys);
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(str(keys[0].getString()), "InstanceID");

    CIMInstance inst = c.buildInstance(false, false, CIMPropertyList());
    inst.getProperty(inst.findProperty("InstanceID")).setValue(CIMValue(String("QZ:1")));
    CIMObjectPath p = inst.buildPath(c);
    EXPECT_EQ(str(p.getClassName().getString()), "Test_Element");
    ASSERT_EQ(p.getKeyBindings().size(), 1u);
    EXPECT_EQ(str(p.getKeyBindings()[0].getName().getString()), "InstanceID");
    EXPECT_EQ(str(p.getKeyBindings()[0].getValue()), "QZ:1");

    // A Key qualifier that is explicitly false does not make a key.
    CIMClass k(CIMName("Test_Keys"));
    k.addProperty(CIMProperty(CIMName("A"), CIMValue(String("a")))
                      .addQualifier(CIMQualifier(CIMName("key"), CIMValue(Boolean(false)))));
    EXPECT_FALSE(k.hasKeys());

    CIMInstance partial = c.buildInstance(false, false, listOf({"Count"}));
    EXPECT_THROW(partial.buildPath(c), NoSuchProperty);
}

TEST(ObjectsObject, WrapsClassOrInstanceAndSharesIt)
{
    CIMClass c = makeClass();
    CIMInstance inst = c.buildInstance(true, true, CIMPropertyList());

    CIMObject oc(c);
    CIMObject oi(inst);
    EXPECT_TRUE(oc.isClass());
    EXPECT_FALSE(oc.isInstance());
    EXPECT_TRUE(oi.isInstance());

    oi.getProperty(oi.findProperty("Count")).setValue(CIMValue(Uint32(5)));
    CIMInstance back(oi);
    Uint32 v = 0;
    inst.getProperty(inst.findProperty("Count")).getValue().get(v);
    EXPECT_EQ(v, 5u);
    EXPECT_TRUE(back.identical(inst));
    EXPECT_EQ(CIMClass(oc).getMethodCount(), 1u);

    EXPECT_THROW(CIMClass x(oi), DynamicCastFailedException);
    EXPECT_THROW(CIMInstance x(oc), DynamicCastFailedException);
    EXPECT_THROW(CIMInstance x((CIMObject())), DynamicCastFailedException);

    CIMObject copy = oi.clone();
    EXPECT_TRUE(copy.isInstance());
    copy.removeProperty(0);
    EXPECT_EQ(inst.getPropertyCount(), 3u);
}

TEST(ObjectsClass, AssociationAndAbstractComeFromQualifiers)
{
    CIMClass plain = makeClass();
    EXPECT_FALSE(plain.isAssociation());
    EXPECT_FALSE(plain.isAbstract());

    CIMClass assoc(CIMName("Test_Assoc"));
    assoc.addQualifier(CIMQualifier(CIMName("ASSOCIATION"), CIMValue(Boolean(true))));
    assoc.addQualifier(CIMQualifier(CIMName("Abstract"), CIMValue(Boolean(false))));
    EXPECT_TRUE(assoc.isAssociation());
    EXPECT_FALSE(assoc.isAbstract());
    EXPECT_TRUE(CIMConstClass(assoc).isAssociation());
}

} // namespace
