// The product's MOF files: the qualifier declarations agree with what the compiler assumes for
// undeclared qualifiers, and the whole load order compiles.

#include <cimrepo/ClassRepository.h>
#include <cimrepo/MofCompiler.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>

using namespace Pegasus;
using namespace cimrepo;

namespace
{

const CIMNamespaceName ns("root/test");
const std::string sourceRoot = ORV_SOURCE_ROOT;

std::string str(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

std::string sampleValue(const CIMQualifierDecl& d)
{
    std::string one;
    switch (d.getType())
    {
    case CIMTYPE_BOOLEAN:
        one = "true";
        break;
    case CIMTYPE_STRING:
        one = "\"x\"";
        break;
    default:
        one = "1";
        break;
    }
    return d.isArray() ? "{" + one + "}" : "(" + one + ")";
}

std::pair<int, std::string> run(const std::string& command)
{
    std::string output;
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>&1").c_str(), "r"), pclose);
    std::array<char, 512> buffer;
    while (pipe && fgets(buffer.data(), buffer.size(), pipe.get()))
    {
        output += buffer.data();
    }
    int status = pclose(pipe.release());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

} // namespace

TEST(SchemaFiles, DeclaredQualifiersMatchTheBuiltInDefaults)
{
    ClassRepository declared;
    MofCompiler(declared).compileFile(sourceRoot + "/schema/qualifiers.mof", ns);
    Array<CIMQualifierDecl> decls = declared.enumerateQualifierDecls(ns);
    ASSERT_GE(decls.size(), 40u);

    for (Uint32 i = 0; i < decls.size(); ++i)
    {
        const CIMQualifierDecl& d = decls[i];
        std::string name = str(d.getName().getString());
        SCOPED_TRACE(name);
        // Without declarations the compiler falls back to its own table: it must agree.
        ClassRepository bare;
        MofCompiler compiler(bare);
        compiler.compileString("class C { [" + name + sampleValue(d) + "] string P; };", "q.mof",
                               ns);
        CIMClass c = bare.getClass(ns, CIMName("C"), false, true, false, CIMPropertyList());
        CIMProperty p = c.getProperty(0);
        CIMQualifier q = p.getQualifier(0);
        EXPECT_EQ(d.getType(), q.getType());
        EXPECT_EQ(d.isArray(), q.isArray());
        for (const CIMFlavor* f : {&CIMFlavor::TOSUBCLASS, &CIMFlavor::ENABLEOVERRIDE,
                                   &CIMFlavor::TRANSLATABLE, &CIMFlavor::RESTRICTED})
        {
            EXPECT_EQ(d.getFlavor().hasFlavor(*f), q.getFlavor().hasFlavor(*f))
                << str(f->toString());
        }
    }
}

TEST(SchemaFiles, ProductLoadOrderCompiles)
{
    auto [status, output] =
        run(std::string(ORV_MOFCHECK) + " --manifest " + sourceRoot + "/schema/load-order.txt");
    EXPECT_EQ(0, status) << output;
    EXPECT_NE(std::string::npos, output.find("root/orv:")) << output;
}

TEST(SchemaFiles, CheckerReportsTheFirstError)
{
    char path[] = "/tmp/mofcheckXXXXXX.mof";
    int fd = mkstemps(path, 4);
    ASSERT_GE(fd, 0);
    const char text[] = "class A {\n  string X\n};\n";
    ASSERT_EQ(static_cast<ssize_t>(sizeof text - 1), write(fd, text, sizeof text - 1));
    close(fd);
    auto [status, output] = run(std::string(ORV_MOFCHECK) + " " + path);
    std::remove(path);
    EXPECT_EQ(1, status);
    EXPECT_NE(std::string::npos, output.find(std::string(path) + ":2: expected ';'")) << output;
}
